// SPDX-License-Identifier: Apache-2.0
import { markBytes } from "./bytes.js";
import { numbersOf } from "./packedColumn.js";

/**
 * Calls `take` with each event of a part of the page, in their order; see tools/report/EventColumns.h. An event is
 * valid until the next one.
 */
export function takeEvents(json, take) {
  const { list, order, tables } = JSON.parse(markBytes(json));
  const readers = tables.map((table) => new TableReader(table, list));
  for (const table of numbersOf(order)) take(readers[table].next());
}

/** The rows of a table, one after the other. */
class TableReader {
  #columns; // Those that are not the same in all rows.
  #members;
  #row = {};
  #index = 0;

  constructor(table, list) {
    const { sizes, ...numbers } = table.numbers;
    const columns = [
      ...Object.entries(numbers).map(([name, column]) => ({ name, column, cells: numbersOf(column) })),
      ...Object.entries(table.values).map(([name, column]) => ({ name, column, cells: valuesAt(column, list) })),
    ];
    for (const { name, cells } of columns) this.#row[name] = cells[0];
    this.#columns = columns.filter(({ column }) => column.bytes > 0);
    this.#members = sizes && new MembersReader(table, sizes, list);
  }

  next() {
    for (const { name, cells } of this.#columns) this.#row[name] = cells[this.#index];
    if (this.#members) this.#row.members = this.#members.next(this.#index);
    this.#index += 1;
    return this.#row;
  }
}

/** The members of statistics, row after row. */
class MembersReader {
  #sizes;
  #names;
  #areTexts;
  #members;
  #list;
  #begin = 0;

  constructor({ names, areTexts, members }, sizes, list) {
    this.#sizes = numbersOf(sizes);
    this.#names = valuesAt(names, list);
    this.#areTexts = numbersOf(areTexts);
    this.#members = numbersOf(members);
    this.#list = list;
  }

  next(row) {
    const members = Object.create(null); // In which any name is only a name.
    const end = this.#begin + this.#sizes[row];
    for (let index = this.#begin; index < end; index += 1) {
      const member = this.#members[index];
      members[this.#names[index]] = this.#areTexts[index] ? this.#list[member] : member;
    }
    this.#begin = end;
    return members;
  }
}

function valuesAt(column, list) {
  const places = numbersOf(column);
  const values = new Array(places.length);
  for (let index = 0; index < values.length; index += 1) values[index] = list[places[index]];
  return values;
}
