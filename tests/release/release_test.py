#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A release is refused where something is missing, leaves nothing behind when it fails, and states its version
everywhere. Releases are made here of a small tree of its own.
"""

import contextlib
import datetime
import io
import os
import re
import subprocess
import sys
import tarfile
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCE / "cmake"))
sys.dont_write_bytecode = True
import release  # noqa: E402

NOW = datetime.datetime(2027, 1, 31, 12, 0, tzinfo=datetime.timezone.utc)
CHANGES = """# Changes

Words about versions.

## Unreleased

- Something new.

## 0.9.0, 2026-01-01

- Older.
"""


class Release(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        surroundings = {"GIT_CONFIG_GLOBAL": os.devnull, "GIT_CONFIG_SYSTEM": os.devnull}
        for name in [name for name in os.environ if name.startswith("GIT_")]:
            self.addCleanup(os.environ.__setitem__, name, os.environ.pop(name))
        for name, value in surroundings.items():
            os.environ[name] = value
            self.addCleanup(os.environ.pop, name)
        self.tree = Path(folder.name) / "a tree of bücher"
        self.git("init", "--quiet", "--initial-branch=main", str(self.tree), within=folder.name)
        for key, value in (("name", "A Maintainer"), ("email", "maintainer@example.org")):
            self.git("config", f"user.{key}", value)
        self.write("include/tessel/version.h", (SOURCE / "include/tessel/version.h").read_text())
        self.set_version("1.0.0")
        self.write("include/tessel/tessel.h", "int tessel();\n")
        self.write("libutil/include/util/util.h", "int util();\n")
        self.write("CHANGELOG.md", CHANGES)
        self.write("cmake/debian/changelog", "libtessel (0.9.0) bookworm; urgency=medium\n\n  * First.\n\n"
                   " -- The authors <authors@example.org>  Thu, 01 Jan 2026 12:00:00 +0000\n")
        self.write("abi/tessel.exports", "tessel\n")
        self.write(".gitignore", "/build/\n")
        self.commit()

    def git(self, *arguments, within=None):
        return release.git(within or self.tree, *arguments)

    def write(self, file, text):
        path = self.tree / file
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def read(self, file):
        return (self.tree / file).read_text()

    def set_version(self, version):
        header = self.read("include/tessel/version.h")
        for part, number in zip(release.PARTS, version.split(".")):
            header = re.sub(rf"(#define TESSEL_VERSION_{part} )\d+", rf"\g<1>{number}", header)
        self.write("include/tessel/version.h", header)

    def commit(self):
        self.git("add", "--all")
        self.git("commit", "--quiet", "--message", "A change")

    def release(self, version, commands=(), dry_run=False):
        self.assertEqual(release.faults(self.tree, version), [])
        with contextlib.redirect_stdout(io.StringIO()):
            return release.release(self.tree, version, NOW, commands, dry_run)

    def assert_refused(self, version, reason):
        faults = release.faults(self.tree, version)
        self.assertEqual(len(faults), 1, faults)
        self.assertIn(reason, faults[0])

    def test_what_is_no_version_is_refused(self):
        for version in ("", "1", "1.0", "1.0.0.0", "v1.0.0", "1.0.00", "01.0.0", "1.100.0", "1.0.100", "1.0.0-rc1",
                        "-1.0.0"):
            self.assert_refused(version, "is not MAJOR.MINOR.PATCH")

    def test_a_version_that_is_not_newer_is_refused(self):
        self.git("tag", "v1.9.0")
        self.git("tag", "v1.10.0")
        self.git("tag", "vertical")
        for version in ("1.9.1", "1.10.0", "1.0.0"):
            self.assert_refused(version, "is not newer than 1.10.0")
        self.assertEqual(release.faults(self.tree, "1.10.1"), [])
        self.assertEqual(release.faults(self.tree, "2.0.0"), [])

    def test_a_version_older_than_the_headers_is_refused(self):
        self.assert_refused("0.9.9", "is older than 1.0.0")

    def test_another_branch_is_refused(self):
        self.git("checkout", "--quiet", "-b", "feature")
        self.assert_refused("1.0.0", "not on feature")
        self.git("checkout", "--quiet", "--detach")
        self.assert_refused("1.0.0", "on main")

    def test_a_tree_with_changes_is_refused(self):
        self.write("new", "")
        self.assert_refused("1.0.0", "not committed")

    def test_a_release_without_a_change_is_refused(self):
        for changes in (CHANGES.replace("- Something new.\n", ""), CHANGES.replace("## Unreleased", "## Plans")):
            self.write("CHANGELOG.md", changes)
            self.commit()
            self.assert_refused("1.0.0", "lists nothing under Unreleased")

    def test_a_release_without_an_author_is_refused(self):
        for key in ("name", "email"):
            value = self.git("config", f"user.{key}")
            self.git("config", "--unset", f"user.{key}")
            self.assert_refused("1.0.0", f"git has no user.{key}")
            self.git("config", f"user.{key}", value)

    def test_every_fault_is_named_at_once(self):
        self.write("CHANGELOG.md", "")
        self.git("checkout", "--quiet", "-b", "feature")
        self.assertEqual(len(release.faults(self.tree, "0.1.0")), 4)

    def test_the_version_is_stated_everywhere(self):
        self.release("1.2.3")
        self.assertEqual(release.version_of(self.tree), "1.2.3")
        self.assertIn("\n## Unreleased\n\n## 1.2.3, 2027-01-31\n\n- Something new.\n\n## 0.9.0,",
                      self.read("CHANGELOG.md"))
        self.assertRegex(self.read("cmake/debian/changelog"),
                         r"\Alibtessel \(1\.2\.3\) .*\n\n  \* .*\n\n -- The authors <authors@example.org>  "
                         r"Sun, 31 Jan 2027 12:00:00 \+0000\n\nlibtessel \(0\.9\.0\) ")
        self.assertEqual(self.git("tag"), "v1.2.3")
        self.assertEqual(self.git("rev-parse", "v1.2.3^{commit}"), self.git("rev-parse", "main"))
        self.assertEqual(self.git("log", "-1", "--format=%s, %an"), "Release 1.2.3, A Maintainer")
        self.assertEqual(self.git("status", "--porcelain"), "")

    def test_the_changelog_of_the_packages_names_a_version_once(self):
        self.write("cmake/debian/changelog", self.read("cmake/debian/changelog").replace("0.9.0", "1.0.0"))
        self.commit()
        self.release("1.0.0")
        self.assertEqual(self.read("cmake/debian/changelog").count("libtessel ("), 1)

    def test_the_tarball_is_what_the_commands_see(self):
        look = ["sh", "-c", "mkdir -p build/package/packages && cp CHANGELOG.md build/package/packages/seen.deb"]
        out = self.release("1.2.3", [look])
        self.assertEqual(sorted(path.name for path in out.iterdir()), ["libtessel-1.2.3.tar.gz", "seen.deb"])
        self.assertEqual((out / "seen.deb").read_text(), self.read("CHANGELOG.md"))
        with tarfile.open(out / "libtessel-1.2.3.tar.gz") as tarball:
            self.assertEqual({name.partition("/")[0] for name in tarball.getnames()}, {"libtessel-1.2.3"})

    def test_a_dry_run_changes_nothing(self):
        before = self.git("rev-parse", "main")
        out = self.release("1.2.3", [["true"]], dry_run=True)
        self.assertTrue((out / "libtessel-1.2.3.tar.gz").exists())
        self.assertEqual((self.git("rev-parse", "main"), self.git("tag"), self.git("status", "--porcelain")),
                         (before, "", ""))

    def test_a_release_that_fails_changes_nothing(self):
        before = self.git("rev-parse", "main")
        with self.assertRaises(subprocess.CalledProcessError):
            self.release("1.2.3", [["false"]])
        self.assertEqual((self.git("rev-parse", "main"), self.git("tag"), self.git("status", "--porcelain")),
                         (before, "", ""))
        self.release("1.2.3")

    def test_the_first_release_of_a_major_keeps_its_headers(self):
        self.release("1.2.3")
        kept = (self.tree / "abi/baseline-1.tar.xz").read_bytes()
        with tarfile.open(self.tree / "abi/baseline-1.tar.xz") as archive:
            self.assertEqual(archive.getnames(), ["tessel/tessel.h", "tessel/version.h", "util/util.h"])
            self.assertEqual(archive.extractfile("tessel/tessel.h").read(), b"int tessel();\n")
        self.write("include/tessel/tessel.h", "int other();\n")
        self.write("CHANGELOG.md", self.read("CHANGELOG.md").replace("## Unreleased\n", "## Unreleased\n\n- More.\n"))
        self.commit()
        self.release("1.3.0")
        self.assertEqual((self.tree / "abi/baseline-1.tar.xz").read_bytes(), kept)
        self.write("CHANGELOG.md", self.read("CHANGELOG.md").replace("## Unreleased\n", "## Unreleased\n\n- More.\n"))
        self.commit()
        self.release("2.0.0")
        self.assertTrue((self.tree / "abi/baseline-2.tar.xz").exists())

    def test_this_tree_states_one_version(self):
        version = release.version_of(SOURCE)
        self.assertTrue((SOURCE / "cmake/debian/changelog").read_text().startswith(f"libtessel ({version}) "))
        self.assertRegex((SOURCE / "CHANGELOG.md").read_text(), r"\n## Unreleased\n")


if __name__ == "__main__":
    unittest.main()
