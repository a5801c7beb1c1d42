# SPDX-License-Identifier: Apache-2.0
"""Draws the figures of the README and of docs/performance.md, each for a light and a dark page."""

from html import escape

LABELS = {
    "Tessel": "libtessel", "Floor": "map + mutex", "Tbb": "oneTBB hash map", "KeyFile": "GLib GKeyFile",
    "PropertyTree": "Boost property_tree", "Signals2": "Boost.Signals2", "SigCpp": "libsigc++",
    "FunctionVector": "vector of functions", "Asio": "Boost.Asio", "Nlohmann": "nlohmann-json",
    "NlohmannAndMaps": "nlohmann-json + map", "RapidJsonAndMaps": "RapidJSON + map", "Text": "text",
    "ToChars": "std::to_chars", "RapidJson": "RapidJSON", "BoostJson": "Boost.JSON", "JsonCpp": "jsoncpp",
    "Queue": "condvar loop",
    "InPlace": "floor, in place", "Locked": "deque + mutex", "TbbTransparent": "oneTBB, transparent",
    "Boundary": "library call", "CopiedList": "mutex + copied list", "Aim": "at most",
    "Load": "volatile load", "Snprintf": "snprintf", "Fmt": "fmt", "Spdlog": "spdlog",
    "Live": "LiveConfig", "Atomic": "relaxed load", "Key": "store", "Nothing": "clock alone",
}
OURS = {"Tessel", "Live"}
FLOORS = {"Floor", "FunctionVector", "Queue", "Nothing"}
PERCENTILES = ("p50", "p99.9", "p99.99", "greatest")
THEMES = {
    "light": {"page": "#ffffff", "text": "#1f2328", "faint": "#59636e", "line": "#d1d9e0",
              "ours": "#0969da", "peer": "#9aa5b1", "floor": "#d8dee4"},
    "dark": {"page": "#0d1117", "text": "#e6edf3", "faint": "#9198a1", "line": "#30363d",
             "ours": "#4493f8", "peer": "#6e7781", "floor": "#30363d"},
}
WIDTH, MARGIN, GAP = 880, 24, 40
PANEL = (WIDTH - 2 * MARGIN - GAP) / 2
LABEL, VALUE = 140, 64  # Space for the text before and after a bar.
BAR, STEP = 14, 22
HEAD, PANEL_HEAD, PANEL_FOOT = 70, 30, 18


def in_time(ns):
    for unit, scale in (("ms", 1e6), ("µs", 1e3)):
        if ns >= scale:
            return f"{ns / scale:.3g} {unit}"
    return f"{ns:.3g} ns"


def style():
    """Each kind of mark in its colour; a viewer that prefers dark pages takes the second half."""
    def rules(theme):
        return "".join(f".{name}{{fill:{colour};stroke:{colour if name == 'line' else 'none'}}}"
                       for name, colour in THEMES[theme].items())
    return f'<style>{rules("light")}@media (prefers-color-scheme:dark){{{rules("dark")}}}</style>'


def text(x, y, content, kind="text", size=13, anchor="start", weight="normal"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" class="{kind}" font-size="{size}" text-anchor="{anchor}"'
            f' font-weight="{weight}">{escape(content)}</text>')


def panel(x, y, title, bars):
    yield text(x, y + 14, title, size=14, weight="600")
    longest = max(ns for _, ns in bars)
    y += PANEL_HEAD
    yield (f'<line x1="{x + LABEL}" y1="{y - 4}" x2="{x + LABEL}" y2="{y + STEP * len(bars) - 4}"'
           ' class="line"/>')
    for name, ns in bars:
        kind = "ours" if name in OURS else "floor" if name in FLOORS else "peer"
        length = max(1.5, ns / longest * (PANEL - LABEL - VALUE))
        weight = "600" if kind == "ours" else "normal"
        yield text(x + LABEL - 8, y + 11.5, LABELS[name], anchor="end", weight=weight)
        yield (f'<rect x="{x + LABEL}" y="{y}" width="{length:.1f}" height="{BAR}" rx="2"'
               f' class="{kind}"/>')
        yield text(x + LABEL + length + 6, y + 11.5, in_time(ns), "faint", 12, weight=weight)
        y += STEP


def figure(title, note, panels):
    """Two panels beside each other, as many rows as it takes."""
    rows = [panels[at:at + 2] for at in range(0, len(panels), 2)]
    heights = [PANEL_HEAD + STEP * max(len(bars) for _, bars in row) + PANEL_FOOT for row in rows]
    height = HEAD + sum(heights)
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}"'
             f' viewBox="0 0 {WIDTH} {height}" role="img" aria-label="{escape(title)}"'
             ' font-family="system-ui, -apple-system, \'Segoe UI\', \'DejaVu Sans\', sans-serif">', style(),
             f'<rect width="{WIDTH}" height="{height}" rx="8" class="page"/>',
             text(MARGIN, 30, title, size=18, weight="600"), text(MARGIN, 50, note, "faint", 12)]
    y = HEAD
    for row, row_height in zip(rows, heights):
        for column, (name, bars) in enumerate(row):
            lines += panel(MARGIN + column * (PANEL + GAP), y, name, bars)
        y += row_height
    return "\n".join([*lines, "</svg>"]) + "\n"


def figures(results):
    """(file name, title, panels) of each figure; a panel is a title, and (who, nanoseconds) of each bar."""
    def bars(section, work, variant, doers):
        measured = results[section]
        return [(doer, measured[f"{work}<{doer}>{variant}"]["ns"]) for doer in doers
                if f"{work}<{doer}>{variant}" in measured]

    stores = ("Tessel", "Floor", "Tbb", "KeyFile", "PropertyTree")
    yield "settings", "A setting read and changed", [
        ("read, 100 names", bars("values", "Read", "/names:100", stores)),
        ("overwrite, 100 names", bars("values", "Overwrite", "/names:100", stores)),
    ]

    beside = {doer: results.get("live", {}).get(f"ReadBeside<{doer}>/setters:2/iterations:1/repeats:1/real_time")
              for doer in ("Live", "Key", "Nothing")}
    if all(beside.values()):
        yield "live", "One read beside two setters on one CPU", [
            (percentile, [(doer, one[percentile]) for doer, one in beside.items()]) for percentile in PERCENTILES
        ]

    def notifying(count):
        notify = results["notify"]
        ours = notify[f"Set<Tessel>/subscribers:{count}"]["ns"] - notify["Set<Tessel>/subscribers:0"]["ns"]
        return [("Tessel", ours), *bars("notify", "Emit", f"/subscribers:{count}",
                                        ("FunctionVector", "Signals2", "SigCpp"))]

    def posting(cpus):
        all_bars = bars("thread", "Post", f"/cpus:{cpus}/manual_time", ("Tessel", "Floor", "Asio"))
        return [("Queue" if name == "Floor" else name, ns) for name, ns in all_bars]

    yield "delivery", "Subscribers notified, events posted", [
        ("notifying 1 subscriber", notifying(1)), ("notifying 8 subscribers", notifying(8)),
        ("posting 10,000 events, one CPU", posting(1)), ("posting 10,000 events, two CPUs", posting(2)),
    ]

    libraries = ("Tessel", "Nlohmann", "RapidJson", "BoostJson", "JsonCpp")
    documents = [name for name in ("settings", "twitter", "citm_catalog", "canada")
                 if f"Parse<Tessel>/{name}" in results["json"]]
    yield "json", "JSON parsed and written", [
        (f"{work.lower()} {document}", bars("json", work, f"/{document}", libraries))
        for document in documents for work in ("Parse", "Write")
    ]


def draw(results, folder):
    """The files that were drawn."""
    run = results["run"]
    folder.mkdir(exist_ok=True)
    drawn = []
    for name, title, panels in figures(results):
        times = "10,000,000 reads" if name == "live" else "Medians"
        note = f"Shorter is better. {times}; {run['processor']}, {run['compiler']}, -O3."
        drawn.append(folder / f"{name}.svg")
        drawn[-1].write_text(figure(title, note, panels))
    return drawn
