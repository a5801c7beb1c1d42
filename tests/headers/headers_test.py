#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The exported headers as a program compiles them: each one alone, and all together by every compiler at hand, for each
language standard that the compiler knows, without a warning; without run-time type information; without exceptions.
"""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
FOLDERS = [SOURCE / "include", SOURCE / "libutil" / "include"]
HEADERS = [path.relative_to(folder).as_posix() for folder in FOLDERS for path in sorted(folder.glob("*/*.h"))]
NEEDS_EXCEPTIONS = "tessel/ScopedConfig.h"
PARSER = argparse.ArgumentParser(description=__doc__)
PARSER.add_argument("--only", metavar="TEST", help="one of the tests, instead of all")
PARSER.add_argument("compiler")
PARSER.add_argument("others", nargs="*", help="those that the machine has of them")
ARGUMENTS = PARSER.parse_args()
COMPILER = ARGUMENTS.compiler
COMPILERS = [COMPILER] + [found for found in filter(None, map(shutil.which, ARGUMENTS.others)) if found != COMPILER]
# Each standard by its names, that of its draft last, which older compilers know.
STANDARDS = (("c++20",), ("c++23", "c++2b"), ("c++26", "c++2c"))
WARNINGS = ("-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror")


class Headers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.work = Path(folder.name)

    def compile(self, compiler, headers, *options):
        """What the compiler says of a file that includes the headers; nothing when it compiles."""
        with tempfile.NamedTemporaryFile("w", suffix=".cpp", dir=self.work, delete=False) as source:
            source.writelines(f"#include <{header}>\n" for header in headers)
        command = [compiler, "-fsyntax-only", *WARNINGS, *options, *(f"-I{folder}" for folder in FOLDERS), source.name]
        run = subprocess.run(command, stderr=subprocess.PIPE, text=True, check=False, env=os.environ | {"LC_ALL": "C"})
        return run.stderr or ("" if run.returncode == 0 else f"status {run.returncode}")

    def known_standards(self, compiler):
        """The options of those that the compiler knows."""
        for names in STANDARDS:
            options = (f"-std={name}" for name in names)
            yield from [option for option in options if not self.compile(compiler, [], option)][:1]

    def assert_compiles(self, arguments):
        """Compiles many files, as many at a time as there are processors."""
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            for case, said in zip(arguments, pool.map(lambda case: self.compile(*case), arguments)):
                self.assertEqual(said, "", case)

    def test_each_compiles_alone(self):
        self.assert_compiles([(COMPILER, [header], "-std=c++20") for header in HEADERS])

    def test_all_compile_with_every_compiler_and_standard(self):
        cases = [(compiler, HEADERS, option) for compiler in COMPILERS for option in self.known_standards(compiler)]
        # GCC 12 and Clang 14 know C++23.
        self.assertGreaterEqual(len(cases), 2 * len(COMPILERS))
        self.assert_compiles(cases)

    def test_all_compile_without_run_time_type_information(self):
        self.assert_compiles([(compiler, HEADERS, "-std=c++20", "-fno-rtti") for compiler in COMPILERS])

    def test_all_but_one_compile_without_exceptions(self):
        headers = [header for header in HEADERS if header != NEEDS_EXCEPTIONS]
        self.assert_compiles([(compiler, headers, "-std=c++20", "-fno-exceptions") for compiler in COMPILERS])
        for compiler in COMPILERS:
            said = self.compile(compiler, [NEEDS_EXCEPTIONS], "-std=c++20", "-fno-exceptions")
            self.assertRegex(said, r"error: .*ScopedConfig\.h needs exceptions")

    def test_a_fault_is_found(self):
        (self.work / "fault.h").write_text("inline int Narrow(long value) { return value; }\n")
        for compiler in COMPILERS:
            said = self.compile(compiler, ["fault.h"], "-std=c++20", f"-I{self.work}")
            self.assertIn("conversion", said)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], defaultTest=ARGUMENTS.only and f"Headers.{ARGUMENTS.only}")
