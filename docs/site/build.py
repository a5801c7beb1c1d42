#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the site build/docs/html of the guides and the exported headers, and checks it: every operation is described,
links lead somewhere, no page loads anything from another host, none is wider than a phone, and the scripts run. Any
warning of Doxygen or Sphinx is an error.
"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

from checks import check_links, check_in_browser
from contents import SECTIONS
from headers import read_compounds, run_doxygen, tidy
from operations import check_operations
from reference import write_reference

ROOT = Path(__file__).resolve().parents[2]
OUT = ROOT / "build" / "docs"
SOURCE = OUT / "source"  # what Sphinx reads: the tree's documents in their places, the reference, and the start page
HTML = OUT / "html"


def documents():
    """The documents of the tree, without the start page."""
    paths = [*ROOT.glob("*.md"), *(ROOT / "docs").glob("*.md"), *(ROOT / "docs" / "guides").glob("*.md")]
    return sorted(path.relative_to(ROOT) for path in paths if path != ROOT / "docs" / "index.md")


def sections(parts):
    """The pages of each section, in the order of reading."""
    pages = [str(path.with_suffix("")) for path in documents()] + [f"reference/{part}" for part in parts]
    page_of = {name: re.sub(r".*<(.*)>", r"\1", name) for names in SECTIONS.values() for name in names}
    for section, names in SECTIONS.items():
        found = []
        for name in names:
            folder, _, last = page_of[name].rpartition("/")
            if last != "*":
                found += [name] if page_of[name] in pages else []
            else:
                found += [page for page in pages if page not in page_of.values() and page.rpartition("/")[0] == folder]
        yield section, found


def stage(compounds):
    """Puts together what Sphinx reads."""
    for path in documents():
        link(path)
    for path in ["docs/images", "docs/recording.schema.json", "LICENSE",
                 *(path.relative_to(ROOT) for path in ROOT.glob("docs/guides/*.svg"))]:
        link(path)
    parts = write_reference(ROOT, SOURCE / "reference", compounds)
    # The start page is one folder above its place in the tree, and leads to pages rather than headers.
    start = (ROOT / "docs" / "index.md").read_text()
    start = re.sub(r"\]\((\.\./)?(?=[\w./-]+\))", lambda up: "](" if up[1] else "](docs/", start)
    lines = [re.sub(r"\]\(include/\w+/(\w+)\.h\)", r"](reference/\1.rst)", start)]
    for section, pages in sections(parts):
        lines += ["```{toctree}", ":hidden:", f":caption: {section}", *pages, "```", ""]
    (SOURCE / "index.md").write_text("\n".join(lines))


def link(path):
    target = SOURCE / path
    target.parent.mkdir(parents=True, exist_ok=True)
    target.symlink_to(ROOT / path)


def run_sphinx():
    command = ["sphinx-build", "-q", "-W", "--keep-going", "-j", "auto", "-b", "html", "-c", ROOT / "docs" / "site"]
    return subprocess.run([*command, "-d", OUT / "doctrees", SOURCE, HTML], cwd=ROOT, check=False).returncode == 0


def main():
    shutil.rmtree(OUT, ignore_errors=True)
    OUT.mkdir(parents=True)
    results = [run_doxygen(ROOT)]
    compounds = read_compounds(OUT / "xml")
    results.append(check_operations(compounds))
    stage(compounds)
    tidy(OUT / "xml")
    results += [run_sphinx(), check_links(HTML), check_in_browser(HTML)]
    print(f"docs: {(HTML / 'index.html').relative_to(ROOT)}")
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
