// SPDX-License-Identifier: Apache-2.0
import { markBytes } from "./bytes.js";
import { faultOf, isObject, versionOf } from "./check.js";
import { isCutOff, isJson } from "./cutOff.js";

const VERSION = 1;
const LONGEST_LINE = 2 ** 20;

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
    } else {
      const lines = this.#rest + text.slice(0, end);
      this.#rest = text.slice(end + 1);
      this.#readLines(lines);
    }
    // As much as shows that it is too long.
    if (this.#rest.length > LONGEST_LINE) this.#rest = this.#rest.slice(0, LONGEST_LINE + 1);
  }

  /** There is no more. A last line that is cut off is what a crash leaves, and no damage. */
  finish() {
    const rest = this.#rest;
    this.#rest = "";
    if (rest === "") {
      if (this.#number === 0) this.#refuse("the file is empty");
    } else if (this.#number === 0 || isTooLong(rest) || isJson(rest) || !isCutOff(rest)) {
      this.#readLines(rest);
    }
  }

  #readLines(text) {
    const json = markBytes(text);
    const lines = json.split("\n");
    const events = lines.some(isTooLong) ? lines : (parseAll(json, lines.length) ?? lines);
    for (const event of events) {
      if (this.#isRefused) return;
      this.#number += 1;
      if (typeof event === "string") this.#readLine(event);
      else this.#take(event);
    }
  }

  #readLine(line) {
    if (isTooLong(line)) return this.#take(undefined, "the line is longer than 1 MiB");
    let event;
    try {
      event = JSON.parse(line);
    } catch {
      return this.#take(undefined, "no JSON");
    }
    this.#take(event);
  }

  #take(event, fault = faultOf(event)) {
    const version = versionOf(event);
    if (version !== undefined && version !== VERSION) {
      this.#refuse(`version ${version} of the format: only version ${VERSION} can be read`);
    } else if (this.#number === 1 && version === undefined) {
      this.#refuse('no recording: the first line is not of type "recording", with a version');
    } else if (fault) {
      this.#recording.faults.push({ line: this.#number, reason: fault });
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
function parseAll(json, count) {
  try {
    const events = JSON.parse(`[${json.replaceAll("\n", ",")}]`);
    return events.length === count && events.every(isObject) ? events : undefined;
  } catch {
    return undefined;
  }
}

// In bytes: a character has three for each unit here at most.
function isTooLong(line) {
  return line.length > LONGEST_LINE || (3 * line.length > LONGEST_LINE && new Blob([line]).size > LONGEST_LINE);
}
