# SPDX-License-Identifier: Apache-2.0
"""Reports runs of the benchmarks: on the console, in docs/performance.md and in docs/images. bench/results.json has the
runs that the page shows."""

import json
import pathlib
import re

import plot

ROOT = pathlib.Path(__file__).resolve().parent.parent
GOALS = json.loads((ROOT / "bench/goals.json").read_text())
KEPT = "bench/results.json"
GOALS_HEAD = ("path", "yardstick", "ours", "yardstick's", "ratio", "goal", "", "in", "at")
RUNS_HEAD = ("at", "on", "measured", "machine")


def amount(measured):
    """One measurement as a string."""
    return f"{measured['bytes']:.0f} B" if "bytes" in measured else plot.in_time(measured["ns"])


def compare(goal, measured):
    """(ours, the yardstick's, their ratio, whether the goal is met) of one goal; None when either was not measured."""
    names = [goal["ours"], goal["yardstick"]] + ([goal["less"]] if "less" in goal else [])
    if any(name not in measured for name in names):
        return None
    ours, theirs = dict(measured[goal["ours"]]), measured[goal["yardstick"]]
    if "percentiles" in goal:
        ours, theirs = ({"ns": one[part]} for one, part in zip((ours, theirs), goal["percentiles"]))
    if "less" in goal:
        ours["ns"] -= measured[goal["less"]]["ns"]
    unit = "bytes" if "bytes" in ours else "ns"
    if goal.get("at_least"):  # A gain in throughput, of times for each operation.
        ratio = round(theirs[unit] / ours[unit], 2)
        met = ratio >= goal["goal"]
    else:
        ratio = round(ours[unit] / theirs[unit], 2)
        met = ratio <= goal["goal"]
    return amount(ours), amount(theirs), ratio, met


def farthest(goal, run):
    """compare() where it comes out worst, and the condition there, "" for the plain one. A section is a program's, as
    in "json", and in other conditions as in "json, used heap"."""
    compared = [(compare(goal, run[section]), section.partition(", ")[2]) for section in run
                if section.partition(", ")[0] == goal["section"]]
    sign = -1 if goal.get("at_least") else 1
    return max((one for one in compared if one[0]), key=lambda one: sign * one[0][2], default=(None, ""))


def is_ratio_alone(run):
    return run["run"].get("ratios_alone", False)


def goal_rows(runs, section=None):
    """Cells of the table of goals, of one section or all, each of the latest run that measured both sides, with that
    run's commit; what was never measured is left out."""
    for goal in GOALS:
        if section not in (None, goal["section"]):
            continue
        for run in runs:
            compared, condition = farthest(goal, run)
            if compared:
                ours, theirs, ratio, met = compared
                limit = f"{'≥' if goal.get('at_least') else '≤'} {goal['goal']:g}"
                times = ("", "") if is_ratio_alone(run) else (ours, theirs)
                yield (goal["path"], goal["yardstick_name"], *times, f"{ratio:.2f}", limit, "" if met else "short",
                       condition, run["run"]["commit"])
                break


def time_rows(runs, section):
    """The head and the cells of all times of one program: a row for each task, of the latest run that measured it, with
    that run's commit; a column for each library."""
    works, commits = {}, {}
    for run in reversed(runs):
        timed = {} if is_ratio_alone(run) else run.get(section, {})
        cells = {}
        for name, one in timed.items():
            if plot.PERCENTILES[0] not in one:
                work, doer, variant = re.fullmatch(r"(\w+)<(\w+)>(.*)", name).groups()
                variant = re.sub(r"/(manual_time|real_time|iterations:\d+)", "", variant)
                cells.setdefault(work + variant.replace("/", " "), {})[doer] = amount(one)
        works |= cells
        commits |= dict.fromkeys(cells, run["run"]["commit"])
    doers = sorted(dict.fromkeys(doer for cells in works.values() for doer in cells), key=lambda doer: doer != "Tessel")
    labels = plot.LABELS | {"Floor": "floor"}
    return (("", *(labels[doer] for doer in doers), "at"),
            [(work, *(cells.get(doer, "") for doer in doers), commits[work]) for work, cells in works.items()])


def percentile_rows(runs, section):
    """The head and the cells of what was measured one by one: a row for each task and library."""
    rows = {}
    for run in reversed(runs):
        timed = {} if is_ratio_alone(run) else run.get(section, {})
        for name, one in timed.items():
            if plot.PERCENTILES[0] in one:
                work, doer, variant = re.fullmatch(r"(\w+)<(\w+)>/(\w+:\d+).*", name).groups()
                cells = (plot.in_time(one[percentile]) for percentile in plot.PERCENTILES)
                rows[name] = (f"{work} {variant}", plot.LABELS[doer], *cells, run["run"]["commit"])
    return ("", "", *plot.PERCENTILES, "at"), sorted(rows.values(), key=lambda row: row[0])


def text_table(head, rows, left):
    """Columns as wide as their cells; the first `left` begin at the left, the others end at the right."""
    rows = [head, *rows]
    widths = [max(len(row[column]) for row in rows) for column in range(len(head))]
    return "\n".join("  ".join(cell.ljust(width) if column < left else cell.rjust(width)
                               for column, (cell, width) in enumerate(zip(row, widths))).rstrip() for row in rows)


def markdown_table(head, rows, left):
    rule = ["---" if column < left else "--:" for column in range(len(head))]
    return "\n".join("| " + " | ".join(cell.replace("|", "\\|") for cell in row) + " |" for row in [head, rule, *rows])


def console(results, is_whole):
    """The table of goals, after all times; a whole run leaves the times out, as there are too many."""
    tables = []
    for section in () if is_whole else (name for name in results if name != "run" and ", " not in name):
        for (head, rows), left in ((time_rows([results], section), 1), (percentile_rows([results], section), 2)):
            if rows:
                tables.append(text_table(head, rows, left))
    rows = list(goal_rows([results]))
    if rows:
        tables.append(text_table(GOALS_HEAD, rows, left=2))
        short = sum(row[6] != "" for row in rows)
        missing = f"; {len(GOALS) - len(rows)} were not measured on both sides" if is_whole else ""
        tables.append(f"{len(rows) - short} of {len(rows)} goals met, {short} fall short{missing}")
    return "\n\n".join(tables)


def run_rows(runs):
    for run in (run["run"] for run in runs):
        yield (run["commit"], run["date"][:10], run["how"],
               f"{run['processor']}, {run['cpus']} CPUs; {run['compiler']}, `{run['flags']}`")


def block(kind, section, runs):
    """The table of a page that is marked so."""
    if kind == "runs":
        return markdown_table(RUNS_HEAD, run_rows(runs), left=len(RUNS_HEAD))
    if kind == "goals":
        return markdown_table(GOALS_HEAD, goal_rows(runs, section), left=2)
    if kind == "percentiles":
        return markdown_table(*percentile_rows(runs, section), left=2)
    return markdown_table(*time_rows(runs, section), left=1)


def last_measured(runs):
    """What each benchmark measured last, by section, with the conditions of the last run that has times."""
    last = {}
    for run in reversed(runs):
        for section, measured in ({} if is_ratio_alone(run) else run).items():
            last[section] = last.get(section, {}) | measured if section != "run" else measured
    return last


def with_run(results, runs):
    """The kept runs with a new one before them, without those that no table shows any more."""
    runs = [results, *runs]
    shown = rows_of(runs)
    return [results, *(run for run in runs[1:] if rows_of([one for one in runs if one is not run]) != shown)]


def rows_of(runs):
    """The rows of all tables."""
    sections = sorted({section for run in runs for section in run if ", " not in section} - {"run"})
    return [*goal_rows(runs), *(row for section in sections for rows in (time_rows, percentile_rows)
                                for row in rows(runs, section)[1])]


def kept_runs(root=ROOT):
    """The runs that docs/performance.md shows, the latest first."""
    return json.loads((root / KEPT).read_text())


def write(runs, root=ROOT):
    """Keeps runs, with a line for each benchmark."""
    def line(measured):
        return json.dumps({key: float(f"{value:.4g}") for key, value in measured.items() if "_ns" not in key})

    lines = []
    for run in runs:
        parts = [f'  "run": {json.dumps(run["run"], ensure_ascii=False)}']
        for section in (name for name in run if name != "run"):
            measured = ",\n".join(f"    {json.dumps(name)}: {line(one)}" for name, one in run[section].items())
            parts.append(f'  "{section}": {{\n{measured}\n  }}')
        lines.append("{\n" + ",\n".join(parts) + "\n}")
    (root / KEPT).write_text("[\n" + ",\n".join(lines) + "\n]\n")


def keep(results, root=ROOT):
    """Keeps what a run measured for docs/performance.md, and draws the images again."""
    write(with_run(results, kept_runs(root)), root)
    plot.draw(last_measured(kept_runs(root)), root / "docs/images")
