#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""docs/guides/trace.md holds every text that the libraries trace, so that a reader of a line can look it up.

A message is a chain of literals and values; the guide must hold each literal, and each asserted condition.
"""

import re
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
CALL = re.compile(r"\b(TESSEL_TRACE|TESSEL_TRACE_TEXT|KAL_ASSERT|KAL_ASSERT_AT|Check)\(|\b(?:text|line) <<")
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')


def until_closed(text, position):
    """The text from the position to the parenthesis that closes it, or to the end of the statement."""
    depth = 0
    for end in range(position, len(text)):
        depth += {"(": 1, ")": -1}.get(text[end], 0)
        if depth < 0 or (depth == 0 and text[end] == ";"):
            return text[position:end]
    return text[position:]


def texts(file):
    code = re.sub(r"//[^\n]*", "", file.read_text())
    for call in CALL.finditer(code):
        argument = until_closed(code, call.end())
        if call[1] == "KAL_ASSERT":
            yield argument
        elif call[1] == "KAL_ASSERT_AT":
            yield argument.split(",", 2)[2]
        else:
            if call[1] == "TESSEL_TRACE":  # Level and label come first.
                argument = argument.split(",", 2)[2]
            yield from LITERAL.findall(argument)
    yield from re.findall(r'const char\* kNoGroup\w* = "([^"]*)";', code)


def main():
    guide = " ".join((SOURCE / "docs/guides/trace.md").read_text().split())
    files = [file for folder in ("src", "libutil/src") for file in SOURCE.glob(f"{folder}/**/*.cpp")]
    found = {(text.strip(" ,\n"), file.name) for file in files for text in texts(file)}
    missing = sorted(f"{file}: {text}" for text, file in found if text and text not in guide)
    print(f"{len(found)} texts, {len(missing)} of them not in docs/guides/trace.md", *missing, sep="\n")
    return 1 if missing or len(found) < 40 else 0


if __name__ == "__main__":
    sys.exit(main())
