#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that the page on reliability says of each file with memory orders which scenario or argument shows them.

A file that the section on schedules does not name is printed, and so is a table's name of a file without orders.
"""

import re
import sys
from pathlib import Path

PAGE = "docs/reliability.md"
FOLDERS = ("include", "libutil", "src")
ORDER = re.compile(r"\bmemory_order|\b__ATOMIC_(?!SEQ_CST)")
ROW = re.compile(r"^\| ((?:`\w+`(?:, )?)+):", re.MULTILINE)
# Sequentially consistent, by the operations' own choice: no order is named there.
WITHOUT_NAMES = {"GuardedCallback"}


def files_with_orders(tree):
    """The names of the files that name one, without their suffixes."""
    files = (path for folder in FOLDERS for path in Path(tree, folder).rglob("*") if path.suffix in (".cpp", ".h"))
    return {path.stem for path in files if ORDER.search(path.read_text(encoding="utf-8"))}


def check(tree):
    """What is missing on the page, and what is too much."""
    section = Path(tree, PAGE).read_text(encoding="utf-8").partition("\n## Every schedule")[2].partition("\n## ")[0]
    named = {name for row in ROW.findall(section) for name in re.findall(r"\w+", row)}
    there = files_with_orders(tree)
    return ([f"{PAGE} has nothing on the memory orders of {name}" for name in sorted(there - named)] +
            [f"{PAGE} names {name}, which has no memory order" for name in sorted(named - there - WITHOUT_NAMES)])


if __name__ == "__main__":
    sys.exit("\n".join(check(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2])) or 0)
