#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The README's table says what docs/tested.json has, and that has what runs of the tests left behind."""

import json
import subprocess
import tempfile
import unittest
from pathlib import Path

import tested

PRESETS = [{"name": "base", "hidden": True}, {"name": "release", "displayName": "As it ships"},
           {"name": "arm64", "displayName": "On ARM"}, {"name": "clang", "displayName": "By Clang"}]
README = f"# A\n\n| other |\n|---|\n\n{tested.SECTION}\nWords.\n\n| old |\n| lines |\n\nMore.\n\n| kept |\n"


class Kept(unittest.TestCase):
    def test_the_readme_has_the_table_of_the_records(self):
        readme = (tested.ROOT / "README.md").read_text()
        records = json.loads((tested.ROOT / "docs/tested.json").read_text())
        self.assertEqual(tested.with_table(readme, tested.table(tested.ROOT, records)), readme,
                         "the README's table is made by './dev tested', never by hand")
        self.assertEqual([run["preset"] for run in records if run["preset"] not in tested.presets(tested.ROOT)], [])


class Tree(unittest.TestCase):
    """A tree in git, with presets, a README and nothing tested."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        (self.root / "docs").mkdir()
        self.write("CMakePresets.json", json.dumps({"configurePresets": PRESETS}))
        self.write("README.md", README)
        self.write("docs/tested.json", "[]\n")
        self.write(".gitignore", "build\n")
        self.git("init", "--quiet")
        self.commit = self.commit_all()

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def git(self, *arguments):
        settings = ("user.name=A", "user.email=a@example.org", "commit.gpgSign=false", "core.hooksPath=/dev/null")
        command = ["git", "-C", self.root, *(word for setting in settings for word in ("-c", setting)), *arguments]
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.strip()

    def commit_all(self):
        self.git("add", "--all")
        self.git("commit", "--quiet", "--message=A")
        return self.git("rev-parse", "--short=7", "HEAD")

    def run_tests(self, preset="release", processor="x86_64", compiler="GNU", statuses=("run",), commit=None):
        """Leaves behind what a run of the tests does."""
        build = f"build/{preset}"
        self.write(f"{build}/CMakeFiles/3.25.1/CMakeSystem.cmake",
                   f'set(CMAKE_HOST_SYSTEM_PROCESSOR "x86_64")\nset(CMAKE_SYSTEM_PROCESSOR "{processor}")\n')
        self.write(f"{build}/CMakeFiles/3.25.1/CMakeCXXCompiler.cmake",
                   f'set(CMAKE_CXX_COMPILER_ID "{compiler}")\nset(CMAKE_CXX_COMPILER_VERSION "12.2.0")\n')
        # CTest gives a test that skipped itself the status of one that could not be started.
        skipped = '<testcase name="A" status="notrun"><skipped message="SKIP_RETURN_CODE=1"/></testcase>\n'
        cases = "".join(skipped if status == "skipped" else f'<testcase name="A" status="{status}"/>\n'
                        for status in statuses)
        self.write(f"{build}/results.xml",
                   f'<testsuite name="(empty)" timestamp="2026-11-22T13:30:00">\n{cases}</testsuite>\n')
        run = tested.record(self.root, self.root / build, self.commit if commit is None else commit)
        self.write(f"{build}/tested.json", json.dumps(run))
        return run

    def rows(self):
        """The table below its head."""
        section = (self.root / "README.md").read_text().partition(tested.SECTION)[2]
        return section.partition("|---|---|---|---|---|\n")[2].partition("\nMore.")[0].splitlines()

    def test_a_run_becomes_a_row(self):
        self.run_tests(statuses=["run"] * 1234 + ["fail", "notrun"])
        self.assertEqual(tested.keep(self.root), [f"release: 1234 of 1236 tests passed at {self.commit}"])
        self.assertEqual(self.rows(),
                         [f"| x86_64 | GCC 12.2.0 | As it ships | 1,234 of 1,236 | {self.commit}, 2026-11-22 |"])

    def test_tests_that_skipped_themselves_are_named(self):
        self.run_tests(statuses=["run", "skipped", "notrun"])
        tested.keep(self.root)
        self.assertEqual(self.rows(),
                         [f"| x86_64 | GCC 12.2.0 | As it ships | 1 of 3, 1 skipped | {self.commit}, 2026-11-22 |"])

    def write_program(self, *tests):
        """Leaves behind what a program of tests does."""
        self.write("build/release/programs/A.xml", f"<testsuites>{''.join(tests)}</testsuites>")

    def test_each_test_of_a_program_that_ran_as_a_whole_counts(self):
        passed, skipped = '<testcase result="completed"/>', '<testcase result="skipped"><skipped/></testcase>'
        failed = '<testcase result="completed"><failure/></testcase>'
        for tests, status, expected in (([passed] * 3, "run", (3, 0, 3)),
                                        ([passed, failed, skipped], "fail", (1, 1, 3)),
                                        ([passed, skipped], "run", (1, 1, 2)), ([passed] * 3, "fail", (3, 0, 4)),
                                        ([passed, skipped], "fail", (1, 1, 3))):
            self.write_program(*tests)
            run = self.run_tests(statuses=[status])
            self.assertEqual((run["passed"], run["skipped"], run["tests"]), expected)

    def test_nothing_else_of_the_readme_changes(self):
        self.run_tests()
        tested.keep(self.root)
        before, _, after = (self.root / "README.md").read_text().partition("\nWords.\n\n")
        self.assertEqual(before, README.partition("\nWords.\n\n")[0])
        self.assertTrue(after.endswith("|\n\nMore.\n\n| kept |\n"), after)

    def test_rows_have_the_order_of_the_presets(self):
        self.run_tests("clang", compiler="Clang")
        tested.keep(self.root)
        self.commit = self.commit_all()
        self.run_tests("arm64", processor="aarch64")
        self.run_tests("release")
        tested.keep(self.root)
        self.assertEqual([row.split(" | ")[:3] for row in self.rows()],
                         [["| x86_64", "GCC 12.2.0", "As it ships"], ["| arm64", "GCC 12.2.0", "On ARM"],
                          ["| x86_64", "Clang 12.2.0", "By Clang"]])

    def test_the_last_run_of_a_preset_takes_the_place_of_an_earlier_one(self):
        self.run_tests()
        tested.keep(self.root)
        self.commit = self.commit_all()
        self.run_tests(statuses=["run", "run", "fail"])
        tested.keep(self.root)
        self.assertEqual(self.rows(),
                         [f"| x86_64 | GCC 12.2.0 | As it ships | 2 of 3 | {self.commit}, 2026-11-22 |"])

    def test_what_is_kept_already_is_not_reported(self):
        self.run_tests()
        tested.keep(self.root)
        self.assertEqual(tested.keep(self.root), [])

    def test_a_run_with_changes_is_not_kept(self):
        self.write("README.md", README + "changed\n")
        self.run_tests(commit=f"{self.commit}-dirty")
        self.assertEqual(tested.keep(self.root), ["release: not kept, it ran with changes that no commit has"])
        self.assertEqual(self.rows(), [])

    def test_a_tree_that_changes_meanwhile_is_not_kept(self):
        before = self.commit
        self.write("docs/more.md", "more\n")
        self.commit_all()
        self.assertEqual(self.run_tests(commit=before)["commit"], f"{before}-dirty")

    def test_a_tree_that_git_does_not_know_is_not_kept(self):
        self.assertEqual(self.run_tests(commit="")["commit"], "-dirty")

    def test_a_preset_that_is_gone_leaves_the_records(self):
        self.run_tests()
        self.run_tests("clang", compiler="Clang")
        tested.keep(self.root)
        self.write("CMakePresets.json", json.dumps({"configurePresets": PRESETS[:2]}))
        tested.keep(self.root)
        records = json.loads((self.root / "docs/tested.json").read_text())
        self.assertEqual([run["preset"] for run in records], ["release"])

    def test_a_readme_without_the_section_is_refused(self):
        self.write("README.md", "# A\n")
        self.run_tests()
        with self.assertRaisesRegex(SystemExit, "has no section '## What is tested'"):
            tested.keep(self.root)


if __name__ == "__main__":
    unittest.main()
