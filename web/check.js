// SPDX-License-Identifier: Apache-2.0
// What a line of a recording must have before the page works with it: the same as for the program, which says the same
// of it (tools/recording/RecordingEvent.cpp).

const LARGEST = 2 ** 32 - 1;
const LARGEST_EXACT = 2 ** 53;
const GROUPS = [
  "Common",
  "Audio",
  "Video",
  "Application",
  "Feature",
  "Transmission",
  "Metrics",
  "Gamestate",
  "UnitTest",
  "AudioSi",
  "AudioSlide",
  "VideoSlide",
  "TAOnly",
];

const isNumber = (value) => Number.isFinite(value) && value >= 0;
const areStrings = (value) => value.every((one) => typeof one === "string");
const isStringOrNumber = (value) => typeof value === "string" || typeof value === "number";
export const isObject = (value) => typeof value === "object" && value !== null && !Array.isArray(value);

// Checks of a member's value: each gives what is wrong; "" for nothing.
const string = (value) => (typeof value === "string" ? "" : "expected a string");
const oneOf = (names) => (value) => string(value) || (names.includes(value) ? "" : "unknown");
const number = (value) => (isNumber(value) ? "" : "expected a number, 0 or more");
const whole = (most) => (value) =>
  isNumber(value) && Number.isInteger(value) && value <= most ? "" : "expected a whole number, 0 or more";
const flag = (value) => (typeof value === "boolean" ? "" : "expected true or false");
const strings = (value) =>
  Array.isArray(value) ? (areStrings(value) ? "" : "expected strings") : "expected an array";
const object = (value) => (isObject(value) ? "" : "expected an object");

const EVENTS = {
  recording: oneOf(["ended"]),
  call: oneOf(["made", "shared", "cleaned up", "ended"]),
  bind: oneOf(["bound", "asked"]),
  statistics: oneOf(["made", "released", "ended"]),
};
const MEMBERS = {
  version: whole(LARGEST),
  part: whole(LARGEST_EXACT),
  next: whole(LARGEST_EXACT),
  wall: string,
  reason: string,
  number: whole(LARGEST_EXACT),
  cause: whole(LARGEST_EXACT),
  call: whole(LARGEST),
  group: oneOf(GROUPS),
  name: string,
  old: string,
  new: string,
  cut: strings,
  hidden: strings,
  transient: flag,
  result: oneOf(["told", "nobody", "unchanged", "refused"]),
  told: whole(LARGEST),
  count: whole(LARGEST_EXACT),
  references: whole(LARGEST),
  id: whole(LARGEST_EXACT),
  way: oneOf(["direct", "posted", "handed over"]),
  dropped: flag,
  wait_us: number,
  run_us: number,
  threw: string,
  thread: whole(LARGEST_EXACT * 2048), // An address, on some systems.
  entity: oneOf(["audio", "video", "content video", "content audio"]),
  members: object,
  picture: flag,
  origin: object,
};
const ORIGIN = {
  module: string,
  symbol: string,
  label: string,
  document: string,
  line: whole(LARGEST),
  column: whole(LARGEST),
};
const TYPES = "recording call set remove apply subscribe unsubscribe bind deliver statistics lost".split(" ");

/** Why an event cannot be used; "" when it can. */
export function faultOf(event) {
  if (!isObject(event)) return "expected an object";
  for (const name of ["type", "t"]) if (event[name] === undefined) return `${name}: missing`;
  const fault = faultIn(event, { type: string, t: number });
  if (fault || !TYPES.includes(event.type)) return fault; // A type of a later program has no effect.
  return (
    faultIn(event, { event: EVENTS[event.type] ?? (() => ""), ...MEMBERS }) ||
    missingIn(event) ||
    faultIn(event.origin ?? {}, ORIGIN, "origin.") ||
    faultInMembers(event.members ?? {})
  );
}

/** The version that a line gives to its recording; undefined when it gives none. */
export function versionOf(event) {
  if (!isObject(event) || event.type !== "recording" || !isNumber(event.t) || event.version === undefined)
    return undefined;
  return MEMBERS.version(event.version) ? undefined : event.version;
}

function faultIn(object, checks, prefix = "") {
  for (const name of Object.keys(checks)) {
    const fault = object[name] === undefined ? "" : checks[name](object[name]);
    if (fault) return `${prefix}${name}: ${fault}`;
  }
  return "";
}

function faultInMembers(members) {
  for (const name of Object.keys(members)) {
    if (!isStringOrNumber(members[name])) return `members.${name}: expected a number or a string`;
  }
  return "";
}

// What a line of that type cannot do without.
function missingIn(event) {
  const isOneOf = (...types) => types.includes(event.type);
  const required = [];
  if (isOneOf("recording") && event.event === undefined) required.push("version", "wall");
  if (!isOneOf("recording", "lost")) required.push("call");
  if (isOneOf("set", "remove", "subscribe", "unsubscribe", "bind") && event.result !== "refused")
    required.push("group");
  if (isOneOf("remove", "apply", "lost")) required.push("count");
  if (isOneOf("subscribe", "unsubscribe", "bind", "deliver") && event.event !== "asked") required.push("id");
  if (isOneOf("statistics")) required.push("entity");
  if (isOneOf("set") && !event.picture) required.push("result");
  if (isOneOf("call", "bind") && !event.picture) required.push("event");
  if (isOneOf("statistics") && event.event === undefined) required.push("members");
  if (isOneOf("deliver") && !event.dropped) required.push("way");
  const missing = required.find((name) => event[name] === undefined);
  return missing === undefined ? "" : `${missing}: missing`;
}
