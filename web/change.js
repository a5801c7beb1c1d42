// SPDX-License-Identifier: Apache-2.0
// What the page says of one change.
import { formatMicroseconds, formatTime } from "./format.js";

/** Whether it is one: the others mark where a part begins, events were lost, a call ends or comes again. */
export function isChange(change) {
  return change.type === "set" || change.type === "remove" || change.type === "apply";
}

/** Whether plots have a mark for it. */
export function isMarked(change) {
  return isChange(change) && !change.picture && change.result !== "unchanged";
}

export function kindOf(change) {
  if (change.result === "refused") return "refused";
  if (change.type === "apply") return "document";
  if (change.type === "remove") return "removal";
  return change.group === "Feature" ? "toggle" : "set";
}

export function pathOf(change) {
  if (change.type === "apply") return change.origin?.document ?? "a document";
  if (change.hidden?.includes("name")) return `${change.group ?? "?"}/(hidden)`;
  return `${change.group ?? "?"}/${change.name ?? "*"}${change.cut?.includes("name") ? "…" : ""}`;
}

function valueOf(change, member) {
  if (change.hidden?.includes(member)) return "(hidden)";
  const value = change[member];
  return value === undefined ? "none" : `“${value}”${change.cut?.includes(member) ? "…" : ""}`;
}

/** old → new */
export function valuesOf(change) {
  if (change.type === "apply") return `${change.count} sets`;
  if (change.type === "remove" && change.name === undefined) return `${change.count} removed`;
  const hasOld = change.old !== undefined || change.hidden?.includes("old");
  return `${hasOld ? `${valueOf(change, "old")} → ` : ""}${valueOf(change, "new")}`;
}

/** Who did it: label, document and line, symbol and module. */
export function originOf(change) {
  const origin = change.origin ?? {};
  const parts = [];
  if (typeof origin.label === "string") parts.push(origin.label);
  if (typeof origin.document === "string" || typeof origin.line === "number") {
    const place = [origin.document ?? "a document", origin.line, origin.column];
    parts.push(place.filter((part) => part !== undefined).join(":"));
  }
  if (typeof origin.module === "string") {
    const module = origin.module.slice(origin.module.lastIndexOf("/") + 1);
    parts.push(typeof origin.symbol === "string" ? `${origin.symbol} in ${module}` : module);
  }
  return parts.join(", ");
}

/** What came of it, and how many heard of it. */
export function resultOf(change, heard) {
  const parts = [];
  if (change.transient) parts.push("transient");
  if (change.picture) parts.push(change.cause === undefined ? "there at the start" : "the whole value");
  else if (change.result === "told") parts.push(`notifies ${change.told ?? 0}`);
  else if (change.result === "nobody") parts.push("nobody notified");
  else if (change.result !== undefined) parts.push(change.result);
  if (heard) {
    parts.push(`heard by ${heard.count}`);
    parts.push(`waited up to ${formatMicroseconds(heard.wait)}`, `ran up to ${formatMicroseconds(heard.run)}`);
    if (heard.threw > 0) parts.push(`${heard.threw} threw`);
    if (heard.dropped > 0) parts.push(`${heard.dropped} dropped`);
  }
  return parts.join(", ");
}

/** All of it in one sentence. */
export function sentenceOf(change, heard) {
  const origin = originOf(change);
  return [
    `${formatTime(change.t)} s`,
    `call ${change.call}`,
    `${pathOf(change)}: ${valuesOf(change)}`,
    resultOf(change, heard),
    origin ? `by ${origin}` : "",
  ]
    .filter((part) => part !== "")
    .join(", ");
}
