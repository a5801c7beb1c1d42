// SPDX-License-Identifier: Apache-2.0
/* global Dygraph */
import { byId, styleValue } from "./dom.js";
import { formatTick, formatTime } from "./format.js";

const BINS = 300;

/** How many changes there are over all the time, with the range selector, and the range as numbers. */
export class Overview {
  #app;
  #graph = undefined;
  #isDrawing = false;

  constructor(app) {
    this.#app = app;
    const onClick = (id, act) => byId(id).addEventListener("click", act);
    onClick("zoom-in", () => app.zoom(1 / 2));
    onClick("zoom-out", () => app.zoom(2));
    onClick("pan-left", () => app.pan(-1 / 2));
    onClick("pan-right", () => app.pan(1 / 2));
    onClick("whole", () => app.setRange(app.whole.from, app.whole.to));
    onClick("reset", () => app.reset());
    const setRange = () => {
      const [from, to] = [byId("from").valueAsNumber, byId("to").valueAsNumber];
      if (from < to) app.setRange(from, to);
    };
    byId("from").addEventListener("change", setRange);
    byId("to").addEventListener("change", setRange);
    byId("at").addEventListener("change", () => {
      if (Number.isFinite(byId("at").valueAsNumber)) app.setCursor(byId("at").valueAsNumber);
    });
  }

  update(changed) {
    const { range, at } = this.#app;
    byId("from").value = formatTime(range.from);
    byId("to").value = formatTime(range.to);
    byId("at").value = formatTime(at);
    byId("hover").value = `${formatTime(this.#app.cursor)} s`;
    const isAnew = ["data", "calls", "style"].some((what) => changed.has(what));
    if (!isAnew && !changed.has("range")) return;
    this.#isDrawing = true;
    const dateWindow = [range.from, range.to];
    if (!this.#graph || (isAnew && !changed.has("growth"))) this.#make(dateWindow);
    else if (isAnew) this.#graph.updateOptions({ file: this.#bins(), dateWindow });
    else this.#graph.updateOptions({ dateWindow });
    this.#isDrawing = false;
  }

  #make(dateWindow) {
    this.#graph?.destroy();
    const axis = { axisLineColor: styleValue("--grid"), gridLineColor: styleValue("--grid") };
    this.#graph = new Dygraph(byId("overview"), this.#bins(), {
      labels: ["time", "changes"],
      dateWindow,
      legend: "never",
      resizable: "passive",
      stepPlot: true,
      fillGraph: true,
      colors: [styleValue("--line0")],
      showRangeSelector: true,
      rangeSelectorHeight: 36,
      includeZero: true,
      rangeSelectorPlotStrokeColor: styleValue("--line0"),
      rangeSelectorPlotFillColor: styleValue("--line0"),
      rangeSelectorPlotFillGradientColor: "",
      highlightCircleSize: 0,
      xRangePad: 0,
      axes: {
        x: { ...axis, axisLabelFormatter: formatTick, axisLabelWidth: 70 },
        y: {
          ...axis,
          axisLabelWidth: 76,
          pixelsPerLabel: 20,
          axisLabelFormatter: (value) => (Number.isInteger(value) ? String(value) : ""),
        },
      },
      drawCallback: (graph, isInitial) => {
        if (isInitial || this.#isDrawing) return;
        const [from, to] = graph.xAxisRange();
        this.#app.setRange(from, to);
      },
    });
  }

  #bins() {
    const { whole, marks } = this.#app;
    const width = (whole.to - whole.from) / BINS;
    const bins = Array.from({ length: BINS + 1 }, (_, index) => [whole.from + index * width, 0]);
    for (const time of marks.times) bins[Math.min(Math.floor((time - whole.from) / width), BINS)][1] += 1;
    return bins;
  }
}
