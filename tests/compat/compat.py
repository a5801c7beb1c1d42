#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What was built for the first release of a MAJOR version still works: the examples of that release's exported headers,
one for each operation, are compiled twice. Built with the headers of their release they run with today's libraries, and
their sources build with today's headers, and run.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
EXAMPLES = SOURCE / "tests" / "docs" / "examples.py"
TODAY = (SOURCE / "include", SOURCE / "libutil" / "include")
MAIN = """#include <tessel/KalConfigRegistry.h>

#include <cstdio>

{declarations}
// Each example finds no store, and leaves none behind. The last line is the example that fails.
int main() {{
  struct {{ const char* name; void (*run)(); }} const examples[] = {{{table}}};
  for (const auto& example : examples) {{
    std::puts(example.name);
    std::fflush(stdout);
    example.run();
    kalStore::DestroyKalConfig();
  }}
}}
"""


class Broken(Exception):
    """A promise does not hold; the text says which."""


def run(promise, command, **options):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
                            **options)
    if result.returncode != 0:
        raise Broken(f"{promise}:\n{result.stdout[-4000:]}\n({result.returncode})")


def write_examples(headers, work):
    """The examples of the headers below a folder, and a program that runs them; the source files."""
    files = sorted(path.relative_to(headers) for path in headers.glob("*/*.h"))
    subprocess.run([sys.executable, EXAMPLES, "generate", work, *files], cwd=headers, check=True)
    sources = [path for path in work.glob("functions_*.cpp")]
    names = [name for path in sources for name in re.findall(r"^void (\w+)\(\);", path.read_text(), re.MULTILINE)]
    main = work / "main.cpp"
    main.write_text(MAIN.format(declarations="\n".join(f"void {name}();" for name in names),
                                table=", ".join(f'{{"{name}", {name}}}' for name in names)))
    return [main, *sources]


def check(headers, compiler, libraries, work, today=TODAY):
    """Checks what is built for the headers below a folder. Throws Broken."""
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    sources = write_examples(headers, work)
    folders = [libraries.resolve(), libraries.resolve() / "tessel"]
    link = [*(f"-L{folder}" for folder in folders), "-ltessel_record", "-ltessel", "-l:libutil.so", "-pthread"]
    found = os.environ | {"LD_LIBRARY_PATH": ":".join(map(str, folders))}
    for name, include, compiles, runs in (
            ("built_then", [headers], "the kept headers do not compile, or today's libraries lack what they declare",
             "a program that was built with the kept headers does not run with today's libraries"),
            ("built_today", today, "a source that compiled with the kept headers does not with today's",
             "a source that was written for the kept headers does not run today")):
        program = work / name
        includes = [f"-I{folder}" for folder in include]
        run(compiles, [compiler, "-std=c++20", "-w", *includes, *sources, *link, "-o", program])
        run(runs, [program], cwd=work, env=found)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("archive", type=Path, help="abi/baseline-MAJOR.tar.xz")
    parser.add_argument("compiler")
    parser.add_argument("libraries", type=Path, help="the folder of libtessel.so")
    parser.add_argument("work", type=Path, help="a folder for what is built, made again")
    arguments = parser.parse_args()
    headers = arguments.work / "headers"
    shutil.rmtree(headers, ignore_errors=True)
    shutil.unpack_archive(arguments.archive, headers)
    try:
        check(headers, arguments.compiler, arguments.libraries, arguments.work / "build")
    except Broken as broken:
        sys.exit(f"{arguments.archive.name}: {broken}")


if __name__ == "__main__":
    main()
