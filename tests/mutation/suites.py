# SPDX-License-Identifier: Apache-2.0
"""What a mutant is tried with: builds of a copy of the tree, and the programs in them that must find the change."""

import collections
import json
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import threading
import time

MEMORY_LIMIT = 4 << 30
JOBS = ["-j", os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", str(os.cpu_count()))]
# What a program prints first when it has found something: the model checker goes on with its other scenarios.
FAILED = re.compile(r"FAILED: ")
UNSEEN = "no program has it"  # An outcome.


def run(command, seconds, work, has_limit):
    """None when the command passed, otherwise what it did instead."""
    def limits():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if has_limit:
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))

    process = subprocess.Popen(command, cwd=work, preexec_fn=limits, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               stdin=subprocess.DEVNULL, start_new_session=True, text=True, errors="replace")
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
    try:
        for line in process.stdout:
            if FAILED.match(line) and not late.is_set():
                return line.strip()
        status = process.wait()
    finally:
        timer.cancel()
        end()
        process.stdout.close()
        process.wait()
    return "took too long" if late.is_set() else None if status == 0 else "crashed" if status < 0 else "failed"


def command(arguments):
    done = subprocess.run(arguments, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if done.returncode != 0:
        sys.exit(done.stdout)
    return done.stdout


def sources_in(file):
    """What is compiled with a file: several sources where they are compiled together."""
    return re.findall('#include "(.*)"', file.read_text()) if file.parent.name == "Unity" else [file]


class Suite:
    """One build of the copy. `programs` is a pattern of targets; `arguments` are those of each run of a program."""

    def __init__(self, name, tree, objects, options, programs, arguments=(("--gtest_fail_fast", "--gtest_brief=1"),),
                 has_limit=True):
        self.name, self.tree, self.objects, self.arguments, self.has_limit = name, tree, objects, arguments, has_limit
        command(["cmake", "-G", "Ninja", "-S", tree, "-B", objects, "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
                 "-DTESSEL_BUILD_EXAMPLES=OFF", *options])
        targets = command(["ninja", "-C", objects, "-t", "targets", "all"])
        self.programs = sorted(re.findall(rf"^(?!cmake_)({programs}): phony", targets, re.M))
        self.ninja = ["ninja", "-C", objects, *JOBS, *self.programs]
        command(self.ninja)
        self.paths = {name: next(p for p in objects.rglob(name) if p.is_file()) for name in self.programs}
        self.object_files = collections.defaultdict(list)
        for compiled in json.loads((objects / "compile_commands.json").read_text()):
            output = objects / re.search(r" -o (\S+)", compiled["command"]).group(1)
            if output.exists():
                for source in sources_in(pathlib.Path(compiled["file"])):
                    self.object_files[os.path.realpath(source)].append(output)
        self.allowed = {}

    def time_programs(self):
        """Runs everything unchanged: how many seconds each program may take."""
        for name in self.programs:
            start = time.monotonic()
            fault = self.run(name, 600)
            if fault:
                sys.exit(f"{self.name}: {name} {fault} before anything was changed")
            self.allowed[name] = 10 + 5 * (time.monotonic() - start)

    def run(self, name, seconds):
        for arguments in self.arguments:
            fault = run([self.paths[name], *arguments], seconds, self.objects, self.has_limit)
            if fault:
                return fault
        return None

    def linked(self):
        """When each program and library was made."""
        files = [*self.paths.values(), self.objects / "bin/tessel", self.objects / "tools/reference/tessel_reference",
                 *(f for f in (self.objects / "lib").rglob("*.so*") if not f.is_symlink())]
        return {file: file.stat().st_mtime_ns for file in files if file.exists()}

    def try_out(self, file, code, folder):
        """What found that the file of the copy has this code: "" when nothing did, UNSEEN when no program has the file
        in it, None when it does not compile."""
        path = self.tree / file
        before, times, linked = path.read_text(), path.stat(), self.linked()
        kept = [(output, output.with_suffix(".kept")) for output in self.object_files[os.path.realpath(path)]]
        for output, copy in kept:
            shutil.copy2(output, copy)
        try:
            path.write_text(code)
            built = subprocess.run(self.ninja, text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                   check=False)
            if built.returncode != 0:
                return None
            if "Building" not in built.stdout:
                return UNSEEN
            for name in sorted(self.programs, key=lambda name: (not name.startswith(folder), self.allowed[name])):
                fault = self.run(name, self.allowed[name])
                if fault:
                    return f"{self.name}: {name} {fault}"
            return ""
        finally:
            path.write_text(before)
            if kept:  # The object of the unchanged source is put back; only what was linked is made again.
                os.utime(path, ns=(times.st_atime_ns, times.st_mtime_ns))
                for output, copy in kept:
                    shutil.move(copy, output)
            for output, when in self.linked().items():
                if when != linked.get(output):
                    output.unlink()


# By name, what makes a suite of a tree and a folder for its objects. The first to try is the first here.
SUITES = {
    "tests": lambda tree, objects, _: Suite(
        "tests", tree, objects, ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0"], r"\w+_test"),
    "model": lambda tree, objects, seconds: Suite(
        "model", tree, objects, ["-DCMAKE_BUILD_TYPE=Release"], "tessel_model",
        (("--seconds", str(seconds)), ("--seeds", "1", "1000")), has_limit=False),
    # ThreadSanitizer reserves more addresses than the limit has.
    "tsan": lambda tree, objects, _: Suite(
        "tsan", tree, objects, ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g1",
                                "-DCMAKE_UNITY_BUILD=ON", "-DTESSEL_SANITIZE=thread"], r"\w+_test", has_limit=False),
}
