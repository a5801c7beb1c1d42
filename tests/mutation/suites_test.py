#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A suite finds what its programs find, and leaves its copy of the tree as it was."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # The sources stay as they are.
import suites  # pylint: disable=wrong-import-position

CMAKE = """cmake_minimum_required(VERSION 3.25)
project(Fixture CXX)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
add_subdirectory(tests)
"""
TESTS = """add_executable(add_test ../add_test.cpp ../add.cpp)
add_executable(other ../add_test.cpp ../add.cpp)
add_executable(unified_test ../add_test.cpp ../add.cpp)
set_target_properties(unified_test PROPERTIES UNITY_BUILD ON)
"""
ADD = "int Add(int a, int b) { return a + b; }\nint Unused() { return 1; }\n"
TEST = '#include "add.h"\nint main() { return Add(1, kTwo) == 3 ? 0 : 1; }\n'


def run(script, seconds=600):
    return suites.run(["sh", "-c", script], seconds, "/", has_limit=True)


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


class TryOut(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.tree = Path(folder.name, "tree")
        (cls.tree / "tests").mkdir(parents=True)
        for name, text in (("CMakeLists.txt", CMAKE), ("tests/CMakeLists.txt", TESTS), ("add.cpp", ADD),
                           ("add_test.cpp", TEST), ("add.h", "int Add(int, int);\nconstexpr int kTwo = 2;\n"),
                           ("of_no_program.h", "1\n")):
            (cls.tree / name).write_text(text)
        cls.suite = suites.Suite("tests", cls.tree, Path(folder.name, "objects"), [], r"\w+_test", [[]])
        cls.suite.time_programs()

    def try_out(self, file, before, after):
        code = (self.tree / file).read_text()
        self.assertIn(before, code)
        outcome = self.suite.try_out(file, code.replace(before, after), "add")
        self.assertEqual((self.tree / file).read_text(), code)
        suites.command(self.suite.ninja)
        self.assertEqual([self.suite.run(name, 600) for name in self.suite.programs], [None, None])
        return outcome

    def test_finds_a_change_and_undoes_it(self):
        self.assertEqual(self.suite.programs, ["add_test", "unified_test"])
        self.assertEqual(self.try_out("add.cpp", "a + b", "a - b"), "tests: add_test failed")
        self.assertEqual(self.try_out("add.cpp", "return 1", "return 2"), "")

    def test_finds_a_change_of_a_header_and_undoes_it(self):
        self.assertEqual(self.try_out("add.h", "kTwo = 2", "kTwo = 3"), "tests: add_test failed")
        self.assertEqual(self.try_out("add.h", "int, int);", "int a, int b);"), "")

    def test_says_that_a_change_does_not_compile(self):
        self.assertIsNone(self.try_out("add.cpp", "a + b", "a +"))
        self.assertEqual(self.try_out("add.cpp", "return 1", "return 3"), "")

    def test_runs_nothing_for_a_file_of_no_program(self):
        self.suite.allowed, allowed = {}, self.suite.allowed  # Without it, none can run.
        self.addCleanup(setattr, self.suite, "allowed", allowed)
        self.assertEqual(self.try_out("of_no_program.h", "1", "2"), suites.UNSEEN)

    def test_refuses_to_begin_with_programs_that_fail(self):
        self.addCleanup(setattr, self.suite, "paths", self.suite.paths)
        self.suite.paths = dict.fromkeys(self.suite.programs, "/bin/false")
        with self.assertRaisesRegex(SystemExit, "tests: add_test failed before anything was changed"):
            self.suite.time_programs()


if __name__ == "__main__":
    unittest.main()
