#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Changes the libraries and the tools in one place at a time and shows whether the tests find the change.

A mutant is one changed operator, constant or condition, one statement or lock left out, two neighbouring statements
swapped, or the order of one atomic operation weakened. Many are built into the programs at once, in a copy of the tree;
a variable of the environment chooses the one that runs. A first run of every test shows which mutants it reaches. Then
each mutant is tried with the tests that reach it: quick ones first, those of its own folder before the others; then
with the journal on, with the model checker, and under ThreadSanitizer. It is killed when a test fails, crashes or takes
ten times as long as usual, and does not without the mutant. What a program cannot choose, such as a constant of the
compiler's or a lock, is built alone, after Clang's analysis of thread safety. Mutants that do not compile are not
tried. Survivors with their reasons are in survivors.json.
"""
import argparse
import collections
import difflib
import json
import pathlib
import random
import re
import shutil
import subprocess
import sys

import places
from schema import Schema
from suites import RUNTIME, SUITES, at_once

ROOT = pathlib.Path(__file__).resolve().parents[2]
SURVIVORS = "tests/mutation/survivors.json"
FOLDERS = ("include", "libutil/include", "libutil/src", "src", "tools")
MESSAGE = re.compile(r"^([^\s:][^:\n]*):(\d+):(\d+): +(\w+).*\n( +\d+ \|.*)?", re.M)
TARGET_PERCENT = 95  # Of those that do not survive for a known reason.
TARGET_OF_ALL_PERCENT = 85  # So that reasons alone do not meet it.
LEAST_TOGETHER = 20  # Fewer are not worth another build of everything.


def copy_tree(tree, written=()):
    """Brings the copy up to date but for the files that are `written` into it. What is unchanged keeps its time stamp,
    so that little is rebuilt."""
    for part in ROOT.iterdir():
        if part.name.startswith((".", "build")):
            continue
        files = [part] if part.is_file() else [f for f in part.rglob("*") if f.is_file()]
        for file in files:
            name = file.relative_to(ROOT)
            copy = tree / name
            if not copy.exists() or (str(name) not in written and copy.read_bytes() != file.read_bytes()):
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(file, copy)
    for part in tree.iterdir():
        for file in [part] if part.is_file() else [f for f in part.rglob("*") if f.is_file()]:
            if part.name != "build" and not (ROOT / file.relative_to(tree)).exists():
                file.unlink()


def all_mutants(only, kinds):
    files = sorted(file for folder in FOLDERS for suffix in ("*.cpp", "*.h") for file in (ROOT / folder).rglob(suffix))
    names = [str(file.relative_to(ROOT)) for file in files]
    return [mutant for name in names if re.match(only, name)
            for mutant in places.mutants_of(name, (ROOT / name).read_text()) if mutant.kind in kinds]


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


class Schemas:
    """The copy's files, with those of the mutants in them that a program can choose from."""

    def __init__(self, tree, mutants):
        self.tree, self.mutants = tree, mutants  # By number.
        self.code = {file: (ROOT / file).read_text() for file in sorted({mutant.file for mutant in mutants.values()})}
        self.chosen = set(mutants)
        self.schemas = {}

    def write(self, file, text):
        path = self.tree / file
        if path.read_text() != text:
            path.write_text(text)

    def together(self, numbers):
        """Of these mutants, those that are in no other's way and that a program can choose."""
        left_out = set()
        for file, code in self.code.items():
            of_file = {number: self.mutants[number] for number in sorted(numbers) if self.mutants[number].file == file}
            left_out.update(Schema("", code, of_file).left_out)
        return set(numbers) - left_out

    def show(self, numbers):
        """Writes files that have these mutants to choose from."""
        self.chosen &= set(numbers)
        for file, code in self.code.items():
            of_file = {number: self.mutants[number] for number in sorted(self.chosen)
                       if self.mutants[number].file == file}
            schema = Schema(self.tree / f"{RUNTIME}.h", code, of_file)
            self.chosen -= set(schema.left_out)
            self.schemas[str(self.tree / file)] = schema
            self.write(file, schema.text)

    def show_alone(self, number):
        """Writes files that have this mutant and nothing to choose from."""
        self.show([])
        mutant = self.mutants[number]
        self.write(mutant.file, places.changed(mutant, self.code[mutant.file]))

    def blamed(self, messages, is_first_enough=False):
        """The mutants that a compiler's messages are about: those at the errors, or at the first, or else at what led
        to them, or else where a name is declared that an error's line has."""
        found = [(self.schemas[file], int(line), int(column), kind)
                 for file, line, column, kind, _ in MESSAGE.findall(messages)
                 if file in self.schemas and kind != "warning"]
        errors = [one for one in found if one[3] == "error"]
        errors = errors[:1] if is_first_enough else errors
        for named, look in ((errors, Schema.numbers_at), (found, Schema.numbers_at),
                            (errors, Schema.numbers_on), (found, Schema.numbers_on)):
            numbers = {number for schema, line, column, _ in named for number in look(schema, line, column)}
            if numbers:
                return numbers
        shown = " ".join(code for *_, kind, code in MESSAGE.findall(messages) if kind == "error")
        names = "|".join(set(re.findall(r"\b(?![A-Z_]+\b)[A-Za-z_]\w*", shown)) or ["$"])  # But for macros.
        declares = re.compile(rf"[\w>&*] ({names})(\[.*\])?( =.*|[{{(].*)?;")
        return {number for number in self.chosen
                if declares.search(places.lines_of(self.mutants[number], self.code[self.mutants[number].file])[0])}

    def compile(self, compiled, numbers, is_first_enough=False):
        """Those of these mutants with which it compiles."""
        self.chosen = set(numbers)
        self.show(numbers)
        while messages := compiled():
            bad = self.blamed(messages, is_first_enough)
            if not bad:
                sys.exit(messages)
            self.show(self.chosen - bad)
        return set(self.chosen)


class Check:
    """Whether what has mutants compiles: each folder as one source, in seconds, as nothing is made of it."""

    def __init__(self, schemas):
        self.schemas, self.good, self.alone = schemas, set(), {}

    def __call__(self):
        """"" or what the compiler says of the first folder that does not compile."""
        folders = collections.defaultdict(list)
        for file, schema in sorted(self.schemas.schemas.items()):
            if schema.regions:
                folders[pathlib.Path(file).parent].append((file, schema.text))
        for files in folders.values():
            if tuple(files) not in self.good:
                messages = self.messages([file for file, _ in files])
                if messages:
                    return messages
                self.good.add(tuple(files))
        return ""

    def compile_alone(self, numbers):
        """Those of these mutants that compile where there are no others."""
        def is_good(number):
            mutant = self.schemas.mutants[number]
            file = self.schemas.tree / mutant.file
            copy = file.with_name(f"{number}-{file.name}")
            copy.write_text(places.changed(mutant, self.schemas.code[mutant.file]))
            try:
                return not self.messages([copy])
            finally:
                copy.unlink()

        self.schemas.show([])
        unknown = sorted(numbers - self.alone.keys())
        self.alone.update(zip(unknown, at_once(is_good, unknown)))
        return {number for number in numbers if self.alone[number]}

    def messages(self, files, compiler=("g++",)):
        folders = [f"-I{self.schemas.tree / folder}" for folder in ("include", "libutil/include", "src", "tools")]
        includes = "".join(f'#include "{file}"\n' for file in files)
        done = subprocess.run([*compiler, "-std=c++20", "-fsyntax-only", '-DTESSEL_VERSION=""', *folders,
                               "-x", "c++", "-"], input=includes, stderr=subprocess.PIPE, text=True, check=False)
        return done.stderr if done.returncode else ""

    def refuses(self, number):
        """Whether Clang's analysis of thread safety misses a lock in this mutant, which is shown alone."""
        file = self.schemas.tree / self.schemas.mutants[number].file
        return "-Wthread-safety" in self.messages([file], ("clang++", "-Wthread-safety", "-Werror=thread-safety"))


def folder_of(mutant):
    return mutant.file.split("/")[1 if mutant.file.startswith("src/") else 0]


def try_together(schemas, suites, numbers):
    """Yields (number, what killed it), "" when nothing did, of those that a test reaches."""
    survivors = set()
    for suite in suites:
        built = schemas.compile(lambda: suite.build(keep_going=True), numbers)  # pylint: disable=cell-var-from-loop
        numbers = sorted(built)
        suite.measure(max(schemas.mutants))
        tried = at_once(lambda number: suite.try_out(folder_of(schemas.mutants[number]), number), numbers,
                        suite.kind.trials)
        for number, outcome in zip(list(numbers), tried):
            if outcome is not None:
                survivors.add(number)
            if outcome:
                survivors.remove(number)
                numbers.remove(number)
                yield number, outcome
    for number in sorted(survivors):
        yield number, ""


def try_alone(schemas, check, suites, number):
    """What killed the mutant, "" when nothing did, None when it does not compile."""
    schemas.show_alone(number)
    if check.refuses(number):
        return "the analysis of thread safety"
    for suite in suites:
        if suite.build(keep_going=False):
            return None
        outcome = suite.try_out(folder_of(schemas.mutants[number]))
        if outcome:
            return outcome
    return ""


def turns(schemas, check):
    """The mutants that are built together. Another turn, unless it has few, is of those that compile but were in the
    way of one, or were left out with one that does not compile."""
    left = set(schemas.mutants)
    turn = schemas.compile(check, schemas.together(left))
    while turn:
        yield turn
        left = check.compile_alone(left - turn)
        turn = schemas.compile(check, schemas.together(left), is_first_enough=True)
        if len(turn) < LEAST_TOGETHER:
            return


def outcomes(schemas, suites, is_first_tried=True, is_alone_tried=True):
    """Yields (number, outcome) of every mutant, but for those of the first turn, or that would be built alone, where
    these are not tried."""
    left = set(schemas.mutants)
    check = Check(schemas)
    for turn in turns(schemas, check):
        if not is_first_tried:
            is_first_tried = True
            left -= turn
            continue
        for number, outcome in try_together(schemas, suites, turn):
            left.remove(number)
            yield number, outcome
    if not is_alone_tried:
        return
    compiled = check.compile_alone(left)
    for suite in suites:
        if compiled and not suite.tests:
            schemas.compile(lambda: suite.build(keep_going=True), [])  # pylint: disable=cell-var-from-loop
            suite.measure(0)
    for number in sorted(left):
        yield number, try_alone(schemas, check, suites, number) if number in compiled else None


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
    parser.add_argument("--together", action="store_true",
                        help="do not try those that have to be built alone, which takes minutes for each")
    parser.add_argument("--later", action="store_true",
                        help="try only those that the first build cannot have, for example as they overlap with others")
    parser.add_argument("--only", default="",
                        help="only files whose path begins with this pattern, for example src/json/")
    parser.add_argument("--kinds", type=some_of(places.KINDS), default=places.KINDS,
                        help=f"only these: {','.join(places.KINDS)}")
    parser.add_argument("--suites", type=some_of(SUITES), default=list(SUITES),
                        help=f"try only with these: {','.join(SUITES)}")
    parser.add_argument("--programs", default=r"(?!model_)\w+_test",
                        help="only test programs of this pattern, for example json_test; by default all but those of "
                        "the model checker itself")
    parser.add_argument("--model-seconds", type=int, default=30, help="for each run of the model checker (30)")
    arguments = parser.parse_args()

    mutants = all_mutants(arguments.only, arguments.kinds)
    drawn = chosen(mutants, arguments.seed, arguments.shard)[:arguments.count or None]
    print(f"{len(mutants)} places; seed {arguments.seed}; suites: {', '.join(arguments.suites)}", flush=True)
    tree = ROOT / "build/mutation/tree"
    tree.mkdir(parents=True, exist_ok=True)
    copy_tree(tree, {mutant.file for mutant in drawn})
    schemas = Schemas(tree, dict(enumerate(drawn, 1)))
    suites = [SUITES[name](tree, tree / "build" / name, arguments) for name in arguments.suites]
    survivors = json.loads((ROOT / SURVIVORS).read_text())

    killed = survived = known = 0
    for number, outcome in outcomes(schemas, suites, not arguments.later, not arguments.together):
        if outcome is None:
            continue
        mutant = schemas.mutants[number]
        code = schemas.code[mutant.file]
        killed += bool(outcome)
        survived += not outcome
        why = None if outcome else reason(mutant, code, survivors)
        known += bool(why)
        verdict = f"killed: {outcome}" if outcome else f"survived, as known, {why}" if why else "SURVIVED"
        print(f"{verdict}: {mutant.file}\n{difference(mutant, code)}", flush=True)
    percent = 100 * killed / max(1, killed + survived)
    print(f"{killed} of {killed + survived} killed ({percent:.0f} %), {known} survived for a known reason, "
          f"{len(drawn) - killed - survived} more were not tried; of {len(mutants)} places")
    return percent < TARGET_OF_ALL_PERCENT or 100 * killed < TARGET_PERCENT * (killed + survived - known)


if __name__ == "__main__":
    sys.exit(main())
