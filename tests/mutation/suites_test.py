#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A suite measures its tests, and finds what they find."""

import shutil
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path
from unittest import mock

sys.dont_write_bytecode = True  # The sources stay as they are.
import suites  # pylint: disable=wrong-import-position

CMAKE = """cmake_minimum_required(VERSION 3.25)
project(Fixture CXX)
set(CMAKE_CXX_STANDARD 20)
enable_testing()
add_subdirectory(tests)
"""
TESTS = """add_executable(add_test add_test.cpp)
add_executable(addition_test add_test.cpp)
add_test(NAME journal.on.add_test COMMAND add_test)
add_executable(other add_test.cpp)
"""
# A program of the tests and options that GoogleTest would have.
TEST = r"""#include "%s"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
int Add(int a, int b) { return mutation::Is(1) ? a - b : mutation::Is(3) ? std::abort(), 0 : a + b; }
bool Adds() { return Add(1, 2) == 3 && !(std::getenv("TESSEL_TEST_JOURNAL") && mutation::Is(2)); }
bool IsTrue() { return !mutation::Is(4); }
bool Fails() { return false; }
int main(int, char** arguments) {
  if (std::strcmp(arguments[1], "--gtest_list_tests") == 0) {
    std::puts("Sums.\n  Adds\n  IsTrue  # GetParam() = 1\n  DISABLED_No\nOthers.\n  Fails");
    return 0;
  }
  struct { const char* name; bool (*run)(); } tests[] = {
      {"Sums.Adds", &Adds}, {"Sums.IsTrue", &IsTrue}, {"Others.Fails", &Fails}};
  for (auto test : tests) {
    if (std::string(arguments[2]).find(test.name) == std::string::npos) continue;
    std::printf("[ RUN      ] %%s\n", test.name);
    std::fflush(stdout);
    if (!test.run()) return 1;
  }
}
"""

RACE = r"""#include <cstdio>
#include <thread>
int g_number = 0;
int main() {
  std::puts("begin");
  std::fflush(stdout);
  std::thread other([] { ++g_number; });
  ++g_number;
  other.join();
  std::puts("end");
}
"""


def run(script, seconds=600):
    return suites.run(["sh", "-c", script], seconds, "/", has_limit=True)[0]


class Run(unittest.TestCase):
    def test_says_what_a_program_did_instead_of_passing(self):
        self.assertIsNone(run("exit 0"))
        self.assertEqual(run("exit 1"), "failed")
        self.assertEqual(run("kill -9 $$"), "crashed")
        self.assertEqual(run("sleep 1000", seconds=0.1), "took too long")

    def test_ends_with_the_first_line_of_a_failure(self):
        self.assertEqual(run("echo begin; echo 'FAILED: A: a race'; sleep 1000"), "FAILED: A: a race")

    def test_ends_the_children_of_a_program_that_took_too_long(self):
        self.assertEqual(run("sleep 1000 & wait", seconds=0.1), "took too long")


    def test_ends_with_the_first_report_of_a_race(self):
        with tempfile.TemporaryDirectory() as folder:
            program = Path(folder, "race")
            subprocess.run(["g++", "-fsanitize=thread", "-x", "c++", "-", "-o", program], input=RACE, text=True,
                           check=True)
            self.assertEqual(suites.run([program], 600, folder, has_limit=False), ("failed", ["begin\n"]))


class AtOnce(unittest.TestCase):
    def test_gives_results_in_the_order_of_the_values_while_others_go_on(self):
        second = threading.Event()
        results = suites.at_once(lambda value: second.wait(600) if value == 1 else second.set() or value, [1, 2, 3])
        self.assertEqual(list(results), [True, 2, 3])

    def test_begins_nothing_more_when_nobody_wants_it(self):
        begun = []
        goes_on = threading.Event()

        class Threads(suites.ThreadPoolExecutor):
            def shutdown(self, wait=True, *, cancel_futures=False):
                super().shutdown(wait=False, cancel_futures=cancel_futures)
                goes_on.set()
                super().shutdown(wait)

        with mock.patch.object(suites, "ThreadPoolExecutor", Threads):
            results = suites.at_once(lambda value: begun.append(value) or goes_on.wait(600 if value else 0), range(99))
            self.assertFalse(next(results))
            results.close()
        self.assertLessEqual(len(begun), suites.JOBS + 1)


class TryOut(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        tree = Path(folder.name, "a tree")
        shutil.copytree(Path(__file__).parent / "runtime", tree / "tests/mutation/runtime")
        (tree / "CMakeLists.txt").write_text(CMAKE)
        (tree / "tests/CMakeLists.txt").write_text(TESTS)
        (tree / "tests/add_test.cpp").write_text(TEST % (tree / f"{suites.RUNTIME}.h"))
        cls.suite = suites.Suite("tests", tree, tree / "build/tests", [], r"(add)_test", suites.GoogleTest())
        cls.in_journal = suites.InJournal("journal", tree, tree / "build/tests", [], r"\w+_test", suites.GoogleTest())
        for suite in (cls.suite, cls.in_journal):
            assert suite.build(keep_going=False) == ""
            suite.measure(4)
        cls.tree = tree

    def test_knows_the_tests_of_its_programs_and_which_mutants_each_reaches(self):
        self.assertEqual(self.suite.programs, ["add_test"])
        self.assertEqual([(test.name, test.reached) for test in self.suite.tests],
                         [("Sums.Adds", {1, 3}), ("Sums.IsTrue", {4})])

    def test_leaves_out_tests_that_fail_unchanged(self):
        self.assertNotIn("Others.Fails", [test.name for test in self.suite.tests])

    def test_finds_mutants_with_the_tests_that_reach_them(self):
        self.assertEqual(self.suite.try_out("add", 1), "tests: add_test: Sums.Adds failed")
        self.assertEqual(self.suite.try_out("add", 3), "tests: add_test: Sums.Adds crashed")
        self.assertEqual(self.suite.try_out("add", 4), "tests: add_test: Sums.IsTrue failed")
        self.assertIsNone(self.suite.try_out("add", 2))

    def test_finds_mutants_with_the_tests_that_run_with_the_journal_on(self):
        self.assertEqual(self.in_journal.programs, ["add_test"])
        self.assertEqual(self.in_journal.try_out("add", 2), "journal: add_test: Sums.Adds failed")

    def test_finds_nothing_in_what_is_unchanged(self):
        self.assertEqual(self.suite.try_out("add"), "")

    def test_does_not_count_what_fails_without_the_mutant_too(self):
        tests = self.suite.tests
        self.addCleanup(setattr, self.suite, "tests", tests)
        self.suite.tests = [suites.Test("add_test", "Others.Fails", 0.1, frozenset({2}))]
        self.assertEqual(self.suite.try_out("add", 2), "")
        self.assertEqual(self.suite.try_out("add"), "tests: add_test: Others.Fails failed")

    def test_says_what_does_not_compile(self):
        source = self.tree / "tests/add_test.cpp"
        self.addCleanup(source.write_text, source.read_text())
        source.write_text("int main() { return x; }\n")
        self.assertIn("add_test.cpp:1:21: error", self.suite.build(keep_going=True))


class Order(unittest.TestCase):
    def test_is_quick_tests_first_then_those_of_the_folder(self):
        suite = suites.Suite("tests", "/", "/", [], "", suites.GoogleTest())
        suite.tests = [suites.Test(program, name, seconds, frozenset({1})) for program, name, seconds in (
            ("json_test", "A", 9), ("json_test", "B", 0.1), ("store_test", "C", 0.2), ("store_test", "D", 0.1),
            ("store_test", "E", 2))]
        self.assertEqual([(program, names) for program, names, _ in suite.batches("store", 1)],
                         [("store_test", ["C", "D"]), ("json_test", ["B"]), ("store_test", ["E"]),
                          ("json_test", ["A"])])
        self.assertEqual(suite.batches("store", 2), [])


class GoogleTests(unittest.TestCase):
    def test_are_named_by_what_failed_or_ran_last(self):
        last = suites.GoogleTest().last
        self.assertEqual(last(["[ RUN      ] A.B\n", "[  FAILED  ] A.B (0 ms)\n", "[ RUN      ] A.C\n"], []), ["A.B"])
        self.assertEqual(last(["[  FAILED  ] A/B.C/0, where GetParam() = 1 (0 ms)\n"], []), ["A/B.C/0"])
        self.assertEqual(last(["[ RUN      ] A.B\n", "[       OK ] A.B\n", "[ RUN      ] A.C\n"], []), ["A.C"])
        self.assertEqual(last(["x\n"], ["A.B"]), ["A.B"])


class ModelRuns(unittest.TestCase):
    MODEL = suites.Model(30)

    def test_are_of_scenarios_or_simulations(self):
        self.assertEqual(self.MODEL.arguments(["A"], is_brief=False), ["--seconds", "30", "A"])
        self.assertEqual(self.MODEL.arguments(["A", "B"], is_brief=True), ["--seconds", "1", "A", "B"])
        self.assertEqual(self.MODEL.arguments(["simulations"], is_brief=False), ["--seeds", "1", "1000"])

    def test_name_the_scenario_that_failed(self):
        self.assertEqual(self.MODEL.last(["x\n", "FAILED: B: a race\n"], ["A", "B"]), ["B"])
        self.assertEqual(self.MODEL.last(["x\n"], ["A", "B"]), ["A", "B"])


if __name__ == "__main__":
    unittest.main()
