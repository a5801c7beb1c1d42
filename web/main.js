// SPDX-License-Identifier: Apache-2.0
/* global Dygraph */
import { App } from "./app.js";
import { ChangesView } from "./changesView.js";
import { byId } from "./dom.js";
import { FindingsView } from "./findingsView.js";
import { follow, isLive } from "./live.js";
import { Overview } from "./overview.js";
import { CallPicker, PlotPicker } from "./pickers.js";
import { PlotsView } from "./plotsView.js";
import { SettingsView } from "./settingsView.js";
import { acceptFiles, readEmbedded, readFile } from "./sources.js";
import { SubscribersView } from "./subscribersView.js";

// The chart's own legend and titles would be markup; the page has its own.
Dygraph.PLUGINS = Dygraph.PLUGINS.filter(
  (plugin) => plugin !== Dygraph.Plugins.Legend && plugin !== Dygraph.Plugins.ChartLabels,
);

const app = new App();
const plotsView = new PlotsView(app);
const views = [
  new FindingsView(app),
  new CallPicker(app),
  new Overview(app),
  new PlotPicker(app),
  plotsView,
  new ChangesView(app),
  new SettingsView(app),
  new SubscribersView(app),
];
for (const view of views) app.addView(view);

const showProgress = (share) => {
  byId("status").textContent = `Reading, ${Math.round(100 * share)} %`;
};

function showAll(...changed) {
  const names = app.recordings.map(({ name, wall }) => (wall ? `${name}, began ${wall}` : name));
  byId("names").replaceChildren(
    ...names.flatMap((name, index) => (index > 0 ? [document.createElement("br"), name] : [name])),
  );
  byId("status").textContent =
    app.recordings.length === 0
      ? "Drop a recording here, or open one."
      : `${app.recordings.reduce((sum, { count }) => sum + count, 0)} events`;
  byId("content").hidden = app.recordings.length === 0;
  app.invalidate("data", "cursor", ...changed);
  app.update();
  document.documentElement.dataset.state = "ready";
}

async function takeFiles(files) {
  for (const file of files) await readFile(app, file, showProgress);
  showAll();
}

const drawForPaper = (isPaper) => {
  if (isPaper) document.documentElement.dataset.scheme = "light";
  else delete document.documentElement.dataset.scheme;
  plotsView.drawEverything();
  app.invalidate("style");
};
addEventListener("beforeprint", () => drawForPaper(true));
addEventListener("afterprint", () => drawForPaper(false));
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => app.invalidate("style"));

acceptFiles(takeFiles);
if (isLive()) {
  follow(app, () => showAll("growth"));
} else {
  await readEmbedded(app, showProgress);
  showAll();
}
