// SPDX-License-Identifier: Apache-2.0
// Numbers, times and units as people read them.

const PREFIXES = [
  [1e9, "G"],
  [1e6, "M"],
  [1e3, "k"],
];

/** The unit of an entity's member in a table of them; "" when it is a bare number, or not known. */
export function unitOf(units, entity, member) {
  const own = Object.hasOwn(units, entity) ? units[entity] : {};
  return Object.hasOwn(own, member) ? own[member] : "";
}

/** Four digits, with a prefix for large ones: "350 kbit/s". */
export function formatNumber(number, unit = "") {
  if (Number.isNaN(number)) return "–";
  const [factor, prefix] = PREFIXES.find(([least]) => Math.abs(number) >= 10 * least) ?? [1, ""];
  const scaled = number / factor;
  const digits =
    Number.isInteger(scaled) && Math.abs(scaled) < 1e5 ? String(scaled) : String(Number(scaled.toPrecision(4)));
  const suffix = prefix + unit;
  return suffix === "" ? digits : `${digits} ${suffix}`;
}

/** Seconds, with as many places as tell microseconds apart at most. */
export function formatTime(seconds) {
  return String(Number(seconds.toFixed(6)));
}

/** Where a tick of the time axis is: minutes from the second minute on. */
export function formatTick(seconds) {
  if (seconds < 120) return `${Number(seconds.toFixed(6))} s`;
  const minutes = Math.floor(seconds / 60);
  const rest = Number((seconds - 60 * minutes).toFixed(3));
  return `${minutes}:${rest < 10 ? "0" : ""}${rest}`;
}

export function formatMicroseconds(microseconds) {
  if (Number.isNaN(microseconds)) return "–";
  if (microseconds < 1000) return `${Number(microseconds.toPrecision(3))} µs`;
  if (microseconds < 1e6) return `${Number((microseconds / 1000).toPrecision(3))} ms`;
  return `${Number((microseconds / 1e6).toPrecision(3))} s`;
}
