#pragma once

namespace qxevolve {

/// How the report looks: one column on small screens, two on large ones; dark where the reader's system is.
inline constexpr const char* PageStyle = R"css(
:root { color-scheme: light dark; --text: #1f2328; --paper: #ffffff; --faint: #6b7280; --line: #d5d9de; }
@media (prefers-color-scheme: dark) {
  :root { --text: #e3e6ea; --paper: #16191d; --faint: #9aa3ad; --line: #363c44; }
}
body { margin: 0; background: var(--paper); color: var(--text); font: 16px/1.5 system-ui, sans-serif; }
main { max-width: 76rem; margin: 0 auto; padding: 1.5rem; display: grid; gap: 1.5rem;
  grid-template-columns: repeat(auto-fit, minmax(min(32rem, 100%), 1fr)); }
h1, main > p, section, .wide { grid-column: 1 / -1; margin: 0; min-width: 0; }
h1 { font-size: 1.7rem; }
h2 { font-size: 1.1rem; margin: 0 0 0.5rem; }
.formula code { font-size: 1.2rem; overflow-wrap: anywhere; }
figure { margin: 0; min-width: 0; border: 1px solid var(--line); border-radius: 6px; padding: 1rem; }
figure svg { display: block; width: 100%; height: auto; color: var(--text); }
figure svg text { fill: currentColor; }
#tree svg { max-height: 26rem; width: auto; max-width: 100%; margin: 0 auto; }
figcaption, .missing { color: var(--faint); font-size: 0.9rem; margin-top: 0.5rem; }
section { overflow-x: auto; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { text-align: right; padding: 0.25rem 0.9rem 0.25rem 0; border-bottom: 1px solid var(--line);
  vertical-align: top; white-space: nowrap; }
th { color: var(--faint); font-weight: normal; }
.chosen td { font-weight: bold; }
.text { text-align: left; white-space: normal; overflow-wrap: anywhere; }
code, pre { font-family: ui-monospace, monospace; font-size: 0.9rem; }
pre { overflow-x: auto; }
@media print {
  :root { --text: #000000; --paper: #ffffff; --faint: #444444; --line: #bbbbbb; }
  figure, tr { break-inside: avoid; }
  pre { white-space: pre-wrap; }
  body { font-size: 12px; }
  main { padding: 0; gap: 0.8rem; grid-template-columns: 1fr 1fr; }
  figure { padding: 0.5rem; }
  #tree svg { max-height: 14rem; }
}
)css";

} // namespace qxevolve
