// SPDX-License-Identifier: Apache-2.0
// Which statistics are plotted.

// What an engineer looks at first, per entity.
const FIRST = [
  /bitrate$/i,
  /fps$/i,
  /encoded(width|height)$/i,
  /loss/i,
  /jitter/i,
  /delay(\[\d+\])?$/i,
  /streams$|layers?$/i,
];
const MAX_FIRST = 6;

/** The part of an interval's members that others are a band of. */
const BAND = /intervalLast$/;

/** The statistics of the calls, as "entity/member", in order; those that changed, or all of them. */
export function keysOf(calls, isAll = false) {
  const keys = new Set();
  for (const { recording, call } of calls) {
    for (const object of recording.statistics.values()) {
      if (object.call !== call) continue;
      for (const [member, series] of object.members) {
        if (isAll || series.hasChanged) keys.add(`${object.entity}/${member}`);
      }
    }
  }
  return [...keys].sort();
}

/** Those that are plotted unless others are chosen. */
export function firstChoice(keys) {
  const chosen = [];
  for (const entity of new Set(keys.map((key) => key.slice(0, key.indexOf("/"))))) {
    const own = keys.filter((key) => key.startsWith(`${entity}/`));
    const ranked = FIRST.flatMap((pattern) => own.filter((key) => pattern.test(key)));
    chosen.push(...[...new Set(ranked.length > 0 ? ranked : own)].slice(0, MAX_FIRST));
  }
  return chosen;
}

/** The statistics that are the lower and upper edge of the one's band; undefined when it has none. */
export function bandOf(key) {
  return BAND.test(key) ? [key.replace(BAND, "intervalMinimum"), key.replace(BAND, "intervalMaximum")] : undefined;
}
