// SPDX-License-Identifier: Apache-2.0
import { byId, element, paused } from "./dom.js";
import { formatMicroseconds } from "./format.js";
import { byTrouble } from "./subscriber.js";

const MAX_ROWS = 100;
const TYPING_MS = 150;

/** Who subscribes to which setting of the chosen calls; those that threw or are slow first. */
export class SubscribersView {
  #app;

  constructor(app) {
    this.#app = app;
    byId("subscribers").addEventListener("toggle", () => this.#draw());
    byId("subscribers-search").addEventListener(
      "input",
      paused(() => this.#draw(), TYPING_MS),
    );
  }

  update(changed) {
    if (changed.has("data") || changed.has("calls")) this.#draw();
  }

  #draw() {
    if (!byId("subscribers").open) return;
    const isShown = this.#app.shownTest();
    const part = byId("subscribers-search").value.toLowerCase();
    const found = this.#app.recordings
      .flatMap((recording) => recording.subscribers.map((subscriber) => ({ recording, subscriber })))
      .filter(({ recording, subscriber }) => isShown(recording, subscriber.call))
      .filter(({ subscriber }) => nameOf(subscriber).toLowerCase().includes(part));
    found.sort((a, b) => byTrouble(a.subscriber, b.subscriber));
    byId("subscribers-body").replaceChildren(...found.slice(0, MAX_ROWS).map((row) => this.#row(row)));
    byId("subscribers-count").textContent =
      found.length > MAX_ROWS
        ? `${MAX_ROWS} of ${found.length} subscribers: search for the others`
        : `${found.length} subscribers`;
  }

  #row({ recording, subscriber }) {
    const place =
      this.#app.recordings.length > 1 ? `${recording.name} call ${subscriber.call}` : `call ${subscriber.call}`;
    const ways = [...subscriber.ways].map(([way, count]) => `${count} ${way}`).join(", ");
    const isBad = subscriber.threw > 0 || subscriber.dropped > 0 || subscriber.late > 0;
    const trouble = [
      subscriber.threw > 0 ? `${subscriber.threw} threw, the last “${subscriber.lastThrown}”` : "",
      subscriber.dropped > 0 ? `${subscriber.dropped} dropped` : "",
      subscriber.late > 0 ? `${subscriber.late} late` : "",
    ]
      .filter((text) => text !== "")
      .join(", ");
    const cells = [
      nameOf(subscriber),
      place,
      `${subscriber.kind} ${subscriber.id}`,
      ways || "not notified",
      String(subscriber.count),
      quantiles(subscriber.waits),
      quantiles(subscriber.runs),
      trouble,
    ];
    return element("tr", { class: isBad ? "bad" : undefined }, ...cells.map((cell) => element("td", {}, cell)));
  }
}

function nameOf({ group, name }) {
  return `${group ?? "?"}/${name ?? "*"}`;
}

function quantiles(durations) {
  if (durations.count === 0) return "–";
  return [durations.quantile(0.5), durations.quantile(0.99), durations.max].map(formatMicroseconds).join(" / ");
}
