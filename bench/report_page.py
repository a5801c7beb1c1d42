#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Measures how long the page of `tessel report` takes to open a long recording: an hour of 200 calls, with a million
events and 100,000 lines of statistics.

usage: report_page.py TESSEL WORK_DIR [EVENTS]; needs chromium, chromium-driver and python3-selenium
"""

import json
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
        t, call, number = round(index * SECONDS / sets, 6), 1 + index % CALLS, 3 * index + 1
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


def main():
    tessel, work = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    events = int(sys.argv[3]) if len(sys.argv) > 3 else 1_000_000
    work.mkdir(parents=True, exist_ok=True)
    recording, page = work / "long.tessel", work / "long.html"
    with recording.open("w", encoding="utf-8") as out:
        for line in lines(events):
            out.write(json.dumps(line, separators=(",", ":")) + "\n")
    begin = time.monotonic()
    subprocess.run([tessel, "report", recording, "-o", page], check=True)
    print(f"tessel report: {time.monotonic() - begin:.1f} s, {page.stat().st_size / 1e6:.0f} MB")
    with Browser() as browser:
        begin = time.monotonic()
        browser.open(page.as_uri())
        print(f"open: {time.monotonic() - begin:.1f} s, {browser.texts('#status')[0]}")
        for action in ("zoom-in", "pan-left"):
            script = """const begin = performance.now();
                const drawn = () => setTimeout(() => done(performance.now() - begin));
                let done;
                document.getElementById(arguments[0]).click();
                requestAnimationFrame(drawn);
                return new Promise((resolve) => { done = resolve; });"""
            print(f"{action}: {browser.run(script, action):.0f} ms")


main()
