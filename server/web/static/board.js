// The signed-in board: sign-in, the group tabs, friends and search, the people's statuses
// refreshed every 15 seconds without reloading the page, and the status dialog.
import { api } from './api.js';
import { el, show, safeColour } from './dom.js';
import { openStatusDialog, setUpStatusDialog } from './status-dialog.js';
import { startWallTokens } from './wall-tokens.js';

const REFRESH_MS = 15000;
const state = { me: null, groups: [], people: [], tab: 'all', search: '', timer: 0 };

export async function startBoard() {
  document.getElementById('sign-in-form').addEventListener('submit', signIn);
  document.getElementById('sign-out').addEventListener('click', signOut);
  document.getElementById('my-status').addEventListener('click', () => changeStatusOf(ownRow()));
  document.getElementById('search').addEventListener('input', (event) => {
    state.search = event.target.value.trim().toLowerCase();
    renderPeople();
  });
  setUpStatusDialog(refresh);
  const { status, data } = await api('/api/me');
  if (status === 200) enterBoard(data);
  else showSignIn('');
}

function showSignIn(reason) {
  clearInterval(state.timer);
  show('top', false);
  show('board', false);
  show('tokens', false);
  show('sign-in', true);
  document.getElementById('sign-in-reason').textContent = reason;
  document.querySelector('#sign-in-form input[name=user]').focus();
}

async function signIn(event) {
  event.preventDefault();
  const form = event.target;
  const { status, data } = await api('/api/signin', {
    method: 'POST',
    body: { user: form.user.value, password: form.password.value },
  });
  form.password.value = '';
  if (status !== 200) return showSignIn(data.error ?? 'Sign-in failed.');
  const me = await api('/api/me');
  if (me.status === 200) enterBoard(me.data);
  else showSignIn(me.data.error ?? 'Sign-in failed.');
}

async function signOut() {
  await api('/api/signout', { method: 'POST', body: {} });
  state.me = null;
  showSignIn('You have signed out.');
}

function enterBoard(me) {
  state.me = me;
  document.title = `Tavlo - ${me.organization}`;
  document.getElementById('organization').textContent = me.organization;
  document.getElementById('me').textContent = me.name;
  show('sign-in', false);
  show('top', true);
  show('board', true);
  show('admin-link', me.administrator);
  if (me.administrator) startWallTokens();
  refresh();
  clearInterval(state.timer);
  state.timer = setInterval(refresh, REFRESH_MS);
}

async function refresh() {
  const { status, data } = await api('/api/board');
  if (status === 401) return showSignIn('Your session has ended; please sign in again.');
  if (status !== 200) {
    document.getElementById('refreshed').textContent = data.error ?? 'The board could not be read.';
    return;
  }
  state.groups = data.groups;
  state.people = data.people;
  renderTabs();
  renderPeople();
  document.getElementById('refreshed').textContent =
    `Updated ${new Date().toLocaleTimeString()}`;
}

function renderTabs() {
  const tabs = [{ key: 'all', name: 'All' }];
  for (const group of state.groups) tabs.push({ key: `group-${group.id}`, name: group.name });
  tabs.push({ key: 'friends', name: 'My Friends' });
  const nav = document.getElementById('tabs');
  nav.replaceChildren(
    ...tabs.map((tab) => {
      const button = el('button', {
        text: tab.name,
        attrs: { type: 'button', role: 'tab', 'aria-selected': String(tab.key === state.tab) },
      });
      button.addEventListener('click', () => {
        state.tab = tab.key;
        renderTabs();
        renderPeople();
      });
      return button;
    }),
  );
}

function inTab(person) {
  if (state.tab === 'all') return true;
  if (state.tab === 'friends') return person.friend;
  const group = state.groups.find((g) => `group-${g.id}` === state.tab);
  return group ? group.members.includes(person.contact) : true;
}

function matchesSearch(person) {
  if (!state.search) return true;
  return person.name.toLowerCase().includes(state.search) || person.ext.includes(state.search);
}

function renderPeople() {
  const rows = state.people.filter((p) => inTab(p) && matchesSearch(p)).map(personRow);
  document.querySelector('#people tbody').replaceChildren(...rows);
}

function mayChange(person) {
  return person.contact === state.me.contact || state.me.mayChangeOthers;
}

function personRow(person) {
  const status = el('td', { class: 'status', text: person.status });
  status.style.backgroundColor = safeColour(person.colour);
  const row = el('tr', { attrs: { 'data-contact': String(person.contact) } }, [
    el('td', { class: 'mark', text: person.friend ? '\u2605' : '' }),
    el('td', { class: 'name', text: person.name }),
    el('td', { class: 'ext', text: person.ext }),
    status,
    el('td', {
      class: 'returning',
      text: person.returningDate,
      attrs: { 'data-time': person.returningTime },
    }),
    el('td', { class: 'time', text: person.returningTime }),
    el('td', { class: 'comment', text: person.comment }),
  ]);
  if (person.contact === state.me.contact) row.classList.add('own');
  if (mayChange(person)) {
    row.classList.add('changeable');
    row.tabIndex = 0;
    row.addEventListener('click', () => changeStatusOf(person));
    row.addEventListener('keydown', (event) => {
      if (event.key === 'Enter') changeStatusOf(person);
    });
  }
  return row;
}

function ownRow() {
  return state.people.find((p) => p.contact === state.me.contact);
}

function changeStatusOf(person) {
  if (person) openStatusDialog(person, state.me.statuses);
}
