#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""check_widths.py names each line that is too wide, and no other."""

import tempfile
import unittest
from pathlib import Path

import check_widths


class CheckWidths(unittest.TestCase):
    def faults(self, file, *lines):
        """The faults of a file of these lines: file and line."""
        with tempfile.TemporaryDirectory() as tree:
            path = Path(tree, file)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text("".join(f"{line}\n" for line in lines), encoding="utf-8")
            return [fault.rpartition(": ")[0] for fault in check_widths.check(Path(tree))]

    def test_a_comment_of_cpp_has_110_columns(self):
        for file in ("src/store/a.cpp", "include/tessel/a.h", "tests/a.cpp"):
            self.assertEqual(self.faults(file, "// " + "x" * 107), [])
            self.assertEqual(self.faults(file, "", "// " + "x" * 108), [f"{file}:2"])
            self.assertEqual(self.faults(file, "  /// " + "x" * 105), [f"{file}:1"])
            self.assertEqual(self.faults(file, "int x;  // " + "x" * 100), [f"{file}:1"])
            self.assertEqual(self.faults(file, "// " + "\u00e4" * 107), [], "columns, not bytes")

    def test_code_of_cpp_is_left_to_the_formatter(self):
        self.assertEqual(self.faults("src/a.cpp", f'const char* const kText = "{"x" * 100}";'), [])
        self.assertEqual(self.faults("src/a.cpp", f'const char* const kText = " // \\"{"x" * 100}";'), [])

    def test_an_expected_message_may_be_wider(self):
        self.assertEqual(self.faults("tests/typed/refused/a.cpp", "// says: " + "x" * 110), [])

    def test_a_line_of_a_script_has_120_columns(self):
        for file, first in (("tests/a.py", ""), ("cmake/a.cmake", ""), ("src/CMakeLists.txt", ""), ("tests/a.sh", ""),
                            ("tests/a.mjs", ""), ("dev", "#!/bin/sh"), (".ci/run", "#!/bin/sh")):
            self.assertEqual(self.faults(file, first, "x" * 120), [])
            self.assertEqual(self.faults(file, first, "x" * 121), [f"{file}:2"])

    def test_tables_documents_and_builds_are_left_alone(self):
        for file in ("include/tessel/a.def", "README.md", "docs/a.json", "build/release/a.py", "fuzz/corpus/json/a"):
            self.assertEqual(self.faults(file, "// " + "x" * 130), [])


if __name__ == "__main__":
    unittest.main()
