#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What mutate.py changes, in which order and with what it tries it; and its copy of the tree."""

import argparse
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # The sources stay as they are.
import mutate  # pylint: disable=wrong-import-position
import places  # pylint: disable=wrong-import-position
from suites import GoogleTest  # pylint: disable=wrong-import-position


class CopyTree(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(setattr, mutate, "ROOT", mutate.ROOT)
        mutate.ROOT = Path(folder.name, "tree")
        self.copy = Path(folder.name, "copy")

    def copied(self, *files):
        """What is in the copy of a tree of these files."""
        for file in files:
            path = mutate.ROOT / file
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(file)
        mutate.copy_tree(self.copy)
        return sorted(path.relative_to(self.copy).as_posix() for path in self.copy.rglob("*") if path.is_file())

    def test_has_every_file_but_those_of_builds_and_version_control(self):
        self.assertEqual(self.copied("CMakeLists.txt", "src/a/b.cpp", "a new folder/c", "build/mutation/d", ".git/e"),
                         ["CMakeLists.txt", "a new folder/c", "src/a/b.cpp"])

    def test_keeps_what_is_built_and_written(self):
        self.copied("a", "b")
        (self.copy / "build").mkdir()
        (self.copy / "build/kept").write_text("")
        (self.copy / "a").write_text("a schema")
        mutate.copy_tree(self.copy, {"a"})
        self.assertEqual((self.copy / "a").read_text(), "a schema")
        self.assertTrue((self.copy / "build/kept").exists())

    def test_follows_the_tree_and_touches_only_what_changed(self):
        self.copied("a", "b", "c")
        before = (self.copy / "a").stat().st_mtime_ns
        (mutate.ROOT / "b").write_text("changed")
        (mutate.ROOT / "c").unlink()
        self.assertEqual(self.copied(), ["a", "b"])
        self.assertEqual((self.copy / "a").stat().st_mtime_ns, before)
        self.assertEqual((self.copy / "b").read_text(), "changed")


class Suite:
    """Finds and reaches certain numbers, and cannot be compiled with others."""
    kind = GoogleTest

    def __init__(self, tree, finds, reaches, refuses=()):
        self.tree, self.finds, self.reaches, self.refuses = tree, finds, reaches, refuses
        self.shown, self.alone, self.tests = [], [], []

    def build(self, keep_going):
        text = (self.tree / "src/a.cpp").read_text()
        self.shown.append(text)
        for at, line in enumerate(text.splitlines(), 1):
            for number in self.refuses:
                column = line.find(f"Is({number})") + 1
                if column and keep_going:
                    return f"{self.tree}/src/a.cpp:{at}:{column}: error: no\n"
        return "no" if "-" in text and not keep_going else ""

    def measure(self, highest):
        self.highest, self.tests = highest, ["a test"]

    def try_out(self, folder, number=0):
        assert folder == "a.cpp"
        if number == 0:
            self.alone.append(self.shown[-1])
            return "alone"
        return None if number not in self.reaches else "found" if number in self.finds else ""


class Together(unittest.TestCase):
    CODE = "void F() {\n  x = a + 1;\n  y[x] = 2;\n}\n"  # 1: -, 2: 0, 3: no x, 4: 3, 5: no y, 6: swapped.

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(setattr, mutate, "ROOT", mutate.ROOT)
        mutate.ROOT = Path(folder.name, "root")
        self.tree = Path(folder.name, "tree")
        for root in (mutate.ROOT, self.tree):
            (root / "src").mkdir(parents=True)
            (root / "src/a.cpp").write_text(self.CODE)
        check = mutate.Check.__call__
        self.addCleanup(setattr, mutate.Check, "__call__", check)
        mutate.Check.__call__ = lambda check: ""
        messages = mutate.Check.messages
        self.addCleanup(setattr, mutate.Check, "messages", messages)
        mutate.Check.messages = lambda check, files, compiler="": ""
        self.messages = messages
        self.mutants = dict(enumerate(places.mutants_of("src/a.cpp", self.CODE), 1))
        self.assertEqual([mutant.kind for mutant in self.mutants.values()],
                         ["operator", "number", "statement", "number", "statement", "swap"])

    def outcomes(self, *suites):
        return dict(mutate.outcomes(mutate.Schemas(self.tree, self.mutants), suites))

    def test_are_tried_until_a_suite_finds_them(self):
        first = Suite(self.tree, {1, 2}, {1, 2, 3})
        second = Suite(self.tree, {3, 4}, {3, 4, 5, 6})
        self.assertEqual(self.outcomes(first, second),
                         {1: "found", 2: "found", 3: "found", 4: "found", 5: "", 6: ""})
        self.assertIn("Is(1)", first.shown[0])
        self.assertNotIn("Is(1)", second.shown[0])
        self.assertEqual((first.highest, first.alone, second.alone), (6, [], []))

    def test_that_no_program_can_choose_or_reaches_are_tried_alone(self):
        suite = Suite(self.tree, {1, 2, 3}, {1, 2, 3, 5, 6}, refuses=(2,))
        self.assertEqual(self.outcomes(suite), {1: "found", 2: "alone", 3: "found", 4: "alone", 5: "", 6: ""})
        self.assertEqual(suite.alone, [self.CODE.replace("1", "0"), self.CODE.replace("2", "3")])

    def test_that_have_to_be_built_alone_may_be_left_out(self):
        suite = Suite(self.tree, {}, {1, 2, 3, 4, 5})
        schemas = mutate.Schemas(self.tree, self.mutants)
        self.assertNotIn(6, dict(mutate.outcomes(schemas, [suite], is_alone_tried=False)))
        self.assertEqual(suite.alone, [])

    def test_that_are_in_each_others_way_are_built_one_after_the_other(self):
        code = "void F() {\n  F(1);\n  F(2);\n  F(3);\n}\n"
        for root in (mutate.ROOT, self.tree):
            (root / "src/a.cpp").write_text(code)
        swaps = [mutant for mutant in places.mutants_of("src/a.cpp", code) if mutant.kind == "swap"]
        self.mutants = dict(enumerate(swaps, 1))
        self.addCleanup(setattr, mutate, "LEAST_TOGETHER", mutate.LEAST_TOGETHER)
        for mutate.LEAST_TOGETHER, expected in ((1, {1: "found", 2: ""}), (2, {1: "found"})):
            suite = Suite(self.tree, {1}, {1, 2})
            schemas = mutate.Schemas(self.tree, self.mutants)
            self.assertEqual(dict(mutate.outcomes(schemas, [suite], is_alone_tried=False)), expected)
            self.assertEqual(["Is(2)" in text for text in suite.shown], [False, True][:len(expected)])
            expected.pop(1)
            schemas = mutate.Schemas(self.tree, self.mutants)
            later = mutate.outcomes(schemas, [suite], is_first_tried=False, is_alone_tried=False)
            self.assertEqual(dict(later), expected)

    def test_that_were_left_out_with_one_that_does_not_compile_are_built_again(self):
        self.addCleanup(setattr, mutate, "LEAST_TOGETHER", mutate.LEAST_TOGETHER)
        mutate.LEAST_TOGETHER = 1

        def compiled(check):
            """It does not with 2 and 1, and says so with an error at each."""
            text = (self.tree / "src/a.cpp").read_text()
            return "".join(f"{self.tree}/src/a.cpp:{text[:text.index(one)].count(chr(10)) + 1}:"
                           f"{text.index(one) - text.rfind(chr(10), 0, text.index(one))}: error: no\n"
                           for one in ("Is(2)", "Is(1)") if "Is(2)" in text and one in text)

        def messages(_, files, compiler=""):
            return "no" if "a + 0" in files[0].read_text() else ""

        mutate.Check.__call__, mutate.Check.messages = compiled, messages
        suite = Suite(self.tree, {1, 3}, {1, 3, 4, 5, 6})
        self.assertEqual(self.outcomes(suite), {1: "found", 2: None, 3: "found", 4: "", 5: "", 6: ""})
        self.assertEqual(["Is(1)" in text for text in suite.shown], [False, True])

    def test_that_are_built_alone_are_tried_with_the_analysis_first(self):
        warning = "a.cpp:1:1: error: writing needs m_mutex [-Werror,-Wthread-safety-analysis]"
        mutate.Check.messages = lambda check, files, compiler="": warning if "clang++" in compiler else ""
        suite = Suite(self.tree, {}, {1, 3, 4, 5, 6})
        self.assertEqual(self.outcomes(suite)[2], "the analysis of thread safety")
        self.assertEqual(suite.alone, [])

    def test_that_are_all_built_alone_are_tried_with_tests_that_pass_without_them(self):
        code = "void F() {\n  const Lock lock(m);\n}\n"
        for root in (mutate.ROOT, self.tree):
            (root / "src/a.cpp").write_text(code)
        self.mutants = dict(enumerate(places.mutants_of("src/a.cpp", code), 1))
        suite = Suite(self.tree, {}, {})
        self.assertEqual(self.outcomes(suite), {1: "alone"})
        self.assertEqual((suite.shown[0], suite.tests), (code, ["a test"]))

    def test_that_do_not_compile_have_no_outcome(self):
        self.assertIsNone(self.outcomes(Suite(self.tree, {}, {2, 3, 4, 5, 6}, refuses=(1,)))[1])

    def test_compile_by_folder_before_anything_is_built(self):
        schemas = mutate.Schemas(self.tree, self.mutants)
        shutil.copytree(Path(__file__).parent / "runtime", (self.tree / mutate.RUNTIME).parent)
        schemas.show(self.mutants)
        check = mutate.Check(schemas)
        messages = self.messages(check, [str(self.tree / "src/a.cpp")])
        self.assertRegex(messages, r"a\.cpp:\d+:\d+: error: .x. was not declared")
        self.assertLess(schemas.blamed(messages, is_first_enough=True), schemas.blamed(messages))
        self.assertTrue(schemas.blamed(messages, is_first_enough=True))

    def test_do_not_compile_where_what_they_declare_is_named(self):
        code = "constexpr int kSize = 2;\nint other GUARDED(m_mutex) = 2;\n"
        (mutate.ROOT / "src/a.cpp").write_text(code)
        schemas = mutate.Schemas(self.tree, dict(enumerate(places.mutants_of("src/a.cpp", code), 1)))
        schemas.show([1, 2])
        message = "b.h:9:3: error: not a constant\n    9 |   char bytes[kSize];\n      |  ^~~~\n"
        self.assertEqual(schemas.blamed(message), {1})
        self.assertEqual(schemas.blamed(message.replace("kSize", "8")), set())
        line = schemas.schemas[f"{self.tree}/src/a.cpp"].text.split(" other")[0].count("\n") + 1
        warning = f"{self.tree}/src/a.cpp:{line}:1: warning: of something else\n"
        self.assertEqual(schemas.blamed(warning + message), {1})
        self.assertEqual(schemas.blamed(message.replace("kSize", "8").replace("char", "GUARDED char")), set())


class Mutants(unittest.TestCase):
    CODE = "void F() {\n  x.store(1);\n  y = 2;\n}\n"

    def mutant(self, kind, file="src/store/A.cpp"):
        return next(one for one in places.mutants_of(file, self.CODE) if one.kind == kind)

    def test_are_those_of_sources_exported_headers_and_tools(self):
        mutants = mutate.all_mutants("", ("order", "lock", "number"))
        for folder in ("include/tessel/", "libutil/include/util/", "libutil/src/", "src/", "tools/"):
            self.assertTrue(any(mutant.file.startswith(folder) for mutant in mutants), folder)
        self.assertEqual({mutant.kind for mutant in mutants}, {"order", "lock", "number"})
        only = mutate.all_mutants("src/json/", ("number",))
        self.assertEqual({mutant.file[:9] for mutant in only}, {"src/json/"})

    def test_are_drawn_by_the_seed_each_in_one_shard(self):
        mutants = list(range(100))
        shards = [mutate.chosen(mutants, 7, (number, 3)) for number in (1, 2, 3)]
        self.assertEqual(sorted(sum(shards, [])), mutants)
        self.assertEqual(shards[1], mutate.chosen(mutants, 7, (2, 3)))
        self.assertNotEqual(mutate.chosen(mutants, 7, (1, 1)), mutate.chosen(mutants, 8, (1, 1)))

    def test_that_survive_for_a_known_reason_have_it(self):
        mutant = self.mutant("number")
        was, becomes = places.lines_of(mutant, self.CODE)
        known = {"file": mutant.file, "was": was, "becomes": becomes, "why": "it is so"}
        self.assertEqual(mutate.reason(mutant, self.CODE, [known]), "it is so")
        for name in ("file", "was", "becomes"):
            self.assertIsNone(mutate.reason(mutant, self.CODE, [known | {name: "another"}]))

    def test_that_there_are_not_are_refused(self):
        for shard in ("0/3", "4/3", "1", "a/b", "1/2/3"):
            with self.assertRaises(argparse.ArgumentTypeError):
                mutate.shard_of(shard)
        self.assertEqual(mutate.shard_of("3/40"), (3, 40))
        with self.assertRaises(argparse.ArgumentTypeError):
            mutate.some_of(places.KINDS)("order,orders")
        self.assertEqual(mutate.some_of(places.KINDS)("order,lock"), ["lock", "order"])


if __name__ == "__main__":
    unittest.main()
