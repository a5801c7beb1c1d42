# SPDX-License-Identifier: Apache-2.0
"""How Sphinx makes the site of what docs/site/build.py puts together."""

import re
from pathlib import Path

import furo
from docutils import nodes
from sphinx import addnodes
from sphinx.domains.cpp import CPPDomain
from sphinx.roles import XRefRole

ROOT = Path(__file__).resolve().parents[2]

project = "libtessel"
parts = re.findall(r"VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", (ROOT / "include/tessel/version.h").read_text(), re.M)
version = ".".join(parts)
extensions = ["myst_parser", "breathe"]
breathe_projects = {project: str(ROOT / "build/docs/xml")}
breathe_default_project = project
myst_heading_anchors = 3
highlight_language = "none"
smartquotes_action = "D"  # dashes; quotes stay as they are written

html_theme = "furo"
html_title = f"{project} {version}"
html_static_path = ["static"]
html_css_files = ["site.css"]
html_copy_source = False
html_show_copyright = False
html_domain_indices = False

# The style sheet of the distribution's furo is dark when the reader asks for it, but not when the system does, and
# looks for another one where a web server would have it.
FURO = Path(furo.__file__).parent / "theme/furo/static/styles/furo.css"
NORMALIZE = Path("/usr/share/nodejs/normalize.css/normalize.css")
dark = re.search(r'body\[data-theme="dark"\] \{([^}]*)\}', FURO.read_text())[1]
html_theme_options = {"dark_css_variables": dict(re.findall(r"--([\w-]+): ([^;]+);", dark))}
html_static_path.append(str(NORMALIZE))


def arrange(_, document):
    """What Doxygen puts into a paragraph follows it, and arguments and results come before the example."""
    blocks = (nodes.definition_list, nodes.literal_block, nodes.bullet_list, nodes.enumerated_list, nodes.table)
    for paragraph in list(document.findall(nodes.paragraph)):
        for block in reversed([child for child in paragraph if isinstance(child, blocks)]):
            paragraph.remove(block)
            paragraph.parent.insert(paragraph.parent.index(paragraph) + 1, block)
        if not paragraph.astext().strip() and not any(paragraph.findall(nodes.image)):
            paragraph.parent.remove(paragraph)
    for content in document.findall(addnodes.desc_content):
        if len(content) and content[-1].astext() == "Values:":  # of an enum whose values are elsewhere on the page
            content.pop()
        fields = next((child for child in content if isinstance(child, nodes.field_list)), None)
        headed = next((child for child in content if isinstance(child, nodes.definition_list)), None)
        if fields and headed:
            content.remove(fields)
            content.insert(content.index(headed), fields)


def entries_of(parent, page):
    """A list of the classes and functions below a node: each name once, which leads to its first overload."""
    entries = {}
    for child in parent.children:
        if isinstance(child, addnodes.desc) and child["objtype"] in ("class", "struct", "function"):
            signature = child[0]
            name = [part.astext() for part in signature.findall(addnodes.desc_name)][-1]
            if name not in entries:
                link = nodes.reference(text=name, internal=True, refuri=page, anchorname=f"#{signature['ids'][0]}")
                line = addnodes.compact_paragraph("", "", link)
                entries[name] = nodes.list_item("", line, *entries_of(child[-1], page))
        elif not isinstance(child, (addnodes.desc, nodes.Text)):
            for entry in entries_of(child, page):
                entries |= {item.astext(): item for item in entry}
    return [nodes.bullet_list("", *entries.values())] if entries else []


def list_operations(app, document):
    """The contents of a page of the reference, in which Sphinx lists no more than headings, have its operations."""
    page = app.env.docname
    if page.startswith("reference/"):
        app.env.tocs[page][0] += entries_of(document, page)


def make_files_work(app, error):
    """The distribution's furo has a script that imports another one, which no page can that loads it as it does."""
    if error is None:
        static = Path(app.outdir) / "_static"
        sheet = static / "styles/furo.css"
        sheet.write_text(sheet.read_text().replace("/javascript/normalize.css/normalize.css", "../normalize.css"))
        script = static / "scripts/furo.js"
        imported = re.compile(r'^import \w+ from "\./(.*)";\n', re.M)
        script.write_text(imported.sub(lambda line: (script.parent / line[1]).read_text(), script.read_text()))


class Declarations(CPPDomain):
    """A search finds what a header declares, without the parameters of each operation."""

    def get_objects(self):
        return (found for found in super().get_objects() if found[2] not in ("functionParam", "templateParam"))


class IdRole(XRefRole):
    """`text <id>`: a link to what has this id in Doxygen's XML, for which Breathe makes a label; letter case counts."""

    def process_link(self, env, refnode, has_explicit_title, title, target):
        refnode.attributes.update(reftype="ref", refdomain="std", refexplicit=True)
        return title, target


def setup(app):
    app.add_domain(Declarations, override=True)
    app.add_role("id", IdRole(innernodeclass=nodes.inline, warn_dangling=True))
    app.connect("doctree-read", arrange)
    app.connect("doctree-read", list_operations, priority=600)  # when Sphinx has made the contents
    app.connect("build-finished", make_files_work)
