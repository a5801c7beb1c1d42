# SPDX-License-Identifier: Apache-2.0
"""How Sphinx makes the site of what docs/site/build.py puts together."""

import re
from pathlib import Path

import furo
from docutils import nodes
from sphinx import addnodes
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


def use_own_style_sheets(app, error):
    if error is None:
        sheet = Path(app.outdir) / "_static/styles/furo.css"
        sheet.write_text(sheet.read_text().replace("/javascript/normalize.css/normalize.css", "../normalize.css"))


class IdRole(XRefRole):
    """`text <id>`: a link to what has this id in Doxygen's XML, for which Breathe makes a label; letter case counts."""

    def process_link(self, env, refnode, has_explicit_title, title, target):
        refnode.attributes.update(reftype="ref", refdomain="std", refexplicit=True)
        return title, target


def setup(app):
    app.add_role("id", IdRole(innernodeclass=nodes.inline, warn_dangling=True))
    app.connect("doctree-read", arrange)
    app.connect("build-finished", use_own_style_sheets)
