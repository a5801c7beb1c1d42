#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows the report of `tessel simulate` in headless Chromium: it loads without a word on the console, refers to
nothing outside, has marks in every plot, and is laid out well in light and dark, on a phone and on paper.

usage: report_test.py TESSEL SETTINGS_DIR WORK_DIR; the pictures stay in WORK_DIR
"""

import html
import json
import pathlib
import re
import shutil
import subprocess
import sys
from html.parser import HTMLParser

CALLS = 2
PLOTS = 3 + 8 * CALLS
# The HTML elements without an end tag.
VOID = {"meta", "link", "br", "img", "input", "hr"}


def fail(reason):
    sys.exit(f"report_test: {reason}")


class Page(HTMLParser):
    """Counts figures, and the marks in each and in each lane of the time line."""

    def __init__(self):
        super().__init__()
        self.open = []
        self.ids = []
        self.figures = []
        self.lanes = []
        self.texts = []
        self.problems = []

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        classes = (values.get("class") or "").split()
        if tag == "script" or any(name.startswith("on") for name in values):
            self.problems.append(f"a script: <{tag}>")
        for name in ("src", "href", "xlink:href", "data", "action"):
            if name in values and not values[name].startswith(("data:", "#")):
                self.problems.append(f"refers outside: <{tag} {name}={values[name]}>")
        if "plot" in classes:
            self.figures.append(0)
        if tag == "svg" and "lane" in self.open_classes():
            self.lanes.append(0)
        if "mark" in classes and self.draws(tag, values):
            (self.figures if "figure" in [name for name, _ in self.open] else self.lanes)[-1] += 1
        if tag not in VOID:
            self.open.append((tag, classes))

    def handle_endtag(self, tag):
        if tag in VOID:
            return
        while self.open and self.open.pop()[0] != tag:
            pass

    def handle_data(self, data):
        self.texts.append(data)

    def open_classes(self):
        return self.open[-1][1] if self.open else []

    @staticmethod
    def draws(tag, values):
        if tag == "rect":
            return float(values["width"]) > 0 and float(values["height"]) > 0
        return bool(re.search(r"[LVvh]", values.get("d", ""))) and "nan" not in values["d"]


def chromium(*arguments):
    """What the browser wrote to standard output, and what the page wrote to the console."""
    run = subprocess.run(
        ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--enable-logging=stderr",
         "--v=0", *arguments],
        capture_output=True, check=False)
    if run.returncode != 0:
        fail(f"chromium {' '.join(arguments)}: {run.stderr.decode(errors='replace')}")
    console = [line for line in run.stderr.decode(errors="replace").splitlines() if "CONSOLE" in line]
    return run.stdout.decode(), console


# Looks at the report in frames of several widths, and writes what is wrong as JSON.
LAYOUT = """<!DOCTYPE html><meta charset="utf-8"><body>%FRAMES%<script>
const brightness = colour => Math.max(...colour.match(/[0-9.]+/g).slice(0, 3).map(Number));
const apart = (a, b) =>
  a.right <= b.left + 1 || b.right <= a.left + 1 || a.bottom <= b.top + 1 || b.bottom <= a.top + 1;
onload = () => {
  const found = [];
  for (const frame of document.querySelectorAll("iframe")) {
    const page = frame.contentDocument, root = page.documentElement;
    const wrong = what => found.push(frame.width + " px wide: " + what);
    if (root.scrollWidth > root.clientWidth) wrong("the page is " + root.scrollWidth + " px wide");
    const isDark = brightness(frame.contentWindow.getComputedStyle(page.body).backgroundColor) < 128;
    if (isDark !== %DARK%) wrong("the page is " + (isDark ? "dark" : "light"));
    for (const svg of page.querySelectorAll(".plot > svg")) {
      const picture = svg.getBoundingClientRect();
      const texts = [...svg.querySelectorAll("text")].map(text => [text.textContent, text.getBoundingClientRect()]);
      const plot = svg.getAttribute("aria-label");
      texts.forEach(([name, box], index) => {
        if (box.height < 8) wrong(plot + ": too small: " + name);
        if (box.left < picture.left - 1 || box.right > picture.right + 1) wrong(plot + ": cut: " + name);
        for (const [other, place] of texts.slice(index + 1))
          if (!apart(box, place)) wrong(plot + ": overlap: " + name + ", " + other);
      });
    }
  }
  document.body.textContent = JSON.stringify(found);
};
</script>"""
WIDTHS = (390, 820, 1280)


def check_layout(url, work, is_dark):
    """No text overlaps another or is cut, no page is wider than its window, and the theme is the one asked for."""
    page = work / "layout.html"
    frames = "".join(f'<iframe src="{url}" width="{width}" height="900"></iframe>' for width in WIDTHS)
    page.write_text(LAYOUT.replace("%FRAMES%", frames).replace("%DARK%", str(is_dark).lower()))
    dom, console = chromium("--allow-file-access-from-files", scheme(is_dark), "--dump-dom", page.resolve().as_uri())
    found = re.search(r"<body>(\[.*\])</body>", dom, re.S)
    if not found or console:
        fail(f"the layout cannot be looked at: {console}\n{dom}")
    found = json.loads(html.unescape(found.group(1)))
    if found:
        fail(f"{'dark' if is_dark else 'light'}:\n" + "\n".join(found))


def scheme(is_dark):
    return f"--blink-settings=preferredColorScheme={0 if is_dark else 1}"


def main():
    tessel, settings, work = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    report = work / "report.html"
    # Long, with spaces, and with letters that are none of ASCII: as long as a path may be where the clone lies.
    folder = work / "Sitzungen für die längste aller Prüfungen" / ("ohneLücke" * 12)
    shutil.copytree(settings, folder)
    documents = [folder / name for name in ("base.json", "lab.json", "low-bandwidth.json")]
    subprocess.run([tessel, "simulate", "--seconds", "2", "--calls", str(CALLS), "--report", report]
                   + [part for document in documents for part in ("--settings", document)],
                   check=True, stdout=subprocess.DEVNULL)
    url = report.resolve().as_uri()

    dom, console = chromium("--dump-dom", url)
    if console:
        fail("\n".join(console))
    source = report.read_text(encoding="utf-8")
    for outside in ("url(", "@import", "http:", "https:"):
        # A document's own value may be an address; it is text.
        if outside in source.replace("<code>https://metrics.example.net/v2/calls</code>", ""):
            fail(f"refers outside: {outside}")
    page = Page()
    page.feed(dom)
    if page.problems:
        fail("\n".join(page.problems))
    if len(page.figures) != PLOTS or 0 in page.figures:
        fail(f"{PLOTS} plots with marks expected, but these have so many: {page.figures}")
    if len(page.lanes) < 10 or 0 in page.lanes:
        fail(f"lanes of the time line without marks: {page.lanes}")
    text = " ".join(page.texts)
    for part in ("p50", "Mbit/s", "frames/s", "packets/s", "time, s", "bandwidth controller", "RtxDedup"):
        if part not in text:
            fail(f"does not say {part!r}")

    for is_dark in (False, True):
        check_layout(url, work, is_dark)
        chromium("--window-size=1280,4800", f"--screenshot={work}/{'dark' if is_dark else 'light'}.png",
                 scheme(is_dark), url)
    paper = work / "report.pdf"
    chromium("--no-pdf-header-footer", f"--print-to-pdf={paper}", url)
    pages = len(re.findall(rb"/Type\s*/Page\b", paper.read_bytes()))
    # How many changes the tables list depends on how far the calls came.
    if not 3 <= pages <= 100:
        fail(f"{pages} pages on paper")
    print(f"{len(page.figures)} plots, {len(page.lanes)} lanes, {sum(page.figures)} marks, {pages} pages")


main()
