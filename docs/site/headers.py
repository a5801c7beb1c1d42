# SPDX-License-Identifier: Apache-2.0
"""What Doxygen reads in the exported headers."""

import subprocess
import xml.etree.ElementTree as ElementTree

# What Doxygen calls the part of a header with members of a kind.
SECTIONS = {"define": "define", "enum": "enum", "function": "func", "typedef": "typedef", "variable": "var"}


def run_doxygen(root):
    """Reads the headers; whether there is nothing to warn of."""
    return subprocess.run(["doxygen", "docs/site/Doxyfile"], cwd=root, check=False).returncode == 0


def read_compounds(folder):
    """The classes, headers and namespaces in Doxygen's XML, by their ids."""
    compounds = {}
    for entry in ElementTree.parse(folder / "index.xml").getroot():
        if entry.get("kind") in ("class", "struct", "concept", "file", "namespace"):
            refid = entry.get("refid")
            compounds[refid] = ElementTree.parse(folder / f"{refid}.xml").find("compounddef")
    return compounds


def text_of(element):
    return " ".join("".join(element.itertext()).split()) if element is not None else ""


def heading(description, title):
    """The paragraph with this heading in a description; None without one."""
    if description is None:
        return None
    return next((part for part in description.iterfind(".//simplesect[@kind='par']")
                 if text_of(part.find("title")) == title), None)


def tidy(folder):
    """Leaves in the XML what a page shows, where Breathe looks for it.

    What a class says of threads is in the table at the page's top, the feature toggles are in the catalogue, and that a
    function is inline is for the compiler. What a header declares in a namespace becomes its own, by its whole name.
    """
    trees = {path: ElementTree.parse(path) for path in folder.glob("*.xml")}
    files = {}
    for tree in trees.values():
        for compound in tree.iter("compounddef"):
            remove_threads(compound.find("detaileddescription"))
            if compound.get("kind") == "file":
                files[compound.find("location").get("file")] = compound
        for member in tree.iter("memberdef"):
            member.set("inline", "no")
            if text_of(member.find("name")) == "KalFeatureToggleID":
                for value in member.findall("enumvalue"):
                    member.remove(value)
    for tree in trees.values():
        for namespace in tree.findall("compounddef[@kind='namespace']"):
            for section in namespace.findall("sectiondef"):
                for member in section.findall("memberdef"):
                    section.remove(member)
                    add(files[member.find("location").get("file")], member)
    for path, tree in trees.items():
        tree.write(path, encoding="UTF-8", xml_declaration=True)


def remove_threads(description):
    threads = heading(description, "Threads")
    if threads is not None:
        next(around for around in description.iter() if threads in list(around)).remove(threads)


def add(header, member):
    member.find("name").text = text_of(member.find("qualifiedname"))
    kind = SECTIONS[member.get("kind")]
    section = header.find(f"sectiondef[@kind='{kind}']")
    if section is None:
        section = ElementTree.SubElement(header, "sectiondef", kind=kind)
    section.append(member)
