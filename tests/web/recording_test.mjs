// SPDX-License-Identifier: Apache-2.0
// What the page understands of a recording.
import assert from "node:assert/strict";
import { execFileSync, spawnSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";
import { takeEvents } from "../../web/columns.js";
import { documentOf, settingsAt } from "../../web/settings.js";
import { findingsOf } from "../../web/findings.js";
import { follow } from "../../web/live.js";
import { Reader } from "../../web/reader.js";
import { Recording } from "../../web/recording.js";
import { readEmbedded } from "../../web/sources.js";

const BEGIN = '{"type":"recording","t":0,"version":1,"wall":"2026-11-22T08:42:05Z"}\n';

function read(...parts) {
  const recording = new Recording("a.tessel");
  const reader = new Reader(recording);
  for (const part of parts) reader.feed(part);
  reader.finish();
  return recording;
}

const textOf = (name) => readFileSync(new URL(name, import.meta.url), "utf8");
const call = () => read(textOf("../tools/recordings/call.tessel"));
const before = () => read(textOf("recordings/before.tessel"));
const set = (members) => {
  const event = { type: "set", t: 1, call: 1, group: "Audio", name: "A", new: "1", result: "nobody", ...members };
  return `${JSON.stringify(event)}\n`;
};

test("A recording is the same in whatever pieces it arrives", () => {
  const text = textOf("../tools/recordings/call.tessel");
  const whole = read(text);
  for (const size of [1, 7, 1000]) {
    const parts = [];
    for (let begin = 0; begin < text.length; begin += size) parts.push(text.slice(begin, begin + size));
    assert.deepEqual(read(...parts), whole);
  }
});

test("Calls, changes and statistics are found", () => {
  const recording = call();
  assert.deepEqual([...recording.calls.keys()], [7, 8]);
  assert.equal(recording.calls.get(8).to, 2.9);
  assert.equal(recording.end, 3);
  assert.equal(recording.ended, "");
  const series = recording.seriesOf(7, "video/common.bitrate");
  assert.deepEqual([series.at(0), series.at(1.99), series.at(2), series.at(2.75)], [500000, 500000, 350000, 400000]);
  assert.ok(series.hasChanged);
  assert.ok(!recording.seriesOf(7, "video/common.codec").hasChanged);
  assert.equal(recording.seriesOf(7, "video/none"), undefined);
});

test("A statistic has a gap once its object has ended", () => {
  const series = call().seriesOf(7, "video/common.bitrate");
  assert.ok(Number.isNaN(series.at(2.8)));
  assert.ok(Number.isNaN(series.at(100)));
  assert.ok(Number.isNaN(series.at(-1)));
});

test("The times of a statistic are sorted, also where its object's end is behind a later look", () => {
  const recording = read(
    BEGIN,
    '{"type":"statistics","t":1,"call":1,"entity":"audio","members":{"a":1}}\n',
    '{"type":"statistics","t":2.5,"call":1,"entity":"audio","members":{"a":2}}\n',
    '{"type":"statistics","t":2.25,"call":1,"entity":"audio","event":"ended"}\n',
  );
  const series = recording.seriesOf(1, "audio/a");
  assert.deepEqual(series.times, [1, 2.5, 2.5]);
  assert.deepEqual([2, 2.25, 2.5, 3].map((time) => series.at(time)), [1, 1, NaN, NaN]);
});

test("A call's end leaves its statistics: who holds an object goes on, and says what changes", () => {
  const recording = read(
    BEGIN,
    '{"type":"statistics","t":1,"call":1,"entity":"audio","members":{"a":1,"b":2}}\n',
    '{"type":"call","t":2,"call":1,"event":"ended"}\n',
    '{"type":"statistics","t":3,"call":1,"entity":"audio","members":{"a":5}}\n',
  );
  assert.deepEqual(
    ["a", "b"].map((name) => recording.seriesOf(1, `audio/${name}`).at(3)),
    [5, 2],
  );
});

test("An object's end ends its statistics and none of another one", () => {
  const recording = read(
    BEGIN,
    '{"type":"statistics","t":1,"call":1,"entity":"audio","members":{"a":1}}\n',
    '{"type":"statistics","t":1,"call":1,"entity":"video","members":{"a":1}}\n',
    '{"type":"statistics","t":1,"call":2,"entity":"audio","members":{"a":1}}\n',
    '{"type":"statistics","t":2,"call":1,"entity":"audio","event":"ended"}\n',
  );
  assert.ok(Number.isNaN(recording.seriesOf(1, "audio/a").at(2)));
  assert.equal(recording.seriesOf(1, "video/a").at(2), 1);
  assert.equal(recording.seriesOf(2, "audio/a").at(2), 1);
});

test("An import that is written at its end is in its place by time", () => {
  const recording = read(
    BEGIN,
    set({ t: 1, name: "A" }),
    set({ t: 2, name: "B" }),
    set({ t: 3, name: "C" }),
    '{"type":"apply","t":1.5,"call":1,"count":2}\n',
  );
  assert.deepEqual(
    recording.changes.map(({ type, t }) => [type, t]),
    [
      ["begin", 0],
      ["set", 1],
      ["apply", 1.5],
      ["set", 2],
      ["set", 3],
    ],
  );
});

test("Who heard of a set, and how long the slowest took, is summed", () => {
  const recording = before();
  const change = recording.changes.find(({ name, old }) => name === "MaxFps" && old === "30");
  assert.deepEqual(recording.heard.get(change.number), { count: 1, wait: 12, run: 150000, threw: 0, dropped: 0 });
});

test("Subscribers have their ways and durations", () => {
  const subscriber = before().calls.get(7).subscribers.get(4);
  assert.deepEqual([...subscriber.ways], [["posted", 2]]);
  assert.equal(subscriber.threw, 1);
  assert.equal(subscriber.lastThrown, "no <b>window</b>");
  assert.equal(subscriber.waits.quantile(0.5), 40);
  const dropped = before().calls.get(7).subscribers.get(3);
  assert.equal(dropped.dropped, 1);
  assert.equal(dropped.late, 1);
  assert.equal(dropped.name, "MaxFps");
});

test("Late, dropped, lost, thrown and refused are findings with their places", () => {
  const texts = findingsOf(before()).map(({ text, places }) => `${text}; ${places.length}`);
  assert.deepEqual(texts, [
    "Lost events: 12 (what is missing here may have happened); 1",
    "Dropped deliveries: 1 (the run thread had no queue, or stopped); 1",
    "Callbacks that threw: 1; 1",
    "Late deliveries: 1 (waited or ran for more than 100 ms); 1",
    "Refused operations: 1; 1",
  ]);
  assert.equal(findingsOf(before())[1].places[0].text, "8.2 s, call 7, Video/MaxFps, to 3, waited 3 µs");
});

test("A recording in which all is well has no findings", () => {
  assert.deepEqual(findingsOf(read(BEGIN, set({}))), []);
});

test("Damaged lines are findings, and the rest is read", () => {
  const recording = read(textOf("../tools/recordings/damaged.tessel"));
  assert.ok(recording.faults.some(({ line, reason }) => line === 4 && reason === "no JSON"));
  assert.ok(recording.faults.some(({ line }) => line === 5));
  assert.equal(recording.ended, "");
  assert.equal(recording.changes.filter(({ number }) => number === 41).length, 1);
});

test("Two damaged lines that are an object together are still damaged", () => {
  const recording = read(BEGIN, '{"type":"lost","t":1,"count":1,"a":[1\n', "2]}\n");
  assert.equal(recording.faults.length, 2);
  assert.equal(recording.findings.lost.count, 0);
});

test("An end that is cut off is no damage", () => {
  const recording = read(textOf("../tools/recordings/cut_off.tessel"));
  assert.deepEqual(recording.faults, []);
  assert.equal(recording.changes.filter(({ number }) => number === 41).length, 1);
});

test("What is no recording, or of a newer version, is refused", () => {
  for (const name of ["empty", "foreign", "newer"]) {
    const recording = read(textOf(`../tools/recordings/${name}.tessel`));
    assert.equal(recording.faults.length, 1, name);
    assert.equal(recording.faults[0].line, 1, name);
    assert.equal(recording.count, 0, name);
  }
});

test("Members of wrong kinds are damage", () => {
  const lines = [
    '{"type":"set","t":1}',
    '{"type":"set","t":-1,"call":1,"group":"Audio"}',
    '{"type":"lost","t":1,"count":"1"}',
    '{"type":"set","t":1,"call":1,"group":"Audio","new":5}',
    '{"type":"statistics","t":1,"call":1,"entity":"audio","members":[1]}',
    '{"type":"set","t":1,"call":1,"group":"Audio","cut":"new"}',
    '{"type":"lost","t":1e999,"count":1}',
    '{"type":"deliver","t":1,"call":1,"id":1,"way":"direct","run_us":1e999}',
    '{"type":"recording","t":1,"wall":"2026-11-22T08:42:05Z"}',
    '{"type":"recording","t":1,"version":1}',
    "[]",
    "null",
    "1",
    '"a"',
  ];
  for (const line of lines) {
    const recording = read(BEGIN, `${line}\n`, set({}));
    assert.equal(recording.faults.length, 1, line);
    assert.equal(recording.count, 2, line);
    assert.equal(recording.end, 1, line);
  }
});

// What the program says of a recording, as the page would.
function faultsOfProgram(text) {
  const folder = mkdtempSync(join(tmpdir(), "page-"));
  try {
    writeFileSync(join(folder, "a.tessel"), text);
    const { stderr } = spawnSync(process.env.TESSEL, ["log", "a.tessel"], { cwd: folder, encoding: "utf8" });
    const lines = stderr.split("\n").filter((line) => line !== "" && !line.includes("the recording ends within"));
    return lines.map((line) => {
      const [, number, reason] = /^a\.tessel:(\d+): (.*)$/.exec(line);
      return { line: Number(number), reason };
    });
  } finally {
    rmSync(folder, { recursive: true });
  }
}

test("A dropped file is as damaged as the program says", (context) => {
  if (!process.env.TESSEL) return context.skip("TESSEL names no program");
  const begin = JSON.parse(BEGIN);
  const wholes = {
    recording: begin,
    call: { type: "call", t: 1, call: 1, event: "made", references: 1 },
    set: { type: "set", t: 1, number: 5, call: 1, group: "Audio", name: "A", old: "1", new: "2", result: "told" },
    remove: { type: "remove", t: 1, call: 1, group: "TAOnly", count: 1 },
    apply: { type: "apply", t: 1, call: 1, count: 1, run_us: 1.5, threw: "a" },
    subscribe: { type: "subscribe", t: 1, call: 1, group: "Audio", name: "A", id: 3 },
    unsubscribe: { type: "unsubscribe", t: 1, call: 1, group: "Audio", id: 3 },
    bind: { type: "bind", t: 1, call: 1, group: "Audio", id: 3, event: "asked" },
    deliver: { type: "deliver", t: 1, call: 1, id: 3, cause: 5, way: "posted", wait_us: 1, run_us: 2 },
    statistics: { type: "statistics", t: 1, call: 1, entity: "audio", members: { a: 1 } },
    lost: { type: "lost", t: 1, count: 1 },
    later: { type: "later", t: 1, call: "x", group: 5 },
  };
  const names = new Set(Object.values(wholes).flatMap(Object.keys));
  for (const name of "part next reason cut hidden transient told thread dropped picture origin cause".split(" "))
    names.add(name);
  names.delete("version"); // Its own test.
  const values = [null, true, false, "", "told", "ended", "asked", "direct", -1, 0, 1.5, 1e999, 2 ** 32, 2 ** 53 * 4];
  values.push([], [1], ["new"], {}, { a: 1 }, { line: 1.5 }, { module: 5, a: null }, { a: null });
  const lines = [BEGIN];
  const add = (line) => lines.push(`${JSON.stringify(line).replaceAll('"∞"', "1e999")}\n`);
  for (const whole of Object.values(wholes)) {
    add(whole);
    for (const name of names) {
      add({ ...whole, [name]: undefined });
      for (const value of values) add({ ...whole, [name]: value === Infinity ? "∞" : value });
    }
  }
  lines.push(`{"type":"lost","t":1,"count":1,"x":"${"é".repeat(2 ** 19)}"}\n`, "[]\n", "null\n", '"a"\n');
  const text = lines.join("");
  const faults = faultsOfProgram(text);
  assert.ok(faults.length > 1000);
  assert.deepEqual(read(text).faults, faults);
});

test("A dropped file begins and ends as the program says", (context) => {
  if (!process.env.TESSEL) return context.skip("TESSEL names no program");
  const end = '{"type":"lost","t":1,"count":1,"x":[-1.5,true,"a\\n"]}';
  const rows = [`\ufeff${BEGIN}`, `${BEGIN}${BEGIN.replace('"version":1', '"version":2')}`, "x", "\n", "{}"];
  for (const version of ["0", "2", '"1"', "1.5", "null"]) rows.push(BEGIN.replace('n":1', `n":${version}`));
  rows.push('{"type":"recording","t":0,"version":1}\n', '{"type":"recording","t":0,"version":1,"event":"ended"}\n');
  for (let size = 0; size <= end.length; size += 1) rows.push(BEGIN + end.slice(0, size));
  for (const rest of ["}", "{}}", '{"a":tx', "{]", "[1", '{"a" "b']) rows.push(BEGIN + rest);
  for (const text of rows) {
    const faults = faultsOfProgram(text).map(({ line, reason }) => ({
      line,
      reason: /^[\w.]+: |^no recording|^version|^expected an object|is empty/.test(reason) ? reason : "no JSON",
    }));
    assert.deepEqual(read(text).faults, faults, text);
  }
});

test("Names that objects have by themselves are only names", () => {
  const line = '{"type":"statistics","t":1,"call":1,"entity":"audio","members":{"__proto__":1,"constructor":2}}\n';
  const recording = read(BEGIN, line, '{"type":"toString","t":1}\n', set({ name: "__proto__", group: "Audio" }));
  assert.equal(recording.seriesOf(1, "audio/__proto__").at(1), 1);
  assert.equal(recording.seriesOf(1, "audio/constructor").at(1), 2);
  assert.deepEqual(recording.faults, []);
  assert.equal(documentOf(settingsAt(recording, 1, 1).settings), '{"Audio":[{"key":"__proto__","value":"1"}]}');
});

test("The settings at a time are those that were set until then", () => {
  const recording = call();
  const at = (time) => documentOf(settingsAt(recording, 7, time).settings);
  assert.equal(at(0), '{"Video":[{"key":"MaxFps","value":"30"}],"Audio":[{"key":"Codec","value":"opus"}]}');
  assert.match(at(1.3), /"MaxFps","value":"15"/);
  assert.match(at(1.5), /"Sharp\\u001b\[1m","value":"\\"yes\\""/);
  assert.doesNotMatch(at(2.3), /opus/);
  assert.match(at(2.35), /AV1/);
  assert.doesNotMatch(at(2.4), /Video/);
});

test("What was lost before a part begins is no gap in the settings behind it", () => {
  const next = BEGIN.replace('"t":0', '"t":1');
  const lostAt = (t) => `${JSON.stringify({ type: "lost", t, count: 2 })}\n`;
  const recording = read(BEGIN, lostAt(1), next, set({}), lostAt(2));
  const lost = ["events were lost before, values may be others"];
  assert.deepEqual(settingsAt(recording, 1, 0.5).gaps, []);
  assert.deepEqual(settingsAt(recording, 1, 1).gaps, []);
  assert.deepEqual(settingsAt(recording, 1, 2).gaps, lost);
  assert.deepEqual(settingsAt(read(BEGIN, '{"type":"lost","t":1,"count":2}\n'), 1, 1).gaps, lost);
});

test("What a set takes away by being transient is gone", () => {
  const recording = read(BEGIN, set({}), set({ transient: true, new: "2" }));
  assert.equal(documentOf(settingsAt(recording, 1, 1).settings), "{}");
});

test("A refused set may have no group, and an answer of a binding no id", () => {
  const bind = { type: "bind", t: 1, call: 1, group: "Audio", name: "A" };
  const recording = read(
    BEGIN,
    set({ group: undefined, result: "refused" }),
    `${JSON.stringify({ ...bind, id: 4, event: "bound" })}\n`,
    `${JSON.stringify({ ...bind, event: "asked", run_us: 5 })}\n`,
    `${JSON.stringify({ ...bind, name: "B", event: "asked", run_us: 5 })}\n`,
  );
  assert.deepEqual(recording.faults, []);
  assert.deepEqual(
    recording.subscribers.map(({ id, count }) => [id, count]),
    [[4, 1]],
  );
  assert.equal(findingsOf(recording)[0].places[0].text, "1 s, call 1");
  assert.equal(read(BEGIN, set({ group: undefined })).faults.length, 1);
  assert.equal(read(BEGIN, `${JSON.stringify({ ...bind, event: "bound" })}\n`).faults.length, 1);
});

test("A member that an object's first line lacks was 0 until it changed, and is 0 again in a new object", () => {
  const line = (t, members, more) =>
    `${JSON.stringify({ type: "statistics", t, call: 1, entity: "audio", members, ...more })}\n`;
  const recording = read(
    BEGIN,
    line(1, { a: 5 }),
    line(2, { b: 7, c: "x" }),
    line(3, undefined, { event: "ended" }),
    line(4, { a: 6 }),
    line(5, { b: 1 }, { picture: true }),
  );
  const at = (name) => [0, 1, 2, 3, 4, 5].map((time) => recording.seriesOf(1, `audio/${name}`).at(time));
  assert.deepEqual(at("a"), [NaN, 5, 5, NaN, 6, 0]);
  assert.deepEqual(at("b"), [NaN, 0, 7, NaN, 0, 1]);
  assert.ok(recording.seriesOf(1, "audio/b").hasChanged);
  assert.deepEqual(recording.seriesOf(1, "audio/c").texts, ["", "x"]);
});

test("A recording is over when it has ended, not when one of its files is full", () => {
  const end = (more) => `${JSON.stringify({ type: "recording", t: 1, event: "ended", ...more })}\n`;
  const full = end({ reason: "goes on in the next file" });
  assert.ok(!read(BEGIN).isOver);
  assert.ok(!read(BEGIN, full).isOver);
  assert.ok(!read(BEGIN, full, BEGIN).isOver);
  assert.ok(read(BEGIN, full, BEGIN, end()).isOver);
  assert.ok(read(BEGIN, end({ reason: "it has reached its largest size" })).isOver);
});

test("Refused and transient sets leave no setting; what a call's end takes is gone", () => {
  const recording = read(
    BEGIN,
    set({ name: "A", transient: true }),
    set({ name: "B", result: "refused" }),
    set({ name: "C" }),
    '{"type":"call","t":2,"call":1,"event":"ended"}\n',
  );
  assert.equal(documentOf(settingsAt(recording, 1, 1).settings), '{"Audio":[{"key":"C","value":"1"}]}');
  assert.equal(documentOf(settingsAt(recording, 1, 2).settings), "{}");
});

test("A set behind its call's end leaves no setting, unless the call is there again or that may be lost", () => {
  const ended = '{"type":"call","t":2,"call":1,"event":"ended"}\n';
  const made = (t) => `{"type":"call","t":${t},"call":1,"event":"made"}\n`;
  const behind = (...lines) =>
    settingsAt(read(BEGIN, set({}), ended, ...lines, set({ t: 3, new: "2" })), 1, 3).settings.get("Audio/A")?.new;
  assert.equal(behind(), undefined);
  assert.equal(behind(made(2).replace('"call":1', '"call":8')), undefined);
  assert.equal(behind(made(2)), "2");
  assert.equal(behind(made(1.999999)), "2");
  assert.equal(behind(made(2), ended), undefined);
  assert.equal(behind('{"type":"lost","t":2,"count":1}\n'), "2");
  assert.equal(behind(BEGIN.replace('"t":0', '"t":2')), "2");
});

test("A value that the recording does not have whole is left out and named", () => {
  const recording = read(
    BEGIN,
    set({ cut: ["new"] }),
    set({ name: "B", hidden: ["new"], new: undefined }),
    set({ name: undefined, hidden: ["name"] }),
    '{"type":"lost","t":1,"count":1}\n',
  );
  const { settings, gaps } = settingsAt(recording, 1, 1);
  assert.equal(documentOf(settings), "{}");
  assert.equal(gaps.length, 4);
});

test("A set that changes nothing takes nothing away from a value that is whole", () => {
  const recording = read(BEGIN, set({}), set({ result: "unchanged", cut: ["new"], new: "" }));
  assert.equal(documentOf(settingsAt(recording, 1, 1).settings), '{"Audio":[{"key":"A","value":"1"}]}');
});

test("Bytes that are no UTF-8 leave as they came, and letters as letters", () => {
  const recording = read(
    BEGIN,
    '{"type":"set","t":1,"call":1,"group":"Audio","name":"\\u00e9é\\\\u00e9","new":"\\u0001","result":"nobody"}\n',
  );
  assert.equal(
    documentOf(settingsAt(recording, 1, 1).settings),
    '{"Audio":[{"key":"\\u00e9é\\\\u00e9","value":"\\u0001"}]}',
  );
});

test("Strings among statistics are kept apart from numbers", () => {
  const line = (t, value) =>
    `{"type":"statistics","t":${t},"call":1,"entity":"audio","members":{"a":${value},"b":${t}}}\n`;
  const recording = read(BEGIN, line(1, '"AV1"'), line(2, '"H264"'), line(3, '"AV1"'));
  const series = recording.seriesOf(1, "audio/a");
  assert.deepEqual(series.texts, ["AV1", "H264"]);
  assert.deepEqual(series.values, [0, 1, 0]);
  const numbers = read(BEGIN, line(1, "1"), line(2, '"nan"'), line(3, "2"), line(4, "1e999"));
  assert.deepEqual(numbers.seriesOf(1, "audio/a").values, [1, NaN, 2, NaN]);
});

// What the page has in it of a recording's text; undefined when the program makes no pages.
function embedded(text) {
  const folder = mkdtempSync(join(tmpdir(), "page-"));
  try {
    writeFileSync(join(folder, "a.tessel"), text);
    execFileSync(process.env.TESSEL, ["report", join(folder, "a.tessel"), "-o", join(folder, "page.html")], {
      stdio: ["ignore", "ignore", "pipe"],
    });
    const page = readFileSync(join(folder, "page.html"), "utf8");
    const recording = new Recording("a.tessel");
    const parts = [...page.matchAll(/<script type="application\/json" data-recording="0"[^>]*>([^]*?)<\/script>/g)];
    for (const [, json] of parts) takeEvents(json, (event) => recording.take(event));
    return { recording, parts: parts.length };
  } catch (error) {
    if (String(error.stderr).includes("built without")) return undefined;
    throw error;
  } finally {
    rmSync(folder, { recursive: true });
  }
}

// A page has nothing of a recording that it does not show.
function shownOf(recording) {
  const changes = recording.changes.map(({ thread, ...change }) => change);
  const findings = Object.values(recording.findings).map(({ count, events }) => ({
    count,
    events: events.map(({ t, call, id, group, name, wait_us, run_us, threw, count: lost }) =>
      JSON.stringify({ t, call, id, group, name, wait_us, run_us, threw, lost }),
    ),
  }));
  return { ...recording, changes, findings };
}

const EDGES = [
  set({ t: 1.000000001, number: 9007199254740991, name: "__proto__", new: "é\u2028\u0085", old: "</script><!--" }),
  set({ t: 5000.25, number: 3, name: "a\u0001\u007f\n\"\\", origin: { label: "ü", document: "d", line: 7 } }),
  set({ t: 5000.5, origin: { module: "m", symbol: "s" }, cut: ["new", "old"], hidden: ["name"], transient: true }),
  '{"type":"set","t":5001,"call":1,"group":"Audio","name":"\\u00ff","new":"\\u00c3","result":"told","told":2}\n',
  '{"type":"deliver","t":5001,"call":1,"id":3,"cause":3,"way":"posted","wait_us":0.125,"run_us":1e-7,"old":"1"}\n',
  '{"type":"deliver","t":5001,"call":1,"id":3,"dropped":true,"group":"Audio","name":"A"}\n',
  '{"type":"statistics","t":5002,"call":1,"entity":"audio","members":{"a":-0.5,"b":1e300,"__proto__":4294967296}}\n',
  '{"type":"statistics","t":5003,"call":1,"entity":"audio","members":{"a":0.1,"b":"inf","c":"text","d":1e999}}\n',
  '{"type":"statistics","t":5004,"call":1,"entity":"audio","members":{"a":-7,"c":"","constructor":65536}}\n',
  '{"type":"statistics","t":5004,"call":1,"entity":"audio","members":{},"picture":true}\n',
  '{"type":"statistics","t":5004,"call":1,"entity":"video","members":{},"picture":true}\n',
  '{"type":"statistics","t":5005,"call":1,"entity":"video","members":{"a":1}}\n',
  '{"type":"later","t":6000,"call":99,"group":5}\n',
];

test("A page has the same in it as the recording's lines say", (context) => {
  if (!process.env.TESSEL) return context.skip("TESSEL names no program");
  const texts = [BEGIN, BEGIN + EDGES.join(""), textOf("recordings/before.tessel"), textOf("recordings/after.tessel")];
  texts.push(textOf("../tools/recordings/call.tessel"), textOf("../tools/recordings/cut_off.tessel"));
  for (const text of texts) {
    const page = embedded(text);
    if (!page) return context.skip("the program was built without dygraphs");
    assert.deepEqual(shownOf(page.recording), shownOf(read(text)));
  }
});

test("A file that is dropped while a page reads what it has in it comes behind that", async () => {
  const column = (...numbers) => {
    const data = Buffer.from(Uint8Array.from(numbers)).toString("base64");
    return { length: numbers.length, base: 0, scale: 1, bytes: 1, data };
  };
  const part = (number, onRead) => ({
    dataset: { recording: String(number), name: `${number}.tessel` },
    textContent: JSON.stringify({
      list: ["later"],
      order: column(0),
      tables: [{ numbers: { t: column(number) }, values: { type: column(0) } }],
    }),
    remove: onRead,
  });
  const app = { recordings: [] };
  const parts = [part(0, () => app.recordings.push(new Recording("dropped"))), part(1, () => {})];
  globalThis.document = { querySelectorAll: () => parts };
  await readEmbedded(app, () => {});
  delete globalThis.document;
  assert.deepEqual(
    app.recordings.map(({ name, count, end }) => [name, count, end]),
    [
      ["0.tessel", 1, 0],
      ["1.tessel", 1, 1],
      ["dropped", 0, 0],
    ],
  );
});

test("A file that is dropped on a page before it has anything to follow comes behind that", async () => {
  const listeners = {};
  globalThis.document = { querySelector: () => ({ dataset: { name: "live.tessel" } }) };
  globalThis.location = { search: "" };
  globalThis.EventSource = class {
    addEventListener(type, listener) {
      listeners[type] = listener;
    }
  };
  const app = { recordings: [] };
  await new Promise((show) => {
    follow(app, show);
    app.recordings.push(new Recording("dropped"));
    listeners.open();
    listeners.message({ data: BEGIN.trimEnd() });
  });
  for (const name of ["document", "location", "EventSource"]) delete globalThis[name];
  assert.deepEqual(
    app.recordings.map(({ name, count }) => [name, count]),
    [
      ["live.tessel", 1],
      ["dropped", 0],
    ],
  );
});

test("A long recording is in a page in parts", (context) => {
  if (!process.env.TESSEL) return context.skip("TESSEL names no program");
  const lines = Array.from({ length: 40000 }, (_, number) => set({ t: number / 8, number, name: `A${number % 7}` }));
  const page = embedded(BEGIN + lines.join(""));
  if (!page) return context.skip("the program was built without dygraphs");
  assert.ok(page.parts > 1);
  assert.deepEqual(shownOf(page.recording), shownOf(read(BEGIN, ...lines)));
});
