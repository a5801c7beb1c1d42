# SPDX-License-Identifier: Apache-2.0
"""A headless Chromium that shows a page, and what a test asks of it."""

import contextlib
import json
import os
import re
import shutil
import subprocess
import sys
import time

LONGEST_WAIT = 300  # Seconds; a guard against a page that never gets there.


def skip_unless_there(test):
    """Ends the program when what it takes is not installed."""
    missing = [name for name in ("chromium", "chromedriver") if shutil.which(name) is None]
    try:
        import selenium.webdriver  # pylint: disable=import-outside-toplevel,unused-import
    except ImportError:
        missing.append("python3-selenium")
    if missing:
        print(f"skipped: {test}: not installed: {', '.join(missing)}")
        sys.exit(0)


def start_driver(stack):
    """Starts the browser's driver until the stack ends, and returns its address. It takes a free port itself: one that
    was looked up before might be taken meanwhile, by another run of the tests. Its start may take any time.
    """
    driver = stack.enter_context(
        subprocess.Popen(
            [shutil.which("chromedriver"), "--port=0"],
            # It takes the name of a file only if the locale can write it.
            env=os.environ | {"LC_ALL": "C.UTF-8"},
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
        )
    )
    stack.callback(driver.terminate)
    for line in driver.stdout:
        if started := re.search(r"started successfully on port (\d+)", line):
            return f"http://127.0.0.1:{started[1]}"
    raise AssertionError("chromedriver does not start")


class Browser:
    def __init__(self):
        # pylint: disable=import-outside-toplevel
        from selenium import webdriver
        from selenium.webdriver.chromium.remote_connection import ChromiumRemoteConnection
        from selenium.webdriver.remote.file_detector import UselessFileDetector

        options = webdriver.ChromeOptions()
        options.binary_location = shutil.which("chromium")
        for argument in (
            "--headless=new",
            "--no-sandbox",
            "--disable-gpu",
            "--hide-scrollbars",
            "--lang=en-US",
            "--disable-dev-shm-usage",
            "--force-device-scale-factor=1",
        ):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        with contextlib.ExitStack() as stack:
            connection = ChromiumRemoteConnection(start_driver(stack), "goog", "chrome")
            # The driver is on this machine: files are not sent to it.
            remote = webdriver.Remote(connection, options=options, file_detector=UselessFileDetector())
            self.driver = stack.enter_context(remote)
            self.stack = stack.pop_all()
        self.driver.set_page_load_timeout(LONGEST_WAIT)
        self.driver.set_script_timeout(LONGEST_WAIT)
        self.resize(1280, 1000)
        self.set_scheme("light")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stack.close()

    def command(self, name, **parameters):
        return self.driver.execute("executeCdpCommand", {"cmd": name, "params": parameters})["value"]

    def resize(self, width, height, is_phone=False):
        self.command(
            "Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=is_phone
        )

    def set_scheme(self, scheme):
        self.command("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def open(self, url):
        """Loads a page again, and waits until it has read all of it."""
        self.driver.get("about:blank")
        self.driver.get(url)
        self.until("document.documentElement.dataset.state === 'ready'")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def value(self, expression, *arguments):
        return self.run(f"return {expression}", *arguments)

    def until(self, expression, *arguments):
        """Waits until a JavaScript expression is true."""
        end = time.monotonic() + LONGEST_WAIT
        while not self.value(expression, *arguments):
            if time.monotonic() > end:
                raise AssertionError(f"never true: {expression} {arguments}\n{self.value('document.body.innerText')}")
            time.sleep(0.02)

    def until_text(self, selector, part):
        self.until("document.querySelector(arguments[0])?.textContent.includes(arguments[1])", selector, part)

    def texts(self, selector):
        return self.value("[...document.querySelectorAll(arguments[0])].map((e) => e.textContent)", selector)

    def click(self, selector):
        self.run("document.querySelector(arguments[0]).click()", selector)

    def type(self, selector, text):
        """What a user enters into a field, all at once."""
        self.run(
            """const field = document.querySelector(arguments[0]);
            field.value = arguments[1];
            for (const type of ["input", "change"]) field.dispatchEvent(new Event(type, {bubbles: true}));""",
            selector,
            text,
        )

    def key(self, key, modifiers=0):
        """A key for the focused element."""
        text = {"text": key} if len(key) == 1 else {}
        for kind in ("keyDown", "keyUp"):
            self.command(
                "Input.dispatchKeyEvent",
                type=kind,
                key=key,
                modifiers=modifiers,
                **(text if kind == "keyDown" else {}),
            )

    def box(self, selector):
        """Where an element is, once it is in sight."""
        return self.run(
            """const element = document.querySelector(arguments[0]);
            element.scrollIntoView({block: "center"});
            return element.getBoundingClientRect().toJSON();""",
            selector,
        )

    def mouse(self, kind, x, y, **more):
        self.command("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def console(self):
        """What the page wrote to the console since the last question."""
        return [json.dumps(entry) for entry in self.driver.get_log("browser")]
