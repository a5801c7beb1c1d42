#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""compat.py accepts kept headers that are like today's, and names each promise that does not hold. The kept headers are
stand-ins, made of today's.
usage: compat_test.py COMPILER LIBRARIES
"""

import shutil
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import compat  # noqa: E402
sys.path.insert(0, str(compat.SOURCE / "cmake"))
import release  # noqa: E402

COMPILER = sys.argv.pop(1)
LIBRARIES = Path(sys.argv.pop(1))


class Compat(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.work = Path(folder.name)
        self.headers = self.work / "kept"
        release.write_baseline(compat.SOURCE, self.work / "baseline.tar.xz")
        shutil.unpack_archive(self.work / "baseline.tar.xz", self.headers)

    def check(self):
        compat.check(self.headers, COMPILER, LIBRARIES, self.work / "build")

    def leave_one_example(self):
        """For speed: only the examples of trace.h stay, beside how they begin."""
        for path in self.headers.glob("*/*.h"):
            if path.name not in ("tessel.h", "trace.h"):
                path.write_text(path.read_text().replace("@code{.cpp}", "@code{.txt}"))

    def change(self, file, old, new):
        path = self.headers / file
        text = path.read_text()
        self.assertIn(old, text)
        path.write_text(text.replace(old, new, 1))

    def example(self, line):
        """Adds a line to the example of trace.h."""
        self.change("tessel/trace.h", "/// @code{.cpp}\n", f"/// @code{{.cpp}}\n/// {line}\n")

    def assert_broken(self, words):
        with self.assertRaises(compat.Broken) as broken:
            self.check()
        self.assertIn(words, str(broken.exception))

    def test_what_is_like_today_works(self):
        self.check()

    def test_an_exported_function_that_is_gone_is_named(self):
        self.leave_one_example()
        self.change("tessel/trace.h", "namespace kalStore {", "TESSEL_API int Gone();\n\nnamespace kalStore {")
        self.example("assert(Gone() == 0);")
        self.assert_broken("today's libraries lack what they declare")

    def test_an_inline_function_that_is_gone_is_named(self):
        self.leave_one_example()
        self.change("tessel/trace.h", "namespace kalStore {", "inline int Gone() { return 0; }\n\nnamespace kalStore {")
        self.example("assert(Gone() == 0);")
        self.assert_broken("a source that compiled with the kept headers does not with today's")

    def test_a_slot_that_moved_is_named(self):
        self.leave_one_example()
        # The store had one operation more, before the others.
        self.change("tessel/IKalConfig.h", " public:\n", " public:\n  virtual void Gone() = 0;\n")
        self.example("IKalConfig* store = nullptr; CreateKalConfig(7, &store);"
                     " assert(store->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_VIDEO) == kResultOk);"
                     ' assert(store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "a", ConfigData(1), false, false) !='
                     " kResultOk);")
        self.change("tessel/KalConfig.h", " public:\n", " public:\n  void Gone() override;\n")
        self.assert_broken("does not run with today's libraries")


if __name__ == "__main__":
    unittest.main()
