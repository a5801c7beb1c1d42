// SPDX-License-Identifier: Apache-2.0
import { sentenceOf } from "./change.js";
import { byId, element } from "./dom.js";

const GAP_PX = 12;

/** Shows changes beside the pointer: {count, rows}. */
export function showTip({ clientX, clientY }, { count, rows }) {
  const tip = byId("tip");
  const sentences = rows.map(({ recording, change }) =>
    element("p", {}, sentenceOf(change, recording.heard.get(change.number))),
  );
  if (count > rows.length) sentences.push(element("p", {}, `and ${count - rows.length} more`));
  tip.replaceChildren(...sentences);
  tip.hidden = false;
  const { width, height } = tip.getBoundingClientRect();
  const left = clientX + GAP_PX + width > innerWidth ? clientX - GAP_PX - width : clientX + GAP_PX;
  const top = Math.min(clientY + GAP_PX, innerHeight - height - GAP_PX);
  tip.style.transform = `translate(${Math.max(left, 0)}px, ${Math.max(top, 0)}px)`;
}

export function hideTip() {
  byId("tip").hidden = true;
}
