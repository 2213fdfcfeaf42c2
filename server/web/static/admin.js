// The administration's page: who is signed in, the sections' tabs, and the person the address
// names (?p=<contact>, as the client's menu links it) opened at once.
import { api } from './api.js';
import { el } from './dom.js';
import { openPerson, showPeople } from './admin-people.js';
import { showGroups, showLocations } from './admin-office.js';
import { showChat, showStatuses } from './admin-statuses.js';
import { showHistory, showOutbox, showRelease, showReports } from './admin-records.js';
import { say } from './admin-common.js';

const SECTIONS = [
  { key: 'people', name: 'People', show: showPeople },
  { key: 'groups', name: 'Groups', show: showGroups },
  { key: 'locations', name: 'Locations', show: showLocations },
  { key: 'statuses', name: 'Statuses', show: showStatuses },
  { key: 'chat', name: 'Chat', show: showChat },
  { key: 'release', name: 'Release', show: showRelease },
  { key: 'outbox', name: 'Outbox', show: showOutbox },
  { key: 'reports', name: 'Error reports', show: showReports },
  { key: 'history', name: 'History', show: showHistory },
];

function openSection(key) {
  say('');
  for (const section of SECTIONS) {
    document.getElementById(`${section.key}-section`).hidden = section.key !== key;
    document.querySelector(`#sections button[data-section="${section.key}"]`)
      .setAttribute('aria-selected', String(section.key === key));
  }
  return SECTIONS.find((s) => s.key === key).show();
}

async function start() {
  document.getElementById('sign-out').addEventListener('click', async () => {
    await api('/api/signout', { method: 'POST', body: {} });
    window.location.assign('/Administrator.asp');
  });
  document.getElementById('sections').replaceChildren(...SECTIONS.map((section) => {
    const button = el('button', {
      text: section.name,
      attrs: { type: 'button', role: 'tab', 'data-section': section.key },
    });
    button.addEventListener('click', () => openSection(section.key));
    return button;
  }));
  const { status, data } = await api('/api/me');
  if (status !== 200) return say(data.error ?? 'Who is signed in could not be read.', { error: true });
  document.title = `Tavlo Administration - ${data.organization}`;
  document.getElementById('organization').textContent = `${data.organization} administration`;
  document.getElementById('me').textContent = data.name;
  await openSection('people');
  const contact = Number(new URLSearchParams(window.location.search).get('p'));
  if (Number.isInteger(contact) && contact > 0) await openPerson(contact);
}

start();
