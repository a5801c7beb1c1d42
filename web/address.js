// SPDX-License-Identifier: Apache-2.0
// The page's state as the part of its address behind the #.

const NUMBERS = ["from", "to", "at"];
const TEXTS = ["search", "group", "kind", "name", "origin", "setting", "sort"];
const LISTS = ["calls", "plots"];

/** A state in which nothing is chosen: everything is as the page chooses it. */
export function emptyState() {
  return {
    from: undefined,
    to: undefined,
    at: undefined,
    search: "",
    group: "",
    kind: "",
    name: "",
    origin: "",
    setting: "",
    sort: "time",
    calls: undefined,
    plots: undefined,
  };
}

export function readState(hash) {
  const state = emptyState();
  const parameters = new URLSearchParams(hash.replace(/^#/, ""));
  for (const name of NUMBERS) {
    const number = Number.parseFloat(parameters.get(name));
    if (Number.isFinite(number)) state[name] = number;
  }
  if (!(state.from < state.to)) state.from = state.to = undefined;
  for (const name of TEXTS) state[name] = parameters.get(name) ?? state[name];
  for (const name of LISTS) {
    if (parameters.has(name)) state[name] = new Set(parameters.getAll(name).filter((item) => item !== ""));
  }
  return state;
}

export function writeState(state) {
  const parameters = new URLSearchParams();
  const empty = emptyState();
  for (const name of NUMBERS)
    if (state[name] !== undefined) parameters.set(name, String(Number(state[name].toFixed(6))));
  for (const name of TEXTS) if (state[name] !== empty[name]) parameters.set(name, state[name]);
  for (const name of LISTS) {
    if (state[name] === undefined) continue;
    for (const item of state[name].size > 0 ? state[name] : [""]) parameters.append(name, item);
  }
  return parameters.toString();
}
