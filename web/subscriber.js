// SPDX-License-Identifier: Apache-2.0
import { Durations } from "./quantiles.js";

/** Who waited or ran for longer, in microseconds, is late. */
export const LATE_US = 100000;

/** A subscription or binding, and what became of its deliveries. */
export class Subscriber {
  ways = new Map();
  waits = new Durations();
  runs = new Durations();
  count = 0;
  late = 0;
  dropped = 0;
  threw = 0;
  lastThrown = "";
  endedAt = undefined;

  constructor(call, id, kind) {
    Object.assign(this, { call, id, kind, group: undefined, name: undefined });
  }

  /** A delivery, or a binding's answer. */
  take(event) {
    const way = event.dropped ? "dropped" : (event.way ?? "answered");
    this.count += 1;
    this.ways.set(way, (this.ways.get(way) ?? 0) + 1);
    this.group ??= event.group;
    this.name ??= event.name;
    if (event.wait_us !== undefined) this.waits.push(event.wait_us);
    if (event.run_us !== undefined) this.runs.push(event.run_us);
    if (isLate(event)) this.late += 1;
    if (event.dropped) this.dropped += 1;
    if (event.threw !== undefined || event.hidden?.includes("threw")) {
      this.threw += 1;
      this.lastThrown = event.threw ?? "(hidden)";
    }
  }

  get slowest() {
    return Math.max(this.waits.max, this.runs.max);
  }
}

export function isLate(delivery) {
  return delivery.wait_us > LATE_US || delivery.run_us > LATE_US;
}

/** Those that threw, were dropped or are slow come first. */
export function byTrouble(a, b) {
  return b.threw - a.threw || b.dropped - a.dropped || b.slowest - a.slowest || b.count - a.count;
}
