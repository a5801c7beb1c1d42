// SPDX-License-Identifier: Apache-2.0
import { kindOf } from "./change.js";
import { byId, element, paused } from "./dom.js";
import { COLUMNS, cellOf, rowsThatFit, sortRows } from "./filter.js";
import { formatTime } from "./format.js";

const PAGE_ROWS = 50;
const TYPING_MS = 150;
const FIELDS = ["search", "group", "kind", "name", "origin"];

/** The changes in the range as a table: searched, filtered, sorted, and linked with the plots. */
export class ChangesView {
  #app;
  #rows = [];
  #page = 0;
  #heads = new Map();

  constructor(app) {
    this.#app = app;
    const find = paused(() => app.set({}, "filter"), TYPING_MS);
    for (const field of FIELDS) {
      byId(`filter-${field}`).addEventListener("input", (event) => {
        app.state[field] = event.target.value; // At once: until then the field would be set back.
        find();
      });
    }
    byId("history-end").addEventListener("click", () => app.set({ setting: "" }, "filter"));
    byId("changes-before").addEventListener("click", () => this.#turn(-1));
    byId("changes-next").addEventListener("click", () => this.#turn(1));
    byId("changes-head").append(...COLUMNS.map((column) => this.#head(column)));
  }

  update(changed) {
    const isFound = ["data", "calls", "range", "filter"].some((what) => changed.has(what));
    if (isFound) this.#find(changed.has("growth"));
    if (changed.has("selection")) this.#page = this.#pageOf(this.#app.selected);
    if (isFound || changed.has("selection")) this.#draw();
    if (changed.has("selection"))
      byId("changes-body").querySelector("[aria-selected=true]")?.scrollIntoView({ block: "nearest" });
  }

  #head(column) {
    const sort = () => this.#app.set({ sort: this.#app.state.sort === column ? `-${column}` : column }, "filter");
    const head = element("th", { scope: "col" }, element("button", { type: "button", onclick: sort }, column));
    this.#heads.set(column, head);
    return head;
  }

  // While a recording grows, the reader stays on the same page.
  #find(isGrowing) {
    const app = this.#app;
    const { state } = app;
    // A history is all of it.
    const { from, to } = state.setting ? app.whole : app.range;
    const rows = rowsThatFit(app.recordings, app.shownTest(), { ...state, from, to });
    this.#rows = state.sort === "time" && app.recordings.length === 1 ? rows : sortRows(rows, state.sort);
    if (!isGrowing) this.#page = 0;
    this.#page = Math.min(this.#page, this.#lastPage);
    for (const field of FIELDS)
      if (byId(`filter-${field}`).value !== state[field]) byId(`filter-${field}`).value = state[field];
    byId("changes").classList.toggle("single", app.recordings.length === 1);
    byId("history").hidden = state.setting === "";
    byId("history-of").textContent = state.setting;
    for (const [column, head] of this.#heads) {
      if (state.sort === column) head.setAttribute("aria-sort", "ascending");
      else if (state.sort === `-${column}`) head.setAttribute("aria-sort", "descending");
      else head.removeAttribute("aria-sort");
    }
  }

  get #lastPage() {
    return Math.max(Math.ceil(this.#rows.length / PAGE_ROWS) - 1, 0);
  }

  #pageOf(selected) {
    const index = this.#rows.findIndex(({ change }) => change === selected?.change);
    return index < 0 ? this.#page : Math.floor(index / PAGE_ROWS);
  }

  #turn(step) {
    this.#page = Math.min(Math.max(this.#page + step, 0), this.#lastPage);
    this.#draw();
  }

  #draw() {
    const begin = this.#page * PAGE_ROWS;
    const shown = this.#rows.slice(begin, begin + PAGE_ROWS);
    byId("changes-body").replaceChildren(...shown.map((row) => this.#row(row)));
    byId("changes-count").textContent =
      this.#rows.length === 0
        ? "No change fits."
        : `${begin + 1} to ${begin + shown.length} of ${this.#rows.length} changes`;
    byId("changes-before").disabled = this.#page === 0;
    byId("changes-next").disabled = this.#page === this.#lastPage;
  }

  #row(row) {
    const isSelected = row.change === this.#app.selected?.change;
    return element(
      "tr",
      { "aria-selected": isSelected ? "true" : undefined },
      ...COLUMNS.map((column) => {
        if (column === "time") return element("td", {}, this.#timeButton(row));
        if (column === "setting") return element("td", {}, this.#settingButton(row));
        const text = String(cellOf(row, column));
        return element("td", { class: column === "kind" ? `kind ${kindOf(row.change)}` : undefined }, text);
      }),
    );
  }

  #timeButton(row) {
    const time = formatTime(row.change.t);
    return element(
      "button",
      {
        type: "button",
        class: "link",
        "aria-label": `${time} s: move the cursor there`,
        onclick: () => this.#app.select(row),
      },
      time,
    );
  }

  #settingButton(row) {
    const text = cellOf(row, "setting");
    if (row.change.name === undefined) return text;
    const setting = `${row.change.group}/${row.change.name}`;
    return element(
      "button",
      {
        type: "button",
        class: "link",
        "aria-label": `${text}: show its history`,
        onclick: () => this.#app.set({ setting }, "filter"),
      },
      text,
    );
  }
}
