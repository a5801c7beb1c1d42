#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""check_orders.py finds each file whose memory orders the page does not name, and no other."""

import tempfile
import unittest
from pathlib import Path

import check_orders

ORDERED = "int Get() { return g_value.load(std::memory_order_relaxed); }\n"


class CheckOrders(unittest.TestCase):
    def faults(self, files, page):
        """The faults of a tree of these files and this section."""
        with tempfile.TemporaryDirectory() as tree:
            for file, text in (*files.items(), (check_orders.PAGE, f"# Page\n\n## Every schedule: it\n{page}")):
                path = Path(tree, file)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return check_orders.check(Path(tree))

    def test_a_file_with_an_order_is_named_in_a_row(self):
        files = {"src/store/A.cpp": ORDERED, "include/tessel/B.h": ORDERED, "libutil/src/C.h": ORDERED,
                 "src/D.h": "__atomic_load(&a, &b, __ATOMIC_RELAXED);\n"}
        rows = "| `A`, `B`: it | why |\n| `C`: it | why |\n| `D`: it | why |\n"
        self.assertEqual(self.faults(files, rows), [])
        self.assertEqual(self.faults(files, rows.replace("`A`, ", "")),
                         [f"{check_orders.PAGE} has nothing on the memory orders of A"])
        self.assertEqual(len(self.faults(files, "A, B, C and D\n")), 4, "what is said elsewhere is no row")

    def test_other_sections_do_not_count(self):
        self.assertEqual(len(self.faults({"src/A.cpp": ORDERED}, "\n## Next\n| `A`: it | why |\n")), 1)

    def test_a_file_without_an_order_is_not_named(self):
        self.assertEqual(self.faults({"src/A.cpp": "int a;\n"}, "| `A`: it | why |\n"),
                         [f"{check_orders.PAGE} names A, which has no memory order"])

    def test_tests_and_tools_are_left_alone(self):
        self.assertEqual(self.faults({"tests/A.cpp": ORDERED, "tools/B.cpp": ORDERED}, ""), [])


if __name__ == "__main__":
    unittest.main()
