#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The copy of the tree that mutate.py changes has all that a build reads."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # The sources stay as they are.
import mutate  # pylint: disable=wrong-import-position


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


if __name__ == "__main__":
    unittest.main()
