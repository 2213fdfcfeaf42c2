// The statuses people choose from with their colours (the legend and the other shared ones
// shown, not offered for change; the organisation's own edited in place), and whether the
// organisation's people may chat.
import { el, safeColour } from './dom.js';
import { adminGet, adminPost, fillRows, say } from './admin-common.js';

const started = { statuses: false, chat: false };

export async function showStatuses() {
  if (!started.statuses) {
    started.statuses = true;
    document.getElementById('status-add-form').addEventListener('submit', addStatus);
  }
  const statuses = await adminGet('statuses');
  if (statuses) fillRows('status-list', statuses.map(statusRow));
}

function swatch(colour) {
  const box = el('span', { class: 'swatch', attrs: { title: colour } });
  box.style.backgroundColor = safeColour(colour);
  return box;
}

function statusRow(status) {
  const attrs = { 'data-status': String(status.status) };
  if (status.shared) {
    return el('tr', { class: status.legend ? 'shared legend' : 'shared', attrs }, [
      el('td', {}, [swatch(status.colour)]),
      el('td', { text: status.text }),
      el('td', { text: String(status.order) }),
      el('td', {
        class: 'quiet',
        text: status.legend ? 'legend, not editable' : 'shared by every organisation, not editable',
      }),
    ]);
  }
  const text = el('input', { attrs: { name: 'text', maxlength: '50', 'aria-label': 'Status' } });
  text.value = status.text;
  const colour = el('input', { attrs: { name: 'colour', type: 'color', 'aria-label': 'Colour' } });
  colour.value = safeColour(status.colour).toLowerCase();
  const order = el('input', { attrs: { name: 'order', type: 'number', min: '0', max: '999', 'aria-label': 'Order' } });
  order.value = String(status.order);
  const save = el('button', { text: 'Save', attrs: { type: 'button' } });
  save.addEventListener('click', async () => {
    const done = await adminPost('status/edit', {
      status: status.status, text: text.value, colour: colour.value.toUpperCase(), order: order.value,
    });
    if (!done) return;
    fillRows('status-list', done.map(statusRow));
    say(`${text.value.trim()} was saved.`);
  });
  return el('tr', { attrs }, [el('td', {}, [colour]), el('td', {}, [text]), el('td', {}, [order]),
    el('td', {}, [save])]);
}

async function addStatus(event) {
  event.preventDefault();
  const form = event.target;
  const text = form.text.value.trim();
  const done = await adminPost('status/add', {
    text, colour: form.colour.value.toUpperCase(), order: form.order.value,
  });
  if (!done) return;
  form.text.value = '';
  await showStatuses();
  say(`The status ${text} was added.`);
}

export async function showChat() {
  const box = document.getElementById('chat-on');
  if (!started.chat) {
    started.chat = true;
    box.addEventListener('change', async () => {
      const done = await adminPost('chat', { on: box.checked });
      if (!done) return showChat();
      box.checked = done.on;
      say(done.on ? 'Chat is on.' : 'Chat is off.');
    });
  }
  const chat = await adminGet('chat');
  if (chat) box.checked = chat.on;
}
