#include "HtmlStyle.h"

// Every pair of a text and what is behind it has a contrast of at least 4.5 to 1 in both schemes.
// What colours tell is said in words too.
const char* const c_htmlStyle = R"css(
:root {
  color-scheme: light dark;
  --page: #ffffff;
  --text: #1c2024;
  --faint: #5b6470;
  --panel: #f5f7f9;
  --rule: #d5dae0;
  --link: #0b57b0;
  --error: #b3171b;
  --error-back: #fdeced;
  --warning: #7a4b00;
  --warning-back: #fdf3dc;
  --fine: #1a6b33;
  --bar: #3f7fc4;
  --mark: #ffd9da;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #14171a;
    --text: #e3e7eb;
    --faint: #9da7b3;
    --panel: #1d2226;
    --rule: #39424b;
    --link: #7fb6f5;
    --error: #ff9a98;
    --error-back: #3a1c1e;
    --warning: #f0bf60;
    --warning-back: #34290f;
    --fine: #7fd097;
    --bar: #4f8ed2;
    --mark: #7a2529;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto;
  max-width: 76rem;
  padding: 2rem 1.5rem 4rem;
  background: var(--page);
  color: var(--text);
  font: 1rem/1.5 system-ui, sans-serif;
  overflow-wrap: anywhere;
}
h1 { margin: 0; font-size: 1.7rem; line-height: 1.25; }
h2 { margin: 0; font-size: 1.2rem; line-height: 1.35; }
h3 { margin: 1.75rem 0 0.6rem; font-size: 1rem; }
p { margin: 0.4rem 0; }
a { color: var(--link); }
a:focus-visible { outline: 2px solid var(--link); outline-offset: 2px; }
code { font: 0.875rem/1.55 ui-monospace, "DejaVu Sans Mono", monospace; }
.faint, footer { color: var(--faint); }
.documents { margin-top: 1.75rem; overflow-x: auto; }
.documents h2 { margin-bottom: 0.4rem; }
.documents th:first-child { min-width: 8rem; }
.documents table { width: 100%; }
table { border-collapse: collapse; }
caption { padding: 0 0 0.4rem; text-align: start; font-weight: 600; }
th, td { padding: 0.3rem 0.75rem; text-align: start; vertical-align: baseline; }
th:first-child, td:first-child { padding-inline-start: 0; }
thead th { color: var(--faint); font-size: 0.85rem; font-weight: 600; white-space: nowrap; }
.documents tr { border-bottom: 1px solid var(--rule); }
tbody th { font-weight: 400; }
.number { text-align: end; font-variant-numeric: tabular-nums; white-space: nowrap; }
.documents .result { text-align: start; white-space: nowrap; }
.documents td { text-align: end; font-variant-numeric: tabular-nums; white-space: nowrap; }
details { margin-top: 3rem; padding-top: 1.25rem; border-top: 2px solid var(--rule); }
summary { cursor: pointer; }
summary h2 { display: inline; }
summary:focus-visible { outline: 2px solid var(--link); outline-offset: 2px; }
details .documents { margin-top: 0.6rem; }
.error strong, .result.errors, .result.unreadable { color: var(--error); }
.warning strong, .result.warnings { color: var(--warning); }
.result.fine { color: var(--fine); }
.result { font-weight: 600; }
.document { margin-top: 3rem; padding-top: 1.25rem; border-top: 2px solid var(--rule); }
.excerpt {
  margin: 0.75rem 0;
  padding: 0.4rem 0;
  border: 1px solid var(--rule);
  border-radius: 6px;
  background: var(--panel);
}
.line { display: flex; }
.line .at {
  flex: none;
  min-width: 4.5rem;
  padding-inline: 0.75rem;
  color: var(--faint);
  font: 0.875rem/1.55 ui-monospace, "DejaVu Sans Mono", monospace;
  text-align: end;
  user-select: none;
}
.line.hit .at { color: var(--text); font-weight: 700; }
.line code {
  flex: 1;
  min-width: 0;
  padding-inline-end: 0.75rem;
  direction: ltr;
  white-space: pre-wrap;
  unicode-bidi: isolate;
}
mark {
  border-bottom: 2px solid var(--error);
  background: var(--mark);
  color: var(--text);
}
.message {
  margin: 0.6rem 0;
  padding: 0.4rem 0.75rem;
  border-inline-start: 4px solid currentColor;
  border-radius: 4px;
}
.excerpt .message { margin: 0.2rem 0.75rem 0.5rem 4.5rem; }
.message.error { border-color: var(--error); background: var(--error-back); }
.message.warning { border-color: var(--warning); background: var(--warning-back); }
.position { font-variant-numeric: tabular-nums; }
.totals { display: flex; flex-wrap: wrap; gap: 0.5rem 2.25rem; margin: 0; }
.totals div { display: flex; flex-direction: column-reverse; }
.totals dt { color: var(--faint); font-size: 0.85rem; }
.totals dd { margin: 0; font-size: 1.25rem; font-variant-numeric: tabular-nums; }
.charts {
  display: grid;
  grid-template-columns: repeat(auto-fit, minmax(min(24rem, 100%), 1fr));
  align-items: start;
  gap: 1.5rem 3rem;
  margin-top: 1.5rem;
}
.chart { width: 100%; table-layout: fixed; }
.chart th, .chart td { padding-block: 0.1rem; }
.chart thead th:first-child { width: 36%; }
.chart thead .number { width: 6.5rem; }
.chart tbody th { overflow: hidden; text-overflow: ellipsis; white-space: nowrap; }
.chart .bar { padding-inline-end: 0; }
.bar svg { display: block; width: 100%; height: 0.75rem; }
.bar rect { fill: var(--bar); rx: 2px; }
.back { margin-top: 1.25rem; }
footer { margin-top: 3rem; font-size: 0.85rem; }
@media print {
  :root {
    color-scheme: light;
    --page: #ffffff; --text: #000000; --faint: #444444; --panel: #ffffff; --rule: #999999;
    --link: #000000; --error: #8f0d11; --error-back: #ffffff; --warning: #5f3a00;
    --warning-back: #ffffff; --fine: #0f4d22; --bar: #777777; --mark: #dddddd;
  }
  body { max-width: none; padding: 0; font-size: 10pt; }
  .back { display: none; }
  .documents { overflow: visible; }
  .documents th, .documents td { padding-inline-end: 0.4rem; font-size: 8pt; }
  .documents thead th { white-space: normal; }
  h2, h3, thead { break-after: avoid; }
  .chart, .line, .message, .documents tr { break-inside: avoid; }
}
)css";
