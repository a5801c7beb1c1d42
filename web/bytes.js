// SPDX-License-Identifier: Apache-2.0
// A recording writes a byte that is no UTF-8 as \u00XX, which JSON takes for a letter. Between reading and writing,
// such a byte is the lone surrogate U+DCXX: no text has it, and a page shows it as a replacement mark.

const ESCAPED_BYTE = /\\(?:\\|u00([89a-f][0-9a-f]))/gi;
const ESCAPED_MARK = /\\(?:\\|udc([89a-f][0-9a-f]))/g;

/** JSON text as recorded, for JSON.parse(). */
export function markBytes(json) {
  if (!json.includes("\\u00")) return json;
  return json.replace(ESCAPED_BYTE, (whole, byte) => (byte ? `\\udc${byte.toLowerCase()}` : whole));
}

/** The value as JSON text, with its bytes as a recording writes them. */
export function stringifyWithBytes(value) {
  return JSON.stringify(value).replace(ESCAPED_MARK, (whole, byte) => (byte ? `\\u00${byte}` : whole));
}
