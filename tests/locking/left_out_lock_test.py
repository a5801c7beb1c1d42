#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every lock that is left out is refused by Clang's thread-safety analysis: removes the locks of each source file of
the libraries and tools, and compares the functions that lack one with those that Clang then names. The file as it is
compiles.

Nothing in them locks but by the annotated classes, which the analysis knows.
"""

import re
import subprocess
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
FOLDERS = ("include", "src", "tools", "libutil/include", "libutil/src")
COMPILER = sys.argv.pop(1)
COMMAND = [COMPILER, "-std=c++20", "-fsyntax-only", "-Wthread-safety", "-fno-caret-diagnostics", "-x", "c++",
           *(f"-I{SOURCE / folder}" for folder in FOLDERS)]

ANNOTATED = ("include/tessel/locking.h", "src/record/Lock.h", "libutil/src/Mutex.h")  # The classes themselves.
# These locks protect nothing that is written under them alone: the order of steps with atomic variables, or a wait.
ORDER_ONLY = ("src/facade/KalConfigHelper.cpp", "libutil/src/EventQueue.cpp", "tools/Progress.cpp",
              "tools/simulate/CallSettings.cpp")

LOCK = re.compile(r" *(?:const )?(?:[\w:]+::)?(?:Lock lock|RegistryGuard guard)\(.*\);.*")
WAIT = re.compile(r"lock\.Wait\w*\(|waitFor\(lock\b")
# Clang does not analyse constructors and destructors.
UNCHECKED = re.compile(r"\s*(explicit \w+\(|(\w+::)?~\w+\()")
STANDARD = re.compile(r"(?<!Mutex<)(?<!Lock<)std::(\w*mutex|lock_guard|unique_lock|scoped_lock|shared_lock)\b")


def sources():
    for folder in FOLDERS:
        yield from (path for path in sorted((SOURCE / folder).rglob("*")) if path.suffix in (".cpp", ".h"))


def name_of(path):
    return path.relative_to(SOURCE).as_posix()


def function_of(lines, number):
    """The line on which the function around a line begins: the nearest one above with a smaller indentation whose
    head, of one line or more, opens a body, but for blocks within it."""
    indent = len(lines[number]) - len(lines[number].lstrip())
    for above in range(number - 1, -1, -1):
        line = lines[above]
        here = len(line) - len(line.lstrip())
        if line.strip() and here < indent:
            indent = here
            parts = (part.rstrip() for part in lines[above:number + 1])
            head = next(part for part in parts if part.endswith(("{", "}", ";", ":")))
            if head.endswith("{") and not re.match(r"\s*(if|for|while|else|try|do|switch|\{|})", line):
                return above
    raise ValueError(f"no function around line {number + 1}")


def diagnostics(text, path):
    """The line numbers, from 0, of what Clang says of a file's text."""
    with tempfile.NamedTemporaryFile("w", suffix=".cpp", prefix="locking_") as copy:
        copy.write(text)
        copy.flush()
        run = subprocess.run([*COMMAND, f"-I{path.parent}", copy.name], capture_output=True, text=True, check=False)
        if run.returncode != 0:
            raise RuntimeError(f"{path}: {run.stderr}")
        warning = rf"^{re.escape(copy.name)}:(\d+):\d+: warning: .*\[-Wthread-safety"
        found = re.findall(warning, run.stderr, re.MULTILINE)
        return {int(number) - 1 for number in found}


def left_out(path):
    """The functions of a file whose locks are left out, and those of them in which Clang finds that."""
    lines = path.read_text(encoding="utf-8").splitlines()
    assert not diagnostics("\n".join(lines), path), path
    functions = {function_of(lines, number) for number, line in enumerate(lines) if LOCK.fullmatch(line)}
    functions = {number for number in functions if not UNCHECKED.match(lines[number])}
    # Where a wait needs the lock's name, that stays, and locks nothing.
    nothing = "extern Lock& lock;" if any(WAIT.search(line) for line in lines) else ""
    found = diagnostics("\n".join(LOCK.sub(nothing, line) for line in lines), path)
    return functions, {function_of(lines, number) for number in found}, lines


class LeftOutLock(unittest.TestCase):
    def test_is_refused(self):
        files = [path for path in sources() if name_of(path) not in ANNOTATED + ORDER_ONLY
                 and any(LOCK.fullmatch(line) for line in path.read_text().splitlines())]
        self.assertGreater(len(files), 4)
        with ThreadPoolExecutor() as pool:
            for path, (expected, found, lines) in zip(files, pool.map(left_out, files)):
                self.assertTrue(expected, path)
                missed = [f"{name_of(path)}:{number + 1}: {lines[number].strip()}" for number in expected - found]
                self.assertEqual(missed, [])

    def test_of_a_map_is_refused(self):
        for header, use in (("atomMap.h", "void Use(kalStore::atomMap<int, int>& map, int& out) {"
                                          " map.Get(1, out); map.Set(1, 2); map.SetEx(1, 2); map.Find(1); }"),
                            ("KalConfigObserverMgr.h", "void Use(kalStore::KalConfigObserverMgr<int*>& names) {"
                             ' names.Subscribe("a", nullptr, [](int*) {}); names.Unsubscribe("a", nullptr, [] {}); }')):
            path = SOURCE / "include" / "tessel" / header
            text = re.sub(r"Locked \w+\(\*this\);", "", path.read_text())
            text = re.sub(r"(Locked\(\*this\)|\b(map|names))->", "m_map.", text)
            uses = {number for number, line in enumerate(text.splitlines()) if "m_map." in line}
            self.assertEqual(diagnostics(f"{text}{use}\n", path), uses, header)

    def test_no_lock_is_unknown_to_the_analysis(self):
        unknown = [f"{name_of(path)}:{number}: {line.strip()}" for path in sources() if name_of(path) not in ANNOTATED
                   for number, line in enumerate(path.read_text().splitlines(), 1) if STANDARD.search(line)]
        self.assertEqual(unknown, [])


if __name__ == "__main__":
    unittest.main()
