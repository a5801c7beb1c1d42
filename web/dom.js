// SPDX-License-Identifier: Apache-2.0
// Elements of the page. What comes from a recording becomes a text or an attribute's value, never markup.

/** An element; attributes named on… are listeners, and those that are false or undefined are left out. */
export function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (key.startsWith("on")) made.addEventListener(key.slice(2), value);
    else if (value === true) made.setAttribute(key, "");
    else if (value !== false && value !== undefined) made.setAttribute(key, value);
  }
  made.append(...children);
  return made;
}

export function byId(id) {
  return document.getElementById(id);
}

/** A table with a caption, names of columns, and rows of texts or nodes. */
export function table(caption, columns, rows) {
  return element(
    "table",
    {},
    element("caption", {}, caption),
    element("thead", {}, element("tr", {}, ...columns.map((column) => element("th", { scope: "col" }, column)))),
    element("tbody", {}, ...rows.map((row) => element("tr", {}, ...row.map((cell) => element("td", {}, cell))))),
  );
}

/** Runs a function once calls of it have paused. */
export function paused(run, milliseconds) {
  let timer;
  return () => {
    clearTimeout(timer);
    timer = setTimeout(run, milliseconds);
  };
}

/** A colour or length that the style sheet has under a name. */
export function styleValue(name) {
  return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
}
