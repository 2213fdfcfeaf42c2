// The organisation's people: the list with its search, adding a person, and opening one.
import { el, show } from './dom.js';
import { adminGet, adminPost, fillChoices, fillRows, fullName, say } from './admin-common.js';
import { setUpPerson, showPerson } from './admin-person.js';

const state = { people: [], search: '', started: false };

export async function showPeople() {
  if (!state.started) setUp();
  show('person-view', false);
  show('people-view', true);
  const people = await adminGet('people');
  if (!people) return;
  state.people = people;
  renderPeople();
}

// The person's page shows once their details are in, so nothing typed is overwritten by a late load.
export async function openPerson(contact) {
  if (!(await showPerson(contact))) return;
  show('people-view', false);
  show('person-view', true);
}

function setUp() {
  state.started = true;
  setUpPerson(showPeople);
  document.getElementById('person-back').addEventListener('click', showPeople);
  document.getElementById('people-search').addEventListener('input', (event) => {
    state.search = event.target.value.trim().toLowerCase();
    renderPeople();
  });
  document.getElementById('add-person-open').addEventListener('click', openAddForm);
  document.getElementById('add-person-form').addEventListener('submit', addPerson);
}

function matches(person) {
  if (!state.search) return true;
  return [fullName(person), `${person.first} ${person.last}`, person.userName, person.ext, person.email]
    .some((text) => (text ?? '').toLowerCase().includes(state.search));
}

function account(person) {
  const words = [];
  if (person.disabled) words.push('disabled');
  if (person.administrator) words.push('administrator');
  if (person.othersStatus) words.push("changes others' status");
  return words.join(', ');
}

function personRow(person) {
  const row = el('tr', { class: 'changeable', attrs: { 'data-contact': String(person.contact) } }, [
    el('td', { class: 'name', text: fullName(person) }),
    el('td', { text: person.userName ?? '' }),
    el('td', { class: 'ext', text: person.ext ?? '' }),
    el('td', { class: 'wide', text: person.location ?? '' }),
    el('td', { text: person.status ?? '' }),
    el('td', { text: account(person) }),
  ]);
  if (person.disabled) row.classList.add('disabled');
  row.tabIndex = 0;
  row.addEventListener('click', () => openPerson(person.contact));
  row.addEventListener('keydown', (event) => {
    if (event.key === 'Enter') openPerson(person.contact);
  });
  return row;
}

function renderPeople() {
  fillRows('people-list', state.people.filter(matches).map(personRow), 'Nobody matches.');
}

async function openAddForm() {
  const form = document.getElementById('add-person-form');
  show('added-person', false);
  form.hidden = !form.hidden;
  if (form.hidden) return;
  const [groups, locations] = await Promise.all([adminGet('groups'), adminGet('locations')]);
  fillChoices(form.group, (groups ?? []).map((g) => g.name));
  fillChoices(form.location, (locations ?? []).map((l) => l.name));
  form.first.focus();
}

async function addPerson(event) {
  event.preventDefault();
  const form = event.target;
  const added = await adminPost('person/add', {
    first: form.first.value,
    last: form.last.value,
    user: form.user.value,
    email: form.email.value,
    ext: form.ext.value,
    group: form.group.value,
    location: form.location.value,
    admin: form.admin.checked,
  });
  if (!added) return;
  const user = form.user.value.trim();
  const email = form.email.value.trim();
  form.reset();
  form.hidden = true;
  const note = document.getElementById('added-person');
  if (added.mailed) {
    note.textContent = `${user} was added; a link to set a password was mailed to ${email}.`;
  } else {
    note.replaceChildren(`${user} was added. First password (shown once): `,
      el('code', { text: added.password }));
  }
  note.hidden = false;
  say('');
  await showPeople();
  show('added-person', true);
}
