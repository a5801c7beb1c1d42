#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Counts the instructions of the fast paths and compares them with those kept in bench/instructions.txt.

A path that takes over 5 % more than is kept fails; one that takes over 5 % less is reported. UPDATE=1 keeps the new
counts instead. Of another build than the release build, --build, more may be allowed, --within.

What is counted is the same on every machine: the instructions of the two libraries, of the C++ runtime and of the
program that calls them, and none of the C library, which chooses among its copying and comparing functions by the
processor. What it allocates is held by the tests that count allocations.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
KEPT = ROOT / "bench/instructions.txt"
REPEATS = 200  # As in paths.cpp.
COUNTED = re.compile(r"/(libtessel\.so|libutil\.so|libstdc\+\+\.so|tessel_paths)[^/]*$")
HEAD = """# Instructions of one operation of each fast path, without those of the C library.
# x86-64, GCC 12, the release build. './dev instructions' compares; 'UPDATE=1 ./dev instructions' counts again.
"""


def self_cost(profile):
    """(the function before which the profile was written, the instructions in it of what is counted)"""
    trigger, objects, is_counted, is_call, total = "", {}, False, False, 0
    for line in profile.read_text().splitlines():
        if line.startswith("desc: Trigger: "):
            trigger = line.rpartition("=")[2]
        elif line.startswith(("ob=", "cob=")):
            number, name = re.fullmatch(r"c?ob=(\(\d+\))(?: (.*))?", line).groups()
            if name:
                objects[number] = bool(COUNTED.search(name))
            if line.startswith("ob="):
                is_counted = objects[number]
        elif line.startswith("calls="):
            is_call = True  # The next line has the cost of the called function: it counts where it is spent.
        elif re.match(r"[0-9+*-]", line):
            if is_counted and not is_call:
                total += int(line.split()[1])
            is_call = False
    return trigger, total


def count(program):
    """Instructions of one operation by the path's name, in the order of the paths."""
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder) / "out"
        subprocess.run(["valgrind", "--quiet", "--tool=callgrind", f"--callgrind-out-file={out}",
                        "--dump-before=Path_*", program], check=True)
        parts = sorted(out.parent.glob("out.*"), key=lambda part: int(part.suffix[1:]))
        costs = [self_cost(part) for part in parts]
    paths = {}
    for (path, _), (_, cost) in zip(costs, costs[1:]):  # A path's profile is written before the next begins.
        name = path.removeprefix("Path_").removesuffix(".cold")
        begun = paths[name] if path.endswith(".cold") else 0  # A function's cold part has a profile of its own.
        paths[name] = begun + round(cost / REPEATS)  # The last call's count stays.
    paths.pop("end")
    return paths


def kept():
    lines = [line.split() for line in KEPT.read_text().splitlines() if not line.startswith("#")]
    return {path: int(instructions) for path, instructions in lines}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", metavar="PRESET", default="release")
    parser.add_argument("--within", metavar="PERCENT", type=int, default=5)
    arguments = parser.parse_args()
    margin = arguments.within / 100
    counted = count(ROOT / "build" / arguments.build / "bench/instructions/tessel_paths")
    if os.environ.get("UPDATE") == "1":
        KEPT.write_text(HEAD + "".join(f"{path:32}{instructions:>8}\n" for path, instructions in counted.items()))
        print(f"{len(counted)} paths: {KEPT.relative_to(ROOT)}")
        return 0
    before, wrong, faster = kept(), [], []
    print(f"{'path':32}{'kept':>8}{'now':>8}")
    for path in [*counted, *(before.keys() - counted.keys())]:
        now, then = counted.get(path), before.get(path)
        verdict = ""
        if now is None or then is None:
            verdict = "is counted, but not kept" if then is None else "is kept, but not counted"
            wrong.append(path)
        elif now > then * (1 + margin):
            verdict = "SLOWER"
            wrong.append(path)
        elif now < then * (1 - margin):
            verdict = "faster"
            faster.append(path)
        print(f"{path:32}{then or '':>8}{now or '':>8}  {verdict}".rstrip())
    if wrong:
        print(f"more than is kept by over {margin:.0%}, or not the same paths: {', '.join(wrong)};"
              " if it is meant, 'UPDATE=1 ./dev instructions'")
    elif faster:
        print(f"less than is kept by over {margin:.0%}: {', '.join(faster)}; to keep it, 'UPDATE=1 ./dev instructions'")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
