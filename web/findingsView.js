// SPDX-License-Identifier: Apache-2.0
import { byId, element } from "./dom.js";
import { findingsOf } from "./findings.js";

const MAX_PLACES = 50;

/** What is wrong, at the top of the page: each place is a button that moves the cursor there. */
export class FindingsView {
  #app;
  #shown = "";

  constructor(app) {
    this.#app = app;
  }

  update(changed) {
    if (!changed.has("data")) return;
    const findings = this.#app.recordings.flatMap(findingsOf);
    const texts = findings.map(({ text }) => text).join("\n");
    byId("no-findings").hidden = findings.length > 0;
    if (texts === this.#shown && changed.has("growth")) return; // What is open stays open.
    this.#shown = texts;
    byId("findings-list").replaceChildren(...findings.map((finding) => this.#item(finding)));
  }

  #item({ recording, text, places }) {
    const title = this.#app.recordings.length > 1 ? `${recording.name}: ${text}` : text;
    if (places.length === 0) return element("li", {}, title);
    const buttons = places
      .slice(0, MAX_PLACES)
      .map((place) =>
        element(
          "li",
          {},
          element(
            "button",
            { type: "button", class: "link", onclick: () => this.#app.setCursor(place.time) },
            place.text,
          ),
        ),
      );
    const more = places.length - buttons.length;
    if (more > 0) buttons.push(element("li", {}, `and ${more} more`));
    return element("li", {}, element("details", {}, element("summary", {}, title), element("ul", {}, ...buttons)));
  }
}
