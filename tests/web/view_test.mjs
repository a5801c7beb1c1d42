// SPDX-License-Identifier: Apache-2.0
// What the page chooses, thins, filters and writes, and that it never makes markup.
import assert from "node:assert/strict";
import { readFileSync, readdirSync } from "node:fs";
import { test } from "node:test";
import { emptyState, readState, writeState } from "../../web/address.js";
import { originOf, sentenceOf, valuesOf } from "../../web/change.js";
import { bandOf, firstChoice, keysOf } from "../../web/choice.js";
import { rowsThatFit, sortRows } from "../../web/filter.js";
import { formatMicroseconds, formatNumber, formatTick, unitOf } from "../../web/format.js";
import { marksNear, marksOf, nextMark, thinMarks } from "../../web/marks.js";
import { Durations } from "../../web/quantiles.js";
import { Reader } from "../../web/reader.js";
import { Recording } from "../../web/recording.js";
import { Series } from "../../web/series.js";
import { byTrouble } from "../../web/subscriber.js";
import { rowsOf, thin, withoutRepeats } from "../../web/thin.js";

const WEB = new URL("../../web/", import.meta.url);

function before() {
  const recording = new Recording("before.tessel");
  const reader = new Reader(recording);
  reader.feed(readFileSync(new URL("recordings/before.tessel", import.meta.url), "utf8"));
  reader.finish();
  return recording;
}

function seriesOf(values) {
  const series = new Series();
  values.forEach((value, index) => series.push(index, value));
  return series;
}

test("Thinning keeps the least and greatest of each part, and each edge of a gap", () => {
  const values = Array.from({ length: 100000 }, (_, index) => Math.sin(index / 500) + (index % 2));
  values[31337] = 1000;
  values[70001] = -1000;
  const times = thin(seriesOf(values), 0, 99999, 100);
  assert.ok(times.length <= 500, `${times.length}`);
  assert.ok(times.includes(31337) && times.includes(70001));
  assert.deepEqual(
    times,
    [...times].sort((a, b) => a - b),
  );
  const withGap = new Series();
  for (let time = 0; time < 10000; time += 1) {
    if (time === 5000) withGap.end(time);
    else withGap.push(time, time % 7);
  }
  assert.ok(thin(withGap, 0, 9999, 20).includes(5000));
});

test("A short series is not thinned, and the step before the range is drawn", () => {
  assert.deepEqual(thin(seriesOf([1, 2, 3, 4, 5]), 1.5, 3.5, 100), [1, 2, 3]);
});

test("Rows have each series' value at each time, and the ends of the recording", () => {
  const a = seriesOf([1, 2]);
  const b = new Series();
  b.push(0.5, 10);
  assert.deepEqual(rowsOf([a, b], { from: 0, to: 3 }, 0, 3, 100), [
    [0, 1, NaN],
    [0.5, 1, 10],
    [1, 2, 10],
    [3, 2, 10],
  ]);
});

test("The row behind a range has the values of its end, not those of a change that comes much later", () => {
  const series = new Series();
  series.push(0, 5);
  series.push(100, 5000);
  const rows = rowsOf([series], { from: 0, to: 200 }, 10, 20, 100);
  const [time, value] = rows.find(([other]) => other > 20);
  assert.ok(time < 20.1);
  assert.equal(value, 5);
  assert.deepEqual(withoutRepeats(rows, 20), [[0, 5], [time, 5], [100, 5000], [200, 5000]]);
});

test("What a chart draws again has no values that repeat, and still its gaps and its end", () => {
  const rows = [
    [0, 1, NaN],
    [1, 1, NaN],
    [2, 1, 5],
    [3, NaN, 5],
    [4, NaN, 5],
  ];
  assert.deepEqual(withoutRepeats(rows, 4), [
    [0, 1, NaN],
    [1, null, null],
    [2, null, 5],
    [3, NaN, null],
    [4, NaN, 5],
  ]);
  assert.deepEqual(withoutRepeats(rows, 0.5)[1], [1, 1, NaN]);
});

test("Durations have the quantiles of their order, and none when there are none", () => {
  const durations = new Durations();
  assert.ok(Number.isNaN(durations.quantile(0.5)));
  for (let value = 100; value >= 1; value -= 1) durations.push(value);
  assert.deepEqual(
    [0.5, 0.99, 1, 0].map((share) => durations.quantile(share)),
    [50, 99, 100, 1],
  );
  assert.equal(durations.max, 100);
});

test("Who threw, was dropped or is slow comes first", () => {
  const order = before().subscribers.sort(byTrouble).map(({ id }) => id);
  assert.deepEqual(order, [4, 3, 5]);
});

test("The first choice of plots has what changed of the members that matter", () => {
  const recording = before();
  const keys = keysOf([{ recording, call: 7 }]);
  assert.ok(keys.includes("video/call.av1Name1") && !keys.includes("video/call.noiseLevel"));
  assert.ok(keysOf([{ recording, call: 7 }], true).includes("video/call.noiseLevel"));
  assert.deepEqual(firstChoice(keys), [
    "audio/received0.e2eDelay[0]",
    "video/call.encoderBitrate",
    "video/call.encoderFps",
    "video/call.encodedHeight",
    "video/call.encodedWidth",
  ]);
  assert.deepEqual(firstChoice(["video/layer0.stat40"]), ["video/layer0.stat40"]);
});

test("An interval's last value has its minimum and maximum as a band", () => {
  assert.deepEqual(bandOf("video/layer0.intervalLast"), [
    "video/layer0.intervalMinimum",
    "video/layer0.intervalMaximum",
  ]);
  assert.equal(bandOf("video/call.encoderFps"), undefined);
});

test("A member has the unit of its table, and none that the table does not have", () => {
  const units = { video: { "call.encoderFps": "fps" } };
  assert.equal(unitOf(units, "video", "call.encoderFps"), "fps");
  for (const [entity, member] of [
    ["video", "call.encoderBitrate"],
    ["audio", "call.encoderFps"],
    ["constructor", "name"],
    ["video", "toString"],
  ])
    assert.equal(unitOf(units, entity, member), "", member);
});

test("Numbers and times are short", () => {
  assert.equal(formatNumber(350000, "bit/s"), "350 kbit/s");
  assert.equal(formatNumber(1280, "px"), "1280 px");
  assert.equal(formatNumber(0.1 + 0.2), "0.3");
  assert.equal(formatNumber(-12345678), "-12.35 M");
  assert.equal(formatNumber(NaN, "px"), "–");
  assert.deepEqual([formatTick(0.5), formatTick(119), formatTick(125)], ["0.5 s", "119 s", "2:05"]);
  assert.deepEqual([4.5, 150000, 2500000].map(formatMicroseconds), ["4.5 µs", "150 ms", "2.5 s"]);
});

const all = (recording, overrides = {}) =>
  rowsThatFit([recording], () => true, { ...emptyState(), from: 0, to: 100, ...overrides });
const paths = (rows) => rows.map(({ change }) => `${change.t} ${change.group ?? ""}/${change.name ?? ""}`);

test("Changes are searched and filtered, letter case aside", () => {
  const recording = before();
  assert.equal(all(recording).length, 8);
  assert.deepEqual(paths(all(recording, { name: "FPS" })), ["4.5 Video/MaxFps"]);
  assert.deepEqual(paths(all(recording, { group: "Feature" })), ["4.5 Feature/RtxDedup"]);
  assert.deepEqual(paths(all(recording, { kind: "removal" })), ["8.3 Audio/Codec"]);
  assert.deepEqual(paths(all(recording, { origin: "Bandwidth" })), ["3.25 Video/MaxBitrate", "6.5 Video/MaxBitrate"]);
  assert.deepEqual(paths(all(recording, { search: "onerror" })), ["6.7 Common/Layout"]);
  assert.deepEqual(paths(all(recording, { from: 6.6, to: 6.7 })), ["6.6 Video/Key", "6.7 Common/Layout"]);
  assert.deepEqual(all(recording, { search: "no such" }), []);
  assert.deepEqual(paths(rowsThatFit([recording], (_, call) => call === 8, { ...emptyState(), from: 0, to: 100 })), [
    "6.7 Common/Layout",
  ]);
});

test("A setting's history has its first value and the removals that concern it", () => {
  const recording = before();
  assert.deepEqual(paths(all(recording, { setting: "Audio/Codec" })), ["0 Audio/Codec", "8.3 Audio/Codec"]);
  recording.take({ type: "remove", t: 9, call: 7, group: "Audio", count: 1 });
  assert.equal(all(recording, { setting: "Audio/Codec" }).length, 3);
});

test("Rows are sorted by any column, numbers as numbers", () => {
  const rows = all(before());
  assert.deepEqual(
    sortRows(rows, "-time").map(({ change }) => change.t),
    [8.3, 6.7, 6.6, 6.5, 4.5, 4.5, 4.5, 3.25],
  );
  assert.deepEqual(sortRows(rows, "setting").map(({ change }) => change.t)[0], 8.3);
  assert.deepEqual(sortRows(rows, "-call")[0].change.call, 8);
  assert.deepEqual(sortRows([], "origin"), []);
});

test("Rows of one result are sorted by how long those who heard of them took", () => {
  const recording = new Recording("a");
  const tookOf = new Map([[1, 9], [2, 100], [3, undefined], [4, 20]]);
  for (const [number, took] of tookOf) {
    recording.take({ type: "set", t: number, number, call: 7, group: "Video", name: "A", result: "told", told: 1 });
    if (took === undefined) continue;
    const deliver = { type: "deliver", cause: number, call: 7, id: 3, way: "direct", wait_us: took, run_us: 1 };
    recording.take({ ...deliver, t: number });
  }
  recording.take({ type: "set", t: 5, number: 5, call: 7, group: "Video", name: "A", result: "nobody" });
  const order = (sort) => sortRows(all(recording), sort).map(({ change }) => change.number);
  assert.deepEqual(order("result"), [5, 3, 1, 4, 2]);
  assert.deepEqual(order("-result"), [2, 4, 1, 3, 5]);
});

test("A change says what, who, and how many heard of it", () => {
  const recording = before();
  const change = recording.changes.find(({ old, name }) => old === "30" && name === "MaxFps");
  assert.equal(
    sentenceOf(change, recording.heard.get(change.number)),
    "4.5 s, call 7, Video/MaxFps: “30” → “15”, notifies 1, heard by 1, waited up to 12 µs, ran up to 150 ms, " +
      "by lab.json:3:18",
  );
  assert.equal(originOf({ origin: { module: "/a/b.so", symbol: "S", label: "l" } }), "l, S in b.so");
  assert.equal(originOf({ origin: { module: 5, line: "x" } }), "");
  assert.equal(valuesOf({ type: "set", hidden: ["new", "old"] }), "(hidden) → (hidden)");
});

test("Marks are those of the chosen calls, without what was there and what changed nothing", () => {
  const recording = before();
  recording.take({ type: "set", t: 9, call: 7, group: "Audio", name: "A", result: "unchanged" });
  const marks = marksOf([recording], (_, call) => call === 7);
  assert.deepEqual(marks.times, [3.25, 4.5, 4.5, 4.5, 6.5, 6.6, 8.3]);
  assert.equal(nextMark(marks, 3.25, true), 4.5);
  assert.equal(nextMark(marks, 3.25, false), undefined);
  assert.equal(nextMark(marks, 8.3, true), undefined);
  assert.deepEqual(marksNear(marks, 4.4, 0.2, 2).count, 3);
  assert.equal(marksNear(marks, 4.4, 0.2, 2).rows.length, 2);
  assert.deepEqual(marksNear(marks, 0, 1, 5), { count: 0, rows: [] });
});

test("Many marks are thinned to one a column, a document before its sets", () => {
  const marks = marksOf([before()], () => true);
  const thinned = thinMarks(marks, 0, 12, 12);
  assert.equal(
    thinned.reduce((sum, { count }) => sum + count, 0),
    marks.times.length,
  );
  assert.equal(thinned.find(({ time }) => time === 4.5).row.change.type, "apply");
  assert.deepEqual(thinMarks(marks, 1, 2, 10), []);
});

test("The address has all of the state, and what it does not understand is left out", () => {
  const state = {
    ...emptyState(),
    from: 1.5,
    to: 3,
    at: 2,
    search: "a&b=#%",
    group: "Video",
    kind: "set",
    name: "Max",
    origin: "x",
    setting: "Video/MaxFps",
    sort: "-time",
    calls: new Set(["0:7", "1:7"]),
    plots: new Set(["video/a,b.c"]),
  };
  assert.deepEqual(readState(`#${writeState(state)}`), state);
  assert.equal(writeState(emptyState()), "");
  assert.deepEqual(readState(""), emptyState());
  assert.deepEqual(readState("#from=x&to=2&later=1"), emptyState());
  assert.deepEqual(readState("#from=3&to=2"), emptyState());
  const nothing = { ...emptyState(), plots: new Set() };
  assert.deepEqual(readState(writeState(nothing)), nothing);
});

test("No module makes markup or code of texts", () => {
  for (const file of readdirSync(WEB).filter((name) => name.endsWith(".js"))) {
    const text = readFileSync(new URL(file, WEB), "utf8");
    assert.doesNotMatch(
      text,
      /innerHTML|outerHTML|insertAdjacentHTML|document\.write|DOMParser|\beval\b|new Function|srcdoc/,
      file,
    );
    assert.doesNotMatch(text, /https?:\/\//, file);
  }
});
