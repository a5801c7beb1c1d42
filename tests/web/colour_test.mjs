// SPDX-License-Identifier: Apache-2.0
// The colours of the page, as people with each kind of colour vision see them.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";

// What becomes of red, green and blue light where one kind of cones is missing: Machado, Oliveira and Fernandes, 2009.
const VISIONS = {
  usual: [
    [1, 0, 0],
    [0, 1, 0],
    [0, 0, 1],
  ],
  "without red": [
    [0.152286, 1.052583, -0.204868],
    [0.114503, 0.786281, 0.099216],
    [-0.003882, -0.048116, 1.051998],
  ],
  "without green": [
    [0.367322, 0.860646, -0.227968],
    [0.280085, 0.672501, 0.047413],
    [-0.01182, 0.04294, 0.968881],
  ],
  "without blue": [
    [1.255528, -0.076749, -0.178779],
    [-0.078411, 0.930809, 0.147602],
    [0.004733, 0.691367, 0.3039],
  ],
};
const XYZ = [
  [0.4339, 0.3762, 0.1899],
  [0.2126, 0.7152, 0.0722],
  [0.0177, 0.1095, 0.8729],
];
const LEAST = 20; // Of the distance in the space L*a*b*, in which 2.3 can just be seen.

const product = (matrix, vector) =>
  matrix.map((row) => row.reduce((sum, cell, index) => sum + cell * vector[index], 0));

function lightOf(colour) {
  const parts = [1, 3, 5].map((begin) => Number.parseInt(colour.slice(begin, begin + 2), 16) / 255);
  return parts.map((part) => (part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4));
}

function placeOf(light) {
  const shown = light.map((part) => Math.min(Math.max(part, 0), 1));
  const [x, y, z] = product(XYZ, shown).map((part) => (part > 0.008856 ? Math.cbrt(part) : 7.787 * part + 16 / 116));
  return [116 * y - 16, 500 * (x - y), 200 * (y - z)];
}

const style = readFileSync(new URL("../../web/style.css", import.meta.url), "utf8");
const lines = [...style.matchAll(/--line\d: (#[0-9a-f]{6});/g)].map(([, colour]) => colour);

test("Lines of a plot differ whatever colours a person sees, light and dark", () => {
  assert.equal(lines.length, 16);
  for (const scheme of [lines.slice(0, 8), lines.slice(8)]) {
    for (const [vision, matrix] of Object.entries(VISIONS)) {
      const places = scheme.map((colour) => placeOf(product(matrix, lightOf(colour))));
      for (let a = 0; a < places.length; a += 1) {
        for (let b = a + 1; b < places.length; b += 1) {
          const distance = Math.hypot(...places[a].map((part, index) => part - places[b][index]));
          assert.ok(distance > LEAST, `${vision}: ${scheme[a]} and ${scheme[b]}: ${distance.toFixed(1)}`);
        }
      }
    }
  }
});
