#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmarks of build/bench and compares them with the goals.

A whole run is kept in build/bench/results.json, one with a FILTER in build/bench/filtered.json. Medians are kept,
beside the least and the most of all repetitions. With --keep, the run is one of those that docs/performance.md shows.
"""

import argparse
import json
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile

import plot
import recording
import report

BUILD = report.ROOT / "build/bench"
DISTRIBUTION = report.ROOT / "build/bench-distribution"  # Built as distributions build: with -O2 -g.
RECORDED_S = 5  # Of a simulated engine, for each repetition.


def command(program, arguments, options=()):
    corpus = ["--corpus", arguments.corpus] if program.name == "json_bench" and arguments.corpus else []
    return [program, *corpus, *options, f"--benchmark_filter={arguments.filter}"]


def other_conditions(program):
    """(condition, program, options) of each further one in which a program's goals are measured."""
    distribution = DISTRIBUTION / "bench" / program.name
    if program.name == "json_bench":
        yield "used heap", program, ["--used-heap"]
        yield "-O2 -g and used heap", distribution, ["--used-heap"]
    yield "-O2 -g", distribution, []


def of_goals(section, chosen):
    """Those of the benchmarks that goals compare, but not single reads, which take long."""
    compared = {goal.get(side) for goal in report.GOALS if goal["section"] == section and "percentiles" not in goal
                for side in ("ours", "yardstick", "less")}
    return [name for name in chosen if name in compared]


def names(program, arguments):
    """The benchmarks to run, in the order of the source."""
    listed = subprocess.run(command(program, arguments) + ["--benchmark_list_tests"], capture_output=True, text=True,
                            check=True)
    return listed.stdout.split() if "Failed to match" not in listed.stdout + listed.stderr else []


def run(program, arguments, options=()):
    """Google Benchmark's JSON of the program."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        ended = subprocess.run(command(program, arguments, options) + [
            "--benchmark_enable_random_interleaving=true", f"--benchmark_repetitions={arguments.repetitions}",
            f"--benchmark_min_time={arguments.min_time}", "--benchmark_out_format=json",
            f"--benchmark_out={out.name}"], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
        if ended.returncode != 0:
            sys.exit(f"{ended.stderr}{program.name} ended with {ended.returncode}")
        return json.load(out)


def medians(runs, ordered):
    """By name, the median of the repetitions: CPU time where one thread works, else elapsed time."""
    repetitions = {name: [] for name in ordered}
    for one in runs:
        if one["run_type"] == "iteration" and not one.get("error_occurred"):
            repetitions[one["run_name"]].append(one)
    result = {}
    for name, all_runs in repetitions.items():
        if not all_runs:  # Skipped, as by a machine with too few CPUs.
            continue
        clock = "real_time" if "/real_time" in name or "/manual_time" in name else "cpu_time"
        scale = {"ns": 1, "us": 1e3, "ms": 1e6}[all_runs[0]["time_unit"]]
        times = [one[clock] * scale for one in all_runs]
        result[name] = {"ns": statistics.median(times), "least_ns": min(times), "most_ns": max(times)}
        for counter in ("bytes", *plot.PERCENTILES):
            if counter in all_runs[0]:
                result[name][counter] = statistics.median(one[counter] for one in all_runs)
    return result


def conditions(context, arguments):
    """Where and how the run was made."""
    cpu = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    commit = subprocess.run("git describe --always --dirty --exclude '*'", shell=True, cwd=report.ROOT,
                            capture_output=True, text=True).stdout.strip()
    how = "everything" if arguments.filter == "." else f"`{arguments.filter}`"
    how += f"; medians of {arguments.repetitions} repetitions of {arguments.min_time:g} s"
    run_of = {"date": context["date"][:10], "commit": commit or "unknown", "processor": cpu[1] if cpu else "unknown",
              "cpus": context["num_cpus"], "compiler": context["compiler"].replace("GNU", "GCC"),
              "flags": context["flags"]}
    if arguments.keep == "ratios":
        return run_of | {"how": f"{how}; other work loaded the machine: ratios alone", "ratios_alone": True}
    return run_of | {"how": how}


def main():
    parser = argparse.ArgumentParser(prog="./dev bench", description="Runs the benchmarks; compares with the goals.",
                                     epilog="./dev bench page: measures `tessel report` of an hour's recording, and"
                                     " opens, zooms, searches and sorts its page in a browser")
    parser.add_argument("filter", nargs="?", default=".", metavar="FILTER",
                        help="only the benchmarks that this regular expression finds")
    parser.add_argument("--corpus", metavar="DIR",
                        help="folder of twitter.json, citm_catalog.json and canada.json; what is absent is left out")
    parser.add_argument("--min-time", type=float, default=0.1, metavar="S", help="seconds for each repetition (0.1)")
    parser.add_argument("--repetitions", type=int, default=9, metavar="N", help="of which the median counts (9)")
    parser.add_argument("--keep", choices=("times", "ratios"), help="keep the run in bench/results.json, of which"
                        " './dev tested' makes the tables of docs/performance.md, and draw docs/images; ratios: when"
                        " other work loads the machine, so that times mean nothing")
    arguments = parser.parse_args()
    if arguments.corpus and not pathlib.Path(arguments.corpus).is_dir():
        parser.error(f"no folder '{arguments.corpus}'")

    programs = [BUILD / "bench" / source.stem for source in sorted(report.ROOT.glob("bench/*_bench.cpp"))]
    chosen = {program: names(program, arguments) for program in programs}
    recorded = any(re.search(arguments.filter, name) for name in recording.NAMES)
    if not recorded and not any(chosen.values()):
        parser.error(f"no benchmark is found by '{arguments.filter}'")

    results = {}
    for program in filter(chosen.get, chosen):
        print(f"{program.name} ...", file=sys.stderr, flush=True)
        output = run(program, arguments)
        results["run"] = conditions(output["context"], arguments)
        section = program.name.removesuffix("_bench")
        results[section] = medians(output["benchmarks"], chosen[program])
        goals = of_goals(section, chosen[program])
        for condition, built, options in other_conditions(program) if goals else ():
            print(f"{program.name}, {condition} ...", file=sys.stderr, flush=True)
            only = argparse.Namespace(**vars(arguments) | {"filter": f"^({'|'.join(goals)})$"})
            results[f"{section}, {condition}"] = medians(run(built, only, options)["benchmarks"], goals)
    if recorded:
        print("recording ...", file=sys.stderr, flush=True)
        if "run" not in results:  # The context is that of the benchmarks: of one that is over at once.
            one = argparse.Namespace(filter=names(programs[0], argparse.Namespace(filter=".", corpus=None))[0],
                                     corpus=None, repetitions=1, min_time=0.001)
            results["run"] = conditions(run(programs[0], one)["context"], arguments)
        results["recording"] = recording.measure(BUILD / "bin/tessel", RECORDED_S, arguments.repetitions)

    is_whole = arguments.filter == "."
    kept = BUILD / ("results.json" if is_whole else "filtered.json")
    kept.write_text(json.dumps(results, indent=1) + "\n")
    print(report.console(results, is_whole))
    if arguments.keep:
        if not re.fullmatch("[0-9a-f]+", results["run"]["commit"]):
            sys.exit("not kept: it ran with changes that no commit has")
        report.keep(results)
    print(f"Medians of {arguments.repetitions} repetitions; every measurement: {kept.relative_to(report.ROOT)}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
