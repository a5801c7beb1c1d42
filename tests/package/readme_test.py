#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Does what the README's "From nothing to a program" says, word for word, in a home of its own.

Blocks fenced by ```sh are commands. Any other is saved under the name that the line before it gives, but for ```text,
which is what the last command prints. With --print the whole is written out as one script instead, to be tried on a
machine that has nothing.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
SECTION = "## From nothing to a program\n"


def transcript(readme):
    """The commands as a script, and what the last of them prints."""
    section = readme.partition(SECTION)[2].partition("\n## ")[0]
    script, printed = ["set -euo pipefail"], None
    for text, language, block in re.findall(r"(.*?)^```(\w+)\n(.*?)^```", section, re.DOTALL | re.MULTILINE):
        if language == "sh":
            script.append(block.rstrip())
        elif language == "text":
            printed = block
        else:
            name = re.search(r"`([^`]+)`:\s*$", text)[1]
            script.append(f"cat >{name} <<'END'\n{block}END")
    if printed is None:
        sys.exit(f"README.md: nothing is printed in {SECTION.strip()!r}")
    return "\n".join([*script, ""]), printed


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("home", type=lambda path: Path(path).resolve(), nargs="?", help="the home folder, made again")
    parser.add_argument("--print", action="store_true", help="write the script to standard output, and do nothing else")
    arguments = parser.parse_args()
    script, printed = transcript((SOURCE / "README.md").read_text())
    if arguments.print:
        print(script, end="")
        return
    if arguments.home is None:
        parser.error("the home folder is missing")
    if arguments.home.exists():
        shutil.rmtree(arguments.home)
    arguments.home.mkdir(parents=True)
    result = subprocess.run(["bash", "-c", script], cwd=SOURCE, env=os.environ | {"HOME": str(arguments.home)},
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if result.returncode != 0 or not result.stdout.endswith("\n" + printed):
        sys.exit(f"{result.stdout}README.md: the last command should print\n{printed}")


if __name__ == "__main__":
    main()
