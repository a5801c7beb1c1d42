// SPDX-License-Identifier: Apache-2.0
// A recording that grows, from the program that serves the page.
import { byId } from "./dom.js";
import { Reader } from "./reader.js";
import { Recording } from "./recording.js";

const PAUSE_MS = 200; // Between two drawings.

/** Only the program's address has a token: a page may as well lie on another server. */
export const isLive = () => location.protocol === "http:" && new URLSearchParams(location.search).has("token");

/** Reads the recording and what is appended to it; `show` draws what is new. A connection begins at its beginning. */
export function follow(app, show) {
  const { name } = document.querySelector("script[data-recording]").dataset;
  const source = new EventSource(`events${location.search}`);
  let recording;
  let reader;
  let timer;
  app.recordings.push(new Recording(name)); // At once: a file that is dropped comes behind it.
  source.addEventListener("open", () => {
    recording = new Recording(name);
    reader = new Reader(recording);
  });
  source.addEventListener("message", ({ data }) => {
    reader.feed(`${data}\n`);
    if (recording.isOver) source.close();
    timer ??= setTimeout(() => {
      timer = undefined;
      app.recordings[0] = recording;
      show();
    }, PAUSE_MS);
  });
  source.addEventListener("error", () => {
    byId("status").textContent = "The program that serves this page has ended.";
  });
}
