# SPDX-License-Identifier: Apache-2.0
"""What mutants are tried with: builds of a copy of the tree, and the tests in them that must find the change."""

import os
import pathlib
import re
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from typing import NamedTuple

MEMORY_LIMIT = 4 << 30
JOBS = int(os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or os.cpu_count())
# What a program prints first when it has found something: the model checker goes on with its other scenarios.
FAILED = re.compile(r"FAILED: ")
RUNTIME = "tests/mutation/runtime/Chosen"
QUICK_SECONDS = 0.3  # Tests that take less come first.
# With ThreadSanitizer's first report the test that runs ends, as with a crash: that is the one that found it.
ENDS_WITH_A_REPORT = {"TSAN_OPTIONS": "halt_on_error=1"}


class Test(NamedTuple):
    program: str
    name: str
    seconds: float
    reached: frozenset  # The numbers of the mutants that it runs through.


def at_once(function, values, count=JOBS):
    """The results in the order of the values, as soon as each is there: of so many at a time. What has not begun when
    nobody wants more results does not begin."""
    threads = ThreadPoolExecutor(count)
    try:
        yield from threads.map(function, values)
    finally:
        threads.shutdown(cancel_futures=True)


def run(command, seconds, work, has_limit, variables=None):
    """None when the command passed, otherwise what it did instead; and what it printed."""
    limits = ["prlimit", "--core=0", *([f"--as={MEMORY_LIMIT}"] if has_limit else []), "--"]
    process = subprocess.Popen([*limits, *command], cwd=work, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               stdin=subprocess.DEVNULL, start_new_session=True, text=True, errors="replace",
                               env=os.environ | ENDS_WITH_A_REPORT | (variables or {}))
    late = threading.Event()

    def end():
        try:
            os.killpg(process.pid, 9)
        except ProcessLookupError:
            pass

    def give_up():
        late.set()
        end()

    timer = threading.Timer(seconds, give_up)
    timer.start()
    printed = []
    try:
        for line in process.stdout:
            printed.append(line)
            if FAILED.match(line) and not late.is_set():
                return line.strip(), printed
        status = process.wait()
    finally:
        timer.cancel()
        end()
        process.stdout.close()
        process.wait()
    fault = "took too long" if late.is_set() else None if status == 0 else "crashed" if status < 0 else "failed"
    return fault, printed


def command(arguments):
    done = subprocess.run(arguments, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if done.returncode != 0:
        sys.exit(done.stdout)
    return done.stdout


class GoogleTest:
    """How the tests of a program are listed, run and named."""
    seconds = 0  # That a run takes by itself.
    trials = 3 * JOBS  # At once: most of the time goes by while a mutant that hangs takes too long.

    def names(self, path):
        names, suite = [], ""
        for line in command([path, "--gtest_list_tests"]).splitlines():
            name = line.split("#")[0].strip()
            if line.startswith("  "):
                names.append(suite + name)
            elif name.endswith("."):
                suite = name
        return [name for name in names if ".DISABLED_" not in name and not name.startswith("DISABLED_")]

    def arguments(self, names, _):
        return ["--gtest_fail_fast", f"--gtest_filter={':'.join(names)}"]

    def last(self, printed, names):
        """The test that failed, or that ran last."""
        failed = (line for line in printed if line.startswith("[  FAILED  ] "))
        begun = (line for line in reversed(printed) if line.startswith("[ RUN      ] "))
        line = next(failed, None) or next(begun, None)
        return [re.match(r"[^\s,]+", line[13:])[0]] if line else names


class Model:
    """A scenario of the model checker is a test; the simulations are one, too."""
    SIMULATIONS = "simulations"
    trials = JOBS  # At once: in the time that it has, it tries what it can.

    def __init__(self, seconds):
        self.seconds = seconds

    def names(self, path):
        scenarios = re.findall(r"^(\S+) +\d+ schedules", command([path, "--seconds", "1"]), re.M)
        return [*scenarios, self.SIMULATIONS]

    def arguments(self, names, is_brief):
        if names == [self.SIMULATIONS]:
            return ["--seeds", "1", "1000"]
        return ["--seconds", str(1 if is_brief else self.seconds), *names]

    def last(self, printed, names):
        found = re.match(r"FAILED: ([^:]+): ", printed[-1]) if printed else None
        return [found[1]] if found and found[1] in names else names


class Suite:
    """One build of the copy. `programs` is a pattern of targets, `kind` how their tests are run."""

    def __init__(self, name, tree, objects, options, programs, kind, has_limit=True):
        self.name, self.tree, self.objects, self.options, self.pattern = name, tree, objects, options, programs
        self.kind, self.has_limit = kind, has_limit
        self.paths, self.tests = {}, []

    def configure(self):
        runtime = self.objects / "runtime"
        runtime.mkdir(parents=True, exist_ok=True)
        command(["g++", "-std=c++20", "-O1", "-fPIC", "-shared", "-o", runtime / "libmutation.so",
                 self.tree / f"{RUNTIME}.cpp"])
        command(["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.objects, "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
                 f"-DCMAKE_CXX_STANDARD_LIBRARIES=-L\"{runtime}\" -Wl,-rpath,\"{runtime}\" -lmutation",
                 "-DTESSEL_BUILD_EXAMPLES=OFF", *self.options])
        targets = command(["ninja", "-C", self.objects, "-t", "targets", "all"])
        lines = re.finditer(rf"^(?!cmake_)({self.pattern}): phony", targets, re.M)
        self.programs = sorted(line[1] for line in lines)

    def build(self, keep_going):
        """"" when everything compiles, otherwise what the compiler said."""
        self.configure()
        failures = "0" if keep_going else "1"
        done = subprocess.run(["ninja", "-C", self.objects, f"-j{JOBS}", "-k", failures, *self.programs], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        if done.returncode != 0:
            return done.stdout
        self.paths = {name: next(p for p in self.objects.rglob(name) if p.is_file()) for name in self.programs}
        return ""

    def run(self, program, names, seconds, is_brief=False, **variables):
        return run([self.paths[program], *self.kind.arguments(names, is_brief)], seconds, self.objects,
                   self.has_limit, variables)

    def measure(self, highest):
        """Runs each test alone and unchanged: how long it takes, and which mutants up to this number it reaches."""
        def measured(test):
            number, (program, name) = test
            marks = self.objects / f"reached-{number}"
            marks.write_bytes(bytes(highest + 1))
            start = time.monotonic()
            fault, _ = self.run(program, [name], 600, True, TESSEL_MUTANTS_REACHED=str(marks))
            seconds = time.monotonic() - start
            reached = frozenset(number for number, mark in enumerate(marks.read_bytes()) if mark)
            marks.unlink()
            if fault:
                print(f"left out: {self.name}: {program}: {name} {fault} before anything was changed", flush=True)
            return None if fault else Test(program, name, seconds, reached)

        named = [(program, name) for program in self.programs for name in self.kind.names(self.paths[program])]
        self.tests = [test for test in at_once(measured, enumerate(named)) if test]

    def batches(self, folder, number):
        """The tests that reach a mutant (0: all), in the order of trying: (program, names, usual seconds)."""
        batches = {}
        for test in self.tests:
            if not number or number in test.reached:
                is_alone = test.name == Model.SIMULATIONS
                batches.setdefault((test.seconds > QUICK_SECONDS, is_alone, test.program), []).append(test)
        timed = [(key, [test.name for test in tests], sum(test.seconds for test in tests))
                 for key, tests in batches.items()]
        timed.sort(key=lambda one: (*one[0][:2], not one[0][2].startswith(folder), one[2]))
        return [(program, names, seconds) for (_, _, program), names, seconds in timed]

    def try_out(self, folder, number=0):
        """What finds the mutant of a number, or what the build was made of (0): "" when nothing does, None when no
        test reaches it. A failure counts when it does not come without the mutant, or else comes twice."""
        def tried(batch):
            program, names, usual = batch
            seconds = 10 + 10 * usual + self.kind.seconds
            fault, printed = self.run(program, names, seconds, TESSEL_MUTANT=str(number))
            if not fault:
                return ""
            last = self.kind.last(printed, names)
            again, _ = self.run(program, last, seconds, number != 0, TESSEL_MUTANT="0")
            if (again is None) != bool(number):
                return ""
            return f"{self.name}: {program}: {', '.join(last) if len(last) < 3 else ''} {fault}"

        batches = self.batches(folder, number)
        if not batches:
            return None
        # Of what can be chosen, several are tried at once.
        return next(filter(None, (map if number else at_once)(tried, batches)), "")


class InJournal(Suite):
    """Those programs of a build that are tests with the journal on, too."""

    def configure(self):
        super().configure()
        listed = command(["ctest", "--test-dir", self.objects, "-N"])
        self.programs = [name for name in self.programs if f": journal.on.{name}\n" in listed]

    def run(self, program, names, seconds, is_brief=False, **variables):
        return super().run(program, names, seconds, is_brief, TESSEL_TEST_JOURNAL="1", **variables)


TESTS = ["-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG", "-DCMAKE_UNITY_BUILD=ON"]
# By name, what makes a suite of a tree and a folder for its objects. The first to try is the first here.
SUITES = {
    "tests": lambda tree, objects, given: Suite("tests", tree, objects, TESTS, given.programs, GoogleTest()),
    "journal": lambda tree, objects, given: InJournal(
        "journal", tree, objects.with_name("tests"), TESTS, given.programs, GoogleTest()),
    "model": lambda tree, objects, given: Suite(
        "model", tree, objects, ["-DCMAKE_BUILD_TYPE=Release"], "tessel_model", Model(given.model_seconds),
        has_limit=False),
    # ThreadSanitizer reserves more addresses than the limit has.
    "tsan": lambda tree, objects, given: Suite(
        "tsan", tree, objects, ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g1",
                                "-DCMAKE_UNITY_BUILD=ON", "-DTESSEL_SANITIZE=thread"], given.programs, GoogleTest(),
        has_limit=False),
}
