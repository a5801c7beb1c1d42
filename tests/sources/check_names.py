#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the names of functions where clang-tidy does not look: tests, fuzz targets, benchmarks, examples and model.

Free functions, file-local ones too, and public methods are CamelCase. Methods that are not public may be either: those
of a fixture are called by its tests as functions are. Each other name is printed as FILE:LINE. ctags reads all files in
a second; clang-tidy would read the headers of the test libraries again for each program.
"""

import json
import re
import subprocess
import sys
from pathlib import Path

FOLDERS = ("tests", "fuzz", "bench", "examples", "model")

# Names that others call: the system, the standard library's containers and algorithms, and the libraries in use.
FUNCTIONS = re.compile(r"main|pthread_\w+|sched_yield|nanosleep|clock_gettime|accept|recv|flock|link|poll|write")
METHODS = {"begin", "end", "data", "size", "equal", "hash"}


def is_named_well(tag):
    name = tag["name"]
    if not name[0].islower() or name.startswith("operator"):
        return True
    if tag.get("scopeKind") in (None, "namespace"):
        return FUNCTIONS.fullmatch(name) is not None
    # Outside of its class, a method is said to have no access.
    return tag.get("access") != "public" or "override" in tag.get("properties", "") or name in METHODS


def check(tree):
    """The functions whose names break the rule."""
    files = sorted(str(path) for folder in FOLDERS for path in (tree / folder).rglob("*")
                   if path.suffix in (".cpp", ".h"))
    listed = subprocess.run(["ctags", "--quiet", "--options=NONE", "--languages=C++", "--langmap=C++:.cpp.h",
                             "--kinds-C++=fp", "--fields=+an", "--fields-C++=+{properties}", "--output-format=json",
                             "-L", "-", "-f", "-"],
                            input="\n".join(files), check=True, encoding="utf-8", stdout=subprocess.PIPE).stdout
    tags = [json.loads(line) for line in listed.splitlines()]
    places = [(Path(tag["path"]).relative_to(tree).as_posix(), tag["line"], tag["name"])
              for tag in tags if tag["_type"] == "tag" and not is_named_well(tag)]
    return [f"{file}:{line}: {name} must be CamelCase" for file, line, name in sorted(places)]


if __name__ == "__main__":
    sys.exit("\n".join(check(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2])) or 0)
