#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Each library compiles as one source, in any order: file-local names are distinct within it. Builds of other compilers
and processors compile it so.
usage: unity_test.py COMPILER
"""

import subprocess
import sys
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
FOLDERS = [SOURCE / folder for folder in ("include", "src", "libutil/include", "libutil/src")]
COMPILER = sys.argv[1]


class Unity(unittest.TestCase):
    def assert_compiles(self, sources):
        command = [COMPILER, "-std=c++20", "-fsyntax-only", *(f"-I{folder}" for folder in FOLDERS), "-x", "c++", "-"]
        unit = "".join(f'#include "{source}"\n' for source in sources)
        run = subprocess.run(command, input=unit, stderr=subprocess.PIPE, text=True, check=False)
        self.assertEqual(run.returncode, 0, run.stderr)

    def test_libtessel_compiles_as_one_source(self):
        self.assert_compiles(sorted((SOURCE / "src").rglob("*.cpp")))

    def test_libtessel_compiles_as_one_source_in_reverse(self):
        self.assert_compiles(sorted((SOURCE / "src").rglob("*.cpp"), reverse=True))

    def test_libutil_compiles_as_one_source(self):
        self.assert_compiles(sorted((SOURCE / "libutil/src").rglob("*.cpp")))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
