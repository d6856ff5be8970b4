#include "ctl/report/PageParts.h"

namespace installer::ctl::report {

// The page can be read without it. It adds what sorts and filters the table of the machines.
constexpr std::string_view kPageScript = R"js(
'use strict';
(() => {
  const together = 100;  // rows in a body
  const table = document.getElementById('machines');
  const bodies = [...table.tBodies];
  const heads = [...table.tHead.rows[0].cells];
  const form = document.getElementById('filter');
  const {text, result} = form.elements;
  const count = form.querySelector('output');

  // Each machine's row with the words in it, without those that are closed at first.
  const wordsIn = (cell) => (cell.querySelector('summary') || cell).textContent;
  const machines = bodies.flatMap((body) => [...body.rows])
      .map((row) => ({row, words: Array.from(row.cells, wordsIn)}));

  // What is shown: the machines that are wanted, in their order.
  const show = () => {
    const wanted = text.value.trim().toLowerCase();
    const shown = machines.filter(({words: [name, version, , , end]}) =>
        (!result.value || end === result.value) &&
        `${name} ${version} ${end}`.toLowerCase().includes(wanted));
    bodies.forEach((body, index) => {
      const own = shown.slice(index * together, (index + 1) * together);
      body.replaceChildren(...own.map((machine) => machine.row));
      body.hidden = own.length === 0;
    });
    count.value = `${shown.length} of ${machines.length} machines`;
  };

  // Names with numbers in them come in the numbers' order, durations by their length.
  const byText = new Intl.Collator('en', {numeric: true}).compare;
  const byLength = (one, other) => (parseInt(one, 10) || 0) - (parseInt(other, 10) || 0);
  const sort = (column) => {
    const turn = heads[column].getAttribute('aria-sort') === 'ascending' ? -1 : 1;
    const compare = column === 3 ? byLength : byText;
    machines.sort((one, other) => turn * compare(one.words[column], other.words[column]));
    for (const head of heads) head.removeAttribute('aria-sort');
    heads[column].setAttribute('aria-sort', turn > 0 ? 'ascending' : 'descending');
    show();
  };

  // Links lead to machines that a filter may have taken away.
  const reveal = () => {
    const machine = machines.find(({row}) => row.id && `#${row.id}` === location.hash);
    if (!machine || machine.row.isConnected) return;
    form.reset();
    show();
    location.replace(location.hash);
  };

  heads.forEach((head, column) => {
    const button = document.createElement('button');
    button.type = 'button';
    button.append(...head.childNodes);
    button.addEventListener('click', () => sort(column));
    head.append(button);
  });
  for (const end of [...new Set(machines.map(({words}) => words[4]))].sort(byText))
    result.add(new Option(end, end));
  form.addEventListener('input', show);
  form.addEventListener('submit', (event) => event.preventDefault());
  addEventListener('hashchange', reveal);
  count.value = `${machines.length} of ${machines.length} machines`;
  form.hidden = false;
})();
)js";

constexpr std::string_view kPageScriptHash = "sha256-PM88s2u8OIl4nW21xQUv+roxHob4j+J3ZFeJfQ8g0EY=";

}  // namespace installer::ctl::report
