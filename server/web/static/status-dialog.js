// The status dialog: status, returning date and time, comment, and the person's recent changes.
import { api } from './api.js';
import { el } from './dom.js';

let current = null;
let onSaved = () => {};

export function setUpStatusDialog(afterSave) {
  onSaved = afterSave;
  document.getElementById('status-form').addEventListener('submit', save);
  document.getElementById('status-cancel').addEventListener('click', () => {
    document.getElementById('status-dialog').close();
  });
}

export function openStatusDialog(person, statuses) {
  current = person;
  const form = document.getElementById('status-form');
  document.getElementById('status-for').textContent = person.name.replace(/ \*$/, '');
  form.status.replaceChildren(
    ...statuses.map((s) => el('option', { text: s.text, attrs: { value: String(s.id) } })),
  );
  form.status.value = String(person.statusId);
  const [date, time] = (person.returnAt ?? '').split('T');
  form.returnDate.value = date ?? '';
  form.returnTime.value = time ?? '';
  form.comment.value = person.comment;
  document.getElementById('status-error').textContent = '';
  document.getElementById('status-history').replaceChildren();
  document.getElementById('status-dialog').showModal();
  loadHistory(person.contact);
}

async function loadHistory(contact) {
  const { status, data } = await api(`/api/history?contact=${encodeURIComponent(contact)}`);
  if (status !== 200 || current?.contact !== contact) return;
  const items = data.history.map((h) =>
    el('li', {
      text: `${h.at.replace('T', ' ')}: ${h.from || '?'} \u2192 ${h.to}` +
        `${h.comment ? ` (${h.comment})` : ''} by ${h.by} via ${h.via}`,
    }),
  );
  if (items.length === 0) items.push(el('li', { text: 'No changes kept yet.' }));
  document.getElementById('status-history').replaceChildren(...items);
}

async function save(event) {
  event.preventDefault();
  const form = event.target;
  const { status, data } = await api('/api/status', {
    method: 'POST',
    body: {
      contact: current.contact,
      status: Number(form.status.value),
      returnDate: form.returnDate.value,
      returnTime: form.returnTime.value,
      comment: form.comment.value,
    },
  });
  if (status !== 200) {
    document.getElementById('status-error').textContent = data.error ?? 'Not saved.';
    return;
  }
  document.getElementById('status-dialog').close();
  onSaved();
}
