// What the administration's sections share: calls of /admin/api/ whose refusals are shown in
// the notice line, and tables and lists filled from the answers (as text, never markup).
import { api } from './api.js';
import { el } from './dom.js';

export function say(text, { error = false } = {}) {
  const notice = document.getElementById('notice');
  notice.textContent = text;
  notice.classList.toggle('reason', error);
}

// The answer's data, or null once the reason has been shown.
export async function adminGet(route, query = {}) {
  const search = new URLSearchParams(query).toString();
  return answered(await api(`/admin/api/${route}${search ? `?${search}` : ''}`));
}

export async function adminPost(route, body) {
  return answered(await api(`/admin/api/${route}`, { method: 'POST', body }));
}

function answered({ status, data }) {
  if (status === 200) return data;
  // The session ended: the page itself answers the sign-in form now.
  if (status === 401) window.location.reload();
  say(data.error ?? `The server answered ${status}.`, { error: true });
  return null;
}

// Rows of texts into a table's body; a table with no rows says so.
export function fillRows(tableId, rows, empty = 'Nothing yet.') {
  const body = document.querySelector(`#${tableId} tbody`);
  const columns = document.querySelectorAll(`#${tableId} thead th`).length;
  if (rows.length === 0) {
    body.replaceChildren(el('tr', { class: 'empty' }, [
      el('td', { text: empty, attrs: { colspan: String(columns) } }),
    ]));
    return;
  }
  body.replaceChildren(...rows.map((cells) =>
    cells instanceof HTMLElement ? cells : el('tr', {}, cells.map((text) => el('td', { text: text ?? '' })))));
}

// A select's choices: an empty one first (none), then the names.
export function fillChoices(select, names, none = '(none)') {
  const chosen = select.value;
  select.replaceChildren(el('option', { text: none, attrs: { value: '' } }),
    ...names.map((name) => el('option', { text: name, attrs: { value: name } })));
  if (names.includes(chosen)) select.value = chosen;
}

// A moment as the server writes it ("yyyy-MM-ddTHH:mm:ss"), for reading.
export function moment(text) {
  return text ? String(text).replace('T', ' ') : '';
}

// A person's name as lists show it.
export function fullName(person) {
  return `${person.last ?? ''}, ${person.first ?? ''}`;
}
