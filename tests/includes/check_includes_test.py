#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""check_includes.py names each line that breaks a rule, and no other."""

import tempfile
import unittest
from pathlib import Path

import check_includes


class CheckIncludes(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name)
        for header in ("libutil/include/util/ConfigData.h", "libutil/src/EventList.h", "include/tessel/json.h",
                       "include/tessel/trace.h", "include/tessel/KalConfig.h", "include/tessel/KalConfigHelper.h",
                       "include/tessel/settings_check.h", "include/tessel/CKalTessel.h", "src/trace/TraceLine.h",
                       "src/trace/CallContext.h", "src/json/Reader.h", "src/journal/Ring.h", "include/tessel/journal.h",
                       "src/store/Values.h", "src/documents/Import.h", "src/documents/NearestName.h",
                       "src/facade/Helper.h", "src/statistics/Codec.h", "src/inspect/Copy.h", "tools/Colour.h",
                       "tools/simulate/Link.h"):
            self.write(header)

    def write(self, file, *lines):
        path = self.tree / file
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("".join(f"{line}\n" for line in lines))

    def faults(self, file, *names):
        """The faults of a file that includes `names`, one in each line."""
        self.write(file, *(f"#include {name}" if name.startswith("<") else f'#include "{name}"' for name in names))
        return check_includes.check(self.tree)

    def assert_allowed(self, file, *names):
        self.assertEqual(self.faults(file, *names), [])

    def assert_refused(self, file, name):
        faults = self.faults(file, "<vector>", name)
        self.assertEqual([fault.rpartition(": ")[0] for fault in faults], [f"{file}:2"])
        self.assertIn(name.strip("<>"), faults[0])
        (self.tree / file).unlink()

    def test_a_layer_includes_what_is_below_it(self):
        self.assert_allowed("libutil/src/a.cpp", "<vector>", "util/ConfigData.h", "EventList.h")
        self.assert_allowed("src/trace/a.cpp", "util/ConfigData.h", "tessel/trace.h", "trace/TraceLine.h")
        self.assert_allowed("src/json/a.cpp", "util/ConfigData.h", "tessel/json.h", "json/Reader.h")
        self.assert_allowed("src/journal/a.cpp", "util/ConfigData.h", "tessel/journal.h", "journal/Ring.h",
                            "trace/CallContext.h")
        self.assert_allowed("src/statistics/a.cpp", "journal/Ring.h")
        self.assert_allowed("src/store/a.cpp", "journal/Ring.h", "tessel/KalConfig.h", "json/Reader.h",
                            "trace/TraceLine.h")
        self.assert_allowed("src/documents/a.cpp", "store/Values.h", "json/Reader.h")
        self.assert_allowed("src/documents/a.cpp", "tessel/settings_check.h", "tessel/KalConfig.h")
        self.assert_allowed("src/facade/a.cpp", "documents/Import.h", "store/Values.h", "tessel/KalConfigHelper.h")
        self.assert_allowed("src/statistics/a.cpp", "trace/TraceLine.h", "tessel/CKalTessel.h")
        self.assert_allowed("src/inspect/a.cpp", "store/Values.h", "statistics/Codec.h", "journal/Ring.h",
                            "inspect/Copy.h")
        self.assert_allowed("tools/a.cpp", "Colour.h", "simulate/Link.h", "tessel/json.h")
        self.assert_allowed("tools/DidYouMean.cpp", "Colour.h", "documents/NearestName.h")
        self.assert_allowed("examples/a/main.cpp", "<tessel/json.h>", "<util/ConfigData.h>")

    def test_no_layer_includes_what_is_above_it(self):
        self.assert_refused("libutil/include/util/a.h", "tessel/json.h")
        self.assert_refused("libutil/src/a.cpp", "tessel/trace.h")
        self.assert_refused("src/trace/a.cpp", "json/Reader.h")
        self.assert_refused("src/trace/a.cpp", "tessel/KalConfig.h")
        self.assert_refused("src/json/a.cpp", "trace/TraceLine.h")
        self.assert_refused("src/json/a.cpp", "tessel/trace.h")
        self.assert_refused("include/tessel/json_more.h", "tessel/KalConfig.h")
        self.assert_refused("src/journal/a.cpp", "store/Values.h")
        self.assert_refused("src/journal/a.cpp", "trace/TraceLine.h")
        self.assert_refused("src/trace/a.cpp", "journal/Ring.h")
        self.assert_refused("src/store/a.cpp", "documents/Import.h")
        self.assert_refused("src/store/a.cpp", "facade/Helper.h")
        self.assert_refused("src/documents/a.cpp", "facade/Helper.h")
        self.assert_refused("src/facade/a.cpp", "statistics/Codec.h")
        self.assert_refused("src/statistics/a.cpp", "store/Values.h")
        self.assert_refused("src/inspect/a.cpp", "facade/Helper.h")
        self.assert_refused("src/store/a.cpp", "inspect/Copy.h")
        self.assert_refused("src/statistics/a.cpp", "inspect/Copy.h")

    def test_no_layer_includes_exported_headers_of_what_is_above_it(self):
        self.assert_refused("src/journal/a.cpp", "tessel/KalConfig.h")
        self.assert_refused("src/store/a.cpp", "tessel/KalConfigHelper.h")
        self.assert_refused("src/store/a.cpp", "tessel/settings_check.h")
        self.assert_refused("src/store/a.cpp", "tessel/CKalTessel.h")
        self.assert_refused("src/documents/a.cpp", "tessel/KalConfigHelper.h")
        self.assert_refused("src/statistics/a.cpp", "tessel/KalConfig.h")
        self.assert_refused("include/tessel/IKalConfig.h", "tessel/KalConfigHelper.h")
        self.assert_refused("include/tessel/settings_check.h", "tessel/KalConfigHelper.h")
        self.assert_refused("include/tessel/StatisticsBlocks.h", "tessel/KalConfig.h")

    def test_only_exported_headers_leave_the_libraries(self):
        self.assert_refused("include/tessel/a.h", "store/Values.h")
        self.assert_refused("tools/a.cpp", "store/Values.h")
        self.assert_refused("tools/a.cpp", "documents/NearestName.h")
        self.assert_refused("tools/DidYouMean.cpp", "documents/Import.h")
        self.assert_refused("tools/a.cpp", "EventList.h")
        self.assert_refused("examples/a/main.cpp", "trace/TraceLine.h")
        self.assert_refused("examples/a/main.cpp", "Colour.h")

    def test_private_headers_are_named_from_their_root(self):
        self.assert_refused("src/store/a.cpp", "Values.h")
        self.assert_refused("src/store/a.cpp", "../json/Reader.h")
        self.assert_refused("tools/simulate/a.cpp", "Link.h")

    def test_a_header_that_is_not_there_is_refused(self):
        self.assert_refused("src/store/a.cpp", "tessel/Nothing.h")
        self.assert_refused("src/store/a.cpp", "<util/Nothing.h>")

    def test_a_new_folder_needs_a_rule(self):
        self.write("src/more/a.cpp", "#include <vector>")
        self.assertEqual(len(check_includes.check(self.tree)), 1)


if __name__ == "__main__":
    unittest.main()
