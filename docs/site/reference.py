# SPDX-License-Identifier: Apache-2.0
"""Writes the reference: one page for each exported header, which Breathe fills from Doxygen's XML. At its top are a
table of the threads on which its operations may run and the line that includes it.
"""

import re
import sys

from contents import REFERENCE
from headers import SECTIONS, heading, text_of

TOGGLES = "include/tessel/KalFeatureToggles.def"


def rst(element):
    """The text of a paragraph of Doxygen's XML, on one line of reStructuredText."""
    text = escape(element.text)
    for part in element:
        if part.tag == "title":
            pass
        elif part.tag == "computeroutput":
            text += f"``{text_of(part)}``"
        elif part.tag == "ref" and not part.get("refid").endswith("_8h"):  # a header need not have a page
            text += link(text_of(part), part.get("refid"))
        else:
            text += rst(part)
        text += escape(part.tail)
    return re.sub(r"\s+", " ", text)


def escape(text):
    return re.sub(r"([\\`*_|<>])", r"\\\1", text or "")


def link(text, refid):
    return f":id:`{escape(text)} <{refid}>`"


def title(text, line):
    return [text, line * len(text), ""]


def directive(kind, argument, *options):
    return [f".. {kind}:: {argument}", *(f"   {option}" for option in options), ""]


def table(widths, rows, *options):
    """A table whose first row is its heading; no table without other rows."""
    lines = directive("list-table", "", ":header-rows: 1", f":widths: {widths}", *options)
    for row in rows:
        lines += [f"   {'-' if number else '* -'} {cell}".replace("   - ", "     - ")
                  for number, cell in enumerate(row)]
    return [*lines, ""] if len(rows) > 1 else []


def first_sentence(compound):
    for kind in ("brief", "detailed"):
        paragraph = compound.find(f"{kind}description/para")
        if paragraph is not None and (text := rst(paragraph).strip()):
            return re.match(r".*?[.;](?= |$)|.*", text)[0].rstrip(".:;") + "."
    return ""


class Page:
    """The page of a header."""

    def __init__(self, name, page_title, header, compounds):
        self.include = name
        self.name = re.sub(r"\W", "-", name.split("/")[-1].removesuffix(".h"))
        self.header = header
        self.compounds = compounds
        own = [inner.get("refid") for inner in header.findall("innerclass")]
        self.classes = [compounds[refid] for refid in own if not self.is_inside_another(refid)]
        stem = name.split("/")[-1].removesuffix(".h")
        self.main = next((compound for compound in self.classes if self.short(compound) == stem), None)
        self.title = page_title or stem
        if page_title is None and self.main is None:
            sys.exit(f"docs/site/contents.py: {name} has no class {stem}, and needs a title")

    def is_inside_another(self, refid):
        return any(inner.get("refid") == refid for compound in self.compounds.values()
                   if compound.get("kind") in ("class", "struct") for inner in compound.findall("innerclass"))

    @staticmethod
    def short(compound):
        return re.sub(r"<.*", "", text_of(compound.find("compoundname"))).split("::")[-1].strip()

    def brief(self):
        """What the page is about: of the class of its name, of the header, or of what comes first in that."""
        subjects = [self.main] if self.main is not None else [self.header, *self.classes, *self.free_members()]
        brief = next(filter(None, map(first_sentence, subjects)), None)
        return brief or sys.exit(f"{self.include} has nothing that says in a sentence what it is for: add it as @file")

    def free_members(self):
        """What the header declares outside of classes."""
        place = self.header.find("location").get("file")
        scopes = [self.header]
        scopes += [compound for compound in self.compounds.values() if compound.get("kind") == "namespace"]
        seen = set()
        for member in (member for scope in scopes for member in scope.iterfind("sectiondef/memberdef")):
            if member.find("location").get("file") == place and member.get("id") not in seen:
                seen.add(member.get("id"))
                yield member

    def thread_rows(self):
        """Who may be called on which threads: the header, then its classes and operations that say so themselves."""
        said = heading(self.header.find("detaileddescription"), "Threads")
        if said is not None:
            yield "every function", rst(said).strip()
        for member in self.free_members():
            yield from self.row_of_member(member, "")
        for compound in self.classes:
            yield from self.rows_of_class(compound)

    def rows_of_class(self, compound):
        name = self.short(compound)
        said = heading(compound.find("detaileddescription"), "Threads")
        if said is not None:
            yield link(name, compound.get("id")), rst(said).strip()
        for base in compound.findall("basecompoundref"):
            if said is None and base.get("refid") in self.compounds:
                yield link(name, compound.get("id")), f"As {link(text_of(base), base.get('refid'))}."
        for member in compound.iterfind("sectiondef/memberdef"):
            if member.get("prot") != "private":
                yield from self.row_of_member(member, "" if compound is self.main else f"{name}::")
        for inner in compound.findall("innerclass"):
            if inner.get("refid") in self.compounds:
                yield from self.rows_of_class(self.compounds[inner.get("refid")])

    @staticmethod
    def row_of_member(member, scope):
        said = heading(member.find("detaileddescription"), "Threads")
        if said is not None:
            yield link(f"{scope}{text_of(member.find('name'))}()", member.get("id")), rst(said).strip()

    def lines(self):
        kinds = {SECTIONS[member.get("kind")] for member in self.free_members()}
        lines = title(self.title, "=")
        spaces = [text_of(space) for space in self.header.findall("innernamespace")]
        spaces = [f", namespace ``{space}``" for space in spaces if space not in ("std", "kalStore::internal")]
        lines += [f"``#include <{self.include}>``{spaces[0] if len(spaces) == 1 else ''}", ""]
        rows = merged(self.thread_rows())
        lines += table("30 70", [("operation", "threads"), *rows], ":class: threads")
        sections = " ".join(["briefdescription", "detaileddescription", *sorted(kinds)])
        free = directive("doxygenfile", self.header.find("location").get("file"), f":sections: {sections}")
        own = []
        for compound in self.classes:
            kind = "doxygenstruct" if compound.get("kind") == "struct" else "doxygenclass"
            own += directive(kind, text_of(compound.find("compoundname")), ":members:", ":protected-members:")
        for concept in self.compounds.values():
            if concept.get("kind") == "concept" and concept.find("includes").text == self.include:
                own += directive("doxygenconcept", text_of(concept.find("compoundname")))
        # A class comes before the functions that go with it, and a header's own description before the rest.
        lines += own + free if self.main is not None else free + own
        return lines


def merged(rows):
    """Overloads that say the same have one row."""
    return list({(re.sub(r"<.*", "", name), threads): (name, threads) for name, threads in rows}.values())


def toggle_lines(root):
    """The catalogue of feature toggles, which is a file of macros that Doxygen cannot read."""
    row = re.compile(r'KAL_FT\((\d+), (\w+), "([^"]*)", (\w+), "([^"]*)"\)'
                     r'(?:\nKAL_FT_RANGE\(\2, (\S+), (\S+)\))?')
    text = (root / TOGGLES).read_text()
    rows = row.findall(text)
    ranges = sum(1 for toggle in rows if toggle[5])
    if len(rows) != text.count("\nKAL_FT(") or ranges != text.count("\nKAL_FT_RANGE("):
        sys.exit(f"{TOGGLES}: not every row has the form that is read here")
    heads = [("id", "enumerator and key", "kind", "meaning")]
    return title("Catalogue", "-") + table("8 40 10 42", heads + [
        (number, f"``KAL_FT_{name}``" + (f" ``{key}``" if key != name else ""), kind,
         escape(meaning + (f", {least} to {most}" if least else "")))
        for number, name, key, kind, meaning, least, most in rows], ":class: catalogue")


def write_reference(root, folder, compounds):
    """Writes a page for each part and each header of it into the folder; the names of the parts' pages, in order."""
    headers = {header.find("location").get("file").split("include/", 1)[1]: header
               for header in compounds.values() if header.get("kind") == "file"}
    listed = {name for part in REFERENCE.values() for name in part}
    for name in sorted(listed - headers.keys()):
        sys.exit(f"docs/site/contents.py: there is no header {name}, or it describes nothing")
    for name in sorted(headers.keys() - listed):
        page = Page(name, name, headers[name], compounds)
        if page.classes or any(member.get("kind") == "function" for member in page.free_members()):
            sys.exit(f"{name} has no page: add it to REFERENCE in docs/site/contents.py, where a reader would look "
                     "for it")
    folder.mkdir(parents=True)
    names = []
    for part, entries in REFERENCE.items():
        pages = [Page(name, page_title, headers[name], compounds) for name, page_title in entries.items()]
        for page in pages:
            lines = page.lines()
            if page.name == "KalFeatureToggleID":
                lines += toggle_lines(root)
            (folder / f"{page.name}.rst").write_text("\n".join(lines))
        rows = [(f":doc:`{page.name}`", page.brief()) for page in pages]
        lines = title(part, "=") + table("35 65", [("page", "what it is"), *rows])
        lines += directive("toctree", "", ":hidden:") + [f"   {page.name}" for page in pages]
        names.append("part-" + re.sub(r"\W+", "-", part.lower()))
        (folder / f"{names[-1]}.rst").write_text("\n".join([*lines, ""]))
    return names
