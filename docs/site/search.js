// Searches the names of the site: pages, their headings, headers, classes, operations.
// Its index is a script of its own, because a browser reads no other kind of file for a
// page that lies on the disk.
'use strict';

const query = document.getElementById('query');
const results = document.getElementById('results');
const most = 40;
let isLoading = false;

function load() {
  if (isLoading) return;
  isLoading = true;
  const script = document.createElement('script');
  script.src = 'search-index.js';
  script.addEventListener('load', show);
  document.head.append(script);
}

// The smaller the better; negative when a word is missing.
function rank(entry, words) {
  const name = entry[0].toLowerCase();
  const all = name + ' ' + entry[1].toLowerCase();
  if (!words.every((word) => all.includes(word))) return -1;
  if (name === words.join(' ')) return 0;
  if (name.startsWith(words[0])) return 1;
  return name.includes(words[0]) ? 2 : 3;
}

function found(text) {
  const words = text.toLowerCase().split(/[\s:]+/).filter(Boolean);
  if (words.length === 0) return [];
  return searchIndex.map((entry) => [rank(entry, words), entry])
      .filter(([rank]) => rank >= 0)
      .sort(([one, first], [other, second]) => one - other || first[0].length - second[0].length)
      .slice(0, most)
      .map(([, entry]) => entry);
}

function row([name, scope, address]) {
  const item = document.createElement('li');
  const link = document.createElement('a');
  const where = document.createElement('small');
  link.href = address;
  link.textContent = name;
  where.textContent = scope;
  link.append(where);
  item.append(link);
  return item;
}

function nothing() {
  const item = document.createElement('li');
  item.className = 'nothing';
  item.textContent = 'Nothing has that name.';
  return item;
}

function hide() {
  results.hidden = true;
}

function show() {
  if (typeof searchIndex === 'undefined') return;
  const rows = found(query.value).map(row);
  results.replaceChildren(...(rows.length ? rows : [nothing()]));
  results.hidden = query.value.trim() === '';
}

function move(step) {
  const links = [...results.querySelectorAll('a')];
  const next = links.indexOf(document.activeElement) + step;
  if (next < 0) query.focus();
  else if (next < links.length) links[next].focus();
}

function onKey(event) {
  const isInside = document.getElementById('search').contains(document.activeElement);
  if (event.key === '/' && !isInside) query.focus();
  else if (isInside && event.key === 'ArrowDown') move(1);
  else if (isInside && event.key === 'ArrowUp') move(-1);
  else if (isInside && event.key === 'Escape') hide();
  else if (event.key === 'Enter' && document.activeElement === query) results.querySelector('a')?.click();
  else return;
  event.preventDefault();
}

query.addEventListener('focus', load);
query.addEventListener('input', () => {
  load();
  show();
});
document.addEventListener('keydown', onKey);
document.addEventListener('click', (event) => {
  if (!document.getElementById('search').contains(event.target) || event.target.closest('#results a')) hide();
});
