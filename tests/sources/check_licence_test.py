#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""check_licence.py names each source file that lacks the licence's line, and no other file."""

import tempfile
import unittest
from pathlib import Path

import check_licence


class CheckLicence(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name)

    def faults(self, file, text):
        """Where faults are, of a tree with one file."""
        path = self.tree / file
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text)
        faults = [fault.partition(": ")[0] for fault in check_licence.check(self.tree)]
        path.unlink()
        return faults

    def test_the_first_line_names_the_licence(self):
        for file, line in (("src/a.cpp", b"// SPDX-License-Identifier: Apache-2.0\n"),
                           ("include/a.h", b"// SPDX-License-Identifier: Apache-2.0\n#pragma once\n"),
                           ("tests/web/a.mjs", b"// SPDX-License-Identifier: Apache-2.0\n"),
                           ("web/a.html", b"<!DOCTYPE html>\n<!-- SPDX-License-Identifier: Apache-2.0 -->\n"),
                           ("docs/site/a.css", b"/* SPDX-License-Identifier: Apache-2.0 */\n"),
                           ("CMakeLists.txt", b"# SPDX-License-Identifier: Apache-2.0\n"),
                           ("dev", b"#!/usr/bin/env bash\n# SPDX-License-Identifier: Apache-2.0\n")):
            self.assertEqual(self.faults(file, line), [], file)

    def test_a_file_without_the_line_is_named(self):
        for file in ("src/a.cpp", "include/a.h", "include/a.def", "docs/a.js", "tests/a.mjs", "docs/a.css",
                     "web/a.html", "cmake/a.cmake", "cmake/a.pc.in", "src/a.map", "tests/a.py", "tests/a.sh",
                     "src/CMakeLists.txt", "fuzz/a.dict", "docs/Doxyfile", ".clang-format", ".clang-tidy", ".cppcheck",
                     ".editorconfig", ".gitignore", "fuzz/corpus_of_code/a.cpp"):
            self.assertEqual(self.faults(file, b"text\n"), [f"{file}:1"])
            self.assertEqual(self.faults(file, b""), [f"{file}:1"])
        self.assertEqual(self.faults("web/a.html", b"<!DOCTYPE html>\n<html>\n"), ["web/a.html:2"])

    def test_a_script_without_a_suffix_is_named(self):
        for file in ("dev", ".ci/run"):
            self.assertEqual(self.faults(file, b"#!/bin/sh\n"), [f"{file}:2"])
            self.assertEqual(self.faults(file, b"#!/bin/sh\n\n# SPDX-License-Identifier: Apache-2.0\n"), [f"{file}:2"])

    def test_the_line_is_whole_and_the_first(self):
        for text in (b"\n// SPDX-License-Identifier: Apache-2.0\n", b"// SPDX-License-Identifier: Apache-2.0 OR MIT\n",
                     b"# SPDX-License-Identifier: Apache-2.0\n", b"// SPDX-License-Identifier: MIT\n",
                     b"\xff\xfe// SPDX-License-Identifier: Apache-2.0\n"):
            self.assertEqual(self.faults("a.cpp", text), ["a.cpp:1"], text)

    def test_data_and_what_is_built_need_no_line(self):
        for file in ("README.md", "settings.json", "abi/tessel.layout", "fuzz/corpus/json/raw", "docs/images/a.svg",
                     "build/release/a.cpp", ".git/hooks/a.sh", "tests/__pycache__/a.py"):
            self.assertEqual(self.faults(file, b"\xfftext\n"), [], file)


if __name__ == "__main__":
    unittest.main()
