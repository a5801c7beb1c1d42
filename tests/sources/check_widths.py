#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks how wide lines are where no formatter does.

Comments of C++ have 110 columns, as clang-format gives its code; lines of scripts and build files have 120. Each
wider line is printed as FILE:LINE. Tables in files of their own (.def) may be wider, and the message of a compiler
that a test expects.
"""

import re
import sys
from pathlib import Path

from check_licence import sources

COMMENT, LINE = 110, 120

STRING = re.compile(r'"(?:\\.|[^"\\])*"')
COMMENT_OF_CPP = re.compile(r"(?:^|\s)//(?! says: )")


def is_script(path, first):
    suffixes = (".cmake", ".css", ".js", ".mjs", ".py", ".sh")
    return path.suffix in suffixes or path.name == "CMakeLists.txt" or first == "#!"


def check(tree):
    """The lines that are too wide."""
    faults = []
    for path in sources(tree):
        is_cpp = path.suffix in (".cpp", ".h")
        if not is_cpp and not is_script(path, path.read_bytes()[:2].decode("latin-1")):
            continue
        limit = COMMENT if is_cpp else LINE
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            if len(line) > limit and (not is_cpp or COMMENT_OF_CPP.search(STRING.sub("", line))):
                file = path.relative_to(tree).as_posix()
                faults.append(f"{file}:{number}: {len(line)} columns, {limit} at most")
    return faults


if __name__ == "__main__":
    sys.exit("\n".join(check(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2])) or 0)
