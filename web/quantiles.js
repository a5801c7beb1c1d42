// SPDX-License-Identifier: Apache-2.0

/** Durations in microseconds, of which quantiles are asked for now and then. */
export class Durations {
  max = 0;
  #values = [];

  push(value) {
    this.#values.push(value);
    if (value > this.max) this.max = value;
  }

  get count() {
    return this.#values.length;
  }

  /** The least value that a share of all does not exceed; NaN when there are none. */
  quantile(share) {
    if (this.count === 0) return NaN;
    const sorted = Float64Array.from(this.#values).sort();
    return sorted[Math.min(Math.max(Math.ceil(share * sorted.length) - 1, 0), sorted.length - 1)];
  }
}
