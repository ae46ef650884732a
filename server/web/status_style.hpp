// status_style.hpp - how the status page looks.
//
// The colours are those of the first two blocks; each text colour has a contrast of at least 4.5 to
// every ground that it may stand on.
#pragma once

namespace tovrik
{

constexpr const char* status_style = R"css(
:root {
  color-scheme: light dark;
  --page: #f5f6f8; --card: #ffffff; --line: #dce1e8; --warn: #fdf0ee;
  --text: #1a2230; --muted: #556072; --accent: #1d5fa8; --good: #1a6b3c; --bad: #a1221b;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #0f1319; --card: #171d26; --line: #2d3644; --warn: #331c1c;
    --text: #e7ebf1; --muted: #a0abbb; --accent: #7db3f0; --good: #7fd1a0; --bad: #ffaaa2;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 2.5rem 2rem 3rem; max-width: 72rem;
  background: var(--page); color: var(--text);
  font: 1rem/1.5 system-ui, "Segoe UI", "DejaVu Sans", sans-serif;
  font-variant-numeric: tabular-nums; overflow-wrap: anywhere;
}
h1 { margin: 0; font-size: 2.25rem; line-height: 1.2; letter-spacing: -0.01em; }
h2 { margin: 0 0 1rem; font-size: 1.125rem; }
p { margin: 0; }
small, .note, .kind, footer { color: var(--muted); font-size: 0.875rem; }
a { color: var(--accent); text-underline-offset: 0.2em; }
.kind { letter-spacing: 0.04em; }
.state { margin: 0.75rem 0 0.5rem; }
.state .pill { margin-right: 0.375rem; }
section, .tiles > div {
  background: var(--card); border: 1px solid var(--line); border-radius: 0.75rem;
}
section { padding: 1.5rem; margin-top: 1.5rem; }
.warning {
  padding: 0.5rem 0.75rem; margin-bottom: 1rem; border-left: 0.25rem solid var(--bad);
  border-radius: 0.25rem; background: var(--warn); color: var(--text);
}
.pill {
  display: inline-block; padding: 0 0.625rem; border: 1px solid; border-radius: 1rem;
  font-size: 0.8125rem; line-height: 1.5rem; white-space: nowrap;
}
.good { color: var(--good); }
.calm { color: var(--muted); }
.bad { color: var(--card); background: var(--bad); border-color: var(--bad); font-weight: 600; }
dl { margin: 0; }
dd { margin: 0; }
.tiles {
  display: grid; grid-template-columns: repeat(auto-fit, minmax(13rem, 1fr)); gap: 1rem;
  margin-top: 1.75rem;
}
.tiles > div { padding: 1rem 1.5rem 1.125rem; }
.tiles dt { color: var(--muted); font-size: 0.875rem; }
.tiles dd { font-size: 1.75rem; line-height: 1.3; font-weight: 600; }
.tiles small { font-weight: 400; white-space: nowrap; }
.pair { display: grid; grid-template-columns: repeat(auto-fit, minmax(20rem, 1fr)); gap: 0 1.5rem; align-items: start; }
.facts > div {
  display: flex; justify-content: space-between; gap: 1.5rem;
  padding: 0.375rem 0; border-top: 1px solid var(--line);
}
.facts > div:first-child { border-top: 0; }
.facts dt { color: var(--muted); }
.facts dd { font-weight: 600; }
table { width: 100%; border-collapse: collapse; }
th {
  padding: 0 0.75rem 0.5rem; text-align: left; vertical-align: bottom;
  color: var(--muted); font-size: 0.8125rem; font-weight: 500;
}
td { padding: 0.625rem 0.75rem; border-top: 1px solid var(--line); vertical-align: baseline; }
th:first-child, td:first-child { padding-left: 0; }
th:last-child, td:last-child { padding-right: 0; }
.number { text-align: right; white-space: nowrap; }
td b { font-weight: 600; }
.none { color: var(--muted); font-weight: 400; }
td small { display: block; }
time { white-space: nowrap; }
.marked td:first-child { padding-left: 0.75rem; box-shadow: inset 0.25rem 0 var(--bad); }
.plot { display: block; overflow: visible; }
.plot text { fill: var(--muted); font-size: 0.75rem; text-anchor: middle; }
.plot .value { fill: var(--text); }
.plot .peak { font-weight: 700; }
.bar { fill: var(--accent); }
.present { fill: none; stroke: var(--accent); stroke-width: 1.5; stroke-dasharray: 3 2; }
.base { stroke: var(--muted); }
.plot + .note { margin-top: 0.75rem; }
details { margin-top: 0.5rem; font-size: 0.875rem; }
summary { cursor: pointer; color: var(--accent); }
details table { max-width: 30rem; margin-top: 0.75rem; }
details td { padding-top: 0.25rem; padding-bottom: 0.25rem; }
footer { margin-top: 2rem; }
footer span { padding: 0 0.375rem; }
@media (max-width: 50rem) {
  body { padding: 1.5rem 1rem 2rem; }
  h1 { font-size: 1.75rem; }
  section { padding: 1.125rem 1rem; margin-top: 1rem; }
  .tiles { grid-template-columns: 1fr 1fr; gap: 0.75rem; margin-top: 1.25rem; }
  .tiles > div { padding: 0.75rem 1rem; }
  .tiles dd { font-size: 1.375rem; }
  .tiles small { display: block; }
  .pair { grid-template-columns: 1fr; }
  .value:not(.peak), .between { display: none; }
  main > section thead { display: none; }
  main > section > table, main > section > table > tbody { display: block; }
  main > section > table tr { display: block; padding: 0.75rem 0; border-top: 1px solid var(--line); }
  main > section > table tr:first-child { border-top: 0; padding-top: 0; }
  main > section > table tr:last-child { padding-bottom: 0; }
  main > section > table td {
    display: flex; justify-content: space-between; align-items: baseline; gap: 1rem;
    padding: 0.125rem 0; border: 0; text-align: right;
  }
  main > section > table td::before {
    content: attr(data-title); color: var(--muted); text-align: left; font-size: 0.875rem;
  }
  main > section > table td:first-child { font-size: 1.0625rem; text-align: left; }
  main > section > table td:first-child::before { display: none; }
  main > section > table td:first-child small { display: inline; margin-left: 0.375rem; }
  main > section > table tr.marked { padding-left: 0.75rem; box-shadow: inset 0.25rem 0 var(--bad); }
  .marked td:first-child { padding-left: 0; box-shadow: none; }
}
)css";

} // namespace tovrik
