// SPDX-License-Identifier: Apache-2.0
import { stringifyWithBytes } from "./bytes.js";

/**
 * The settings of a call at a time, as {settings: Map, gaps}: per "group/name" the change that set it last. A gap says
 * what the recording does not have.
 */
export function settingsAt(recording, call, time) {
  let settings = new Map();
  let hasUnknownNames = false;
  let hasLost = false;
  let hasEnded = false;
  for (const change of recording.changes) {
    if (change.t > time) break;
    if (change.type === "begin" || (change.type === "end" && change.call === call)) {
      settings = new Map();
      hasUnknownNames = false;
      hasEnded = change.type === "end";
      if (!hasEnded) hasLost = false; // Its picture has all that is there.
    } else if (change.type === "lost") {
      hasLost = true;
      hasEnded = false; // What says that the call is there again may be lost.
    } else if (change.type === "again" && change.call === call) {
      hasEnded = false;
    } else if (change.call === call && !hasEnded && change.result !== "refused") {
      hasUnknownNames = take(settings, change) || hasUnknownNames;
    }
  }
  const gaps = [];
  for (const [key, change] of settings) {
    if (!isWhole(change)) gaps.push(`${key}: left out, the recording does not have all of the value`);
  }
  if (hasUnknownNames) gaps.push("values are left out, the recording does not have all of their names");
  if (hasLost) gaps.push("events were lost before, values may be others");
  return { settings, gaps };
}

/** A settings document: what `tessel apply` reads. */
export function documentOf(settings) {
  const groups = new Map();
  for (const change of settings.values()) {
    if (!isWhole(change)) continue;
    if (!groups.has(change.group)) groups.set(change.group, []);
    groups.get(change.group).push({ key: change.name, value: change.new ?? "" });
  }
  return stringifyWithBytes(Object.fromEntries(groups));
}

// True when a name is not known.
function take(settings, change) {
  if (change.type !== "set" && change.type !== "remove") return false;
  const hides = (member) => Boolean(change.hidden?.includes(member) || change.cut?.includes(member));
  if (hides("name") || (change.type === "set" && change.name === undefined)) return true;
  const key = `${change.group}/${change.name}`;
  if (change.name === undefined) {
    for (const [other, set] of settings) if (set.group === change.group) settings.delete(other);
  } else if (change.type === "set" && !change.transient && (change.new !== undefined || hides("new"))) {
    const before = settings.get(key);
    // A set that changes nothing may have less of the value than is known already.
    if (change.result !== "unchanged" || !before || !isWhole(before)) settings.set(key, change);
  } else {
    settings.delete(key); // A transient set leaves no value.
  }
  return false;
}

function isWhole(change) {
  return !change.cut?.includes("new") && !change.hidden?.includes("new");
}
