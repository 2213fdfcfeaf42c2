// For administrators: the organisation's wall display tokens, made, listed and revoked.
import { api } from './api.js';
import { el, show } from './dom.js';

let started = false;

export function startWallTokens() {
  show('tokens', true);
  if (started) return listTokens();
  started = true;
  document.getElementById('token-form').addEventListener('submit', makeToken);
  listTokens();
}

async function makeToken(event) {
  event.preventDefault();
  const form = event.target;
  const { status, data } = await api('/api/wall-tokens', {
    method: 'POST',
    body: { label: form.label.value },
  });
  if (status !== 200) return;
  form.label.value = '';
  const address = new URL('/board', window.location.origin);
  address.searchParams.set('wall', '1');
  address.searchParams.set('token', data.token);
  const link = document.getElementById('token-link');
  link.href = address.href;
  link.textContent = address.href;
  show('token-made', true);
  listTokens();
}

async function revoke(id) {
  await api('/api/wall-tokens/revoke', { method: 'POST', body: { id } });
  show('token-made', false);
  listTokens();
}

async function listTokens() {
  const { status, data } = await api('/api/wall-tokens');
  if (status !== 200) return;
  const rows = data.tokens.map((t) => {
    const action = el('td');
    if (!t.revokedAt) {
      const button = el('button', { text: 'Revoke', attrs: { type: 'button' } });
      button.addEventListener('click', () => revoke(t.id));
      action.append(button);
    }
    return el('tr', { attrs: { 'data-token': String(t.id) } }, [
      el('td', { text: t.label }),
      el('td', { text: t.createdAt.replace('T', ' ') }),
      el('td', { text: t.createdBy }),
      el('td', { text: t.revokedAt ? `revoked ${t.revokedAt.replace('T', ' ')}` : 'in use' }),
      action,
    ]);
  });
  document.querySelector('#token-list tbody').replaceChildren(...rows);
}
