// SPDX-License-Identifier: Apache-2.0
import { byId } from "./dom.js";
import { Plot } from "./plot.js";

const AHEAD = "300px"; // Drawn before they are scrolled to.

/** The plots. Those that are out of sight are drawn when they come into it. */
export class PlotsView {
  #app;
  #plots = new Map();
  #visible = new Set();
  #stale = new Map(); // Per plot, whether it must be drawn again.
  #observer;

  constructor(app) {
    this.#app = app;
    this.#observer = new IntersectionObserver((entries) => this.#onSight(entries), { rootMargin: AHEAD });
  }

  update(changed) {
    const isAnew = ["data", "calls", "style"].some((what) => changed.has(what));
    if (isAnew || changed.has("plots")) this.#arrange();
    if (isAnew || changed.has("range") || changed.has("selection")) this.#drawAll(isAnew && !changed.has("growth"));
    else if (changed.has("cursor") || changed.has("hover")) this.#drawCursors();
  }

  /** Draws those out of sight as well, for paper. */
  drawEverything() {
    for (const plot of this.#plots.values()) plot.draw(true);
  }

  #arrange() {
    const keys = this.#app.plots;
    for (const [key, plot] of this.#plots) {
      if (keys.includes(key)) continue;
      this.#observer.unobserve(plot.element);
      this.#visible.delete(plot);
      this.#stale.delete(plot);
      plot.destroy();
      plot.element.remove();
      this.#plots.delete(key);
    }
    for (const key of keys) if (!this.#plots.has(key)) this.#add(key);
    const container = byId("plots");
    keys.forEach((key, index) => {
      const { element } = this.#plots.get(key);
      if (container.children[index] !== element) container.insertBefore(element, container.children[index] ?? null);
    });
    byId("no-plots").hidden = keys.length > 0;
  }

  #add(key) {
    const remove = () => this.#app.set({ plots: new Set(this.#app.plots.filter((other) => other !== key)) }, "plots");
    const plot = new Plot(this.#app, key, remove);
    this.#plots.set(key, plot);
    this.#stale.set(plot, true);
    this.#observer.observe(plot.element);
  }

  #onSight(entries) {
    for (const { target, isIntersecting } of entries) {
      const plot = [...this.#plots.values()].find(({ element }) => element === target);
      if (!plot) continue;
      if (isIntersecting) this.#visible.add(plot);
      else this.#visible.delete(plot);
    }
    this.#drawStale();
  }

  #drawAll(isAnew) {
    for (const plot of this.#plots.values()) this.#stale.set(plot, isAnew || this.#stale.get(plot) === true);
    this.#drawStale();
  }

  #drawStale() {
    for (const plot of this.#visible) {
      if (!this.#stale.has(plot)) continue;
      plot.draw(this.#stale.get(plot));
      this.#stale.delete(plot);
    }
    this.#drawCursors();
  }

  #drawCursors() {
    for (const plot of this.#visible) plot.drawCursor();
  }
}
