#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What mutate.py changes, in which order and with what it tries it; and its copy of the tree."""

import argparse
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # The sources stay as they are.
import mutate  # pylint: disable=wrong-import-position
import places  # pylint: disable=wrong-import-position
from suites import UNSEEN  # pylint: disable=wrong-import-position


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

    def test_follows_the_tree_and_touches_only_what_changed(self):
        self.copied("a", "b", "c")
        before = (self.copy / "a").stat().st_mtime_ns
        (mutate.ROOT / "b").write_text("changed")
        (mutate.ROOT / "c").unlink()
        self.assertEqual(self.copied(), ["a", "b"])
        self.assertEqual((self.copy / "a").stat().st_mtime_ns, before)
        self.assertEqual((self.copy / "b").read_text(), "changed")


class Suite:
    """Records what it tries; finds it or not."""

    def __init__(self, name, outcome, tried):
        self.name, self.outcome, self.tried = name, outcome, tried

    def try_out(self, file, code, folder):
        self.tried.append((self.name, file, code, folder))
        return self.outcome


class Mutants(unittest.TestCase):
    CODE = "void F() {\n  x.store(1);\n  y = 2;\n}\n"

    def mutant(self, kind, file="src/store/A.cpp"):
        return next(one for one in places.mutants_of(file, self.CODE) if one.kind == kind)

    def try_out(self, kind, file="src/store/A.cpp", **outcomes):
        """The outcome, and which suites had to say something."""
        tried = []
        suites = [Suite(name, outcome, tried) for name, outcome in outcomes.items()]
        mutant = self.mutant(kind, file)
        outcome = mutate.try_out(mutant, self.CODE, suites)
        for _, file_of_it, code, folder in tried:
            self.assertEqual((file_of_it, code), (file, places.changed(mutant, self.CODE)))
            self.assertEqual(folder, "store" if file.startswith("src/") else file.partition("/")[0])
        return outcome, [name for name, *_ in tried]

    def test_are_tried_until_a_suite_finds_them(self):
        self.assertEqual(self.try_out("number", tests="", model="found", tsan=""), ("found", ["tests", "model"]))
        self.assertEqual(self.try_out("number", tests="", model="", tsan=""), ("", ["tests", "model", "tsan"]))
        self.assertEqual(self.try_out("number", "tools/A.cpp", tests=None, model=""), (None, ["tests"]))

    def test_that_no_suite_has_are_not_survivors(self):
        self.assertEqual(self.try_out("order", tests="", model=UNSEEN)[0], "")
        self.assertEqual(self.try_out("order", tests="found", model=UNSEEN)[0], "found")
        self.assertIsNone(self.try_out("order", model=UNSEEN)[0])

    def test_of_what_threads_share_are_tried_with_the_model_first(self):
        for kind in ("order", "swap"):
            self.assertEqual(self.try_out(kind, tests="", model="", tsan=""), ("", ["model", "tests", "tsan"]))

    def test_are_those_of_sources_exported_headers_and_tools(self):
        mutants = mutate.all_mutants(mutate.ROOT, "", ("order", "lock", "number"))
        for folder in ("include/tessel/", "libutil/include/util/", "libutil/src/", "src/", "tools/"):
            self.assertTrue(any(mutant.file.startswith(folder) for mutant in mutants), folder)
        self.assertEqual({mutant.kind for mutant in mutants}, {"order", "lock", "number"})
        only = mutate.all_mutants(mutate.ROOT, "src/json/", ("number",))
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
