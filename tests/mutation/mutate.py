#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Changes the libraries and the tools in one place at a time and shows whether the tests find the change.

A mutant is one changed operator, constant or condition, or one statement left out. Each is built in a copy of the
tree. The tests of its own folder run first, then the others. It is killed when a test program fails, crashes or takes
five times as long as usual. Mutants that do not compile do not count.
"""
import argparse
import collections
import difflib
import json
import os
import pathlib
import random
import re
import resource
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ("libutil/src", "src", "tools")
TARGET_PERCENT = 85
MEMORY_LIMIT = 4 << 30
JOBS = ["-j", os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", str(os.cpu_count()))]

SWAPS = [(r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" > ", " >= "), (r" <= ", " < "), (r" >= ", " > "),
         (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r" / ", " * "),
         (r" & ", " | "), (r" \| ", " & "), (r" \+= ", " -= "), (r" -= ", " += "), (r"\+\+", "--"), (r"--", "++"),
         (r"\btrue\b", "false"), (r"\bfalse\b", "true")]
NUMBER = re.compile(r"(?<![\w.'])(\d+)(?![\w.'])")
CONDITION = re.compile(r"\b(?:if|while) \(")
STATEMENT = re.compile(r"(?:\+\+|--|\*)?[A-Za-z_][\w:.\[\]]*(?:->[\w.]+)*(?:\(| [-+|&]?= |\+\+;|--;).*;$")
NO_STATEMENT = re.compile(
    r"(return|const|constexpr|auto|static|using|if|for|while|else|case|throw|goto|static_assert)\b")
NOT_CODE = re.compile(r"\s*(#|static_assert|using |namespace |template )")

Mutant = collections.namedtuple("Mutant", "file start end text")


def masked(code):
    """The code with comments, strings and characters masked, every offset kept."""
    pattern = re.compile(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])'", re.S)
    return pattern.sub(lambda match: re.sub(r"[^\n]", "\x01", match.group()), code)


def closing(code, start):
    """Where the parenthesis that opens at `start` closes."""
    depth = 0
    for at in range(start, len(code)):
        depth += {"(": 1, ")": -1}.get(code[at], 0)
        if depth == 0:
            return at
    return -1


def mutants_of(path, code):
    plain = masked(code)
    at = 0
    before = ";"
    for line in plain.splitlines(keepends=True):
        if not NOT_CODE.match(line):
            for pattern, replacement in SWAPS:
                for match in re.finditer(pattern, line):
                    yield Mutant(path, at + match.start(), at + match.end(), replacement)
            for match in NUMBER.finditer(line):
                value = int(match.group())
                yield Mutant(path, at + match.start(), at + match.end(), "0" if value == 1 else str(value + 1))
            for match in CONDITION.finditer(line):
                start = at + match.end() - 1
                end = closing(plain, start)
                if end > 0 and ";" not in plain[start:end]:
                    yield Mutant(path, start, end + 1, "(!" + code[start:end + 1] + ")")
            statement = line.strip()
            if (before in ";{}:" and line.startswith("  ") and STATEMENT.match(statement)
                    and not NO_STATEMENT.match(statement)):
                start = at + len(line) - len(line.lstrip())
                yield Mutant(path, start, start + len(statement), ";")
        stripped = line.rstrip().rstrip("\x01").rstrip()
        before = stripped[-1] if stripped else before
        at += len(line)


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


def limits():
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))


def run(program, seconds, work):
    """None when the program passed, otherwise what it did instead."""
    process = subprocess.Popen([program, "--gtest_fail_fast", "--gtest_brief=1"], cwd=work, preexec_fn=limits,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                               start_new_session=True)
    try:
        status = process.wait(timeout=seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.wait()
        return "took too long"
    return None if status == 0 else "crashed" if status < 0 else "failed"


class Workshop:
    """The copy of the tree and its build."""

    def __init__(self, folder):
        self.tree = folder / "tree"
        self.objects = folder / "objects"
        self.tree.mkdir(parents=True, exist_ok=True)
        copy_tree(self.tree)
        self.command(["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.objects, "-DCMAKE_BUILD_TYPE=Debug",
                      "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
                      "-DTESSEL_BUILD_EXAMPLES=OFF"])
        self.programs = sorted(re.findall(r"^(?!cmake_)(\w+_test): phony", self.targets(), re.M))
        self.command(["ninja", "-C", self.objects] + JOBS + self.programs)
        self.paths = {name: next(p for p in self.objects.rglob(name) if p.is_file()) for name in self.programs}
        commands = json.loads((self.objects / "compile_commands.json").read_text())
        self.object_files = collections.defaultdict(list)
        for command in commands:
            output = re.search(r" -o (\S+)", command["command"]).group(1)
            if (self.objects / output).exists():
                self.object_files[os.path.realpath(command["file"])].append(self.objects / output)

    def targets(self):
        return subprocess.run(["ninja", "-C", self.objects, "-t", "targets", "all"], check=True, text=True,
                              stdout=subprocess.PIPE).stdout

    @staticmethod
    def command(arguments):
        done = subprocess.run(arguments, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if done.returncode != 0:
            sys.exit(done.stdout)

    def time_programs(self):
        """Runs everything unchanged: the seconds that each program may take."""
        allowed = {}
        for name, path in self.paths.items():
            start = time.monotonic()
            fault = run(path, 300, self.objects)
            if fault:
                sys.exit(f"{name} {fault} before anything was changed")
            allowed[name] = 10 + 5 * (time.monotonic() - start)
        return allowed

    def build(self):
        return subprocess.run(["ninja", "-C", self.objects] + JOBS + self.programs, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode == 0

    def try_out(self, mutant, allowed):
        """What killed the mutant: "" when nothing did, None when it does not compile."""
        path = self.tree / mutant.file
        code, times = path.read_text(), path.stat()
        kept = [(file, file.with_suffix(".kept")) for file in self.object_files[os.path.realpath(path)]]
        for file, copy in kept:
            shutil.copy2(file, copy)
        linked = [*self.paths.values(), self.objects / "bin/tessel", self.objects / "tools/reference/tessel_reference",
                  *(f for f in (self.objects / "lib").rglob("*.so*") if not f.is_symlink())]
        linked_times = {file: file.stat().st_mtime_ns if file.exists() else 0 for file in linked}
        try:
            path.write_text(code[:mutant.start] + mutant.text + code[mutant.end:])
            if not self.build():
                return None
            folder = mutant.file.split("/")[1 if mutant.file.startswith("src/") else 0]
            for name in sorted(self.programs, key=lambda name: (not name.startswith(folder), allowed[name])):
                fault = run(self.paths[name], allowed[name], self.objects)
                if fault:
                    return f"{name} {fault}"
            return ""
        finally:
            path.write_text(code)
            if kept:  # The object of the unchanged source is put back; only what was linked is made again.
                os.utime(path, ns=(times.st_atime_ns, times.st_mtime_ns))
                for file, copy in kept:
                    shutil.move(copy, file)
            for file, was in linked_times.items():
                if file.exists() and file.stat().st_mtime_ns != was:
                    file.unlink()


def difference(mutant, code):
    changed = code[:mutant.start] + mutant.text + code[mutant.end:]
    lines = difflib.unified_diff(code.splitlines(), changed.splitlines(), mutant.file, mutant.file, n=0, lineterm="")
    return "\n".join(list(lines)[2:])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("count", nargs="?", type=int, default=100, help="how many mutants (100)")
    parser.add_argument("--seed", type=int, default=1, help="which ones (1)")
    parser.add_argument("--minutes", type=float, default=0, help="stop after so many minutes (no limit)")
    parser.add_argument("--only", default="", help="only files whose path starts so, for example src/json/")
    arguments = parser.parse_args()

    workshop = Workshop(ROOT / "build/mutation")
    files = sorted(f for folder in FOLDERS for suffix in ("*.cpp", "*.h")
                   for f in (workshop.tree / folder).rglob(suffix))
    mutants = [m for f in files for m in mutants_of(str(f.relative_to(workshop.tree)), f.read_text())
               if m.file.startswith(arguments.only)]
    random.Random(arguments.seed).shuffle(mutants)
    allowed = workshop.time_programs()
    print(f"{len(mutants)} places; seed {arguments.seed}; programs: {', '.join(workshop.programs)}", flush=True)

    start = time.monotonic()
    killed = survived = broken = 0
    for mutant in mutants:
        if killed + survived == arguments.count:
            break
        if arguments.minutes and time.monotonic() - start > 60 * arguments.minutes:
            break
        outcome = workshop.try_out(mutant, allowed)
        if outcome is None:
            broken += 1
            continue
        killed += bool(outcome)
        survived += not outcome
        print(f"{'killed: ' + outcome if outcome else 'SURVIVED'}: {mutant.file}\n"
              f"{difference(mutant, (workshop.tree / mutant.file).read_text())}", flush=True)
    percent = 100 * killed / max(1, killed + survived)
    print(f"{killed} of {killed + survived} killed ({percent:.0f} %), {broken} more did not compile")
    return percent < TARGET_PERCENT


if __name__ == "__main__":
    sys.exit(main())
