#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The figures of docs/reliability.md and docs/performance.md: from what a command prints to the tables of the pages.

`record FIGURE COMMIT SECONDS COMMAND` passes on what a command prints, and leaves the figures in it, with commit, date
and command, in build/figures/FIGURE.json. COMMIT is what the tree was at before the build; a run shorter than those of
the checks leaves nothing. `./dev tested` takes these figures into docs/figures.json and writes the tables between the
pages' marks, <!-- KIND NAME --> and <!-- end -->; bench/report.py makes those of the benchmarks.
"""

import collections
import datetime
import json
import re
import sys
from pathlib import Path
from typing import NamedTuple, Callable

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bench"))
import report  # pylint: disable=import-error,wrong-import-position

KEPT = "docs/figures.json"
PAGES = ("docs/reliability.md", "docs/performance.md")
SURVIVORS = "tests/mutation/survivors.json"


def numbers(found):
    """The named parts of a match, those of digits as numbers."""
    return {name: int(part) if part.isdigit() else part for name, part in found.groupdict().items()}


def each(pattern):
    """Reads a row of each match."""
    return lambda output: [numbers(found) for found in re.finditer(pattern, output, re.MULTILINE)]


def read_model(output):
    total = re.search(r"^model: (\d+) scenarios, (\d+) failed", output, re.MULTILINE)
    tried = re.findall(r"(\d+) schedules, all with up to (-?\d+) preemptions; +(\d+) at random", output)
    if not total:
        return []
    complete = [int(preemptions) for _, preemptions, _ in tried]
    return [{"scenarios": int(total[1]), "failed": int(total[2]),
             "in_order": sum(int(searched) for searched, _, _ in tried),
             "at_random": sum(int(random) for _, _, random in tried),
             "complete": {str(most): complete.count(most) for most in sorted(set(complete), reverse=True)}}]


def read_soak(output):
    rows = {name: int(value) for name, value in re.findall(r"^([a-zA-Z][\w, ]*?) +(\d+)$", output, re.MULTILINE)}
    names = ("operations", "operations per second", "deliveries per second", "calls", "memory after a tenth, KiB",
             "memory at the end, KiB")
    is_good = "WRONG" not in output and all(name in rows for name in names)
    return [{name: rows[name] for name in names}] if is_good else []


def read_page(output):
    """A row for each action; the floor follows what it is the floor of."""
    rows = []
    for what, cpu, more in re.findall(r"^(\S.*?|  floor: .*?) +([\d.]+) s +[\d.]+ s *(.*)$", output, re.MULTILINE):
        if what.startswith("  floor: "):
            rows[-1] |= {"floor": what.removeprefix("  floor: "), "floor_s": float(cpu)}
        else:
            rows.append({"what": what, "cpu_s": float(cpu), "more": more})
    return rows


def share(part, whole):
    return f"{100 * part / whole:.1f} %"


def model_cells(row):
    complete = ", ".join(f"{most} in {count:,}" for most, count in row["complete"].items())
    return (row["scenarios"], row["failed"] or "none", f"{row['in_order']:,}", f"{row['at_random']:,}", complete)


def mutation_cells(row):
    killed, tried, known = row["killed"], row["tried"], row.get("known")
    return (f"{killed:,}", f"{tried:,}", share(killed, tried), "" if known is None else known,
            "" if known is None else share(killed, tried - known), row.get("left", ""),
            f"{row['places']:,}" if "places" in row else "")


def soak_cells(row):
    memory = "" if "tsan" in row["command"] or "asan" in row["command"] else (
        f"{row['memory after a tenth, KiB']:,} KiB, {row['memory at the end, KiB']:,} KiB")
    return (f"{row['operations']:,}", f"{row['operations per second']:,}", f"{row['deliveries per second']:,}",
            f"{row['calls']:,}", memory)


def page_cells(row):
    what = f"{row['what']}: {row['more']}" if row["more"] else row["what"]
    if "floor" not in row:
        return (what, f"{row['cpu_s']:.2f} s", "", "")
    return (what, f"{row['cpu_s']:.2f} s", f"{row['floor']}: {row['floor_s']:.2f} s",
            f"{row['cpu_s'] / row['floor_s']:.2f}")


class Figure(NamedTuple):
    read: Callable  # (what a command printed) -> the rows in it, without commit, date and command
    head: tuple
    cells: Callable  # (row) -> its cells in the table, before those of commit and command
    key: tuple = ()  # A row takes the place of one that has the same in these; of all rows where this is empty.
    least_seconds: int = 0
    sums: str = ""  # The number of a run that adds up over all runs, which is in `in_all`.


FIGURES = {
    "model": Figure(read_model, ("scenarios", "failed", "schedules in order", "at random",
                                 "all with up to so many preemptions"), model_cells, least_seconds=60),
    "exhausted": Figure(
        each(r"^(?P<scenario>\w+) +(?P<schedules>\d+) schedules, all with up to (?P<preemptions>\d+) preemptions"),
        ("scenario", "schedules", "all with up to so many preemptions"),
        lambda row: (f"`{row['scenario']}`", f"{row['schedules']:,}", row["preemptions"]), ("scenario",)),
    "simulations": Figure(
        each(r"^model: simulations (?P<first>\d+) to (?P<last>\d+), (?P<failed>none) failed"),
        ("numbers", "failed"), lambda row: (f"{row['first']:,} to {row['last']:,}", row["failed"]), ("first", "last")),
    "coverage": Figure(
        each(r"^(?P<what>lines|branches): [\d.]+% \((?P<reached>\d+) out of (?P<all>\d+)\)"),
        ("", "reached", "of all"),
        lambda row: (row["what"], f"**{share(row['reached'], row['all'])}**", f"{row['reached']:,} of {row['all']:,}")),
    "mutation": Figure(
        each(r"^(?P<killed>\d+) of (?P<tried>\d+) killed \(\d+ %\), (?P<known>\d+) survived for a known reason, "
             r"(?P<left>\d+) more were not tried; of (?P<places>\d+) places"),
        ("killed", "of tried", "share", "known survivors", "share of the others", "not tried", "of all places"),
        mutation_cells, ("command",)),
    "fuzz": Figure(
        each(r"^fuzz (?P<target>\w+): ok, (?P<executions>\d+) executions (?P<form>[a-z ]+), (?P<rate>\d+) a second of "
             r"processor time, (?P<edges>\d+) edges covered"),
        ("target", "checked", "executions", "in all runs", "a second of processor time",
         "edges reached, the model's own included"),
        lambda row: (f"`{row['target']}`", row["form"], f"{row['executions']:,}", f"{row['in_all']:,}",
                     f"{row['rate']:,}", f"{row['edges']:,}"),
        ("target", "form"), 30, "executions"),
    "soak": Figure(read_soak, ("operations", "per second", "deliveries per second", "calls",
                               "memory after a tenth, at the end"), soak_cells, ("command",), 60),
    "page": Figure(read_page, ("what", "CPU time", "floor", "ratio"), page_cells),
}


def record(root, name, commit, seconds, command, output):
    """Leaves the figures of a command's output in the build folder."""
    figure = FIGURES[name]
    rows = figure.read(output) if seconds >= figure.least_seconds else []
    if rows:
        today = datetime.datetime.now(datetime.timezone.utc).date().isoformat()
        run = {"figure": name, "command": command, "commit": commit, "date": today}
        path = root / f"build/figures/{name}.json"
        path.parent.mkdir(parents=True, exist_ok=True)
        earlier = json.loads(path.read_text()) if path.exists() else []
        path.write_text(json.dumps(with_rows(earlier, [run | row for row in rows])) + "\n")


def about(row):
    return [row["figure"], *(row[name] for name in FIGURES[row["figure"]].key)]


def with_rows(kept, rows):
    """The kept rows with new ones in the place of those that they are about, and added up with them."""
    for row in rows:
        if summed := FIGURES[row["figure"]].sums:
            before = sum(old.get("in_all", old[summed]) for old in kept if about(old) == about(row))
            row["in_all"] = row.get("in_all", row[summed]) + before
    new = [about(row) for row in rows]
    return sorted([*(row for row in kept if about(row) not in new), *rows],
                  key=lambda row: list(FIGURES).index(row["figure"]))


def table(name, kept):
    """The rows of a figure as Markdown."""
    figure = FIGURES[name]
    rows = [(*(str(cell) for cell in figure.cells(row)), f"{row['commit']}, {row['date']}", f"`{row['command']}`")
            for row in kept if row["figure"] == name]
    return report.markdown_table((*figure.head, "at", "command"), rows, left=len(figure.head) + 2)


def survivors_table(survivors):
    """How many changes of each folder no test finds, for a known reason."""
    counts = collections.Counter(str(Path(one["file"]).parent) for one in survivors)
    rows = [(f"`{folder}`", f"{count:,}") for folder, count in sorted(counts.items())]
    return report.markdown_table(("folder", "known survivors"), [*rows, ("all", f"{counts.total():,}")], left=1)


def filled(page, root):
    """The page with its tables made of what is kept."""
    kept, runs = json.loads((root / KEPT).read_text()), report.kept_runs(root)

    def block(found):
        kind, name = found[2], found[3]
        if kind == "survivors":
            lines = survivors_table(json.loads((root / SURVIVORS).read_text()))
        elif kind == "figures":
            lines = table(name, kept)
        else:
            lines = report.block(kind, name, runs)
        return f"{found[1]}\n{lines}\n<!-- end -->"

    return re.sub(r"(?s)(<!-- (\w+)(?: (\w+))? -->)\n(?:(?!<!-- ).)*<!-- end -->", block, page)


def keep(root):
    """Takes the figures of the build folder, and writes the tables. Returns a line for each."""
    path, lines = root / KEPT, []
    kept = json.loads(path.read_text())
    for file in sorted((root / "build/figures").glob("*.json")):
        rows = json.loads(file.read_text())
        committed = [row for row in rows if re.fullmatch("[0-9a-f]+", row["commit"])]
        if committed != rows:
            lines.append(f"{file.stem}: not kept, it ran with changes that no commit has")
        if committed:
            kept = with_rows(kept, committed)
            lines.append(f"{file.stem}: {committed[-1]['command']}, at {committed[-1]['commit']}")
        file.unlink()  # What adds up is added once.
    path.write_text("[\n" + ",\n".join("  " + json.dumps(row, ensure_ascii=False) for row in kept) + "\n]\n")
    for name in PAGES:
        page = root / name
        page.write_text(filled(page.read_text(), root))
    return lines


def main():
    _, action, name, commit, seconds, command = sys.argv
    assert action == "record", action
    output = ""
    for line in sys.stdin:
        output += line
        print(line, end="", flush=True)
    record(ROOT, name, commit, int(seconds), command, output)


if __name__ == "__main__":
    main()
