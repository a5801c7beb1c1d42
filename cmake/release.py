#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes a release: checks that it can be one, commits the version and the changelogs, makes a source tarball and, from
that, the tests and the Debian packages, and tags the commit. All but the last step happens in a clone, build/release-
VERSION/clone, and so leaves nothing behind when it fails; --dry-run leaves the last step out.
"""

import argparse
import datetime
import email.utils
import io
import re
import shutil
import subprocess
import sys
import tarfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
VERSION_HEADER = "include/tessel/version.h"
CHANGELOG = "CHANGELOG.md"
DEBIAN_CHANGELOG = "cmake/debian/changelog"
HEADERS = ("include/tessel", "libutil/include/util")
COMMANDS = (["./dev", "test"], ["./dev", "package"])  # Run in the unpacked tarball.
VERSION_LINE = r"(#define TESSEL_VERSION_{} )(\d+)"
PARTS = ("MAJOR", "MINOR", "PATCH")
UNRELEASED = re.compile(r"^## Unreleased\n(.*?)(?=^## |\Z)", re.MULTILINE | re.DOTALL)


def git(tree, *arguments):
    return subprocess.run(["git", "-C", tree, *arguments], check=True, stdout=subprocess.PIPE, text=True).stdout.strip()


def numbers(version):
    return tuple(int(part) for part in version.split("."))


def version_of(tree):
    """The version that the header states."""
    header = (tree / VERSION_HEADER).read_text()
    return ".".join(re.search(VERSION_LINE.format(part), header)[2] for part in PARTS)


def faults(tree, version):
    """Why the state of a tree cannot become this version."""
    if not re.fullmatch(r"(0|[1-9]\d*)(\.(0|[1-9]\d?)){2}", version):
        return [f"{version} is not MAJOR.MINOR.PATCH, the last two below 100"]
    found = []
    if (branch := git(tree, "branch", "--show-current")) != "main":
        found.append(f"a release is made on main, not on {branch or 'a commit without a branch'}")
    if git(tree, "status", "--porcelain"):
        found.append("the tree has changes that are not committed")
    for key in ("user.name", "user.email"):
        if subprocess.run(["git", "-C", tree, "config", key], stdout=subprocess.PIPE, check=False).returncode != 0:
            found.append(f"git has no {key}, which the release's commit has as its author's")
    released = [tag[1:] for tag in git(tree, "tag", "--list", "v*").split() if re.fullmatch(r"v\d+\.\d+\.\d+", tag)]
    if released and numbers(version) <= max(map(numbers, released)):
        found.append(f"{version} is not newer than {max(released, key=numbers)}, which is released")
    if numbers(version) < numbers(version_of(tree)):
        found.append(f"{version} is older than {version_of(tree)}, which {VERSION_HEADER} states")
    unreleased = UNRELEASED.search((tree / CHANGELOG).read_text())
    if unreleased is None or not unreleased[1].strip():
        found.append(f"{CHANGELOG} lists nothing under Unreleased")
    return found


def baseline(tree, version):
    """The archive of exported headers with which later versions of this MAJOR stay compatible."""
    return tree / "abi" / f"baseline-{numbers(version)[0]}.tar.xz"


def write_baseline(tree, archive):
    """The exported headers as they are, the same archive each time."""
    with tarfile.open(archive, "w:xz") as out:
        for folder in HEADERS:
            for path in sorted((tree / folder).iterdir()):
                member = tarfile.TarInfo(f"{path.parent.name}/{path.name}")
                member.size = path.stat().st_size
                out.addfile(member, io.BytesIO(path.read_bytes()))


def write_release(tree, version, now):
    """Everything in which the release differs from the state before it."""
    header = (tree / VERSION_HEADER).read_text()
    for part, number in zip(PARTS, numbers(version)):
        header = re.sub(VERSION_LINE.format(part), rf"\g<1>{number}", header)
    (tree / VERSION_HEADER).write_text(header)

    changes = (tree / CHANGELOG).read_text()
    changes = changes.replace("## Unreleased\n", f"## Unreleased\n\n## {version}, {now:%Y-%m-%d}\n", 1)
    (tree / CHANGELOG).write_text(changes)

    packages = (tree / DEBIAN_CHANGELOG).read_text()
    author = re.search(r"^ -- (.*>)", packages, re.MULTILINE)[1]
    same = re.match(rf"libtessel \({re.escape(version)}\).*?^ -- [^\n]*\n\n?", packages, re.MULTILINE | re.DOTALL)
    packages = packages[same.end():] if same else packages
    entry = (f"libtessel ({version}) bookworm; urgency=medium\n\n"
             f"  * Release {version}; {CHANGELOG} of the sources lists the changes.\n\n"
             f" -- {author}  {email.utils.format_datetime(now)}\n")
    (tree / DEBIAN_CHANGELOG).write_text(entry + (f"\n{packages}" if packages else ""))

    if not baseline(tree, version).exists():
        write_baseline(tree, baseline(tree, version))


def release(tree, version, now, commands, dry_run):
    """Makes the release; returns the folder of what it consists of."""
    out = tree / "build" / f"release-{version}"
    shutil.rmtree(out, ignore_errors=True)
    out.mkdir(parents=True)
    clone = out / "clone"
    git(tree, "clone", "--quiet", "--no-hardlinks", ".", str(clone))
    write_release(clone, version, now)
    git(clone, "add", "--all")
    author = [f"user.{key}={git(tree, 'config', f'user.{key}')}" for key in ("name", "email")]
    git(clone, "-c", author[0], "-c", author[1], "commit", "--quiet", "--message", f"Release {version}")

    name = f"libtessel-{version}"
    git(clone, "archive", f"--prefix={name}/", f"--output={out / name}.tar.gz", "HEAD")
    shutil.unpack_archive(out / f"{name}.tar.gz", out)
    for command in commands:
        print("$", *command, flush=True)
        subprocess.run(command, cwd=out / name, check=True)
    for package in (out / name / "build" / "package" / "packages").glob("*.deb"):
        shutil.copy(package, out)

    if not dry_run:
        git(tree, "pull", "--quiet", "--ff-only", str(clone), "main")
        git(tree, "tag", "--annotate", f"v{version}", "--message", f"libtessel {version}")
    shutil.rmtree(clone)
    shutil.rmtree(out / name)
    return out


def main():
    parser = argparse.ArgumentParser(prog="./dev release", description=__doc__)
    parser.add_argument("version", metavar="VERSION", help="MAJOR.MINOR.PATCH")
    parser.add_argument("--dry-run", action="store_true", help="do all but commit and tag on main")
    arguments = parser.parse_args()
    if found := faults(ROOT, arguments.version):
        sys.exit("".join(f"release: {fault}\n" for fault in found).rstrip())
    out = release(ROOT, arguments.version, datetime.datetime.now(datetime.timezone.utc), COMMANDS, arguments.dry_run)
    print(f"{'would be released' if arguments.dry_run else 'released'}: {out.relative_to(ROOT)}")
    for path in sorted(out.iterdir()):
        print(f"  {path.name}")


if __name__ == "__main__":
    main()
