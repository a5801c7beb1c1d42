#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that every source file names the licence: its first line, or the one after a shebang or the type of a page, is
the SPDX identifier.

Each file that lacks the line is printed as FILE:LINE. Data has no such line: documents, JSON, the inputs of the fuzz
targets, and the kept files that tests compare.
"""

import sys
from pathlib import Path

IDENTIFIER = "SPDX-License-Identifier: Apache-2.0"

# How a file of the name or suffix writes the line.
SLASHES, HASH, STARS = f"// {IDENTIFIER}", f"# {IDENTIFIER}", f"/* {IDENTIFIER} */"
LINES = {".cpp": SLASHES, ".h": SLASHES, ".def": SLASHES, ".js": SLASHES, ".mjs": SLASHES, ".css": STARS,
         ".html": f"<!-- {IDENTIFIER} -->", ".cmake": HASH, ".in": HASH, ".map": HASH, ".py": HASH, ".sh": HASH,
         ".dict": HASH, "CMakeLists.txt": HASH, "Doxyfile": HASH, ".clang-format": HASH, ".clang-tidy": HASH,
         ".cppcheck": SLASHES, ".editorconfig": HASH, ".gitignore": HASH}


def line_of(path, first):
    """The line that a file must have, or None. A script is known by its shebang."""
    return LINES.get(path.name) or LINES.get(path.suffix) or (HASH if first.startswith("#!") else None)


def sources(tree):
    """Every file, but for what builds and version control leave behind."""
    for path in sorted(tree.iterdir()):
        if path.is_dir():
            if path.name == ".ci" or not path.name.startswith((".", "build", "__pycache__")):
                yield from sources(path)
        elif path.is_file():
            yield path


def check(tree):
    """The files that lack the line."""
    faults = []
    for path in sources(tree):
        lines = path.read_bytes()[:200].decode("utf-8", "replace").splitlines() or [""]
        number = 1 if lines[0].startswith(("#!", "<!DOCTYPE")) else 0
        line = line_of(path, lines[0])
        if line and lines[number : number + 1] != [line]:
            faults.append(f'{path.relative_to(tree).as_posix()}:{number + 1}: this line must be "{line}"')
    return faults


if __name__ == "__main__":
    sys.exit("\n".join(check(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2])) or 0)
