// SPDX-License-Identifier: Apache-2.0
import { kindOf } from "./change.js";
import { styleValue } from "./dom.js";

const HEAD_PX = 4;

/** Draws marks of changes over the height of a plot: a line with a head whose form tells the kind. */
export function drawMarks(context, area, marks, toX, selected) {
  const colours = new Map();
  const colourOf = (kind) => {
    if (!colours.has(kind)) colours.set(kind, styleValue(`--mark-${kind}`));
    return colours.get(kind);
  };
  context.save();
  for (const { time, row } of marks) {
    const kind = kindOf(row.change);
    const x = Math.round(toX(time)) + 0.5;
    const isSelected = row.change === selected;
    context.strokeStyle = context.fillStyle = colourOf(kind);
    context.globalAlpha = isSelected ? 1 : 0.35;
    context.lineWidth = isSelected ? 3 : 1;
    context.beginPath();
    context.moveTo(x, area.y);
    context.lineTo(x, area.y + area.h);
    context.stroke();
    context.globalAlpha = 1;
    drawHead(context, kind, x, area.y + HEAD_PX);
  }
  context.restore();
}

// Sets have a triangle, toggles a disc, documents a square, removals and what was refused a cross.
function drawHead(context, kind, x, y) {
  context.beginPath();
  if (kind === "toggle") {
    context.arc(x, y, HEAD_PX, 0, 2 * Math.PI);
  } else if (kind === "document") {
    context.rect(x - HEAD_PX, y - HEAD_PX, 2 * HEAD_PX, 2 * HEAD_PX);
  } else if (kind === "set") {
    context.moveTo(x - HEAD_PX, y - HEAD_PX);
    context.lineTo(x + HEAD_PX, y - HEAD_PX);
    context.lineTo(x, y + HEAD_PX);
  } else {
    context.lineWidth = 2;
    context.moveTo(x - HEAD_PX, y - HEAD_PX);
    context.lineTo(x + HEAD_PX, y + HEAD_PX);
    context.moveTo(x - HEAD_PX, y + HEAD_PX);
    context.lineTo(x + HEAD_PX, y - HEAD_PX);
    context.stroke();
    return;
  }
  context.fill();
}
