// One person: their details and location, their groups, their rights, a reset link, and
// disabling or removing their account.
import { el } from './dom.js';
import { adminGet, adminPost, fillChoices, say } from './admin-common.js';

let current = null;
let afterClosing = () => {};

export function setUpPerson(onAccountClosed) {
  afterClosing = onAccountClosed;
  document.getElementById('person-form').addEventListener('submit', saveDetails);
  document.getElementById('rights-form').addEventListener('submit', saveRights);
  document.getElementById('person-reset').addEventListener('click', sendResetLink);
  document.getElementById('person-disable').addEventListener('click', () => closeAccount('disable'));
  document.getElementById('person-remove').addEventListener('click', () => closeAccount('remove'));
}

export async function showPerson(contact) {
  const [person, groups, locations] = await Promise.all([
    adminGet('person', { contact }), adminGet('groups'), adminGet('locations'),
  ]);
  if (!person) return false;
  current = person;
  document.getElementById('person-name').textContent = `${person.first} ${person.last}`;
  const state = [`User ${person.userName ?? '(none)'}`, `status ${person.status ?? '?'}`];
  if (person.disabled) state.push('disabled: cannot sign in');
  document.getElementById('person-state').textContent = state.join(' \u00b7 ');

  const form = document.getElementById('person-form');
  form.first.value = person.first ?? '';
  form.last.value = person.last ?? '';
  form.email.value = person.email ?? '';
  form.ext.value = person.ext ?? '';
  fillChoices(form.location, (locations ?? []).map((l) => l.name));
  form.location.value = person.location ?? '';

  renderGroups(groups ?? []);
  const rights = document.getElementById('rights-form');
  rights.admin.checked = person.administrator;
  rights.othersStatus.checked = person.othersStatus;
  document.getElementById('person-disable').hidden = person.disabled;
  return true;
}

function renderGroups(groups) {
  const choices = groups.map((group) => {
    const box = el('input', { attrs: { type: 'checkbox', 'data-group': String(group.group) } });
    box.checked = current.groups.includes(group.group);
    box.addEventListener('change', () => setMember(group, box));
    return el('label', { class: 'check' }, [box, ` ${group.name}`]);
  });
  if (choices.length === 0) choices.push(el('p', { class: 'quiet', text: 'No groups yet.' }));
  document.querySelector('#person-groups .choices').replaceChildren(...choices);
}

async function setMember(group, box) {
  const done = await adminPost('group/member', {
    group: group.group, contact: current.contact, in: box.checked,
  });
  if (!done) box.checked = !box.checked;
  else say(`${current.first} ${current.last} is ${box.checked ? 'in' : 'out of'} ${group.name}.`);
}

async function saveDetails(event) {
  event.preventDefault();
  const form = event.target;
  const done = await adminPost('person/edit', {
    contact: current.contact,
    first: form.first.value,
    last: form.last.value,
    email: form.email.value,
    ext: form.ext.value,
    location: form.location.value,
  });
  if (!done) return;
  await showPerson(current.contact);
  say('Saved.');
}

async function saveRights(event) {
  event.preventDefault();
  const form = event.target;
  const done = await adminPost('person/rights', {
    contact: current.contact, admin: form.admin.checked, othersStatus: form.othersStatus.checked,
  });
  if (!done) return;
  await showPerson(current.contact);
  say('Rights saved.');
}

async function sendResetLink() {
  if (await adminPost('person/reset', { contact: current.contact }))
    say(`A link to set a new password was mailed to ${current.email}.`);
}

// Disabling keeps the person on the board; removing takes them off it. Both end their sessions.
async function closeAccount(how) {
  const name = `${current.first} ${current.last}`;
  const question = how === 'remove'
    ? `Remove ${name}? They can no longer sign in and leave the board.`
    : `Disable ${name}? They can no longer sign in but stay on the board.`;
  if (!window.confirm(question)) return;
  if (!(await adminPost(`person/${how}`, { contact: current.contact }))) return;
  await afterClosing();
  say(`${name} was ${how === 'remove' ? 'removed' : 'disabled'}.`);
}
