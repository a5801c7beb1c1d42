// SPDX-License-Identifier: Apache-2.0
// Where recordings come from: the page itself, and files that are dropped on it or opened.
import { takeEvents } from "./columns.js";
import { byId } from "./dom.js";
import { Reader } from "./reader.js";
import { Recording } from "./recording.js";

const SLICE_MS = 50;
const BLOCK_BYTES = 4 * 1024 * 1024;

/**
 * Reads what the page has in it, which the program has checked, with pauses in which the page can be used. `onProgress`
 * gets a share from 0 to 1.
 */
export async function readEmbedded(app, onProgress) {
  const parts = [...document.querySelectorAll("script[data-recording]")];
  // At once: a file that is dropped meanwhile comes behind them.
  for (const { dataset } of parts) app.recordings[dataset.recording] ??= new Recording(dataset.name);
  let begin = performance.now();
  for (const [index, part] of parts.entries()) {
    const recording = app.recordings[part.dataset.recording];
    takeEvents(part.textContent, (event) => recording.take(event));
    part.remove();
    if (performance.now() - begin < SLICE_MS) continue;
    onProgress(index / parts.length);
    await new Promise((resume) => setTimeout(resume));
    begin = performance.now();
  }
  for (const { count, faults } of app.recordings) {
    if (count === 0) faults.push({ line: 1, reason: "no recording begins here" });
  }
}

/** Reads a file that the user has given. */
export async function readFile(app, file, onProgress) {
  const recording = new Recording(file.name);
  const reader = new Reader(recording);
  const decoder = new TextDecoder("utf-8", { ignoreBOM: true }); // A mark is no part of a recording.
  for (let begin = 0; begin < file.size; begin += BLOCK_BYTES) {
    const block = await file.slice(begin, begin + BLOCK_BYTES).arrayBuffer();
    reader.feed(decoder.decode(block, { stream: true }));
    onProgress(begin / file.size);
  }
  reader.finish();
  app.recordings.push(recording);
}

/** Calls `take` with the files that are dropped on the page or opened by its button. */
export function acceptFiles(take) {
  const input = byId("open-file");
  byId("open").addEventListener("click", () => input.click());
  input.addEventListener("change", () => take([...input.files]));
  addEventListener("dragover", (event) => event.preventDefault());
  addEventListener("drop", (event) => {
    event.preventDefault();
    if (event.dataTransfer.files.length > 0) take([...event.dataTransfer.files]);
  });
}
