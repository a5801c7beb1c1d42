// SPDX-License-Identifier: Apache-2.0
// Which changes the table shows, and in which order.
import { isChange, kindOf, originOf, pathOf, resultOf, valuesOf } from "./change.js";

export const COLUMNS = ["time", "recording", "call", "kind", "setting", "change", "result", "origin"];

const LONGEST_US = 1e12;

/** What a column shows of a row {recording, change}. */
export function cellOf({ recording, change }, column) {
  switch (column) {
    case "time":
      return change.t;
    case "recording":
      return recording.name;
    case "call":
      return change.call;
    case "kind":
      return kindOf(change);
    case "setting":
      return pathOf(change);
    case "change":
      return valuesOf(change);
    case "result":
      return resultOf(change, recording.heard.get(change.number));
    default:
      return originOf(change);
  }
}

/**
 * The rows {recording, change} that fit: `isShown` says which calls; `search` is in any of the texts, `group`, `name`
 * and `origin` in theirs; `from` and `to` are times. `setting` is one setting, "group/name", whose history is all of
 * it.
 */
export function rowsThatFit(recordings, isShown, filter) {
  const rows = [];
  const has = (text, part) => text.toLowerCase().includes(part);
  const [search, name, origin] = [filter.search, filter.name, filter.origin].map((part) =>
    (part ?? "").toLowerCase(),
  );
  for (const recording of recordings) {
    for (const change of recording.changes) {
      if (!isChange(change) || !isShown(recording, change.call)) continue;
      if (change.t < filter.from || change.t > filter.to) continue;
      if (filter.setting ? !concerns(change, filter.setting) : change.picture) continue;
      if (filter.group && change.group !== filter.group) continue;
      if (filter.kind && kindOf(change) !== filter.kind) continue;
      if (name && !has(change.name ?? "", name)) continue;
      if (origin && !has(originOf(change), origin)) continue;
      if (search && !has(`${pathOf(change)}\n${valuesOf(change)}\n${originOf(change)}`, search)) continue;
      rows.push({ recording, change });
    }
  }
  return rows;
}

// A group's removal concerns each setting in it.
function concerns(change, setting) {
  if (change.type === "apply") return false;
  return change.name === undefined
    ? setting.startsWith(`${change.group}/`)
    : `${change.group}/${change.name}` === setting;
}

/**
 * Sorts rows by a column: "time", or "-time" for the greatest first. Equal rows stay in their order. Results are
 * sorted by their words, and then by how long the slowest of those who heard of them took.
 */
export function sortRows(rows, sort) {
  const isDown = sort.startsWith("-");
  const column = isDown ? sort.slice(1) : sort;
  const keys = column === "result" ? resultKeys(rows) : rows.map((row) => cellOf(row, column));
  const keyed = rows.map((row, index) => ({ row, key: keys[index] }));
  const compare = typeof keys[0] === "number" ? (a, b) => a.key - b.key : byText;
  keyed.sort(isDown ? (a, b) => compare(b, a) : compare);
  return keyed.map(({ row }) => row);
}

// A number for each: the place of its words among all, far above the microseconds.
function resultKeys(rows) {
  const words = rows.map(({ change }) => resultOf(change));
  const places = new Map([...new Set(words)].sort().map((text, place) => [text, place * LONGEST_US]));
  return rows.map(({ recording, change }, index) => {
    const heard = recording.heard.get(change.number);
    return places.get(words[index]) + (heard ? Math.min(heard.wait + heard.run, LONGEST_US - 1) : -1);
  });
}

function byText(a, b) {
  if (a.key === b.key) return 0;
  return a.key < b.key ? -1 : 1;
}
