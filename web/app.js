// SPDX-License-Identifier: Apache-2.0
import { emptyState, readState, writeState } from "./address.js";
import { firstChoice, keysOf } from "./choice.js";
import { byId, paused } from "./dom.js";
import { marksOf } from "./marks.js";

const LEAST_RANGE = 1e-5; // Seconds.
const ADDRESS_PAUSE_MS = 300; // A browser refuses more changes of an address than some per second.

/** What is known and chosen. Views ask it, and are drawn again when something changes. */
export class App {
  recordings = [];
  /** Per entity, those of its members. */
  units = JSON.parse(byId("units").textContent);
  state = readState(location.hash);
  /** The time under the pointer; undefined when it is not over a plot. */
  hover = undefined;
  /** The row {recording, change} that was chosen last. */
  selected = undefined;
  #views = [];
  #changed = new Set();
  #frame = 0;
  #calls = undefined;
  #marks = undefined;
  #keys = undefined;
  #written = undefined;
  #writeAddress = paused(() => this.#write(), ADDRESS_PAUSE_MS);

  constructor() {
    addEventListener("hashchange", () => {
      if (location.hash.slice(1) === this.#written) return;
      this.state = readState(location.hash);
      this.invalidate("calls", "plots", "range", "cursor", "filter");
    });
  }

  /**
   * A view has update(changed): a Set of "data", "growth", "style", "calls", "plots", "range", "cursor", "hover",
   * "selection" and "filter".
   */
  addView(view) {
    this.#views.push(view);
  }

  /** Says what has changed; the views are updated with the next frame. */
  invalidate(...changed) {
    if (changed.includes("data") || changed.includes("calls")) this.#calls = this.#marks = this.#keys = undefined;
    for (const what of changed) this.#changed.add(what);
    if (this.#frame === 0) this.#frame = requestAnimationFrame(() => this.update());
  }

  update() {
    cancelAnimationFrame(this.#frame);
    this.#frame = 0;
    const changed = this.#changed;
    this.#changed = new Set();
    for (const view of this.#views) view.update(changed);
  }

  set(state, ...changed) {
    Object.assign(this.state, state);
    this.#writeAddress();
    this.invalidate(...changed);
  }

  /** The time that all recordings together take. */
  get whole() {
    return { from: 0, to: Math.max(LEAST_RANGE, ...this.recordings.map((recording) => recording.end)) };
  }

  get range() {
    const { whole, state } = this;
    const from = Math.max(state.from ?? whole.from, whole.from);
    const to = Math.min(state.to ?? whole.to, whole.to);
    return to - from >= LEAST_RANGE ? { from, to } : whole;
  }

  setRange(from, to) {
    const { whole } = this;
    const width = Math.min(Math.max(to - from, LEAST_RANGE), whole.to - whole.from);
    const begin = Math.min(Math.max(from, whole.from), whole.to - width);
    const isWhole = width >= whole.to - whole.from;
    this.set({ from: isWhole ? undefined : begin, to: isWhole ? undefined : begin + width }, "range");
  }

  /** Zooms by a factor around a time, or around the middle. */
  zoom(factor, around) {
    const { from, to } = this.range;
    const middle = around ?? (from + to) / 2;
    this.setRange(middle - (middle - from) * factor, middle + (to - middle) * factor);
  }

  /** Moves the range by a share of its width. */
  pan(share) {
    const { from, to } = this.range;
    this.setRange(from + share * (to - from), to + share * (to - from));
  }

  /** The time whose values and settings are shown. */
  get at() {
    return Math.min(Math.max(this.state.at ?? this.whole.to, this.whole.from), this.whole.to);
  }

  get cursor() {
    return this.hover ?? this.at;
  }

  /** Moves the cursor, and the range so far that it shows it. */
  setCursor(time) {
    const { whole, range } = this;
    const at = Math.min(Math.max(time, whole.from), whole.to);
    this.hover = undefined;
    this.set({ at }, "cursor");
    const width = range.to - range.from;
    if (at < range.from || at > range.to) this.setRange(at - width / 2, at + width / 2);
  }

  setHover(time) {
    this.hover = time;
    this.invalidate("hover");
  }

  select(row) {
    this.selected = row;
    this.setCursor(row.change.t);
    this.invalidate("selection");
  }

  /** The calls of all recordings: {recording, call, key, from, to}. */
  get allCalls() {
    return this.recordings.flatMap((recording, index) =>
      [...recording.calls.values()].map(({ id, from, to }) => ({
        recording,
        index,
        call: id,
        from,
        to,
        key: `${index}:${id}`,
      })),
    );
  }

  /** Those that are chosen; the first of each recording unless others are. */
  get calls() {
    this.#calls ??= this.#chooseCalls();
    return this.#calls;
  }

  get marks() {
    this.#marks ??= marksOf(this.recordings, this.shownTest());
    return this.#marks;
  }

  /** A function (recording, call) that says whether the call is chosen. */
  shownTest() {
    const sets = new Map(this.recordings.map((recording) => [recording, new Set()]));
    for (const { recording, call } of this.calls) sets.get(recording).add(call);
    return (recording, call) => sets.get(recording).has(call);
  }

  get keys() {
    this.#keys ??= keysOf(this.calls);
    return this.#keys;
  }

  /** The statistics that are plotted. */
  get plots() {
    return this.state.plots ? [...this.state.plots] : firstChoice(this.keys);
  }

  /** Everything as the page chooses it. */
  reset() {
    this.set(emptyState(), "calls", "plots", "range", "cursor", "filter");
  }

  #chooseCalls() {
    const all = this.allCalls;
    const { calls } = this.state;
    if (calls) return all.filter(({ key }) => calls.has(key));
    // What plots show differs by call: one is enough to begin with, the first that has statistics.
    return this.recordings.flatMap((recording) => {
      const own = all.filter((call) => call.recording === recording);
      const withStatistics = new Set([...recording.statistics.values()].map((object) => object.call));
      return own
        .filter(({ call }) => withStatistics.has(call))
        .concat(own)
        .slice(0, 1);
    });
  }

  #write() {
    this.#written = writeState(this.state);
    history.replaceState(null, "", this.#written === "" ? location.pathname + location.search : `#${this.#written}`);
  }
}
