#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes build/docs/html of the guides and the public headers, and checks that every operation is described: what it
does, what it returns, on which threads it may run, and an example. The last two may be in the comment of its class, of
a base of it, or of its header. An argument whose name says it all needs no line. Links must lead somewhere, and any
warning of Doxygen is an error.
"""

import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path
from urllib.parse import unquote

ROOT = Path(__file__).resolve().parent.parent
OUT = ROOT / "build" / "docs"
TOGGLES = "include/tessel/KalFeatureToggles.def"


def write_toggles_page(path):
    """The catalogue of feature toggles, which is a file of macros that Doxygen cannot read."""
    row = re.compile(r'KAL_FT\((\d+), (\w+), "([^"]*)", (\w+), "([^"]*)"\)')
    text = (ROOT / TOGGLES).read_text()
    rows = row.findall(text)
    if len(rows) != text.count("\nKAL_FT("):
        sys.exit(f"{TOGGLES}: not every row has the form that is read here")
    lines = ["# Catalogue of feature toggles {#toggle_catalogue}", "", "| id | enumerator | key | kind | meaning |"]
    lines += ["|--:|---|---|---|---|"]
    lines += [f"| {id} | `KAL_FT_{name}` | `{key}` | {kind} | {meaning} |" for id, name, key, kind, meaning in rows]
    path.write_text("\n".join(lines) + "\n")


def run_doxygen():
    shutil.rmtree(OUT, ignore_errors=True)
    OUT.mkdir(parents=True)
    toggles = OUT / "toggles.md"
    write_toggles_page(toggles)
    inputs = [path.name for path in sorted(ROOT.glob("*.md"))] + ["docs", "include", "libutil/include", str(toggles)]
    config = (ROOT / "docs" / "Doxyfile").read_text() + f"INPUT = {' '.join(inputs)}\n"
    return subprocess.run(["doxygen", "-"], cwd=ROOT, input=config, text=True).returncode == 0


def text_of(element):
    return "".join(element.itertext()).strip() if element is not None else ""


class Scope:
    """A class or a header: what it says for all its operations."""

    def __init__(self, compound):
        self.kind = compound.get("kind")
        self.name = text_of(compound.find("compoundname"))
        self.bases = [base.get("refid") for base in compound.findall("basecompoundref")]
        self.outer = None
        self.is_described = any(text_of(compound.find(f"{kind}description")) for kind in ("brief", "detailed"))
        self.says = says(compound.find("detaileddescription"))
        self.functions = compound.findall("sectiondef/memberdef[@kind='function']")
        # A friend with arguments is an operator; one without is a class, which is no operation.
        friends = compound.findall("sectiondef/memberdef[@kind='friend']")
        self.functions += [friend for friend in friends if text_of(friend.find("argsstring"))]


def says(description):
    """The headings of a description."""
    if description is None:
        return set()
    return {text_of(title) for title in description.iterfind(".//simplesect[@kind='par']/title")}


def read_scopes():
    compounds = {}
    for entry in ElementTree.parse(OUT / "xml" / "index.xml").getroot():
        if entry.get("kind") in ("class", "struct", "file", "namespace"):
            refid = entry.get("refid")
            compounds[refid] = ElementTree.parse(OUT / "xml" / f"{refid}.xml").find("compounddef")
    scopes = {refid: Scope(compound) for refid, compound in compounds.items()}
    for refid, compound in compounds.items():
        for inner in compound.findall("innerclass"):
            if inner.get("refid") in scopes and scopes[refid].kind not in ("file", "namespace"):
                scopes[inner.get("refid")].outer = refid
    return scopes


def said_for_all(scopes, refid):
    """What a class says for its operations, or a base or the class around it does."""
    scope = scopes.get(refid)
    if scope is None:
        return set()
    return scope.says.union(*(said_for_all(scopes, other) for other in [*scope.bases, scope.outer]))


def is_copy_or_end(function, scope):
    """Copies, moves, comparisons and destructors do what their names say."""
    name = text_of(function.find("name"))
    own = scope.name.split("::")[-1].split("<")[0].strip()
    types = [text_of(parameter.find("type")) for parameter in function.findall("param")]
    is_copy = name == own and len(types) == 1 and f"{own} &" in types[0]
    return is_copy or name in ("operator=", "operator==", f"~{own}")


def lacks(function, scope, said):
    """The headings that an operation lacks."""
    arguments = text_of(function.find("argsstring"))
    if arguments == "()=default" or arguments.endswith("=delete") or is_copy_or_end(function, scope):
        return
    description = function.find("detaileddescription")
    if not text_of(function.find("briefdescription")) and not text_of(description):
        yield "a description"
        return
    kind = text_of(function.find("type")).removeprefix("consteval").removeprefix("constexpr").strip()
    returns = kind not in ("", "void") or text_of(function.find("name")).startswith("operator ")
    if returns and not text_of(description.find(".//simplesect[@kind='return']")):
        yield "what it returns"
    for heading in ("Threads", "Example"):
        if heading not in said | says(description):
            yield f"'{heading}', here or at its class or header"


def check_operations():
    """Prints what the description of an operation lacks; whether nothing is."""
    scopes = read_scopes()
    said_by_header = {scope.name: scope.says for scope in scopes.values() if scope.kind == "file"}
    seen, complaints = set(), []
    for refid, scope in scopes.items():
        for function in scope.functions:
            if function.get("prot") == "private" or function.get("id") in seen:
                continue
            seen.add(function.get("id"))
            location = function.find("location")
            file = Path(location.get("file"))
            said = said_for_all(scopes, refid) | said_by_header[file.name]
            name = text_of(function.find("definition")) + text_of(function.find("argsstring"))
            place = f"{file}:{location.get('line')}: {name}"
            complaints += [f"{place} lacks {heading}" for heading in lacks(function, scope, said)]
            if not scope.is_described:
                complaints.append(f"{place} has no page while nothing is said of its header: @file")
    for complaint in sorted(complaints):
        print(complaint, file=sys.stderr)
    print(f"docs: {len(seen)} operations described, {len(complaints)} headings missing")
    return seen and not complaints


def check_links():
    """Prints the links and images that lead nowhere; whether there are none."""
    dangling = set()
    for page in (OUT / "html").glob("*.html"):
        for target in re.findall(r'(?:href|src|data)="([^"#?:]+)[^":]*"', page.read_text()):
            if not (page.parent / unquote(target)).exists():
                dangling.add(f"{page.name}: there is no {target}")
    for complaint in sorted(dangling):
        print(complaint, file=sys.stderr)
    return not dangling


if __name__ == "__main__":
    results = [run_doxygen(), check_operations(), check_links()]
    print(f"docs: {(OUT / 'html' / 'index.html').relative_to(ROOT)}")
    sys.exit(0 if all(results) else 1)
