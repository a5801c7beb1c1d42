#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""docs/guides/engine-utility-library.md names everything that libtessel.so takes from the utility library.

usage: engine_guide_test.py LIBTESSEL LIBUTIL
"""

import re
import subprocess
import sys
from pathlib import Path

GUIDE = Path(__file__).resolve().parents[2] / "docs/guides/engine-utility-library.md"


def symbols(library, which):
    listing = subprocess.run(["nm", "-DC", which, library], stdout=subprocess.PIPE, text=True, check=True).stdout
    return {re.sub(r"^\s*[0-9a-f]* *\w ", "", line) for line in listing.splitlines()}


def names(symbol):
    """The names that a reader looks for: of the class and of the operation."""
    path = re.sub(r"^(typeinfo|typeinfo name|vtable) for ", "", symbol)
    scopes, operator, operation = path.partition("operator")
    if operator:
        return [*scopes.split("::")[:-1], operation.split("(")[0].strip()]
    return [name.strip("~") for name in path.split("(")[0].split("::")]


def main():
    libtessel, libutil = sys.argv[1:]
    guide = GUIDE.read_text()
    taken = symbols(libtessel, "--undefined-only") & symbols(libutil, "--defined-only")
    missing = sorted({symbol for symbol in taken for name in names(symbol) if name not in guide})
    print(f"{len(taken)} symbols are taken, {len(missing)} of them are not in the guide", *missing, sep="\n")
    return 1 if missing or not taken else 0


if __name__ == "__main__":
    sys.exit(main())
