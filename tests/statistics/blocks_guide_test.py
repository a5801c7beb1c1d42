#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The tables of docs/guides/statistics-blocks.md have the members of the blocks, all of them, at their offsets.

The offsets are those of the header's own assertions. The heading above each table names its structure.
"""

import re
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]


def main():
    header = (SOURCE / "include/tessel/StatisticsBlocks.h").read_text()
    guide = (SOURCE / "docs/guides/statistics-blocks.md").read_text()
    faults = []
    tables = re.findall(r"^### [^\n]*`(st_\w+)`, (\d+) bytes\n(.*?)(?=^##)", guide, re.DOTALL | re.MULTILINE)
    for structure, size, table in tables:
        documented = set(re.findall(r"^\| (\d+) \|[^|]*\| `(\w+)", table, re.MULTILINE))
        held = re.findall(rf"TESSEL_AT\(kalStore::{structure}, (\w+), (\d+)\)", header)
        held = {(offset, member) for member, offset in held if not member.startswith("reserved")}
        faults += [f"{structure}: {name} at {offset} is in only one of them"
                   for offset, name in sorted(documented ^ held)]
        if f"TESSEL_SIZE(kalStore::{structure}, {size})" not in header:
            faults.append(f"{structure}: has not {size} bytes")
    print(f"{len(tables)} tables", *faults, sep="\n")
    return 1 if faults or len(tables) != 3 else 0


if __name__ == "__main__":
    sys.exit(main())
