#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Uses the page of `tessel report` in headless Chromium, on small recordings.

usage: page_test.py TESSEL WORK_DIR; pictures of the page stay in WORK_DIR
"""

import base64
import http.server
import pathlib
import re
import shutil
import subprocess
import sys
import threading
from urllib.parse import parse_qs, urlsplit

sys.dont_write_bytecode = True  # The sources stay as they are.
from browser import Browser, skip_unless_there  # pylint: disable=wrong-import-position

skip_unless_there("page.in_a_browser")
TESSEL, WORK = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
RECORDINGS = pathlib.Path(__file__).resolve().parent / "recordings"
BEFORE, AFTER = RECORDINGS / "before.tessel", RECORDINGS / "after.tessel"
FIRST_PLOTS = [
    "audio received0.e2eDelay[0]",
    "video call.encoderBitrate",
    "video call.encoderFps",
    "video call.encodedHeight",
    "video call.encodedWidth",
]
BITRATE = ".plot[aria-label='video call.encoderBitrate']"
SHIFT = 8


def check(condition, what):
    if not condition:
        raise AssertionError(what)


def equal(found, expected, what):
    check(found == expected, f"{what}: {found!r}, expected {expected!r}")


def report(name, *recordings):
    page = WORK / name
    subprocess.run([TESSEL, "report", *recordings, "-o", page], check=True)
    return page.as_uri()


def tessel(*arguments):
    return subprocess.run([TESSEL, *arguments], check=False, capture_output=True, text=True, encoding="utf-8").stdout


def place_in_plot(browser, plot, time):
    """Where a time is in a plot that is in sight; the axis labels are on its left."""
    box = browser.box(f"{plot} .frame")
    whole = browser.value(
        "[...document.querySelector(arguments[0]).querySelectorAll('[aria-valuemin]')].map("
        "(e) => [Number(e.ariaValueMin), Number(e.ariaValueMax)])[0]",
        plot,
    )
    left = browser.value("document.querySelector(arguments[0] + ' .chart canvas') && 80", plot)
    # The cursor says where its time is.
    share = (time - whole[0]) / (whole[1] - whole[0])
    width = box["width"] - left
    return box["left"] + left + share * width, box["top"] + 40


def the_range(browser):
    return (
        float(browser.value("document.getElementById('from').value")),
        float(browser.value("document.getElementById('to').value")),
    )


def cursor_of(browser):
    return float(browser.value("document.getElementById('at').value"))


def opens_with_a_first_choice_of_plots(browser, pages):
    browser.open(pages["one"])
    equal(browser.texts(".plot h3"), FIRST_PLOTS, "plots")
    equal(browser.value("performance.getEntriesByType('resource').length"), 0, "requests")
    check("57 events" in browser.texts("#status")[0], browser.texts("#status"))
    browser.until("document.querySelectorAll('.plot canvas').length >= 2")
    for plot in browser.texts(".plot h3"):
        browser.box(f".plot[aria-label='{plot}']")
        browser.until(
            """(() => {
            const canvas = document.querySelector(arguments[0] + " canvas");
            if (!canvas) return false;
            const { data } = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
            return data.some((value) => value !== 0);
        })()""",
            f".plot[aria-label='{plot}']",
        )


def opens_from_a_server(browser, _):
    class Handler(http.server.SimpleHTTPRequestHandler):
        def __init__(self, *arguments):
            super().__init__(*arguments, directory=WORK)

        def log_message(self, *_):  # pylint: disable=arguments-differ
            pass

    with http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler) as server:
        threading.Thread(target=server.serve_forever).start()
        try:
            browser.open(f"http://127.0.0.1:{server.server_port}/one.html")
            equal(browser.texts(".plot h3"), FIRST_PLOTS, "plots")
        finally:
            server.shutdown()


def values_follow_one_cursor(browser, pages):
    browser.open(pages["one"])
    x, y = place_in_plot(browser, BITRATE, 5.5)
    browser.mouse("mouseMoved", x, y)
    browser.until("Math.abs(Number.parseFloat(document.getElementById('hover').value) - 5.5) < 0.2")
    browser.until_text(f"{BITRATE} .values", "388 kbit/s")
    browser.until_text(".plot[aria-label='video call.encoderFps'] .values", "15 fps")
    cursors = browser.value("[...document.querySelectorAll('.cursor:not([hidden])')].map((e) => e.style.transform)")
    check(len(cursors) >= 3 and len(set(cursors)) == 1, f"cursors: {cursors}")
    # A call's statistics end before the recording does.
    browser.open(pages["one"] + "#calls=0:8&at=11")
    browser.until_text(f"{BITRATE} .values", "call 8 –")


def the_mouse_zooms_and_pans_all_plots(browser, pages):
    browser.open(pages["one"])
    begin, y = place_in_plot(browser, BITRATE, 3)
    end, _ = place_in_plot(browser, BITRATE, 9)
    drag(browser, begin, end, y)
    browser.until("Number(document.getElementById('from').value) > 2")
    start, stop = the_range(browser)
    check(2.5 < start < 3.5 and 8.5 < stop < 9.5, f"range: {start}, {stop}")
    ranges = browser.value(
        "[...document.querySelectorAll('.frame[aria-valuemin]')].map((e) => e.ariaValueMin + e.ariaValueMax)"
    )
    equal(len(set(ranges[:2])), 1, "ranges of the plots")
    begin, y = place_in_plot(browser, BITRATE, (start + stop) / 2)
    drag(browser, begin, begin - 60, y, modifiers=SHIFT)
    browser.until("Number(document.getElementById('from').value) > arguments[0] + 0.1", start)
    equal(round(the_range(browser)[1] - the_range(browser)[0], 3), round(stop - start, 3), "the width after panning")
    x, y = place_in_plot(browser, BITRATE, sum(the_range(browser)) / 2)
    for count in (1, 2):
        browser.mouse("mousePressed", x, y, button="left", clickCount=count)
        browser.mouse("mouseReleased", x, y, button="left", clickCount=count)
    browser.until("document.getElementById('from').value === '0' && document.getElementById('to').value === '12'")
    browser.mouse("mouseWheel", x, y, deltaX=0, deltaY=-100, modifiers=2)
    browser.until("document.getElementById('from').value !== '0'")


def drag(browser, begin, end, y, modifiers=0):
    browser.mouse("mousePressed", begin, y, button="left", buttons=1, clickCount=1, modifiers=modifiers)
    for step in range(1, 6):
        browser.mouse(
            "mouseMoved", begin + (end - begin) * step / 5, y, button="left", buttons=1, modifiers=modifiers
        )
    browser.mouse("mouseReleased", end, y, button="left", clickCount=1, modifiers=modifiers)


def the_range_selector_sets_the_range_of_all_plots(browser, pages):
    browser.open(pages["one"])
    browser.box("#overview")
    box = browser.box("#overview .dygraph-rangesel-zoomhandle")
    x, y = box["left"] + box["width"] / 2, box["top"] + box["height"] / 2
    drag(browser, x, x + 300, y)
    browser.until("Number(document.getElementById('from').value) > 1")
    start, stop = the_range(browser)
    equal(stop, 12, "the end of the range")
    browser.box(f"{BITRATE} .frame")
    browser.until("Number(document.querySelector(arguments[0] + ' .frame').ariaValueMin) > 1", BITRATE)
    shown = float(browser.value("document.querySelector(arguments[0] + ' .frame').ariaValueMin", BITRATE))
    equal(round(shown, 3), round(start, 3), "the plot's range")


def axes_have_the_units_of_the_statistics_table(browser, pages):
    browser.open(pages["one"])
    for member, unit in (("encoderBitrate", "kbit/s"), ("encoderFps", "fps"), ("encodedHeight", "px")):
        plot = f".plot[aria-label='video call.{member}']"
        browser.box(plot)
        browser.until_text(f"{plot} .chart", f" {unit}")
    browser.until_text(".plot[aria-label='audio received0.e2eDelay[0]'] .values", "90 ms")


def two_fingers_zoom(browser, pages):
    browser.open(pages["one"])
    browser.command("Emulation.setTouchEmulationEnabled", enabled=True, maxTouchPoints=2)
    x, y = place_in_plot(browser, BITRATE, 6)

    def touch(kind, *places):
        browser.command(
            "Input.dispatchTouchEvent",
            type=kind,
            touchPoints=[{"x": place, "y": y, "id": index} for index, place in enumerate(places)],
        )

    touch("touchStart", x - 50, x + 50)
    for step in range(1, 6):
        touch("touchMove", x - 50 - 20 * step, x + 50 + 20 * step)
    touch("touchEnd")
    browser.command("Emulation.setTouchEmulationEnabled", enabled=False)
    browser.until(
        "Number(document.getElementById('from').value) > 1 && Number(document.getElementById('to').value) < 11"
    )


def keys_move_zoom_and_choose(browser, pages):
    browser.open(pages["one"] + "#at=3")
    browser.box(f"{BITRATE} .frame")
    browser.run("document.querySelector(arguments[0] + ' .frame').focus()", BITRATE)
    browser.key("ArrowRight")
    browser.until("document.getElementById('at').value === '3.24'")
    browser.key("n")
    browser.until("document.getElementById('at').value === '3.25'")
    browser.key("n")
    browser.until("document.getElementById('at').value === '4.5'")
    browser.key("p")
    browser.until("document.getElementById('at').value === '3.25'")
    browser.until(
        "document.querySelector(arguments[0] + ' .frame').ariaValueText === '3.25 s: call 7 500 kbit/s'", BITRATE
    )
    browser.key("+")
    browser.until("document.getElementById('to').value !== '12'")
    start = the_range(browser)[0]
    browser.key("ArrowRight", SHIFT)
    browser.until("Number(document.getElementById('from').value) > arguments[0]", start)
    browser.key("0")
    browser.until("document.getElementById('to').value === '12'")
    browser.key("Enter")
    browser.until_text("tr[aria-selected=true]", "Video/MaxBitrate")


def hovering_a_mark_says_who_and_what(browser, pages):
    browser.open(pages["one"] + "#from=2&to=5")
    x, y = place_in_plot(browser, BITRATE, 3.25)
    for step in range(-12, 13, 2):  # Over it, wherever the axis labels end.
        browser.mouse("mouseMoved", x + step, y)
        if not browser.value("document.getElementById('tip').hidden"):
            break
    browser.until("!document.getElementById('tip').hidden")
    equal(
        browser.texts("#tip p"),
        [
            "3.25 s, call 7, Video/MaxBitrate: “500000” → “350000”, notifies 1, heard by 1, "
            "waited up to 40 µs, ran up to 12 µs, by bandwidth controller, AdaptRate in libvideo.so"
        ],
        "tip",
    )
    browser.mouse("mousePressed", x + step, y, button="left", clickCount=1)
    browser.mouse("mouseReleased", x + step, y, button="left", clickCount=1)
    browser.until_text("tr[aria-selected=true]", "Video/MaxBitrate")
    equal(cursor_of(browser), 3.25, "cursor")


def rows(browser):
    return browser.value(
        """[...document.querySelectorAll("#changes-body tr")].map((row) =>
        [...row.cells].filter((cell) => cell.offsetParent).map((cell) => cell.textContent).slice(0, 4).join(" "))"""
    )


def changes_are_searched_filtered_and_sorted(browser, pages):
    browser.open(pages["one"])
    equal(len(rows(browser)), 7, "changes of the first call")
    equal(rows(browser)[0], "3.25 7 set Video/MaxBitrate", "the first change")
    browser.type("#filter-search", "maxfps")
    browser.until("document.querySelectorAll('#changes-body tr').length === 1")
    browser.type("#filter-search", "no such")
    browser.until_text("#changes-count", "No change fits.")
    browser.type("#filter-search", "")
    browser.type("#filter-kind", "toggle")
    browser.until("document.querySelectorAll('#changes-body tr').length === 1")
    equal(rows(browser), ["4.5 7 toggle Feature/RtxDedup"], "toggles")
    browser.type("#filter-kind", "")
    browser.until("document.querySelectorAll('#changes-body tr').length === 7")
    browser.click("#changes-head th:first-child button")
    browser.until("document.querySelector('#changes-head th').ariaSort === 'descending'")
    equal(rows(browser)[0], "8.3 7 removal Audio/Codec", "the first change, sorted")
    browser.type("#from", "6")
    browser.until("document.querySelectorAll('#changes-body tr').length === 3")


def a_row_moves_the_cursor_and_one_click_shows_a_history(browser, pages):
    browser.open(pages["one"] + "#from=0&to=4&at=1")
    browser.until("document.querySelectorAll('#changes-body tr').length === 1")
    browser.click("#changes-body button")
    browser.until("document.getElementById('at').value === '3.25'")
    browser.click("#changes-body td:nth-child(5) button")
    browser.until_text("#history", "Video/MaxBitrate")
    equal(len(rows(browser)), 2, "the history is all of it")
    browser.click("#history-end")
    browser.until("document.getElementById('history').hidden")
    # A finding's place moves the cursor, and the range with it.
    browser.click("#findings-list li li button")
    browser.until("document.getElementById('at').value === '8.1'")
    start, stop = the_range(browser)
    check(start <= 8.1 <= stop and round(stop - start, 6) == 4, f"range: {start}, {stop}")


def findings_are_at_the_top(browser, pages):
    browser.open(pages["one"])
    equal(
        [text.split(":")[0] for text in browser.texts("#findings-list summary")],
        ["Lost events", "Dropped deliveries", "Callbacks that threw", "Late deliveries", "Refused operations"],
        "findings",
    )
    check(
        browser.value(
            "document.getElementById('findings-list').compareDocumentPosition(document.getElementById('plots')) === 4"
        ),
        "findings come after the plots",
    )


def settings_at_the_cursor_are_a_document(browser, pages):
    for time in ("0", "4.6", "9"):
        browser.open(f"{pages['one']}#at={time}")
        browser.run("document.getElementById('settings').open = true")
        browser.until_text("#settings-time", f"{time} s")
        document = browser.value("document.getElementById('settings-document').value")
        (WORK / "settings.json").write_text(document, encoding="utf-8")
        expected = tessel("dump", BEFORE, "--call", "7", "--at", time)
        (WORK / "expected.json").write_text(expected, encoding="utf-8")
        difference = subprocess.run(
            [TESSEL, "diff", "--exact", WORK / "expected.json", WORK / "settings.json"],
            check=False,
            capture_output=True,
            text=True,
        )
        equal((difference.returncode, difference.stdout), (0, ""), f"difference at {time}")
        equal(
            subprocess.run([TESSEL, "apply", "--quiet", WORK / "settings.json"], check=False).returncode, 0, "apply"
        )
    browser.until_text("#settings-body", "bandwidth controller")
    browser.click("#settings-body button")
    browser.until("!document.getElementById('history').hidden")


def subscribers_in_trouble_come_first(browser, pages):
    browser.open(pages["one"])
    browser.run("document.getElementById('subscribers').open = true")
    browser.until("document.querySelectorAll('#subscribers-body tr').length === 3")
    found = browser.value(
        "[...document.getElementById('subscribers-body').rows].map((row) =>"
        " [...row.cells].map((cell) => cell.textContent))"
    )
    equal(
        found[0],
        [
            "Video/MaxBitrate",
            "call 7",
            "subscription 4",
            "2 posted",
            "2",
            "40 µs / 40 µs / 40 µs",
            "12 µs / 12 µs / 12 µs",
            "1 threw, the last “no <b>window</b>”",
        ],
        "the first subscriber",
    )
    equal([row[0] for row in found], ["Video/MaxBitrate", "Video/MaxFps", "Metrics/Load"], "subscribers")
    equal(found[1][7], "1 dropped, 1 late", "trouble")


def calls_and_statistics_are_picked(browser, pages):
    browser.open(pages["one"])
    browser.click("#calls-list input[value='0:8']")
    browser.until_text("#calls-count", "2 of 2 calls")
    browser.until_text(f"{BITRATE} .values", "call 8")
    browser.type("#statistics-search", "av1name")
    browser.until("document.querySelectorAll('#statistics-list input').length === 1")
    browser.click("#statistics-list input")
    browser.until("document.querySelectorAll('.plot').length === 6")
    plot = ".plot[aria-label='video call.av1Name1']"
    browser.box(plot)
    browser.type("#at", "7")
    browser.until_text(f"{plot} .values", "“H264”")
    browser.type("#statistics-search", "intervalLast")
    browser.until("document.querySelector('#statistics-list input')?.value === 'video/layer0.intervalLast'")
    browser.click("#statistics-list input")
    band = ".plot[aria-label='video layer0.intervalLast']"
    browser.until("document.querySelector(arguments[0])", band)
    browser.box(band)
    browser.until_text(f"{band} .values", "22")
    browser.click(f"{plot} header button")
    browser.until("!document.querySelector(arguments[0])", plot)


def a_table_is_behind_each_plot(browser, pages):
    browser.open(pages["one"])
    browser.box(BITRATE)
    browser.click(f"{BITRATE} summary")
    browser.until_text(f"{BITRATE} details table", "388 kbit/s")
    equal(browser.texts(f"{BITRATE} details th"), ["time, s", "call 7"], "columns")


def nothing_of_the_data_is_markup(browser, pages):
    browser.open(pages["hostile"] + "#calls=0:7&calls=0:8")
    browser.run("for (const part of document.querySelectorAll('details')) part.open = true")
    browser.until_text("#changes-body", "<img src=x onerror=alert(1)>")
    browser.until_text("#subscribers-body", "no <b>window</b>")
    browser.until_text("#names", "<i>&amp;'\".tessel")
    equal(
        browser.value("document.querySelectorAll('main :is(img, b, i, script):not(.overview *), header i').length"),
        0,
        "elements of the data",
    )
    browser.run(
        "const script = document.createElement('script');"
        "script.textContent = 'window.isRun = true';"
        "document.body.append(script);"
    )
    equal(browser.value("window.isRun"), None, "a script that the policy does not name")
    check("Content Security Policy" in " ".join(browser.console()), "the policy says nothing")


def two_recordings_are_compared(browser, pages):
    browser.open(pages["two"] + "#at=2")
    browser.until_text(f"{BITRATE} .values", "before.tessel call 7 500 kbit/s")
    browser.until_text(f"{BITRATE} .values", "after.tessel call 7 620 kbit/s")
    equal(len(rows(browser)), 14, "changes of both")


def the_address_has_the_view(browser, pages):
    browser.open(pages["two"])
    browser.type("#from", "2")
    browser.type("#at", "5")
    browser.type("#filter-name", "Max")
    browser.click("#calls-list input[value='1:7']")
    browser.until("['from=2', 'at=5', 'name=Max', 'calls=0%3A7'].every((part) => location.hash.includes(part))")
    address = browser.value("location.href")
    equal(parse_qs(urlsplit(address).fragment)["calls"], ["0:7"], "calls of the address")
    before = rows(browser)
    browser.open(address)
    equal((rows(browser), the_range(browser), cursor_of(browser)), (before, (2, 12), 5), "the view of the address")
    browser.run("location.hash = '#at=1'")
    browser.until("document.getElementById('at').value === '1' && document.getElementById('from').value === '0'")
    browser.open(pages["two"] + "#at=-7&from=-5&to=-1")
    equal((the_range(browser), cursor_of(browser)), ((0, 12), 0), "the view of an address before the beginning")


def a_file_is_dropped(browser, pages):
    browser.open(pages["one"])
    browser.run(
        """const data = new DataTransfer();
        data.items.add(new File([arguments[0]], "dropped <b>.tessel"));
        document.body.dispatchEvent(new DragEvent("drop", {dataTransfer: data, bubbles: true, cancelable: true}));""",
        AFTER.read_text(encoding="utf-8"),
    )
    browser.until_text("#names", "dropped <b>.tessel")
    browser.until_text(f"{BITRATE} .values", "dropped <b>.tessel call 7")
    from selenium.webdriver.common.by import By  # pylint: disable=import-outside-toplevel

    browser.driver.find_element(By.ID, "open-file").send_keys(
        str(RECORDINGS.parent.parent / "tools" / "recordings" / "damaged.tessel")
    )
    browser.until_text("#findings-list", "line 4 cannot be read")


OPERATED = {
    "button",
    "link",
    "textbox",
    "searchbox",
    "checkbox",
    "combobox",
    "slider",
    "spinbutton",
    "DisclosureTriangle",
}


def all_that_is_operated_has_a_name(browser, pages):
    browser.open(pages["one"])
    browser.run("for (const part of document.querySelectorAll('details')) part.open = true")
    browser.until("document.querySelectorAll('#subscribers-body tr').length > 0")
    nodes = browser.command("Accessibility.getFullAXTree")["nodes"]
    operated = [node for node in nodes if node.get("role", {}).get("value") in OPERATED and not node.get("ignored")]
    check(len(operated) > 40, f"{len(operated)} elements can be operated")
    nameless = [node for node in operated if not node.get("name", {}).get("value", "").strip()]
    equal(nameless, [], "without a name")
    operable = "button, input, select, textarea, summary, [tabindex], a[href]"
    unreachable = browser.value(
        """[...document.querySelectorAll(arguments[0])].filter((e) => e.offsetParent && !e.disabled
        && e.tabIndex < 0 && !e.closest('[aria-hidden]')).map((e) => e.outerHTML)""",
        operable,
    )
    equal(unreachable, [], "not reached by Tab")
    ids = browser.value("[...document.querySelectorAll('[id]')].map((e) => e.id)")
    equal(len(ids), len(set(ids)), "ids")
    equal(
        browser.value(
            "[...document.querySelectorAll('h1, h2, h3')].map((e) => e.tagName).join('').startsWith('H1H2')"
        ),
        True,
        "headings",
    )


# The texts whose contrast with what is behind them is too weak: 4.5 is what people with weak eyes need.
FAINT = """
const parse = (colour) => colour.match(/[0-9.]+/g).map(Number);
const light = ([r, g, b]) => [r, g, b].map((v) => v / 255)
  .map((v) => (v <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4))
  .reduce((sum, v, i) => sum + v * [0.2126, 0.7152, 0.0722][i], 0);
const behind = (element) => {
  for (let e = element; e; e = e.parentElement) {
    const colour = parse(getComputedStyle(e).backgroundColor);
    if (colour[3] !== 0) return colour;
  }
  return [255, 255, 255];
};
return [...document.querySelectorAll("body *")].filter((e) => e.checkVisibility() && !e.disabled &&
    [...e.childNodes].some((n) => n.nodeType === 3 && n.textContent.trim() !== "")).map((e) => {
  const [a, b] = [light(parse(getComputedStyle(e).color)), light(behind(e))].sort((x, y) => y - x);
  return [(a + 0.05) / (b + 0.05), e.tagName, e.className, e.textContent.slice(0, 40)];
}).filter(([contrast]) => contrast < 4.5);
"""


def it_fits_light_dark_phone_and_paper(browser, pages):
    for scheme in ("light", "dark"):
        browser.set_scheme(scheme)
        for width in (390, 820, 1280):
            browser.resize(width, 900, is_phone=width == 390)
            browser.open(pages["two"])
            where = f"{scheme}, {width} px"
            equal(browser.value("document.documentElement.scrollWidth"), width, f"{where}: the page's width")
            browser.run("for (const part of document.querySelectorAll('details')) part.open = true")
            browser.until("document.querySelectorAll('#subscribers-body tr').length > 0")
            equal(
                browser.value("document.documentElement.scrollWidth"), width, f"{where}: the page's width, all open"
            )
            equal(browser.run(FAINT), [], f"{where}: faint")
            brightness = browser.value(
                "getComputedStyle(document.body).backgroundColor.match(/[0-9]+/g).map(Number)[0]"
            )
            check((brightness < 128) == (scheme == "dark"), f"{where}: {brightness}")
            browser.driver.save_screenshot(str(WORK / f"{scheme}-{width}.png"))
    paper = base64.b64decode(browser.command("Page.printToPDF", printBackground=True)["data"])
    (WORK / "paper.pdf").write_bytes(paper)
    pages_of_paper = len(re.findall(rb"/Type\s*/Page\b", paper))
    check(2 <= pages_of_paper <= 30, f"{pages_of_paper} pages on paper")
    browser.set_scheme("light")
    browser.resize(1280, 1000)


TESTS = [
    opens_with_a_first_choice_of_plots,
    opens_from_a_server,
    values_follow_one_cursor,
    the_mouse_zooms_and_pans_all_plots,
    the_range_selector_sets_the_range_of_all_plots,
    axes_have_the_units_of_the_statistics_table,
    two_fingers_zoom,
    keys_move_zoom_and_choose,
    hovering_a_mark_says_who_and_what,
    changes_are_searched_filtered_and_sorted,
    a_row_moves_the_cursor_and_one_click_shows_a_history,
    findings_are_at_the_top,
    settings_at_the_cursor_are_a_document,
    subscribers_in_trouble_come_first,
    calls_and_statistics_are_picked,
    a_table_is_behind_each_plot,
    two_recordings_are_compared,
    the_address_has_the_view,
    a_file_is_dropped,
    all_that_is_operated_has_a_name,
    it_fits_light_dark_phone_and_paper,
    nothing_of_the_data_is_markup,
]


def main():
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    hostile = WORK / "<i>&amp;'\".tessel"
    shutil.copy(BEFORE, hostile)
    # Long, with spaces, and with letters that are none of ASCII.
    pages = {
        "one": report("one.html", BEFORE),
        "two": report("zwei für \u00fcber – 2.html", BEFORE, AFTER),
        "hostile": report("hostile.html", hostile),
    }
    chosen = [test for test in TESTS if len(sys.argv) < 4 or test.__name__ in sys.argv[3:]]
    failures = 0
    with Browser() as browser:
        for test in chosen:
            try:
                test(browser, pages)
                equal(browser.console(), [], "console")
                print(f"fine: {test.__name__}", flush=True)
            except AssertionError as error:
                failures += 1
                browser.console()
                print(f"FAILED: {test.__name__}: {error}", flush=True)
    sys.exit(1 if failures else 0)


main()
