#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Follows a growing recording with `tessel live` in headless Chromium.

usage: live_test.py TESSEL WORK_DIR
"""

import os
import pathlib
import pty
import shutil
import signal
import subprocess
import sys
from urllib.parse import urlsplit

sys.dont_write_bytecode = True  # The sources stay as they are.
from browser import LONGEST_WAIT, Browser, skip_unless_there  # pylint: disable=wrong-import-position

skip_unless_there("page.live_in_a_browser")
TESSEL, WORK = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
LINES = (
    (pathlib.Path(__file__).resolve().parent / "recordings" / "before.tessel").read_bytes().splitlines(keepends=True)
)
FIRST = 30
BITRATE = ".plot[aria-label='video call.encoderBitrate']"


def equal(found, expected, what):
    if found != expected:
        raise AssertionError(f"{what}: {found!r}, expected {expected!r}")


class Live:
    """A running `tessel live`."""

    def __init__(self, recording, **streams):
        self.process = subprocess.Popen([TESSEL, "live", recording], stdout=subprocess.PIPE, text=True, **streams)
        self.address = self.process.stdout.readline().strip()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()

    def end(self):
        return self.process.wait(LONGEST_WAIT)


def ends_with_its_terminal_and_by_signals(recording):
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        with Live(recording, stdin=subprocess.DEVNULL) as live:
            live.process.send_signal(number)
            equal(live.end(), 0, f"status after {number.name}")
    terminal, its_end = pty.openpty()
    with Live(recording, stdin=its_end) as live:
        os.close(its_end)
        os.close(terminal)
        equal(live.end(), 0, "status after the end of the terminal")
    terminal, its_end = pty.openpty()
    with Live(recording, stdin=its_end) as live:
        os.write(terminal, b"\x04")
        equal(live.end(), 0, "status after the end of the input")
    os.close(its_end)
    os.close(terminal)


def refuses_what_cannot_be_served(recording):
    with Live(recording) as live:
        port = str(urlsplit(live.address).port)
        for arguments in (["-"], ["none.tessel"], [recording, "--port", port], [recording, "--port", "65536"]):
            run = subprocess.run(
                [TESSEL, "live", *arguments], stdin=subprocess.DEVNULL, capture_output=True, check=False
            )
            equal((run.returncode, run.stdout, run.stderr != b""), (2, b"", True), arguments)


def the_page_follows_the_recording(recording):
    recording.write_bytes(b"".join(LINES[:FIRST]))
    with Browser() as browser, Live(recording) as live:
        browser.open(live.address)
        browser.until_text("#status", f"{FIRST} events")
        browser.until_text("#names", "growing <1>.tessel")
        before = browser.value("document.getElementById('to').value")
        half = len(LINES[FIRST]) // 2
        with recording.open("ab") as out:
            for part in (LINES[FIRST][:half], LINES[FIRST][half:] + b"".join(LINES[FIRST + 1 : -1])):
                out.write(part)
                out.flush()
            browser.until_text("#status", f"{len(LINES) - 1} events")
            equal(
                float(before) < float(browser.value("document.getElementById('to').value")), True, "the range grows"
            )
            browser.until_text(f"{BITRATE} .values", "260 kbit/s")
            # What is chosen stays while the recording grows.
            browser.type("#from", "2")
            browser.type("#filter-name", "Max")
            browser.until("document.querySelectorAll('#changes-body tr').length === 3")
            browser.run("document.querySelector('#findings-list details').open = true")
            out.write(LINES[-1])
        browser.until_text("#status", f"{len(LINES)} events")
        equal(browser.value("document.getElementById('from').value"), "2", "the range")
        equal(browser.value("document.querySelectorAll('#changes-body tr').length"), 3, "the filtered changes")
        equal(browser.value("document.querySelector('#findings-list details').open"), True, "what is open")
        equal(browser.value("document.querySelectorAll('#names :not(br)').length"), 0, "markup of the name")
        equal(browser.console(), [], "console")


def main():
    run = subprocess.run([TESSEL, "live", "none.tessel"], capture_output=True, check=False, text=True)
    if "built without" in run.stderr:
        print(f"skipped: page.live_in_a_browser: {run.stderr}")
        return
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    recording = WORK / "growing <1>.tessel"
    recording.write_bytes(b"".join(LINES))
    for test in (
        ends_with_its_terminal_and_by_signals,
        refuses_what_cannot_be_served,
        the_page_follows_the_recording,
    ):
        test(recording)
        print(f"fine: {test.__name__}", flush=True)


main()
