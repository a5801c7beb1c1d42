// SPDX-License-Identifier: Apache-2.0
// Whether a last line of a recording is damaged, or nothing but cut off.

export function isJson(text) {
  try {
    JSON.parse(text);
    return true;
  } catch {
    return false;
  }
}

// What may stand at the end of a text that is cut off: a number's beginning, or a word's.
const PARTIAL = /(?:-?[\d.eE+-]+|t|tr|tru|f|fa|fal|fals|n|nu|nul)$/;
// What may be missing behind it, before its brackets are closed.
const REST = ["", "null", ":null", '"":null'];

/** Whether something can follow that makes JSON of the text, whatever follows what is not whole at its end. */
export function isCutOff(text) {
  const closing = [];
  let string = -1; // Where the one begins that has not ended.
  for (let index = 0; index < text.length; index += 1) {
    const letter = text[index];
    if (string >= 0) {
      if (letter === "\\") index += 1;
      else if (letter === '"') string = -1;
    } else if (letter === '"') {
      string = index;
    } else if (letter === "{" || letter === "[") {
      closing.unshift(letter === "{" ? "}" : "]");
    } else if (letter === "}" || letter === "]") {
      closing.shift();
    }
  }
  const whole = string >= 0 ? `${text.slice(0, string)}""` : text.replace(PARTIAL, "null");
  return [text, whole].some((part) => REST.some((rest) => isJson(part + rest + closing.join(""))));
}
