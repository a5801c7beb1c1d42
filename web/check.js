// SPDX-License-Identifier: Apache-2.0
// What a line of a recording must have before the page works with it.

const STRINGS = ["group", "name", "old", "new", "result", "way", "threw", "entity", "event", "wall", "reason"];
const NUMBERS = [
  "version",
  "number",
  "cause",
  "call",
  "told",
  "count",
  "references",
  "id",
  "thread",
  "wait_us",
  "run_us",
];
const REQUIRED = {
  recording: [],
  call: ["call"],
  set: ["call"],
  remove: ["call", "group", "count"],
  apply: ["call", "count"],
  subscribe: ["call", "group", "id"],
  unsubscribe: ["call", "id"],
  bind: ["call", "group"],
  deliver: ["call", "id"],
  statistics: ["call", "entity"],
  lost: ["count"],
};

const isNumber = (value) => Number.isFinite(value) && value >= 0;
export const isObject = (value) => typeof value === "object" && value !== null && !Array.isArray(value);

/** Why an event cannot be used; "" when it can. */
export function faultOf(event) {
  if (!isObject(event)) return "expected an object";
  if (typeof event.type !== "string") return "type: expected a string";
  if (!isNumber(event.t)) return "t: expected a number, 0 or more";
  if (!Object.hasOwn(REQUIRED, event.type)) return ""; // Of a later program; it has no effect.
  for (const name of REQUIRED[event.type]) {
    if (event[name] === undefined) return `${name}: missing`;
  }
  for (const name of STRINGS) {
    if (event[name] !== undefined && typeof event[name] !== "string") return `${name}: expected a string`;
  }
  for (const name of NUMBERS) {
    if (event[name] !== undefined && !isNumber(event[name])) return `${name}: expected a number, 0 or more`;
  }
  for (const name of ["origin", "members"]) {
    if (event[name] !== undefined && !isObject(event[name])) return `${name}: expected an object`;
  }
  for (const name of ["cut", "hidden"]) {
    if (event[name] !== undefined && !Array.isArray(event[name])) return `${name}: expected an array`;
  }
  if (event.type === "recording" && event.event === undefined) {
    for (const name of ["version", "wall"]) if (event[name] === undefined) return `${name}: missing`;
  }
  if (event.type === "set" && event.group === undefined && event.result !== "refused") return "group: missing";
  if (event.type === "bind" && event.id === undefined && event.event !== "asked") return "id: missing";
  return "";
}
