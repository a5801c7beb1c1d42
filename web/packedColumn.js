// SPDX-License-Identifier: Apache-2.0
// Columns of numbers as the program packs them, see tools/report/PackedColumn.h.

const ARRAYS = { 1: Uint8Array, 2: Uint16Array, 4: Uint32Array, 8: Float64Array };

/** The numbers of a column, an array of them. */
export function numbersOf({ length, base, scale, bytes, data }) {
  const numbers = new Float64Array(length);
  if (bytes === 0) return numbers.fill(base / scale);
  const packed = new ARRAYS[bytes](bytesOf(data).buffer);
  if (base === 0 && scale === 1) return packed;
  for (let index = 0; index < length; index += 1) numbers[index] = (base + packed[index]) / scale;
  return numbers;
}

function bytesOf(base64) {
  const letters = atob(base64);
  const bytes = new Uint8Array(letters.length);
  for (let index = 0; index < bytes.length; index += 1) bytes[index] = letters.charCodeAt(index);
  return bytes;
}
