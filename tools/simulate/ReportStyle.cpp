// SPDX-License-Identifier: Apache-2.0
#include "simulate/ReportStyle.h"

namespace simulate {

const char* const kReportStyle = R"css(
:root {
  color-scheme: light;
  --page: #f4f5f7; --card: #ffffff; --text: #1c2530; --soft: #5a6675; --rule: #dde1e7; --axis: #98a2b0;
  --s1: #1f66b0; --s2: #b8560f; --s3: #2a7a4b; --s4: #7b4aa0; --area: #e3e8ef;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    color-scheme: dark;
    --page: #12161c; --card: #1b2129; --text: #e4e8ee; --soft: #9ba7b6; --rule: #2d3642; --axis: #66727f;
    --s1: #6db0f2; --s2: #eda062; --s3: #6cc796; --s4: #c59ce6; --area: #2a323d;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 1.5rem 1.25rem 3rem; max-width: 70rem; background: var(--page); color: var(--text);
  font: 15px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", "DejaVu Sans", sans-serif;
}
h1 { margin: 0; font-size: 1.6rem; line-height: 1.25; }
h2 { margin: 2.5rem 0 .25rem; font-size: 1.2rem; }
h3 { margin: 1.1rem 0 .35rem; font-size: .85rem; font-weight: 600; color: var(--soft); }
h3:first-child { margin-top: 0; }
p { margin: .25rem 0 .9rem; color: var(--soft); max-width: 46rem; }
code { font: .92em ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace; }
code, th, td { overflow-wrap: anywhere; unicode-bidi: isolate; }
.card, .plot, .tiles div {
  background: var(--card); border: 1px solid var(--rule); border-radius: 8px; padding: .9rem 1rem;
}
.tiles { display: grid; grid-template-columns: repeat(auto-fit, minmax(9rem, 1fr)); gap: .75rem; margin: 1.25rem 0 0; }
.tiles dt { color: var(--soft); font-size: .8rem; }
.tiles dd { margin: 0; font-size: 1.35rem; font-weight: 600; line-height: 1.3; white-space: nowrap; }
.tiles small { display: block; font-size: .78rem; font-weight: 400; color: var(--soft); white-space: normal; }
.bad { color: #c0281e; }
.plots { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 26rem), 1fr)); gap: .9rem; }
.plots + p, section + p { margin-top: .9rem; }
.plots.three { grid-template-columns: repeat(auto-fit, minmax(min(100%, 20rem), 1fr)); margin-top: .9rem; }
.plot { display: flex; flex-direction: column; margin: 0; padding: .75rem .8rem .5rem; }
.plot figcaption {
  display: flex; flex-wrap: wrap; gap: .1rem 1rem; justify-content: space-between; margin-bottom: .4rem;
}
.plot > svg { display: block; width: 100%; height: auto; margin-top: auto; }
.legend { display: flex; flex-wrap: wrap; gap: 0 .9rem; font-size: .8rem; color: var(--soft); }
.legend span { display: inline-flex; align-items: center; gap: .35rem; white-space: nowrap; }
.key { width: 22px; height: 10px; flex: none; }
svg text { fill: var(--soft); font-size: 12px; font-family: inherit; }
svg path { fill: none; }
.axis { stroke: var(--axis); stroke-width: 1; }
.grid { stroke: var(--rule); stroke-width: 1; vector-effect: non-scaling-stroke; }
.s1, .s2, .s3, .s4 { stroke-width: 2; stroke-linejoin: round; stroke-linecap: round; }
.s1 { stroke: var(--s1); }
.s2 { stroke: var(--s2); stroke-dasharray: 7 4; }
.s3 { stroke: var(--s3); stroke-dasharray: 2 4; }
.s4 { stroke: var(--s4); stroke-width: 1.5; }
svg .area { fill: var(--area); }
svg .fill { stroke: none; }
.fill.s1 { fill: var(--s1); }
.fill.s2 { fill: var(--s2); }
.fill.s3 { fill: var(--s3); }
.fill.s4 { fill: var(--s4); }
.median, .p99 { stroke: var(--text); stroke-width: 1.5; }
.p99 { stroke-dasharray: 4 3; }
.arrival { stroke: var(--text); stroke-width: 2; vector-effect: non-scaling-stroke; }
.lane {
  display: grid; grid-template-columns: 17rem minmax(0, 1fr) 4.5rem; gap: 0 .9rem; align-items: center;
  font-size: .85rem; line-height: 1.3; padding: .12rem 0;
}
.lane > span { overflow-wrap: anywhere; }
.lane > b { text-align: right; font-weight: 400; color: var(--soft); font-variant-numeric: tabular-nums; }
.lane > svg { width: 100%; height: 22px; display: block; border-bottom: 1px solid var(--axis); }
.names > div { position: relative; height: 1.3rem; }
.names i {
  position: absolute; font-style: normal; font-size: .78rem; color: var(--soft); white-space: nowrap;
  overflow: hidden; text-overflow: ellipsis; padding-right: .4rem;
}
.axis-row i { transform: translateX(-50%); overflow: visible; padding: 0; }
table { width: 100%; border-collapse: collapse; font-size: .87rem; }
.settings, .toggles { table-layout: fixed; }
.settings thead th:nth-child(1) { width: 26%; }
.settings thead th:nth-child(2) { width: 28%; }
.settings thead th:nth-child(3) { width: 6%; }
.settings thead th:nth-child(5) { width: 9%; }
.toggles thead th:nth-child(1) { width: 29%; }
.toggles thead th:nth-child(2) { width: 18%; }
.toggles thead th:nth-child(4) { width: 22%; }
th, td { padding: .3rem .6rem .3rem 0; text-align: left; vertical-align: top; border-bottom: 1px solid var(--rule); }
tr > :last-child { padding-right: 0; }
tbody th { font-weight: 500; }
thead th { color: var(--soft); font-weight: 600; font-size: .8rem; }
tbody:last-child tr:last-child > * { border-bottom: 0; }
.group th { padding-top: 1rem; font-weight: 600; color: var(--soft); }
.number { text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; }
.ways td, .ways th { white-space: nowrap; }
footer { margin-top: 2.5rem; font-size: .85rem; color: var(--soft); }
@media (max-width: 44rem) {
  body { padding: 1rem .75rem 2rem; }
  .card, .tiles div { padding: .75rem; }
  .tiles { grid-template-columns: 1fr 1fr; }
  .lane { grid-template-columns: minmax(0, 1fr) auto; padding: .2rem 0; }
  .lane > svg, .names > div { grid-column: 1 / -1; grid-row: 2; }
  .names > span { display: none; }
  .settings thead, .toggles thead { display: none; }
  .settings tr, .toggles tr { display: flex; flex-wrap: wrap; gap: 0 .75rem; padding: .35rem 0;
    border-bottom: 1px solid var(--rule); }
  .settings tr > *, .toggles tr > * { border: 0; padding: 0; flex: 1 1 32%; min-width: 0; }
  .settings tr > th, .toggles tr > th { flex-basis: 58%; }
  .settings tr > :nth-child(n + 3), .toggles tr > :nth-child(n + 3) {
    flex: 1 1 60%; font-size: .78rem; color: var(--soft);
  }
  .settings tr > :nth-child(n + 3) { flex: 0 1 auto; }
  .settings tr > :last-child { margin-left: auto; }
  .settings .every { display: none; }
  .call::before { content: "call "; }
  .settings .group { padding-top: 1rem; border: 0; }
  .settings .group th { padding: 0; }
  .tiles div:last-child:nth-child(odd) { grid-column: 1 / -1; }
  svg text { font-size: 15px; }
  .three svg text { font-size: 12px; }
  .ways { font-size: .8rem; }
}
@media print {
  @page { margin: 14mm; }
  :root { --page: #fff; }
  body { padding: 0 1px; max-width: none; font-size: 10pt; print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  .plots { grid-template-columns: 1fr 1fr; }
  .plots + p, section + p { margin-top: .9rem; }
.plots.three { grid-template-columns: 1fr 1fr 1fr; }
  .lane { grid-template-columns: 15rem minmax(0, 1fr) 3rem; font-size: 8.5pt; }
  .tiles { grid-template-columns: repeat(5, 1fr); }
  .tiles dd { font-size: 13pt; }
  .plot, .timeline, .tiles div, tr { break-inside: avoid; }
  .settings, .toggles { font-size: 7.5pt; }
  .settings :is(th, td), .toggles :is(th, td) { padding-block: .12rem; }
  .settings .group th { padding-top: .5rem; }
  h2, h3, section > p, .group { break-after: avoid; }
  thead { display: table-header-group; }
}
)css";

}  // namespace simulate
