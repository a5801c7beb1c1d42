// SPDX-License-Identifier: Apache-2.0
import { markBytes } from "./bytes.js";
import { faultOf, isObject } from "./check.js";

const VERSION = 1;

/** Reads a recording as its text arrives. */
export class Reader {
  #recording;
  #rest = "";
  #number = 0; // Of the line.
  #isRefused = false;

  constructor(recording) {
    this.#recording = recording;
  }

  /** More text, of any length. */
  feed(text) {
    const end = text.lastIndexOf("\n");
    if (end < 0) {
      this.#rest += text;
      return;
    }
    const lines = this.#rest + text.slice(0, end);
    this.#rest = text.slice(end + 1);
    this.#readLines(lines);
  }

  /** There is no more. A last line that is cut off is what a crash leaves, and no damage. */
  finish() {
    const rest = this.#rest;
    this.#rest = "";
    if (rest && isJson(rest)) this.#readLines(rest);
    else if (this.#number === 0) this.#refuse("the file is empty");
  }

  #readLines(text) {
    const json = markBytes(text);
    const events = parseAll(json) ?? json.split("\n");
    for (const event of events) {
      if (this.#isRefused) return;
      this.#number += 1;
      if (typeof event === "string") this.#readLine(event);
      else this.#take(event);
    }
  }

  #readLine(line) {
    let event;
    try {
      event = JSON.parse(line);
    } catch {
      event = undefined;
    }
    this.#take(event);
  }

  #take(event) {
    const fault = faultOf(event);
    const isBegin = !fault && event.type === "recording" && event.event === undefined;
    if (this.#number === 1 && !(isBegin && event.version !== undefined)) {
      this.#refuse("no recording: the first line is not of type “recording”, with a version");
    } else if (isBegin && event.version !== VERSION) {
      this.#refuse(`version ${event.version} of the format: only version ${VERSION} can be read`);
    } else if (fault) {
      this.#recording.faults.push({ line: this.#number, reason: event === undefined ? "no JSON" : fault });
    } else {
      this.#recording.take(event);
    }
  }

  #refuse(reason) {
    this.#isRefused = true;
    this.#recording.faults.push({ line: Math.max(this.#number, 1), reason });
  }
}

// Faster than line by line, for lines without a fault. A line may be a part of an object.
function parseAll(json) {
  try {
    const events = JSON.parse(`[${json.replaceAll("\n", ",")}]`);
    return events.length === json.split("\n").length && events.every(isObject) ? events : undefined;
  } catch {
    return undefined;
  }
}

function isJson(text) {
  try {
    JSON.parse(text);
    return true;
  } catch {
    return false;
  }
}
