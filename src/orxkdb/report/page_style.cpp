#include "orxkdb/report/page_style.h"

namespace orx::orxkdb {

const std::string_view pageStyle = R"CSS(
:root {
  color-scheme: light dark;
  --page: #ffffff; --ink: #1d2329; --soft: #5b6670; --rule: #d5dbe0; --panel: #f4f6f8;
  --bar: #2f6fb3; --used: #aab4bd; --good: #1e7b3c; --bad: #b3261e;
  --c0: #2f6fb3; --c1: #c4561a; --c2: #2d8a57; --c3: #8a4fb0;
  --c4: #a8791a; --c5: #c2407c; --c6: #1c8a94; --c7: #6b7280;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #14181c; --ink: #e4e8ec; --soft: #9aa6b1; --rule: #343c44; --panel: #1d2329;
    --bar: #6aa9ea; --used: #56616b; --good: #6fcf8e; --bad: #ff8a80;
    --c0: #6aa9ea; --c1: #f09a63; --c2: #67c793; --c3: #c294e6;
    --c4: #dcb65c; --c5: #f08ab8; --c6: #5fc9d3; --c7: #a3acb8;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; max-width: 64rem; padding: 1.5rem 1rem 4rem;
  background: var(--page); color: var(--ink);
  font: 15px/1.5 system-ui, "Noto Sans", "DejaVu Sans", sans-serif;
}
h1 { font-size: 1.6rem; line-height: 1.25; margin: 0 0 .25rem; overflow-wrap: anywhere; }
h2 { font-size: 1.25rem; margin: 2.5rem 0 .75rem; padding-top: .5rem;
  border-top: 1px solid var(--rule); }
h3 { font-size: 1rem; margin: 1.5rem 0 .25rem; }
p { margin: .4rem 0; overflow-wrap: anywhere; }
a { color: var(--bar); }
nav a { margin-right: 1rem; }
code { font-family: ui-monospace, "DejaVu Sans Mono", monospace; font-size: .9em; }
.soft, figcaption, caption { color: var(--soft); }
.good { color: var(--good); font-weight: 600; }
.bad { color: var(--bad); font-weight: 600; }
.facts { display: grid; grid-template-columns: repeat(auto-fill, minmax(10.5rem, 1fr)); gap: .75rem;
  margin: 1rem 0; padding: 0; list-style: none; }
.facts li { background: var(--panel); border: 1px solid var(--rule); border-radius: 6px;
  padding: .5rem .75rem; color: var(--soft); font-size: .85rem; }
.facts b { display: block; color: var(--ink); font-size: 1.25rem; font-weight: 400;
  font-variant-numeric: tabular-nums; }
figure { margin: 1.25rem 0; }
figcaption, caption { text-align: left; font-size: .9rem; padding-bottom: .35rem; }
svg { display: block; width: 100%; height: auto; background: var(--panel);
  border: 1px solid var(--rule); border-radius: 6px; }
svg text { font: 12px ui-monospace, "DejaVu Sans Mono", monospace; fill: var(--ink); }
svg .end { text-anchor: end; }
svg .gone { fill: var(--bad); }
svg .number { fill: var(--soft); }
.bar { fill: var(--bar); }
.node { fill: var(--soft); }
.track { fill: var(--page); stroke: var(--rule); }
.used { fill: var(--used); background: var(--used); }
.from { fill: var(--c0); background: var(--c0); }
.to { fill: var(--c1); background: var(--c1); }
.key { color: var(--page); padding: 0 .35em; border-radius: 3px; }
.key.used { color: var(--ink); }
.fill { fill: var(--c); }
.line { stroke: var(--c); fill: none; stroke-width: 1.5; }
.ribbon { fill: var(--c); fill-opacity: .35; }
.line:hover { stroke-width: 4; }
.ribbon:hover { fill-opacity: .7; }
.c0 { --c: var(--c0); } .c1 { --c: var(--c1); } .c2 { --c: var(--c2); } .c3 { --c: var(--c3); }
.c4 { --c: var(--c4); } .c5 { --c: var(--c5); } .c6 { --c: var(--c6); } .c7 { --c: var(--c7); }
.wide { overflow-x: auto; margin: 1rem 0; }
table { border-collapse: collapse; width: 100%; font-size: .9rem; }
th, td { text-align: left; padding: .2rem .75rem .2rem 0; border-bottom: 1px solid var(--rule);
  vertical-align: top; overflow-wrap: anywhere; }
th.n, td.n { text-align: right; font-variant-numeric: tabular-nums; overflow-wrap: normal; }
.n + td:not(.n), .n + th:not(.n) { padding-left: .75rem; }
ul { margin: .25rem 0; padding-left: 1.25rem; }
li { overflow-wrap: anywhere; }
#search { margin: 1rem 0; }
#search input { font: inherit; width: min(100%, 28rem); padding: .4rem .6rem; color: var(--ink);
  background: var(--page); border: 1px solid var(--soft); border-radius: 6px; }
.paper { display: none; }
@media print {
  :root {
    color-scheme: light;
    --page: #ffffff; --ink: #000000; --soft: #444444; --rule: #bbbbbb; --panel: #ffffff;
    --bar: #2f6fb3; --used: #aab4bd; --good: #1e7b3c; --bad: #b3261e;
    --c0: #2f6fb3; --c1: #c4561a; --c2: #2d8a57; --c3: #8a4fb0;
    --c4: #a8791a; --c5: #c2407c; --c6: #1c8a94; --c7: #6b7280;
  }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  body { max-width: none; padding: 0; font-size: 10pt; }
  nav, #search, #rows tr:nth-child(n+201) { display: none; }
  .paper { display: block; }
  figure, .facts li, tr { break-inside: avoid; }
  h2, h3, caption, figcaption { break-after: avoid; }
  .wide { overflow: visible; }
}
)CSS";

const std::string_view pageScript = R"JS(
(function () {
  const box = document.getElementById('search');
  if (!box) return;
  const rows = Array.from(document.getElementById('rows').rows);
  const texts = rows.map(function (row) {
    return Array.from(row.cells, function (cell) {
      return cell.textContent;
    }).join(' ').toLowerCase();
  });
  const input = box.querySelector('input');
  const found = box.querySelector('output');
  function filter() {
    const words = input.value.toLowerCase().split(/\s+/).filter(Boolean);
    let count = 0;
    rows.forEach(function (row, number) {
      row.hidden = !words.every(function (word) { return texts[number].includes(word); });
      if (!row.hidden) count += 1;
    });
    found.textContent = words.length ? count + ' found' : 'all are shown';
  }
  let waiting = 0;
  input.addEventListener('input', function () {
    clearTimeout(waiting);
    waiting = setTimeout(filter, 100);
  });
  box.hidden = false;
  filter();
})();
)JS";

}  // namespace orx::orxkdb
