#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every symbol that the objects of a library hold is documented, or inside the library's internal namespaces.

A statically linked program shares one set of names with the library: any other name of the program's own would silently
take the place of the library's, or the other way round.

usage: names_test.py EXPORTS HEADERS INTERNAL_NAMESPACE OBJECT...
"""

import re
import subprocess
import sys
from pathlib import Path

# What precedes the name in a mangled symbol: tables, guards, local entities.
PREFIX = re.compile(r"_Z(?:T[VIST]|GV|GR|T[hv]n?\d*_(?:n?\d+_)?|Tc|Z)*(?:N[rVK]*[RO]?)?")
STANDARD_LIBRARY = re.compile(r"S[tabsiod]|9__gnu_cxx|10__cxxabiv1")


NAMESPACES = {"kalStore", "kal", "json", "jsonHelper", "detail"}
# A class that callers know by name; no header declares it.
KNOWN_CLASS = "kalStore::CSwitchThreadEvent"


def symbols(objects):
    """(whether each object file may have one of its own, the mangled name) of each external symbol."""
    listed = subprocess.run(["nm", "--defined-only", "--extern-only", *objects], check=True, text=True,
                            stdout=subprocess.PIPE).stdout
    return {(kind in "WwVvu", name) for kind, name in re.findall(r"^[0-9a-f]+ (\S) (\S+)$", listed, re.M)}


def scope(mangled):
    """The names of the scopes and of the entity, outermost first; empty where it is the standard library's."""
    rest = mangled[PREFIX.match(mangled).end():]
    if STANDARD_LIBRARY.match(rest):
        return []
    names = []
    while (length := re.match(r"L?(\d+)", rest)):
        end = length.end() + int(length[1])
        names.append(rest[length.end():end])
        rest = rest[end:]
    if not names or re.match(r"[CD]\d|[a-z]", rest):
        names.append("operator")  # Or a constructor or destructor, which have no name.
    return names


def demangled(names):
    shown = subprocess.run(["c++filt"], input="\n".join(names), check=True, text=True, stdout=subprocess.PIPE).stdout
    return dict(zip(names, shown.splitlines()))


def main():
    exports, headers, internal, objects = sys.argv[1], Path(sys.argv[2]), sys.argv[3], sys.argv[4:]
    documented = {line.partition(" ")[2] for line in Path(exports).read_text().splitlines()}
    text = "".join(header.read_text(encoding="utf-8") for header in headers.glob("*"))
    words = set(re.findall(r"\w+", text))
    classes = set(re.findall(r"\b(?:class|struct) (?:\w+_API )?(\w+)", text))
    found = symbols(objects)
    shown = demangled([name for _, name in found])
    inside = tuple(f"{scope}::" for scope in (internal, KNOWN_CLASS))

    def is_known(weak, name):
        if not name.startswith("_Z"):
            return name in documented or name.startswith("DW.ref.")
        names = scope(name)
        if not names or "::".join([*names, ""]).startswith(inside):
            return True
        own = [part for part in names if part not in NAMESPACES]
        if weak:  # Inline functions are in no list of exports.
            return bool(own) and own[0] in words
        return shown[name] in documented or len(own) > 1 and own[0] in classes

    faults = sorted({shown[name] for weak, name in found if not is_known(weak, name)})
    for fault in faults:
        print(f"neither documented nor internal: {fault}")
    return bool(faults) or not found


if __name__ == "__main__":
    sys.exit(main())
