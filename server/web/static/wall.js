// The wall mode for a reception screen: large type, read-only, opened with a display token;
// the people are shown a screenful at a time, turning to the next page every 10 seconds, and
// read anew every 15 seconds.
import { api } from './api.js';
import { el, show, safeColour } from './dom.js';

const REFRESH_MS = 15000;
const PAGE_MS = 10000;
const state = { token: '', people: [], page: 0, timers: [] };

export function startWall(token) {
  state.token = token;
  document.body.classList.add('wall-mode');
  show('wall', true);
  refresh();
  state.timers.push(setInterval(refresh, REFRESH_MS));
  state.timers.push(setInterval(nextPage, PAGE_MS));
  window.addEventListener('resize', render);
}

async function refresh() {
  const { status, data } = await api('/api/wall', { token: state.token });
  if (status === 401) return refuse(data.error ?? 'This display is not allowed.');
  if (status !== 200) return;
  document.title = `Tavlo - ${data.organization}`;
  document.getElementById('wall-title').textContent = data.organization;
  state.people = data.people;
  render();
}

function refuse(reason) {
  state.timers.forEach(clearInterval);
  window.removeEventListener('resize', render);
  state.people = [];
  document.getElementById('wall-title').textContent = reason;
  document.getElementById('wall-page').replaceChildren();
  document.getElementById('wall-footer').textContent = '';
  document.body.classList.add('refused');
}

function tile(person) {
  const status = el('span', { class: 'status', text: person.status });
  const card = el('div', { class: 'tile' }, [
    el('span', { class: 'name', text: person.name }),
    status,
    el('span', {
      class: 'returning',
      text: [person.returningDate, person.returningTime].filter(Boolean).join(' '),
    }),
  ]);
  card.style.borderLeftColor = safeColour(person.colour);
  status.style.backgroundColor = safeColour(person.colour);
  return card;
}

// How many tiles fit above the footer: all are laid out once and those that end on the
// screen counted (the tiles are of one size, filled row by row).
function perPage() {
  const page = document.getElementById('wall-page');
  page.replaceChildren(...state.people.map(tile));
  const footer = document.getElementById('wall-footer');
  const below = (node, ...sides) =>
    sides.reduce((sum, side) => sum + parseFloat(getComputedStyle(node)[side]), 0);
  const limit = window.innerHeight - footer.getBoundingClientRect().height -
    below(footer, 'marginTop', 'marginBottom') - below(document.querySelector('main'), 'paddingBottom');
  const fits = [...page.children].filter((t) => t.getBoundingClientRect().bottom <= limit);
  return Math.max(1, fits.length);
}

function render() {
  const size = perPage();
  const pages = Math.max(1, Math.ceil(state.people.length / size));
  state.page %= pages;
  const shown = state.people.slice(state.page * size, (state.page + 1) * size);
  document.getElementById('wall-page').replaceChildren(...shown.map(tile));
  document.getElementById('wall-footer').textContent =
    `Page ${state.page + 1} of ${pages} \u00b7 updated ${new Date().toLocaleTimeString()}`;
}

function nextPage() {
  state.page += 1;
  render();
}
