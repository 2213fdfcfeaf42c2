// The organisation's groups with their members, and its locations.
import { el } from './dom.js';
import { adminGet, adminPost, fullName, say } from './admin-common.js';

const started = { groups: false, locations: false };

export async function showGroups() {
  if (!started.groups) {
    started.groups = true;
    document.getElementById('group-form').addEventListener('submit', addGroup);
  }
  const [groups, people] = await Promise.all([adminGet('groups'), adminGet('people')]);
  if (groups && people) renderGroups(groups, people);
}

async function addGroup(event) {
  event.preventDefault();
  const name = event.target.name.value.trim();
  if (!(await adminPost('group/add', { name }))) return;
  event.target.reset();
  await showGroups();
  say(`The group ${name} was added.`);
}

function renderGroups(groups, people) {
  const byContact = new Map(people.map((p) => [p.contact, p]));
  const cards = groups.map((group) => {
    const members = group.members.filter((c) => byContact.has(c)).map((c) => byContact.get(c))
      .sort((a, b) => fullName(a).localeCompare(fullName(b)));
    const list = el('ul', { class: 'members' }, members.map((person) => {
      const out = el('button', { text: 'Take out', attrs: { type: 'button' } });
      out.addEventListener('click', () => setMember(group, person, false));
      return el('li', {}, [el('span', { text: fullName(person) }), out]);
    }));
    const others = people.filter((p) => !group.members.includes(p.contact));
    const choose = el('select', { attrs: { 'aria-label': `Add to ${group.name}` } });
    choose.replaceChildren(el('option', { text: 'Add a person\u2026', attrs: { value: '' } }),
      ...others.map((p) => el('option', { text: fullName(p), attrs: { value: String(p.contact) } })));
    choose.addEventListener('change', () => {
      const person = byContact.get(Number(choose.value));
      if (person) setMember(group, person, true);
    });
    return el('article', { class: 'group', attrs: { 'data-group': String(group.group) } }, [
      el('h2', { text: `${group.name} (${members.length})` }), list, choose,
    ]);
  });
  if (cards.length === 0) cards.push(el('p', { class: 'quiet', text: 'No groups yet.' }));
  document.getElementById('group-list').replaceChildren(...cards);
}

async function setMember(group, person, inGroup) {
  if (!(await adminPost('group/member', { group: group.group, contact: person.contact, in: inGroup })))
    return;
  await showGroups();
  say(`${person.first} ${person.last} is ${inGroup ? 'in' : 'out of'} ${group.name}.`);
}

export async function showLocations() {
  if (!started.locations) {
    started.locations = true;
    document.getElementById('location-form').addEventListener('submit', addLocation);
  }
  const locations = await adminGet('locations');
  if (!locations) return;
  const items = locations.map((l) => el('li', { text: l.name }));
  if (items.length === 0) items.push(el('li', { class: 'quiet', text: 'No locations yet.' }));
  document.getElementById('location-list').replaceChildren(...items);
}

async function addLocation(event) {
  event.preventDefault();
  const name = event.target.name.value.trim();
  if (!(await adminPost('location/add', { name }))) return;
  event.target.reset();
  await showLocations();
  say(`The location ${name} was added.`);
}

