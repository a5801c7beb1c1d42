# SPDX-License-Identifier: Apache-2.0
"""What a recording costs: the CPU time of a simulated engine that is recorded, and of one that is not."""

import os
import statistics
import subprocess
import tempfile

CALLS = "10"
NAMES = {"Simulate<Tessel>/recorded": ["--record", "call.tessel"], "Simulate<Tessel>/alone": []}


def cpu_ns(tessel, seconds, options, folder):
    """The CPU time of all threads of one run, of the program and of the system for it."""
    process = subprocess.Popen([tessel, "simulate", "--calls", CALLS, "--seconds", str(seconds), *options], cwd=folder,
                               stdout=subprocess.DEVNULL)
    _, status, used = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise subprocess.CalledProcessError(process.returncode, process.args)
    return (used.ru_utime + used.ru_stime) * 1e9


def measure(tessel, seconds, repetitions):
    """By name, the median, the least and the most of the runs, which alternate: a busy moment concerns both."""
    runs = {name: [] for name in NAMES}
    with tempfile.TemporaryDirectory() as folder:
        for _ in range(repetitions):
            for name, options in NAMES.items():
                runs[name].append(cpu_ns(tessel, seconds, options, folder))
    return {name: {"ns": statistics.median(times), "least_ns": min(times), "most_ns": max(times)}
            for name, times in runs.items()}
