// The colours, the contents on a small screen, and the place of this page in them.
'use strict';

const modes = {auto: '(prefers-color-scheme: dark)', light: 'not all', dark: 'all'};
const signs = {auto: '\u25D0', light: '\u2600', dark: '\u263E'};

// A browser may keep nothing for pages that it reads from files.
function storedMode() {
  try {
    return localStorage.getItem('vptz-colours') in modes ? localStorage.getItem('vptz-colours') : 'auto';
  } catch (error) {
    return 'auto';
  }
}

function showColours(mode) {
  document.getElementById('dark').media = modes[mode];
}

function chooseColours(mode) {
  showColours(mode);
  try {
    localStorage.setItem('vptz-colours', mode);
  } catch (error) {
    // It holds for this page only.
  }
}

function prepareSwitch() {
  const button = document.getElementById('theme');
  let mode = storedMode();
  const label = () => {
    button.textContent = signs[mode];
    button.setAttribute('aria-label', 'Colours: ' + mode);
  };
  button.addEventListener('click', () => {
    const names = Object.keys(modes);
    mode = names[(names.indexOf(mode) + 1) % names.length];
    chooseColours(mode);
    label();
  });
  label();
}

function prepareMenu() {
  const button = document.getElementById('menu');
  button.addEventListener('click', () => {
    const open = document.body.classList.toggle('menu-open');
    button.setAttribute('aria-expanded', String(open));
  });
}

// Some chapters are folded unless the reader is there.
function markPlace() {
  const here = location.pathname.split('/').pop() || 'index.html';
  for (const link of document.querySelectorAll('#chapters a')) {
    if (link.getAttribute('href').split('/').pop() !== here) continue;
    link.setAttribute('aria-current', 'page');
    const chapter = link.closest('details');
    if (chapter) chapter.open = true;
    const contents = document.getElementById('chapters');
    contents.scrollTop = link.offsetTop - contents.clientHeight / 2;
  }
}

showColours(storedMode());
document.addEventListener('DOMContentLoaded', () => {
  prepareSwitch();
  prepareMenu();
  markPlace();
});
