# SPDX-License-Identifier: Apache-2.0
"""Reports a run of the benchmarks: on the console, in docs/performance.md and in docs/images."""

import json
import pathlib
import re
import sys

import plot

ROOT = pathlib.Path(__file__).resolve().parent.parent
GOALS = json.loads((ROOT / "bench/goals.json").read_text())
GOALS_HEAD = ("path", "yardstick", "ours", "yardstick's", "ratio", "goal", "")


def amount(measured):
    """One measurement as a string."""
    return f"{measured['bytes']:.0f} B" if "bytes" in measured else plot.in_time(measured["ns"])


def compare(goal, results):
    """(ours, the yardstick's, their ratio, whether the goal is met) of one goal; None when either was not measured."""
    measured = results.get(goal["section"], {})
    names = [goal["ours"], goal["yardstick"]] + ([goal["less"]] if "less" in goal else [])
    if any(name not in measured for name in names):
        return None
    ours, theirs = dict(measured[goal["ours"]]), measured[goal["yardstick"]]
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


def goal_rows(results, section=None):
    """Cells of the table of goals, of one section or all; what is not measured is left out."""
    for goal in GOALS:
        compared = compare(goal, results) if section in (None, goal["section"]) else None
        if compared:
            ours, theirs, ratio, met = compared
            limit = f"{'≥' if goal.get('at_least') else '≤'} {goal['goal']:g}"
            yield goal["path"], goal["yardstick_name"], ours, theirs, f"{ratio:.2f}", limit, "" if met else "short"


def time_rows(measured):
    """The head and the cells of all that one program measured: a row for each task, a column for each library."""
    works, doers = {}, []
    for name, one in measured.items():
        if plot.PERCENTILES[0] in one:
            continue
        work, doer, variant = re.fullmatch(r"(\w+)<(\w+)>(.*)", name).groups()
        variant = re.sub(r"/(manual_time|real_time|iterations:\d+)", "", variant)
        if doer not in doers:
            doers.append(doer)
        works.setdefault(work + variant.replace("/", " "), {})[doer] = amount(one)
    doers.sort(key=lambda doer: doer != "Tessel")
    labels = plot.LABELS | {"Floor": "floor"}
    return (("", *(labels[doer] for doer in doers)),
            [(work, *(cells.get(doer, "") for doer in doers)) for work, cells in works.items()])


def percentile_rows(measured):
    """The head and the cells of what was measured one by one: a row for each task and library."""
    rows = []
    for name, one in measured.items():
        if plot.PERCENTILES[0] in one:
            work, doer, variant = re.fullmatch(r"(\w+)<(\w+)>/(\w+:\d+).*", name).groups()
            cells = (plot.in_time(one[percentile]) for percentile in plot.PERCENTILES)
            rows.append((f"{work} {variant}", plot.LABELS[doer], *cells))
    return ("", "", *plot.PERCENTILES), sorted(rows, key=lambda row: row[0])


def text_table(head, rows, left):
    """Columns as wide as their cells; the first `left` begin at the left, the others end at the right."""
    rows = [head, *rows]
    widths = [max(len(row[column]) for row in rows) for column in range(len(head))]
    return "\n".join("  ".join(cell.ljust(width) if column < left else cell.rjust(width)
                               for column, (cell, width) in enumerate(zip(row, widths))).rstrip() for row in rows)


def markdown_table(head, rows, left):
    rule = ["---" if column < left else "--:" for column in range(len(head))]
    return "\n".join("| " + " | ".join(row) + " |" for row in [head, rule, *rows])


def console(results, is_whole):
    """The table of goals, after all times; a whole run leaves the times out, as there are too many."""
    tables = []
    for section, measured in results.items():
        if section != "run" and not is_whole:
            tables.append(text_table(*time_rows(measured), left=1))
            head, rows = percentile_rows(measured)
            if rows:
                tables.append(text_table(head, rows, left=2))
    rows = list(goal_rows(results))
    if rows:
        tables.append(text_table(GOALS_HEAD, rows, left=2))
        short = sum(row[-1] != "" for row in rows)
        missing = f"; {len(GOALS) - len(rows)} were not measured on both sides" if is_whole else ""
        tables.append(f"{len(rows) - short} of {len(rows)} goals met, {short} fall short{missing}")
    return "\n\n".join(tables)


def run_line(run):
    return (f"{run['processor']}, {run['cpus']} CPUs; {run['compiler']}, `{run['flags']}`; {run['date'][:10]}, commit"
            f" {run['commit']}; medians of {run['repetitions']} repetitions of {run['min_time_s']:g} s.")


def filled(page, results):
    """The page with the parts between its marks, <!-- KIND SECTION --> and <!-- end -->, replaced."""
    def block(mark):
        kind, section = mark[1], mark[2]
        if kind == "run":
            text = run_line(results["run"])
        elif kind == "goals":
            text = markdown_table(GOALS_HEAD, goal_rows(results, section), left=2)
        elif kind == "percentiles":
            text = markdown_table(*percentile_rows(results[section]), left=2)
        else:
            text = markdown_table(*time_rows(results[section]), left=1)
        return f"{mark[0]}\n{text}\n<!-- end -->"

    return re.sub(r"(?s)<!-- (run|goals|times|percentiles)(?: (\w+))? -->(?=\n).*?<!-- end -->",
                  lambda found: block(re.match(r"<!-- (\w+)(?: (\w+))? -->", found[0])), page)


def publish(kept):
    """Draws the figures and fills in docs/performance.md: the exit status."""
    if not kept.exists():
        print(f"no whole run is kept in {kept.relative_to(ROOT)}: './dev bench' makes one", file=sys.stderr)
        return 1
    results = json.loads(kept.read_text())
    page = ROOT / "docs/performance.md"
    page.write_text(filled(page.read_text(), results))
    print(page.relative_to(ROOT))
    for figure in plot.draw(results, ROOT / "docs/images"):
        print(figure.relative_to(ROOT))
    return 0
