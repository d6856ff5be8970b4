#include "ctl/report/PageParts.h"

namespace installer::ctl::report {

constexpr std::string_view kPageStyle = R"css(
:root {
  --back: #fff; --raised: #f4f6f8; --text: #1b1f24; --faint: #57606a; --line: #d0d7de;
  --failed: #b3261e; --attention: #8a5300; --work: #0550ae; --good: #1a7f37; --none: #57606a;
  --wait: #9a6dd7; --check: #8c959f; --files: #2f81f7; --launcher: #1a7f37; --recover: #cf5b00;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --back: #0f1419; --raised: #1a2129; --text: #e6e9ee; --faint: #9aa4b0; --line: #3a434d;
    --failed: #ff8a80; --attention: #e3b341; --work: #79b8ff; --good: #57c773; --none: #9aa4b0;
    --wait: #b491e8; --check: #6e7a86; --files: #58a6ff; --launcher: #3fb950; --recover: #f0883e;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 1.5rem; max-width: 90rem; overflow-wrap: break-word;
  background: var(--back); color: var(--text); font: 15px/1.45 system-ui, sans-serif;
}
h1 { margin: 0; font-size: 1.6rem; }
h2 { margin: 2rem 0 .5rem; font-size: 1.15rem; }
p { margin: .25rem 0; }
a { color: var(--work); }
code { font: .9em ui-monospace, monospace; }
.faint { color: var(--faint); }
.sums { display: flex; flex-wrap: wrap; gap: .75rem; margin: 1.25rem 0 0; padding: 0; }
.sums li {
  flex: 1 1 7rem; padding: .6rem .9rem; list-style: none; background: var(--raised);
  border-left: 4px solid var(--tone); border-radius: 4px;
}
.sums b { display: block; font-size: 1.5rem; line-height: 1.2; }
.failed { --tone: var(--failed); }
.attention { --tone: var(--attention); }
.work { --tone: var(--work); }
.none { --tone: var(--none); }
.good { --tone: var(--good); }
table { width: 100%; border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { padding: .4rem .75rem .4rem 0; text-align: left; vertical-align: top; }
thead th { border-bottom: 2px solid var(--line); }
tbody tr { border-bottom: 1px solid var(--line); }
tbody th { font-weight: 600; }
th p { font-weight: 400; }
.number { text-align: right; }
.bar, .timeline { display: block; width: 100%; background: var(--raised); }
.bar { height: .6rem; margin-top: .4rem; fill: var(--files); }
#versions { max-width: 40rem; }
.wide { table-layout: fixed; overflow-wrap: anywhere; }
#failures th:nth-child(1), #findings th:nth-child(1) { width: 22%; }
#failures th:nth-child(2), #findings th:nth-child(2) { width: 6rem; }
.wide tbody .number { padding-right: 1.5rem; }
/* Rows are laid out when they come into view: there can be very many of them. */
#machines { display: block; --columns: 22% 9rem 12rem 6.5rem minmax(0, 1fr); }
#machines thead { display: block; position: sticky; top: 0; z-index: 1; background: var(--back); }
#machines tbody { display: block; content-visibility: auto; contain-intrinsic-size: auto 3500px; }
#machines tbody[hidden] { display: none; }
#machines tr { display: grid; grid-template-columns: var(--columns); }
#machines .number { padding-right: 1.5rem; }
#machines tr:target { background: var(--raised); }
thead button {
  padding: 0; border: 0; background: none; color: inherit; font: inherit; text-align: inherit;
  cursor: pointer;
}
thead button::after { content: " \2195"; color: var(--faint); }
[aria-sort=ascending] button::after { content: " \2191"; color: inherit; }
[aria-sort=descending] button::after { content: " \2193"; color: inherit; }
summary { cursor: pointer; }
#machines summary { color: var(--tone); font-weight: 600; }
details > * + * { margin-top: .35rem; }
:focus-visible { outline: 2px solid var(--work); outline-offset: 2px; }
form { display: flex; flex-wrap: wrap; gap: .5rem 1.25rem; align-items: end; margin: .75rem 0; }
form[hidden] { display: none; }
label { display: block; }
label span { display: block; color: var(--faint); font-size: .9em; }
input, select {
  width: 16rem; max-width: 100%; padding: .35rem .5rem; border: 1px solid var(--faint);
  border-radius: 4px; background: var(--back); color: inherit; font: inherit;
}
ol, ul { margin: .25rem 0; padding: 0; list-style: none; }
.timeline { height: .75rem; max-width: 40rem; }
.lines { white-space: pre-line; }
.wait { fill: var(--wait); }
.check { fill: var(--check); }
.files { fill: var(--files); }
.launcher { fill: var(--launcher); }
.recover { fill: var(--recover); }
.error { color: var(--failed); }
.key svg { width: .8em; height: .8em; margin-right: .4em; }
.key dt { font-weight: 600; }
.key dd { margin: 0 0 .35rem; }
@media (max-width: 1000px) {
  #machines { --columns: 27% 6rem 6.5rem 5.5rem minmax(0, 1fr); }
}
@media screen and (max-width: 600px) {
  body { padding: 1rem; }
  #machines thead { position: static; }
  .wide, .wide tbody:not([hidden]) { display: block; }
  .wide thead tr, #machines thead tr {
    display: flex; flex-wrap: wrap; gap: 0 1rem; border-bottom: 2px solid var(--line);
  }
  #failures th:nth-child(n), #findings th:nth-child(n) { width: auto; }
  .wide thead th { border: 0; }
  .wide tbody tr, #machines tbody tr {
    display: grid; grid-template-columns: minmax(0, 1fr) auto; gap: 0 1rem; padding: .4rem 0;
  }
  .wide tbody th, .wide tbody td, #machines tbody .number { padding: 0; }
  .wide tbody td:last-child, #failures tbody td:nth-child(3) { grid-column: 1 / -1; }
  #machines tbody td:nth-child(3), #machines tbody td:nth-child(4) { color: var(--faint); }
}
@media print {
  body { max-width: none; padding: 0; font-size: 9pt; }
  form { display: none; }
  #machines thead { position: static; }
  #machines tbody { content-visibility: visible; }
  tr, li { break-inside: avoid; }
  thead button::after { content: none; }
  .bar, .timeline, .key svg, .sums li { print-color-adjust: exact; }
}
)css";

constexpr std::string_view kPageStyleHash = "sha256-78xGWqS4rFQU7IaQsCxuuE5tysOJNYKUa1n5wwiCpqc=";

}  // namespace installer::ctl::report
