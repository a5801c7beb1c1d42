#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What the tests have run on: from the run of a preset to the table of the README.

`record BUILD COMMIT` writes BUILD/tested.json of the run whose results are there: processor, compiler, how many tests
passed and how many skipped themselves, commit and date. COMMIT is what the tree was at before the build. `keep` takes
all such records into docs/tested.json, in place of an earlier one of the same preset, and writes the README's table of
what is kept there. It takes only runs of a commit as it is, without changes. The figures of other commands it keeps by
figures.py.
"""

import argparse
import datetime
import json
import re
import subprocess
import sys
import xml.etree.ElementTree
from pathlib import Path

import figures

ROOT = Path(__file__).resolve().parents[2]
SECTION = "## What is tested\n"
COMPILERS = {"GNU": "GCC"}
PROCESSORS = {"aarch64": "arm64", "armv7l": "armhf", "i686": "i386"}


def presets(root):
    """What each preset that a user may name is, in their order."""
    listed = json.loads((root / "CMakePresets.json").read_text())["configurePresets"]
    return {preset["name"]: preset["displayName"] for preset in listed if not preset.get("hidden")}


def state(root):
    """The commit of a tree, with "-dirty" if there are changes. Nothing when it is not in git."""
    command = ["git", "-C", root, "describe", "--always", "--abbrev=7", "--exclude=*", "--dirty"]
    try:
        return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              check=False).stdout.strip()
    except FileNotFoundError:
        return ""


def settings_of(build, file):
    """The variables that CMake found out about a machine or a compiler."""
    text = next(build.glob(f"CMakeFiles/*/{file}")).read_text()
    return dict(re.findall(r'^set\((\w+) "([^"]*)"\)', text, re.MULTILINE))


def utc_date(local):
    """The day of a local time, which is the same wherever the run was."""
    return local.astimezone(datetime.timezone.utc).date().isoformat()


def outcome(has_run, skipped, failure=None):
    """What became of a test: it passed, skipped itself, or failed."""
    if has_run and failure is None:
        return "passed"
    return "skipped" if skipped else "failed"


def outcomes_of(case, build):
    """The outcome of each test that CTest ran as one: a program that ran as a whole has left results of its own."""
    skip = case.find("skipped")
    whole = outcome(case.get("status") == "run", skip is not None and skip.get("message", "").startswith("SKIP_"))
    program = build / "programs" / f"{case.get('name')}.xml"
    if not program.exists():
        return [whole]
    outcomes = [outcome(test.get("result") == "completed", test.get("result") == "skipped", test.find("failure"))
                for test in xml.etree.ElementTree.parse(program).getroot().iter("testcase")]
    # It may fail behind its last test, too.
    return [*outcomes, whole] if whole == "failed" and whole not in outcomes else outcomes


def record(root, build, commit):
    """The record of the run whose results are in a build folder."""
    suite = xml.etree.ElementTree.parse(build / "results.xml").getroot()
    outcomes = [one for case in suite.iter("testcase") for one in outcomes_of(case, build)]
    system, compiler = settings_of(build, "CMakeSystem.cmake"), settings_of(build, "CMakeCXXCompiler.cmake")
    processor, vendor = system["CMAKE_SYSTEM_PROCESSOR"], compiler["CMAKE_CXX_COMPILER_ID"]
    return {
        "preset": build.name,
        "processor": PROCESSORS.get(processor, processor),
        "compiler": f"{COMPILERS.get(vendor, vendor)} {compiler['CMAKE_CXX_COMPILER_VERSION']}",
        "passed": outcomes.count("passed"),
        "skipped": outcomes.count("skipped"),
        "tests": len(outcomes),
        "commit": commit if commit == state(root) else f"{commit}-dirty",
        "date": utc_date(datetime.datetime.fromisoformat(suite.get("timestamp"))),
    }


def table(root, records):
    """The records as lines of Markdown, in the order of the presets."""
    lines = ["| processor | compiler | check | tests passed | at |", "|---|---|---|---|---|"]
    for preset, check in presets(root).items():
        for run in (run for run in records if run["preset"] == preset):
            passed = f"{run['passed']:,} of {run['tests']:,}"
            if run.get("skipped"):
                passed += f", {run['skipped']:,} skipped"
            lines.append(f"| {run['processor']} | {run['compiler']} | {check} | {passed} "
                         f"| {run['commit']}, {run['date']} |")
    return "".join(line + "\n" for line in lines)


def with_table(readme, lines):
    """The README with these lines as the table of its section."""
    before, heading, section = readme.partition(SECTION)
    if not heading:
        sys.exit(f"README.md has no section {SECTION.strip()!r}")
    return before + heading + re.sub(r"(?:^\|.*\n)+", lambda _: lines, section, count=1, flags=re.MULTILINE)


def keep(root):
    """Takes the records of all build folders, and writes the table. Returns a line for each."""
    kept = root / "docs/tested.json"
    records = {run["preset"]: run for run in json.loads(kept.read_text())}
    report = []
    for file in sorted((root / "build").glob("*/tested.json")):
        run = json.loads(file.read_text())
        if run["preset"] not in presets(root):
            continue
        if not re.fullmatch("[0-9a-f]+", run["commit"]):
            report.append(f"{run['preset']}: not kept, it ran with changes that no commit has")
        elif run != records.get(run["preset"]):
            records[run["preset"]] = run
            report.append(f"{run['preset']}: {run['passed']} of {run['tests']} tests passed at {run['commit']}")
    records = [records[preset] for preset in presets(root) if preset in records]
    kept.write_text("[\n" + ",\n".join("  " + json.dumps(run) for run in records) + "\n]\n")
    readme = root / "README.md"
    readme.write_text(with_table(readme.read_text(), table(root, records)))
    return report


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    recording = commands.add_parser("record")
    recording.add_argument("build", type=lambda path: Path(path).resolve())
    recording.add_argument("commit")
    commands.add_parser("keep")
    arguments = parser.parse_args()
    if arguments.command == "record":
        run = record(ROOT, arguments.build, arguments.commit)
        (arguments.build / "tested.json").write_text(json.dumps(run) + "\n")
    else:
        print("\n".join(keep(ROOT) + figures.keep(ROOT)) or "nothing new ran")


if __name__ == "__main__":
    main()
