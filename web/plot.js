// SPDX-License-Identifier: Apache-2.0
/* global Dygraph */
import { bandOf } from "./choice.js";
import { element, styleValue, table } from "./dom.js";
import { formatNumber, formatTick, formatTime, unitOf } from "./format.js";
import { marksNear, nextMark, thinMarks } from "./marks.js";
import { drawMarks } from "./markDrawing.js";
import { rowsOf, withoutRepeats } from "./thin.js";
import { hideTip, showTip } from "./tip.js";

const MAX_LINES = 8;
const MAX_TABLE_ROWS = 100;
const REACH_PX = 6;
const KEY_STEP = 1 / 50;
const PAN_STEP = 1 / 4;
const ZOOM = 1.5;

/** One statistic of all chosen calls over time, with the marks of changes and the cursor. */
export class Plot {
  #app;
  #graph = undefined;
  #isDrawing = false;
  #lines = [];
  #values = element("ul", { class: "values" });
  #cursor = element("div", { class: "cursor" });
  #chart = element("div", { class: "chart" });
  #frame;
  #table;

  constructor(app, key, onremove) {
    const [entity, member] = [key.slice(0, key.indexOf("/")), key.slice(key.indexOf("/") + 1)];
    this.#app = app;
    this.key = key;
    this.unit = unitOf(app.units, entity, member);
    this.title = `${entity} ${member}`;
    this.#frame = element(
      "div",
      {
        class: "frame",
        tabindex: "0",
        role: "slider",
        "aria-label": `Time cursor on ${this.title}`,
        onkeydown: (event) => this.#onKey(event),
        onpointermove: (event) => this.#onMove(event),
        onpointerleave: () => this.#onLeave(),
        onclick: (event) => this.#onClick(event),
      },
      this.#chart,
      this.#cursor,
    );
    this.#frame.addEventListener("wheel", (event) => this.#onWheel(event), { passive: false });
    this.#table = element(
      "details",
      { ontoggle: () => this.#fillTable() },
      element("summary", {}, "Values as a table"),
    );
    this.element = element(
      "section",
      { class: "plot", "aria-label": this.title },
      element(
        "header",
        {},
        element("h3", {}, this.title),
        this.#values,
        element(
          "button",
          { type: "button", class: "quiet", "aria-label": `Remove the plot of ${this.title}`, onclick: onremove },
          "×",
        ),
      ),
      this.#frame,
      this.#table,
    );
  }

  destroy() {
    this.#graph?.destroy();
    this.#graph = undefined;
  }

  /** Draws the lines; what is not drawn yet, or again when colours or lines may be others. */
  draw(isAnew) {
    const before = this.#lines.map(({ label }) => label).join("\n");
    this.#lines = this.#findLines();
    const hasOthers = this.#lines.map(({ label }) => label).join("\n") !== before;
    if (this.#lines.length === 0) {
      this.destroy();
      this.#values.replaceChildren(element("li", {}, "not recorded for these calls"));
      return;
    }
    if (isAnew || hasOthers) this.destroy();
    this.#isDrawing = true;
    if (this.#graph) this.#graph.updateOptions({ file: this.#rows(), dateWindow: this.#window() });
    else this.#graph = new Dygraph(this.#chart, this.#rows(), this.#options());
    this.#isDrawing = false;
    this.drawCursor();
    this.#fillTable();
  }

  drawCursor() {
    const { cursor, range } = this.#app;
    const isInside = this.#graph !== undefined && cursor >= range.from && cursor <= range.to;
    this.#cursor.hidden = !isInside;
    if (isInside) this.#cursor.style.transform = `translateX(${this.#graph.toDomXCoord(cursor)}px)`;
    const texts = this.#lines.map(({ label, series }) => `${label} ${this.#format(series, series.at(cursor))}`);
    this.#values.replaceChildren(...this.#lines.map((line, index) => this.#legend(line, texts[index])));
    const slider = {
      "aria-valuemin": range.from,
      "aria-valuemax": range.to,
      "aria-valuenow": cursor,
      "aria-valuetext": `${formatTime(cursor)} s: ${texts.join(", ")}`,
    };
    for (const [name, value] of Object.entries(slider)) this.#frame.setAttribute(name, value);
  }

  #findLines() {
    const { calls, recordings } = this.#app;
    const ranks = new Map();
    const lines = [];
    for (const { recording, call } of calls) {
      const rank = ranks.get(recording) ?? 0;
      ranks.set(recording, rank + 1);
      const series = recording.seriesOf(call, this.key);
      if (!series || lines.length === MAX_LINES) continue;
      const index = recordings.indexOf(recording);
      const label = recordings.length > 1 ? `${recording.name} call ${call}` : `call ${call}`;
      const band = bandOf(this.key)?.map((key) => recording.seriesOf(call, key));
      lines.push({
        label,
        series,
        index,
        colour: (rank * recordings.length + index) % MAX_LINES,
        band: band?.every(Boolean) ? band : undefined,
      });
    }
    return lines;
  }

  #legend({ colour, index }, text) {
    return element("li", { class: `line${colour}${index > 0 ? " dashed" : ""}` }, text);
  }

  #format(series, value) {
    if (series.texts) return Number.isNaN(value) ? "–" : `“${series.texts[value]}”`;
    return formatNumber(value, this.unit);
  }

  // With a band, each value is [least, value, greatest].
  #rows() {
    const { range, whole } = this.#app;
    const hasBands = this.#lines.some(({ band }) => band);
    const all = this.#lines.flatMap(({ series, band }) =>
      hasBands ? [...(band ?? [series, series]), series] : [series],
    );
    const rows = rowsOf(all, whole, range.from, range.to, Math.max(this.#chart.clientWidth, 200));
    if (this.#texts)
      return rows.map(([time, ...numbers]) => [time, ...numbers.map((number, i) => this.#place(i, number))]);
    if (!hasBands) return withoutRepeats(rows, range.to);
    return rows.map(([time, ...numbers]) => [
      time,
      ...this.#lines.map((line, index) => {
        const [least, most, value] = numbers.slice(3 * index, 3 * index + 3);
        return Number.isNaN(value) ? [NaN, NaN, NaN] : [least, value, most];
      }),
    ]);
  }

  // All texts of the lines; undefined when they are numbers.
  get #texts() {
    const texts = new Set(this.#lines.flatMap(({ series }) => series.texts ?? []));
    return texts.size > 0 ? [...texts] : undefined;
  }

  // The same text has the same place on the axis in each line.
  #place(line, number) {
    const { texts } = this.#lines[line].series;
    return Number.isNaN(number) || !texts ? NaN : this.#texts.indexOf(texts[number]);
  }

  #window() {
    return [this.#app.range.from, this.#app.range.to];
  }

  #options() {
    const names = this.#lines.map((line, index) => `line ${index}`);
    const strokePattern = ({ index }) => (index === 0 ? null : Array(2).fill(2 + 2 * index));
    const texts = this.#texts;
    const axis = { axisLineColor: styleValue("--grid"), gridLineColor: styleValue("--grid") };
    return {
      labels: ["time", ...names],
      colors: this.#lines.map(({ colour }) => styleValue(`--line${colour}`)),
      series: Object.fromEntries(
        names.map((name, index) => [name, { strokePattern: strokePattern(this.#lines[index]) }]),
      ),
      dateWindow: this.#window(),
      customBars: this.#lines.some(({ band }) => band),
      stepPlot: true,
      connectSeparatedPoints: true,
      strokeWidth: 2,
      legend: "never",
      resizable: "passive",
      includeZero: !texts,
      highlightCircleSize: 0,
      xRangePad: 0,
      fillAlpha: 0.25,
      axes: {
        x: { ...axis, axisLabelFormatter: formatTick, axisLabelWidth: 70 },
        // Of texts, the table and the value under the cursor say which they are.
        y: {
          ...axis,
          axisLabelWidth: 76,
          axisLabelFormatter: (value) => (texts ? "" : formatNumber(value, this.unit)),
        },
      },
      interactionModel: interactionModel(),
      drawCallback: (graph, isInitial) => this.#onDraw(graph, isInitial),
      underlayCallback: (context, area, graph) => this.#drawMarks(context, area, graph),
    };
  }

  #drawMarks(context, area, graph) {
    const [from, to] = graph.xAxisRange();
    const marks = thinMarks(this.#app.marks, from, to, Math.max(area.w, 1));
    drawMarks(context, area, marks, (time) => graph.toDomXCoord(time), this.#app.selected?.change);
  }

  #onDraw(graph, isInitial) {
    if (isInitial || this.#isDrawing) return;
    const [from, to] = graph.xAxisRange();
    const { range } = this.#app;
    if (from !== range.from || to !== range.to) this.#app.setRange(from, to);
  }

  #near(event) {
    const time = this.#graph.toDataXCoord(event.clientX - this.#chart.getBoundingClientRect().left);
    const reach = this.#graph.toDataXCoord(REACH_PX) - this.#graph.toDataXCoord(0);
    return { time, marks: marksNear(this.#app.marks, time, reach, 5) };
  }

  #onMove(event) {
    if (!this.#graph) return;
    const { time, marks } = this.#near(event);
    const { from, to } = this.#app.range;
    this.#app.setHover(time >= from && time <= to ? time : undefined);
    if (marks.count > 0) showTip(event, marks);
    else hideTip();
  }

  #onLeave() {
    hideTip();
    this.#app.setHover(undefined);
  }

  #onClick(event) {
    if (!this.#graph || event.detail > 1) return;
    const { time, marks } = this.#near(event);
    if (marks.count > 0) this.#app.select(marks.rows[0]);
    else this.#app.setCursor(time);
  }

  #onWheel(event) {
    if (!this.#graph || !event.ctrlKey) return; // The page scrolls.
    event.preventDefault();
    this.#app.zoom(event.deltaY > 0 ? ZOOM : 1 / ZOOM, this.#near(event).time);
  }

  #onKey(event) {
    const act = event.ctrlKey || event.altKey || event.metaKey ? undefined : this.#action(event);
    if (!act) return;
    event.preventDefault();
    act();
  }

  #action({ key, shiftKey }) {
    const app = this.#app;
    const { from, to } = app.range;
    const step = (to - from) * KEY_STEP;
    const next = (isForward) => {
      const time = nextMark(app.marks, app.at, isForward);
      if (time !== undefined) app.setCursor(time);
    };
    const actions = {
      ArrowLeft: () => (shiftKey ? app.pan(-PAN_STEP) : app.setCursor(app.at - step)),
      ArrowRight: () => (shiftKey ? app.pan(PAN_STEP) : app.setCursor(app.at + step)),
      Home: () => app.setCursor(from),
      End: () => app.setCursor(to),
      "+": () => app.zoom(1 / ZOOM, app.at),
      "-": () => app.zoom(ZOOM, app.at),
      0: () => app.setRange(app.whole.from, app.whole.to),
      n: () => next(true),
      p: () => next(false),
      Enter: () => {
        const { rows } = marksNear(app.marks, app.at, step, 1);
        if (rows.length > 0) app.select(rows[0]);
      },
    };
    return Object.hasOwn(actions, key) ? actions[key] : undefined;
  }

  #fillTable() {
    if (!this.#table.open) return;
    const { range, whole } = this.#app;
    const series = this.#lines.map((line) => line.series);
    const rows = rowsOf(series, whole, range.from, range.to, MAX_TABLE_ROWS / 4).filter(
      ([time]) => time >= range.from && time <= range.to,
    );
    const shown = table(
      `${this.title} from ${formatTime(range.from)} s to ${formatTime(range.to)} s, thinned`,
      ["time, s", ...this.#lines.map(({ label }) => label)],
      rows
        .slice(0, 2 * MAX_TABLE_ROWS)
        .map(([time, ...values]) => [
          formatTime(time),
          ...values.map((value, index) => this.#format(series[index], value)),
        ]),
    );
    this.#table.replaceChildren(this.#table.firstElementChild, shown);
  }
}

// One finger scrolls the page and moves the cursor; two zoom and pan.
function interactionModel() {
  const model = Dygraph.defaultInteractionModel;
  return {
    ...model,
    touchstart(event, graph, context) {
      if (event.touches.length > 1) model.touchstart(event, graph, context);
    },
  };
}
