#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The tables of docs/reliability.md and docs/performance.md are those of the kept figures, and what else the pages say
of the tree is so."""

import json
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import figures
from figures import ROOT, report

WORDS = {"three": 3, "four": 4, "five": 5, "six": 6, "seven": 7, "eight": 8}
RELIABILITY, PERFORMANCE = figures.PAGES

# (page, what it says, file, where that is so): both have the same number.
CLAIMS = [
    (RELIABILITY, r"random inputs take (\S+) of them", "CMakePresets.json", r"max_success=(\d+)"),
    (RELIABILITY, r"counts, and fails over (\d+) %", "dev", r"--build distribution --within (\d+)"),
    (RELIABILITY, r"among the last (\w+) stores", "model/checker/Choices.h", r"kMost = (\d+);"),
    (RELIABILITY, r"`\./dev model` runs (\S+) of them", "dev", r"\$program --seeds 1 (\d+)"),
    (RELIABILITY, r"The command fails below (\d+) % of\s+lines", "dev", r"--fail-under-line (\d+)"),
    (RELIABILITY, r"lines and (\d+) % of\s+branches", "dev", r"--fail-under-branch (\d+)"),
    (RELIABILITY, r"it kills fewer than (\d+) %", "tests/mutation/mutate.py", r"TARGET_PERCENT = (\d+)"),
    (RELIABILITY, r"or\s+fewer than (\d+) % of all", "tests/mutation/mutate.py", r"TARGET_OF_ALL_PERCENT = (\d+)"),
    (RELIABILITY, r"`\.ci/run` gives each (\d+) seconds", ".ci/run", r"count_fuzz (\d+)\n"),
    (PERFORMANCE, r"over (\d+) % more fails", "bench/instructions/count.py", r'"--within".*default=(\d+)'),
    (PERFORMANCE, r"over (\d+) % less asks", "bench/instructions/count.py", r'"--within".*default=(\d+)'),
    (PERFORMANCE, r"`tessel simulate --calls (\d+)`", "bench/recording.py", r'CALLS = "(\d+)"'),
    (PERFORMANCE, r"over an hour of (\d+) calls", "bench/report_page.py", r"CALLS, .* = (\d+),"),
    (PERFORMANCE, r"a part of (\S+) events", "tools/report/EventColumns.cpp", r"kMostEvents = (\d+);"),
    (PERFORMANCE, r"Its tables draw (\d+) rows", "web/changesView.js", r"PAGE_ROWS = (\d+);"),
    (PERFORMANCE, r"times each of (\S+) reads", "bench/live_bench.cpp", r"kReads = (\S+);"),
    (PERFORMANCE, r"`Post` hands over (\S+) events", "bench/thread_bench.cpp", r"kBatch = (\S+);"),
    (PERFORMANCE, r"million events and (\S+) lines", "bench/report_page.py", r"CALLS, .* = \d+, \d+, (\S+)\n"),
]
# (page, the section that begins so, function of ./dev): the section names all presets of the function, and no other.
PRESETS = [(RELIABILITY, "## Sanitizers: `./dev check`", "check"),
           (RELIABILITY, "## Other processors: `./dev cross", "cross"),
           (RELIABILITY, "## Other compilers and flags: `./dev compilers", "compilers")]
# What the README says in words, the goal that it is about, and the ratios for which it is true.
IN_WORDS = [
    ("A read takes about as long as a look-up in a `std::map` under a mutex",
     ("read, 100 names", "ordered map + recursive mutex"), 0.8, 1.2),
    ("notifying one subscriber, or eight, takes some seven tenths of an emission of Boost.Signals2",
     ("notifying 1 direct subscriber", "Boost.Signals2 emission to 1"), 0.6, 0.8),
    ("one subscriber, or eight, takes some seven tenths",
     ("notifying 8 direct subscribers", "Boost.Signals2 emission to 8"), 0.6, 0.8),
    ("posting an event to a thread takes a quarter of the time of Boost.Asio",
     ("post 10,000 events, one CPU", "Boost.Asio post to one thread"), 0.2, 0.3),
]
NOT_OURS = {"basic_string.h", "stl_construct.h", "twitter.json", "citm_catalog.json", "canada.json"}


def text_of(name):
    return (ROOT / name).read_text()


def number(text):
    return WORDS.get(text) or int(re.sub("[,_']", "", text))


def sources(*folders):
    return [path.read_text() for folder in folders for path in (ROOT / folder).rglob("*.cpp")]


SCENARIOS = set(re.findall(r"MODEL_SCENARIO\w*\((\w+)", "".join(sources("model/scenarios"))))


class Pages(unittest.TestCase):
    def test_have_the_tables_of_what_is_kept(self):
        for page in figures.PAGES:
            self.assertEqual(figures.filled(text_of(page), ROOT), text_of(page),
                             f"the tables of {page} are made by './dev tested', never by hand")

    def test_show_every_kind_of_figure(self):
        marks = re.findall(r"<!-- figures (\w+) -->", text_of(RELIABILITY) + text_of(PERFORMANCE))
        self.assertEqual(sorted(marks), sorted(figures.FIGURES))

    def test_have_the_images_of_the_kept_runs(self):
        with tempfile.TemporaryDirectory() as folder:
            for drawn in report.plot.draw(report.last_measured(report.kept_runs()), Path(folder)):
                self.assertEqual(drawn.read_text(), text_of(f"docs/images/{drawn.name}"), drawn.name)

    def test_have_a_row_of_each_fuzz_target_and_no_other(self):
        kept = {row["target"] for row in json.loads(text_of(figures.KEPT)) if row["figure"] == "fuzz"}
        targets = {path.name.removesuffix("_fuzz.cpp") for path in ROOT.glob("fuzz/*_fuzz.cpp")}
        self.assertEqual(kept, targets)

    def test_have_a_row_of_each_scenario_and_no_other(self):
        kept = {row["scenario"] for row in json.loads(text_of(figures.KEPT)) if row["figure"] == "exhausted"}
        self.assertEqual(kept, SCENARIOS)

    def test_say_the_limits_that_the_tree_has(self):
        for page, claim, file, place in CLAIMS:
            claimed, found = re.search(claim, text_of(page)), re.search(place, text_of(file))
            self.assertTrue(claimed, f"{page} no longer says {claim}")
            self.assertTrue(found, f"{file} no longer has {place}")
            self.assertEqual(number(claimed[1]), number(found[1]), f"{page}: {claimed[0]}; {file}: {found[0]}")

    def test_say_in_words_what_the_kept_runs_have(self):
        ratios = {row[:2]: float(row[4]) for row in report.goal_rows(report.kept_runs())}
        readme = " ".join(text_of("README.md").split())
        for words, goal, least, most in IN_WORDS:
            self.assertIn(words, readme)
            self.assertTrue(least <= ratios[goal] <= most, f"{words}: {ratios[goal]}")

    def test_name_the_presets_that_commands_run(self):
        for page, heading, function in PRESETS:
            section = text_of(page).partition(heading)[2].partition("\n## ")[0]
            listed = re.search(rf"\n{function}\(\) {{.*?presets=\((\w[^)]*)\)", text_of("dev"), re.DOTALL)[1].split()
            rows = re.findall(r"^\| ((?:`[\w-]+`(?:, )?)+) \|", section, re.MULTILINE)
            named = {name for row in rows for name in re.findall(r"`([\w-]+)`", row)}
            self.assertEqual(named, set(listed), heading)
        self.assertIn("The whole suite, three times", text_of(RELIABILITY))

    def test_name_scenarios_that_there_are(self):
        table = text_of(RELIABILITY).partition("| operations | scenario |")[2].partition("\n\n")[0]
        named = {name for row in table.splitlines() for name in re.findall(r"`(\w+)`", row.rpartition(" | ")[2])}
        self.assertTrue(named)
        self.assertEqual(named - SCENARIOS, set())

    def test_name_tests_that_there_are(self):
        tests = {f"{suite}.{name}" for text in sources("tests")
                 for suite, name in re.findall(r"\b[A-Z_]*(?:TEST|PROP)\w*\((\w+),\s*(\w+)[,)]", text)}
        table = text_of(PERFORMANCE).partition("| path | heap allocations | test |")[2].partition("\n\n")[0]
        named = set(re.findall(r"`(\w+\.\w+)`", table))
        self.assertTrue(named)
        self.assertEqual(named - tests, set())

    def test_name_files_that_there_are(self):
        tree = [f"/{path.relative_to(ROOT)}" for folder in ROOT.iterdir() if folder.name not in ("build", ".git")
                for path in (folder.rglob("*") if folder.is_dir() else [folder])]
        for page in figures.PAGES:
            for name in set(re.findall(r"`([\w./-]+\.(?:cpp|h|py|sh|txt|json))`", text_of(page))) - NOT_OURS:
                if not name.startswith("build/"):
                    self.assertTrue(any(path.endswith(f"/{name}") for path in tree), f"{page} names {name}")


# What the commands print, in part.
MODEL = """AStoreIsUsed                            1234 schedules, all with up to 4 preemptions;       100 at random
AQueueIsUsed                              66 schedules, all with up to 1 preemptions;        22 at random
AnotherQueueIsUsed                       100 schedules, all with up to 1 preemptions;         0 at random
model: 3 scenarios, 0 failed
"""
SOAK = """soak: 60 seconds, seed 5
seconds                                      60
calls                                      6435
operations                             22576489
operations per second                    376249
deliveries                              4605060
deliveries per second                     76751
results that cannot be                        0
memory after a tenth, KiB                  4844
memory at the end, KiB                     4884
"""
PAGE = """                                                    CPU    elapsed
tessel report                                    6.41 s     7.10 s  238 MB, the page 29 MB; at most 74 MB of memory
  floor: Python's json reads each line           6.20 s     6.30 s
open                                             2.24 s     2.90 s
  floor: JSON.parse() of as many lines           2.00 s     2.10 s
zoom in, one call                                0.08 s     0.11 s
"""


def fuzzed(executions, form="under sanitizers"):
    return f"fuzz a: ok, {executions} executions {form}, 30 a second of processor time, 20 edges covered\n"


class Tree(unittest.TestCase):
    """A tree with nothing kept."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        for name, text in (("docs/figures.json", "[]\n"), ("bench/results.json", "[]\n"),
                           (figures.SURVIVORS, "[]\n"), (RELIABILITY, ""), (PERFORMANCE, "")):
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            (self.root / name).write_text(text)
        self.page = self.root / RELIABILITY

    def record(self, name, output, commit="1234567", seconds=100, command="./dev it"):
        figures.record(self.root, name, commit, seconds, command, output)

    def rows(self, name):
        """The cells of the figure's table once all is kept, without the date."""
        self.page.write_text(f"Before.\n<!-- figures {name} -->\nold\n<!-- end -->\nAfter.\n")
        figures.keep(self.root)
        before, table, after = re.fullmatch(r"(Before\.)\n<!-- .*? -->\n(.*)\n<!-- end -->\n(After\.)\n",
                                            self.page.read_text(), re.DOTALL).groups()
        self.assertEqual([before, after], ["Before.", "After."])
        return [re.sub(r", \d{4}-\d\d-\d\d ", " ", row)[2:-2].split(" | ") for row in table.splitlines()[2:]]

    def test_shows_what_the_model_tried(self):
        self.record("model", MODEL)
        self.assertEqual(self.rows("model"), [["3", "none", "1,400", "122", "4 in 1, 1 in 2", "1234567", "`./dev it`"]])

    def test_shows_all_schedules_of_each_scenario(self):
        self.record("exhausted", MODEL, seconds=0)
        self.record("exhausted", MODEL.partition("\n")[0].replace("1234", "12345"), seconds=0, command="./dev more")
        self.assertEqual([[*row[:3], row[-1]] for row in self.rows("exhausted")],
                         [["`AQueueIsUsed`", "66", "1", "`./dev it`"],
                          ["`AnotherQueueIsUsed`", "100", "1", "`./dev it`"],
                          ["`AStoreIsUsed`", "12,345", "4", "`./dev more`"]])

    def test_shows_the_scenarios_that_failed(self):
        self.record("model", "FAILED: A: a race\nmodel: 2 scenarios, 1 failed\n")
        self.assertEqual(self.rows("model")[0][:2], ["2", "1"])

    def test_shows_what_the_soak_did(self):
        self.record("soak", SOAK, command="./dev soak 60")
        self.record("soak", SOAK, command="./dev soak 60 tsan")
        common = ["22,576,489", "376,249", "76,751", "6,435"]
        self.assertEqual(self.rows("soak"), [[*common, "4,844 KiB, 4,884 KiB", "1234567", "`./dev soak 60`"],
                                             [*common, "", "1234567", "`./dev soak 60 tsan`"]])

    def test_shows_nothing_of_a_soak_that_went_wrong(self):
        self.record("soak", SOAK.replace("0\nmemory", "1   WRONG\nmemory", 1))
        self.assertEqual(self.rows("soak"), [])

    def test_shows_actions_of_the_page_with_their_floors(self):
        self.record("page", PAGE)
        self.assertEqual([row[:4] for row in self.rows("page")],
                         [["tessel report: 238 MB, the page 29 MB; at most 74 MB of memory", "6.41 s",
                           "Python's json reads each line: 6.20 s", "1.03"],
                          ["open", "2.24 s", "JSON.parse() of as many lines: 2.00 s", "1.12"],
                          ["zoom in, one call", "0.08 s", "", ""]])

    def test_shows_what_is_covered_and_which_mutants_are_killed(self):
        self.record("coverage", "lines: 99.3% (8024 out of 8079)\nbranches: 92.0% (9361 out of 10176)\n")
        self.assertEqual([row[:3] for row in self.rows("coverage")],
                         [["lines", "**99.3 %**", "8,024 of 8,079"], ["branches", "**92.0 %**", "9,361 of 10,176"]])
        self.record("mutation", "SURVIVED: a\n8 of 10 killed (80 %), 1 survived for a known reason, 2 more were"
                                " not tried; of 5000 places\n")
        self.assertEqual(self.rows("mutation")[0][:7], ["8", "10", "80.0 %", "1", "88.9 %", "2", "5,000"])

    def test_counts_the_known_survivors_of_each_folder(self):
        known = [{"file": file} for file in ("tools/a.cpp", "src/b/c.h", "tools/d.h")]
        self.assertEqual(figures.survivors_table(known).splitlines()[2:],
                         ["| `src/b` | 1 |", "| `tools` | 2 |", "| all | 3 |"])

    def test_a_later_run_takes_the_place_of_what_it_is_about(self):
        self.record("fuzz", fuzzed(7, "by models alone") + fuzzed(1000))
        self.rows("fuzz")
        self.record("fuzz", fuzzed(2000) + "fuzz b: FAILED, see b.log\n", "89abcde")
        self.assertEqual([row[:7] for row in self.rows("fuzz")],
                         [["`a`", "by models alone", "7", "7", "30", "20", "1234567"],
                          ["`a`", "under sanitizers", "2,000", "3,000", "30", "20", "89abcde"]])
        self.record("model", MODEL)
        self.rows("model")
        self.record("model", MODEL.replace("3 scenarios", "4 scenarios"))
        self.assertEqual([row[0] for row in self.rows("model")], ["4"])

    def test_executions_add_up_whether_or_not_they_are_kept_between_the_runs(self):
        for runs in (1, 3, 1):
            for _ in range(runs):
                self.record("fuzz", fuzzed(1000))
            self.rows("fuzz")
            figures.keep(self.root)
        self.assertEqual(self.rows("fuzz")[0][2:4], ["1,000", "5,000"])

    def test_the_same_run_again_is_the_same_row(self):
        for _ in range(2):
            self.record("simulations", "model: simulations 1 to 1000, none failed\n")
            self.record("page", PAGE)
        self.assertEqual([len(self.rows("simulations")), len(self.rows("page"))], [1, 3])

    def test_other_numbers_of_simulations_are_other_rows(self):
        self.record("simulations", "model: simulations 1 to 1000, none failed\n")
        self.record("simulations", "model: simulations 1001 to 5000, none failed\n")
        self.assertEqual([row[:2] for row in self.rows("simulations")],
                         [["1 to 1,000", "none"], ["1,001 to 5,000", "none"]])

    def test_a_run_shorter_than_those_of_the_checks_leaves_nothing(self):
        self.record("model", MODEL, seconds=10)
        self.record("fuzz", fuzzed(1000), seconds=29)
        self.assertEqual(self.rows("model") + self.rows("fuzz"), [])

    def test_a_run_with_changes_is_not_kept(self):
        self.record("model", MODEL, commit="1234567-dirty")
        self.assertEqual(figures.keep(self.root), ["model: not kept, it ran with changes that no commit has"])
        self.assertEqual(self.rows("model"), [])

    def test_what_is_kept_already_is_not_reported(self):
        self.record("model", MODEL)
        self.assertEqual(figures.keep(self.root), ["model: ./dev it, at 1234567"])
        self.assertEqual(figures.keep(self.root), [])

    def test_a_command_s_lines_are_passed_on(self):
        command = [sys.executable, ROOT / "tests/tested/figures.py", "record", "model", "1234567", "1", "./dev it"]
        passed = subprocess.run(command, input=MODEL, stdout=subprocess.PIPE, text=True, check=True).stdout
        self.assertEqual(passed, MODEL)


def run(commit, ratios_alone=False, **sections):
    conditions = {"commit": commit, "date": "2026-11-22", "processor": "P", "cpus": 2, "compiler": "GCC",
                  "flags": "-O3", "how": "all", "ratios_alone": ratios_alone}
    return {"run": conditions, **sections}


def read_times(ours, floor):
    return {"Read<Tessel>/names:100": {"ns": ours}, "Read<Floor>/names:100": {"ns": floor}}


class Runs(unittest.TestCase):
    """Of the benchmarks."""

    def goal(self, runs):
        """Both times, their ratio and the commit of the goal that reads have beside their floor."""
        row = next(row for row in report.goal_rows(runs, "values") if row[1].startswith("ordered map"))
        return [*row[2:5], row[-1]]

    def test_the_latest_one_that_measured_both_sides_makes_the_row(self):
        runs = [run("c", values={"Read<Tessel>/names:100": {"ns": 1}}), run("b", values=read_times(30, 20)),
                run("a", values=read_times(50, 20))]
        self.assertEqual(self.goal(runs), ["30 ns", "20 ns", "1.50", "b"])

    def test_times_beside_other_work_are_not_shown(self):
        runs = [run("b", ratios_alone=True, values=read_times(60, 20)), run("a", values=read_times(30, 20))]
        self.assertEqual(self.goal(runs), ["", "", "3.00", "b"])
        self.assertEqual(report.time_rows(runs, "values")[1], [("Read names:100", "30 ns", "20 ns", "a")])

    def test_a_row_of_times_is_of_one_run(self):
        runs = [run("b", values={"Read<Tessel>/names:100": {"ns": 10}}), run("a", values=read_times(30, 20))]
        self.assertEqual(report.time_rows(runs, "values"),
                         (("", "libtessel", "at"), [("Read names:100", "10 ns", "b")]))

    def test_a_filter_with_a_bar_stays_in_its_cell(self):
        runs = [run("a")]
        runs[0]["run"]["how"] = "`a|b`"
        self.assertIn(r"| `a\|b` |", report.block("runs", None, runs))

    def test_one_that_no_table_shows_any_more_is_not_kept(self):
        old = run("a", values=read_times(30, 20), trace={"Disabled<Tessel>": {"ns": 1}})
        new = run("b", values=read_times(40, 20))
        self.assertEqual(report.with_run(new, [old]), [new, old])
        newer = run("c", values=read_times(41, 20), trace={"Disabled<Tessel>": {"ns": 2}})
        self.assertEqual(report.with_run(newer, [new, old]), [newer])


if __name__ == "__main__":
    unittest.main()
