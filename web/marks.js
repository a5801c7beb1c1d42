// SPDX-License-Identifier: Apache-2.0
// The changes that plots have marks for.
import { isMarked } from "./change.js";
import { lastUpTo } from "./series.js";

/** The marked changes of the chosen calls, sorted by time: {times, rows: [{recording, change}]}. */
export function marksOf(recordings, isShown) {
  const rows = [];
  for (const recording of recordings) {
    for (const change of recording.changes) {
      if (isMarked(change) && isShown(recording, change.call)) rows.push({ recording, change });
    }
  }
  if (recordings.length > 1) rows.sort((a, b) => a.change.t - b.change.t);
  return { times: rows.map((row) => row.change.t), rows };
}

/** One mark for each of `columns` parts of [from, to] that has any: {time, count}. */
export function thinMarks(marks, from, to, columns) {
  const thinned = [];
  const width = (to - from) / columns;
  for (let index = lastBefore(marks.times, from) + 1; index < marks.times.length && marks.times[index] <= to;) {
    const time = marks.times[index];
    const next = Math.max(lastUpTo(marks.times, Math.min(time + width, to)) + 1, index + 1);
    // A document says more than the sets that it makes.
    const document = marks.rows.slice(index, next).find(({ change }) => change.type === "apply");
    thinned.push({ time, count: next - index, row: document ?? marks.rows[index] });
    index = next;
  }
  return thinned;
}

/** The marked changes within `reach` of a time, the nearest first, `most` of them; and how many there are. */
export function marksNear(marks, time, reach, most) {
  const begin = lastBefore(marks.times, time - reach) + 1;
  const end = lastUpTo(marks.times, time + reach) + 1;
  const middle = Math.min(Math.max(lastUpTo(marks.times, time), begin), end);
  const near = marks.rows.slice(Math.max(begin, middle - most), Math.min(end, middle + most + 1));
  near.sort((a, b) => Math.abs(a.change.t - time) - Math.abs(b.change.t - time));
  return { count: end - begin, rows: near.slice(0, most) };
}

/** The time of the next mark behind a time, or of the one before it. */
export function nextMark(marks, time, isForward) {
  const index = isForward ? lastUpTo(marks.times, time) + 1 : lastBefore(marks.times, time);
  return marks.times[index];
}

function lastBefore(times, time) {
  let low = 0;
  let high = times.length;
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (times[middle] < time) low = middle + 1;
    else high = middle;
  }
  return low - 1;
}
