# SPDX-License-Identifier: Apache-2.0
"""Checks of the finished site."""

import html
import json
import re
import shutil
import subprocess
import sys
from html.parser import HTMLParser
from urllib.parse import unquote, urlsplit

PHONE = 390  # pixels


class Page(HTMLParser):
    """What a page has to link to, where it links to, and what a browser loads with it."""

    def __init__(self, path):
        super().__init__()
        self.path = path
        self.ids = set()
        self.links = []
        self.loads = []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.ids.add(values.get("id"))
        if tag == "a":
            self.ids.add(values.get("name"))
        target = values.get("src") or values.get("data") or values.get("href")
        if target:
            is_link = tag == "a" or (tag == "link" and values.get("rel") in ("next", "prev", "index", "search"))
            (self.links if is_link else self.loads).append(target)


def check_links(folder):
    """Prints the links that lead nowhere, and what would be loaded from elsewhere; whether there is neither."""
    pages = {path.resolve(): Page(path) for path in folder.rglob("*.html") if "_static" not in path.parts}
    wrong = set()
    for page in pages.values():
        name = page.path.relative_to(folder)
        for target in page.links + page.loads:
            parts = urlsplit(target)
            if parts.scheme or parts.netloc:
                if target in page.loads and parts.scheme != "data":
                    wrong.add(f"{name}: loads {target}")
                continue
            path = (page.path.parent / unquote(parts.path)).resolve() if parts.path else page.path.resolve()
            if not path.exists():
                wrong.add(f"{name}: there is no {target}")
            elif parts.fragment and path in pages and unquote(parts.fragment) not in pages[path].ids:
                wrong.add(f"{name}: there is no {target}")
    for path in [*folder.rglob("*.css"), *folder.rglob("*.svg")]:
        for target in re.findall(r"(?:url\(|@import (?!url))['\"]?([^'\")#]+)", path.read_text(encoding="utf-8")):
            if not target.startswith("data:") and not (path.parent / unquote(urlsplit(target).path)).exists():
                wrong.add(f"{path.relative_to(folder)}: loads {target}")
    for complaint in sorted(wrong):
        print(complaint, file=sys.stderr)
    print(f"docs: {len(pages)} pages, {sum(len(page.links) for page in pages.values())} links, {len(wrong)} wrong")
    return bool(pages) and not wrong


# Opens one page after the other in a frame as wide as a phone, and writes as JSON what is wrong with which: it is
# wider, or the theme's script, which takes a class away, has not run.
LAYOUT = """<!DOCTYPE html><meta charset="utf-8"><body><script>
const pages = %PAGES%, found = [];
const frame = document.createElement("iframe");
frame.width = %WIDTH%, frame.height = 844;
frame.onload = () => {
  const root = frame.contentDocument.documentElement;
  if (root.scrollWidth > root.clientWidth) found.push(pages[0] + " is " + root.scrollWidth + " px wide");
  if (root.classList.contains("no-js")) found.push(pages[0] + ": the theme's script does not run");
  pages.shift();
  next();
};
const next = () => {
  if (pages.length) frame.src = pages[0];
  else document.body.textContent = JSON.stringify(found);
};
next();
document.body.append(frame);
</script>"""


def check_in_browser(folder):
    """Prints the pages that a phone would have to scroll sideways, and those without their script; whether there are
    none."""
    browser = shutil.which("chromium")
    if browser is None:
        print(f"docs: SKIPPED, no chromium: that pages fit into {PHONE} px and their scripts run", file=sys.stderr)
        return True
    pages = sorted(str(path.relative_to(folder)) for path in folder.rglob("*.html") if "_static" not in path.parts)
    page = folder.parent / "layout.html"
    urls = [(folder / name).resolve().as_uri() for name in pages]
    page.write_text(LAYOUT.replace("%PAGES%", json.dumps(urls)).replace("%WIDTH%", str(PHONE)))
    run = subprocess.run(
        [browser, "--headless", "--no-sandbox", "--disable-gpu", "--allow-file-access-from-files",
         "--virtual-time-budget=3600000", "--dump-dom", page.resolve().as_uri()],
        capture_output=True, text=True, check=False)
    found = re.search(r"<body>(\[.*\])</body>", run.stdout, re.S)
    if not found:
        print(f"the pages cannot be looked at: {run.stdout}{run.stderr}", file=sys.stderr)
        return False
    wrong = json.loads(html.unescape(found[1]))
    for complaint in wrong:
        print(complaint, file=sys.stderr)
    print(f"docs: {len(pages)} pages looked at {PHONE} px wide, {len(wrong)} too wide or without their script")
    return bool(pages) and not wrong
