// SPDX-License-Identifier: Apache-2.0
import { originOf, valuesOf } from "./change.js";
import { byId, element, paused } from "./dom.js";
import { formatTime } from "./format.js";
import { documentOf, settingsAt } from "./settings.js";

const PAUSE_MS = 100;
const MAX_ROWS = 200;

/** The settings of a chosen call at the cursor: who set each last, and a document that `tessel apply` reads. */
export class SettingsView {
  #app;
  #draw = paused(() => this.#show(), PAUSE_MS);

  constructor(app) {
    this.#app = app;
    byId("settings").addEventListener("toggle", this.#draw);
    byId("settings-call").addEventListener("change", this.#draw);
    byId("settings-search").addEventListener("input", this.#draw);
    byId("settings-save").addEventListener("click", () => this.#save());
  }

  update(changed) {
    if (changed.has("data") || changed.has("calls")) this.#offerCalls();
    if (["data", "calls", "cursor"].some((what) => changed.has(what))) this.#draw();
  }

  #offerCalls() {
    const list = byId("settings-call");
    const { value } = list;
    const { calls, recordings } = this.#app;
    list.replaceChildren(
      ...calls.map(({ key, recording, call }) =>
        element("option", { value: key }, recordings.length > 1 ? `${recording.name} call ${call}` : `call ${call}`),
      ),
    );
    if (calls.some(({ key }) => key === value)) list.value = value;
  }

  #show() {
    if (!byId("settings").open) return;
    const chosen = this.#app.calls.find(({ key }) => key === byId("settings-call").value);
    const { settings, gaps } = chosen
      ? settingsAt(chosen.recording, chosen.call, this.#app.at)
      : { settings: new Map(), gaps: [] };
    byId("settings-time").textContent = `${formatTime(this.#app.at)} s`;
    byId("settings-document").value = documentOf(settings);
    byId("settings-gaps").replaceChildren(...gaps.map((gap) => element("li", {}, gap)));
    const part = byId("settings-search").value.toLowerCase();
    const fitting = [...settings]
      .filter(([key]) => key.toLowerCase().includes(part))
      .sort(([a], [b]) => (a < b ? -1 : 1));
    byId("settings-body").replaceChildren(
      ...fitting.slice(0, MAX_ROWS).map(([key, change]) => this.#row(key, change)),
    );
    byId("settings-count").textContent =
      fitting.length > MAX_ROWS
        ? `${MAX_ROWS} of ${fitting.length} settings: search for the others`
        : `${fitting.length} settings`;
  }

  #row(key, change) {
    const history = element(
      "button",
      {
        type: "button",
        class: "link",
        "aria-label": `${key}: show its history`,
        onclick: () => {
          this.#app.set({ setting: key }, "filter");
          byId("changes").scrollIntoView();
        },
      },
      key,
    );
    const isOfStart = change.picture && change.cause === undefined;
    const by = originOf(change) || (isOfStart ? "there at the start" : "not recorded");
    const value = valuesOf({
      ...change,
      old: undefined,
      hidden: change.hidden?.filter((member) => member !== "old"),
    });
    return element(
      "tr",
      {},
      ...[history, value, by, `${formatTime(change.t)} s`].map((cell) => element("td", {}, cell)),
    );
  }

  #save() {
    const address = URL.createObjectURL(new Blob([byId("settings-document").value], { type: "application/json" }));
    element("a", { href: address, download: "settings.json" }).click();
    URL.revokeObjectURL(address);
  }
}
