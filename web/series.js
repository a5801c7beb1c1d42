// SPDX-License-Identifier: Apache-2.0

const NO_NUMBER = /^-?(inf|nan)/i;

/** What one member of a statistics object was, a step per change; NaN where it is not known. */
export class Series {
  times = [];
  values = []; // Of a text, the index in `texts`.
  texts = undefined;
  hasChanged = false;
  #last = NaN; // The last number.

  push(time, value) {
    const number = this.#numberOf(value);
    if (Object.is(number, this.values.at(-1))) return;
    this.hasChanged ||= !Number.isNaN(this.#last) && !Number.isNaN(number) && number !== this.#last;
    if (!Number.isNaN(number)) this.#last = number;
    // Lines of two threads may be some microseconds out of order; the times are not.
    this.times.push(Math.max(time, this.times.at(-1) ?? time));
    this.values.push(number);
  }

  /** From here on nothing is known. */
  end(time) {
    if (this.values.length > 0) this.push(time, NaN);
  }

  /** The number at a time; NaN when there is none. */
  at(time) {
    const index = lastUpTo(this.times, time);
    return index < 0 ? NaN : this.values[index];
  }

  #numberOf(value) {
    if (typeof value === "number" && !Number.isFinite(value)) return NaN;
    if (typeof value === "number") return this.texts ? this.#indexOf(String(value)) : value;
    if (NO_NUMBER.test(value)) return NaN;
    if (!this.texts && this.values.length > 0) return NaN;
    this.texts ??= [];
    return this.#indexOf(value);
  }

  #indexOf(text) {
    const index = this.texts.indexOf(text);
    return index >= 0 ? index : this.texts.push(text) - 1;
  }
}

/** The index of the last of the sorted times that is not after `time`; -1 when all are. */
export function lastUpTo(times, time) {
  let low = 0;
  let high = times.length;
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (times[middle] <= time) low = middle + 1;
    else high = middle;
  }
  return low - 1;
}
