// SPDX-License-Identifier: Apache-2.0
import { lastUpTo } from "./series.js";

/**
 * The times at which a series must be drawn so that the picture of [from, to] is the same as with all of it: in each of
 * `buckets` parts the first, the least, the greatest and the last value, and the edges of gaps.
 */
export function thin(series, from, to, buckets) {
  const { times, values } = series;
  const begin = Math.max(lastUpTo(times, from), 0);
  const end = lastUpTo(times, to) + 1;
  if (end - begin <= 4 * buckets) return times.slice(begin, end);
  const chosen = [];
  const width = (to - from) / buckets;
  for (let index = begin; index < end;) {
    const limit = from + width * (Math.floor((times[index] - from) / width) + 1);
    const next = Math.min(Math.max(lastUpTo(times, limit) + 1, index + 1), end);
    chooseOf(values, index, next, chosen);
    index = next;
  }
  return chosen.map((index) => times[index]);
}

function chooseOf(values, begin, end, chosen) {
  let least = begin;
  let most = begin;
  let gap = -1;
  for (let index = begin; index < end; index += 1) {
    if (Number.isNaN(values[index])) gap = index;
    if (values[index] < values[least] || Number.isNaN(values[least])) least = index;
    if (values[index] > values[most] || Number.isNaN(values[most])) most = index;
  }
  const indices = [begin, least, most, end - 1, ...(gap < 0 ? [] : [gap])];
  chosen.push(...[...new Set(indices)].sort((a, b) => a - b));
}

/**
 * Rows for a chart: each has a time, and of each series its value then; [from, to] is fine, what is around coarse. One
 * is close behind: the chart's axis spans the values of the next row, too, which could be of any later time.
 */
export function rowsOf(lines, whole, from, to, buckets) {
  const coarse = Math.max(Math.floor(buckets / 8), 16);
  const times = new Set([whole.from, to + (to - from) / (16 * buckets), whole.to]);
  for (const series of lines) {
    for (const time of thin(series, whole.from, from, coarse)) times.add(time);
    for (const time of thin(series, from, to, buckets)) times.add(time);
    for (const time of thin(series, to, whole.to, coarse)) times.add(time);
  }
  const inside = [...times].filter((time) => time >= whole.from && time <= whole.to).sort((a, b) => a - b);
  return inside.map((time) => [time, ...lines.map((series) => series.at(time))]);
}

/**
 * The rows with null for each value that is the same as in the row before: a chart that connects what is around null
 * draws the same with fewer steps. The last row has its values, and so has the first one behind `to`, see rowsOf().
 */
export function withoutRepeats(rows, to) {
  const before = [];
  const behind = rows.findIndex(([time]) => time > to);
  return rows.map((row, index) =>
    row.map((value, column) => {
      const isRepeated = column > 0 && Object.is(value, before[column]);
      before[column] = value;
      return isRepeated && index !== behind && index + 1 < rows.length ? null : value;
    }),
  );
}
