// SPDX-License-Identifier: Apache-2.0
// Lists that calls and statistics are chosen from.
import { keysOf } from "./choice.js";
import { byId, element, paused } from "./dom.js";
import { formatTime } from "./format.js";

const MAX_SHOWN = 100;
const TYPING_MS = 100;

/** A searched list of boxes in the element `id`: items {key, text}. */
class Picker {
  #list;
  #search;
  #rest;
  #items = [];
  #isChosen = () => false;
  #onChoose;

  constructor(id, onChoose) {
    this.#search = byId(`${id}-search`);
    this.#list = byId(`${id}-list`);
    this.#rest = byId(`${id}-rest`);
    this.#onChoose = onChoose;
    this.#search.addEventListener(
      "input",
      paused(() => this.#draw(), TYPING_MS),
    );
  }

  show(items, isChosen) {
    this.#items = items;
    this.#isChosen = isChosen;
    this.#draw();
  }

  // The chosen ones first: they are seen without a search.
  #draw() {
    const part = this.#search.value.toLowerCase();
    const fitting = this.#items.filter(({ text }) => text.toLowerCase().includes(part));
    const chosen = fitting.filter(({ key }) => this.#isChosen(key));
    const shown = [...chosen, ...fitting.filter(({ key }) => !this.#isChosen(key))].slice(0, MAX_SHOWN);
    const focused = this.#list.contains(document.activeElement) ? document.activeElement.value : undefined;
    this.#list.replaceChildren(...shown.map((item) => this.#box(item)));
    this.#rest.textContent =
      fitting.length > shown.length ? `${fitting.length - shown.length} more: search for them` : "";
    if (focused !== undefined)
      [...this.#list.querySelectorAll("input")].find(({ value }) => value === focused)?.focus();
  }

  #box({ key, text }) {
    const box = element("input", { type: "checkbox", value: key, onchange: () => this.#onChoose(key, box.checked) });
    box.checked = this.#isChosen(key);
    return element("li", {}, element("label", {}, box, text));
  }
}

function changedSet(items, key, isIn) {
  const set = new Set(items);
  if (isIn) set.add(key);
  else set.delete(key);
  return set;
}

/** The calls of all recordings. */
export class CallPicker {
  #app;
  #picker;

  constructor(app) {
    this.#app = app;
    this.#picker = new Picker("calls", (key, isChosen) =>
      app.set(
        {
          calls: changedSet(
            app.calls.map((call) => call.key),
            key,
            isChosen,
          ),
        },
        "calls",
      ),
    );
  }

  update(changed) {
    if (!changed.has("data") && !changed.has("calls")) return;
    const { allCalls, calls, recordings } = this.#app;
    const chosen = new Set(calls.map(({ key }) => key));
    const items = allCalls.map(({ key, recording, call, from, to }) => ({
      key,
      text:
        `${recordings.length > 1 ? `${recording.name} ` : ""}call ${call}, from ${formatTime(from)} s` +
        (to === undefined ? "" : ` to ${formatTime(to)} s`),
    }));
    this.#picker.show(items, (key) => chosen.has(key));
    byId("calls-count").textContent = `${calls.length} of ${allCalls.length} calls`;
  }
}

/** The statistics of the chosen calls: those that changed, or all. */
export class PlotPicker {
  #app;
  #picker;

  constructor(app) {
    this.#app = app;
    this.#picker = new Picker("statistics", (key, isChosen) =>
      app.set({ plots: changedSet(app.plots, key, isChosen) }, "plots"),
    );
    byId("statistics-all").addEventListener("change", () => this.update(new Set(["plots"])));
  }

  update(changed) {
    if (!["data", "calls", "plots"].some((what) => changed.has(what))) return;
    const { plots, keys, calls } = this.#app;
    const offered = byId("statistics-all").checked ? keysOf(calls, true) : keys;
    const all = [...new Set([...plots, ...offered])];
    const chosen = new Set(plots);
    this.#picker.show(
      all.map((key) => ({ key, text: key.replace("/", " ") })),
      (key) => chosen.has(key),
    );
    byId("statistics-count").textContent = `${plots.length} of ${all.length} statistics`;
  }
}
