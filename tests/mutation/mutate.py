#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Changes the libraries and the tools in one place at a time and shows whether the tests find the change.

A mutant is one changed operator, constant or condition, one statement or lock left out, two neighbouring statements
swapped, or the order of one atomic operation weakened. Each is built in a copy of the tree and tried with the tests, of
its own folder first, then with the model checker, then with the tests under ThreadSanitizer; what threads share, with
the model checker first. It is killed when a program fails, crashes or takes five times as long as usual. Mutants that
do not compile, or are in no program of the suites, do not count. Survivors with their reasons are in survivors.json.
"""
import argparse
import difflib
import json
import pathlib
import random
import shutil
import sys
import time

import places
from suites import SUITES, UNSEEN

ROOT = pathlib.Path(__file__).resolve().parents[2]
SURVIVORS = "tests/mutation/survivors.json"
FOLDERS = ("include", "libutil/include", "libutil/src", "src", "tools")
SHARED_KINDS = ("lock", "order", "swap")
TARGET_PERCENT = 85


def copy_tree(tree):
    """Brings the copy up to date; unchanged files keep their time stamps, so that little is rebuilt."""
    for part in ROOT.iterdir():
        if part.name.startswith((".", "build")):
            continue
        files = [part] if part.is_file() else [f for f in part.rglob("*") if f.is_file()]
        for file in files:
            copy = tree / file.relative_to(ROOT)
            if not copy.exists() or copy.read_bytes() != file.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(file, copy)
    for file in [f for f in tree.rglob("*") if f.is_file()]:
        if not (ROOT / file.relative_to(tree)).exists():
            file.unlink()


def all_mutants(tree, only, kinds):
    files = sorted(file for folder in FOLDERS for suffix in ("*.cpp", "*.h") for file in (tree / folder).rglob(suffix))
    names = [str(file.relative_to(tree)) for file in files]
    return [mutant for name in names if name.startswith(only)
            for mutant in places.mutants_of(name, (tree / name).read_text()) if mutant.kind in kinds]


def chosen(mutants, seed, shard):
    """The mutants in the order of the seed: those of one shard, as (number, of how many)."""
    mutants = list(mutants)
    random.Random(seed).shuffle(mutants)
    number, count = shard
    return mutants[number - 1::count]


def difference(mutant, code):
    lines = difflib.unified_diff(code.splitlines(), places.changed(mutant, code).splitlines(), mutant.file, mutant.file,
                                 n=0, lineterm="")
    return "\n".join(list(lines)[2:])


def try_out(mutant, code, suites):
    """What killed the mutant: "" when nothing did, None when it does not compile or no suite has it."""
    folder = mutant.file.split("/")[1 if mutant.file.startswith("src/") else 0]
    is_seen = False
    for suite in sorted(suites, key=lambda suite: suite.name != "model") if mutant.kind in SHARED_KINDS else suites:
        outcome = suite.try_out(mutant.file, places.changed(mutant, code), folder)
        if outcome == UNSEEN:
            continue
        if outcome is None or outcome:
            return outcome
        is_seen = True
    return "" if is_seen else None


def reason(mutant, code, survivors):
    """Why no test finds it, where that is known."""
    was, becomes = places.lines_of(mutant, code)
    return next((one["why"] for one in survivors
                 if (one["file"], one["was"], one["becomes"]) == (mutant.file, was, becomes)), None)


def shard_of(text):
    number, _, count = text.partition("/")
    if not (number.isdigit() and count.isdigit() and 1 <= int(number) <= int(count)):
        raise argparse.ArgumentTypeError("such as 3/40")
    return int(number), int(count)


def some_of(names):
    def read(text):
        given = text.split(",")
        if not set(given) <= set(names):
            raise argparse.ArgumentTypeError(f"some of {','.join(names)}")
        return [name for name in names if name in given]
    return read


def main():
    parser = argparse.ArgumentParser(prog="./dev mutate", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("count", nargs="?", type=int, default=100, help="how many mutants (100); 0: all")
    parser.add_argument("--seed", type=int, default=1, help="in which order they are drawn (1)")
    parser.add_argument("--shard", type=shard_of, default=(1, 1), metavar="K/N",
                        help="the K-th of N parts of all (1/1)")
    parser.add_argument("--minutes", type=float, default=0, help="stop after so many minutes (no limit)")
    parser.add_argument("--only", default="", help="only files whose path starts so, for example src/json/")
    parser.add_argument("--kinds", type=some_of(places.KINDS), default=places.KINDS,
                        help=f"only these: {','.join(places.KINDS)}")
    parser.add_argument("--suites", type=some_of(SUITES), default=list(SUITES),
                        help=f"try only with these: {','.join(SUITES)}")
    parser.add_argument("--model-seconds", type=int, default=30, help="for each run of the model checker (30)")
    arguments = parser.parse_args()

    folder = ROOT / "build/mutation"
    tree = folder / "tree"
    tree.mkdir(parents=True, exist_ok=True)
    copy_tree(tree)
    mutants = all_mutants(tree, arguments.only, arguments.kinds)
    survivors = json.loads((tree / SURVIVORS).read_text())
    suites = [SUITES[name](tree, folder / name, arguments.model_seconds) for name in arguments.suites]
    for suite in suites:
        suite.time_programs()
    print(f"{len(mutants)} places; seed {arguments.seed}; suites: {', '.join(arguments.suites)}", flush=True)

    start = time.monotonic()
    killed = survived = broken = 0
    for mutant in chosen(mutants, arguments.seed, arguments.shard):
        if arguments.count and killed + survived == arguments.count:
            break
        if arguments.minutes and time.monotonic() - start > 60 * arguments.minutes:
            break
        code = (tree / mutant.file).read_text()
        outcome = try_out(mutant, code, suites)
        if outcome is None:
            broken += 1
            continue
        killed += bool(outcome)
        survived += not outcome
        why = reason(mutant, code, survivors)
        verdict = f"killed: {outcome}" if outcome else f"survived, as known, {why}" if why else "SURVIVED"
        print(f"{verdict}: {mutant.file}\n{difference(mutant, code)}", flush=True)
    percent = 100 * killed / max(1, killed + survived)
    print(f"{killed} of {killed + survived} killed ({percent:.0f} %), {broken} more did not compile; of {len(mutants)}"
          " places")
    return percent < TARGET_PERCENT


if __name__ == "__main__":
    sys.exit(main())
