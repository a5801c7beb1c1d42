#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Measures how long the page of `tessel report` takes to open a long recording, and to zoom, search and sort in it: an
hour of 200 calls, with a million events and 100,000 lines of statistics.

usage: report_page.py TESSEL WORK_DIR [EVENTS]; needs chromium, chromium-driver and python3-selenium
"""

import json
import os
import pathlib
import subprocess
import sys
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "web"))
from browser import Browser  # pylint: disable=import-error,wrong-import-position

CALLS, SECONDS, STATISTICS = 200, 3600, 100_000


def lines(events):
    """A third of the events are sets, two thirds their deliveries."""
    yield {"type": "recording", "t": 0, "version": 1, "wall": "2026-11-22T08:42:05Z"}
    sets = events // 3
    for index in range(sets):
        t, call, number = round(index * SECONDS / sets, 9), 1 + index % CALLS, 3 * index + 1
        what = {
            "call": call,
            "group": "Video",
            "name": f"Setting{index % 50}",
            "old": str(index),
            "new": str(index + 1),
        }
        yield {
            "type": "set",
            "t": t,
            "number": number,
            **what,
            "result": "told",
            "told": 2,
            "thread": 1201,
            "origin": {"module": "/opt/engine/libvideo.so", "symbol": "AdaptRate", "label": "bandwidth controller"},
        }
        for place in (1, 2):
            yield {
                "type": "deliver",
                "t": t,
                "number": number + place,
                "cause": number,
                **what,
                "id": place,
                "way": "posted",
                "wait_us": index % 997,
                "run_us": index % 89,
                "thread": 1202,
            }
        if index % (sets // STATISTICS or 1) == 0:
            yield {
                "type": "statistics",
                "t": t,
                "call": call,
                "entity": "video",
                "members": {"call.encoderBitrate": 300000 + index % 7919, "call.encoderFps": index % 31},
            }


# Of the page, in milliseconds: how long an action takes until it is drawn.
ACT = """
const [action, argument] = arguments;
const drawn = () => new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve)));
const byId = (id) => document.getElementById(id);
const begin = performance.now();
if (action === "click") document.querySelector(argument).click();
if (action === "hash") location.hash = argument;
if (action === "search") {
  const before = byId("changes-count").textContent;
  byId("filter-search").value = argument;
  byId("filter-search").dispatchEvent(new Event("input"));
  while (byId("changes-count").textContent === before) await drawn();
}
await drawn();
return performance.now() - begin;
"""

# What reading as many lines costs at the least: JSON.parse() alone.
PARSE = """
const [text, times] = arguments;
const begin = performance.now();
let count = 0;
for (let i = 0; i < times; i += 1) count += JSON.parse(text).length;
return performance.now() - begin;
"""


def row(what, cpu, elapsed, more=""):
    print(f"{what:<44} {cpu:8.2f} s {elapsed:8.2f} s  {more}".rstrip(), flush=True)


class Page(Browser):
    """Measures by the CPU time of the page's main thread, and by the clock."""

    def thread_time(self):
        metrics = self.command("Performance.getMetrics")["metrics"]
        return next(metric["value"] for metric in metrics if metric["name"] == "ThreadTime")

    def measure(self, what, act):
        begin, cpu = time.monotonic(), self.thread_time()
        result = act()
        row(what, self.thread_time() - cpu, time.monotonic() - begin)
        return result


def write_recording(recording, events):
    with recording.open("w", encoding="utf-8") as out:
        for line in lines(events):
            out.write(json.dumps(line, separators=(",", ":")) + "\n")


def run_tool(tessel, recording, page):
    begin = time.monotonic()
    process = subprocess.Popen([tessel, "report", recording, "-o", page])
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit("tessel report failed")
    sizes = f"{recording.stat().st_size / 1e6:.0f} MB, the page {page.stat().st_size / 1e6:.0f} MB"
    cpu = usage.ru_utime + usage.ru_stime
    row("tessel report", cpu, time.monotonic() - begin, f"{sizes}; at most {usage.ru_maxrss / 1e3:.0f} MB of memory")


def read_as_json(recording):
    begin, cpu = time.monotonic(), time.process_time()
    with recording.open(encoding="utf-8") as text:
        for line in text:
            json.loads(line)
    row("  floor: Python's json reads each line", time.process_time() - cpu, time.monotonic() - begin)


def use(page, recording):
    page.command("Performance.enable")
    page.measure("open", lambda: page.open(recording.as_uri()))
    with (recording.with_suffix(".tessel")).open(encoding="utf-8") as text:
        some = "[" + ",".join(next(text) for _ in range(10_000)) + "]"
    count = int(page.texts("#status")[0].split()[0])
    page.measure("  floor: JSON.parse() of as many lines", lambda: page.run(PARSE, some, count // 10_000))
    page.measure("zoom in, one call", lambda: page.run(ACT, "click", "#zoom-in"))
    page.measure("zoom out to all, one call", lambda: page.run(ACT, "click", "#whole"))
    everything = "&".join(f"calls=0:{call}" for call in range(1, CALLS + 1))
    page.measure("choose all calls: 333,000 changes", lambda: page.run(ACT, "hash", everything))
    page.measure("zoom in", lambda: page.run(ACT, "click", "#zoom-in"))
    page.measure("pan", lambda: page.run(ACT, "click", "#pan-left"))
    page.measure("zoom out to all", lambda: page.run(ACT, "click", "#whole"))
    page.measure("search", lambda: page.run(ACT, "search", "setting17"))
    page.measure("search for nothing", lambda: page.run(ACT, "search", "no such"))
    page.measure("search for all", lambda: page.run(ACT, "search", ""))
    for column, name in ((1, "time"), (5, "setting"), (6, "change"), (7, "result")):
        head = f"#changes-head th:nth-child({column}) button"
        page.measure(f"sort by {name}", lambda head=head: page.run(ACT, "click", head))


def main():
    tessel, work = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    events = int(sys.argv[3]) if len(sys.argv) > 3 else 1_000_000
    work.mkdir(parents=True, exist_ok=True)
    recording, page = work / "long.tessel", work / "long.html"
    write_recording(recording, events)
    print(f"{'':<44} {'CPU':>10} {'elapsed':>10}")
    run_tool(tessel, recording, page)
    read_as_json(recording)
    with Page() as browser:
        use(browser, page)


main()
