// SPDX-License-Identifier: Apache-2.0
// What is wrong with a recording or in it, as sentences.
import { formatMicroseconds, formatTime } from "./format.js";
import { LATE_US } from "./subscriber.js";

const KINDS = [
  ["lost", "Lost events", "what is missing here may have happened"],
  ["dropped", "Dropped deliveries", "the run thread had no queue, or stopped"],
  ["threw", "Callbacks that threw", ""],
  ["late", "Late deliveries", `waited or ran for more than ${formatMicroseconds(LATE_US)}`],
  ["refused", "Refused operations", ""],
];

/** Each finding: {recording, text, places: [{time, text}]}. */
export function findingsOf(recording) {
  const findings = [];
  for (const fault of recording.faults) {
    findings.push({ recording, text: `line ${fault.line} cannot be read: ${fault.reason}`, places: [] });
  }
  for (const [kind, title, meaning] of KINDS) {
    const found = recording.findings[kind];
    if (found.count === 0) continue;
    const places = found.events.map((event) => ({ time: event.t, text: placeText(recording, kind, event) }));
    findings.push({ recording, text: `${title}: ${found.count}${meaning ? ` (${meaning})` : ""}`, places });
  }
  if (recording.ended) findings.push({ recording, text: `the recording ended: ${recording.ended}`, places: [] });
  return findings;
}

function placeText(recording, kind, event) {
  const parts = [`${formatTime(event.t)} s`];
  if (event.call !== undefined) parts.push(`call ${event.call}`);
  const subscriber = recording.calls.get(event.call)?.subscribers.get(event.id);
  const group = event.group ?? subscriber?.group;
  if (group !== undefined) parts.push(`${group}/${event.name ?? subscriber?.name ?? "*"}`);
  if (event.id !== undefined) parts.push(`to ${event.id}`);
  if (kind === "lost") parts.push(`${event.count} events`);
  if (event.wait_us !== undefined) parts.push(`waited ${formatMicroseconds(event.wait_us)}`);
  if (event.run_us !== undefined) parts.push(`ran ${formatMicroseconds(event.run_us)}`);
  if (event.threw !== undefined) parts.push(`threw “${event.threw}”`);
  return parts.join(", ");
}
