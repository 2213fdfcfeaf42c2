// The JSON routes' rules (/api/ and /admin/api/), one row a case: who may call what, and what a
// body must hold.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { TavloServer } from './support/server.mjs';

let server;
const cookies = {};

before(async () => {
  server = await TavloServer.start();
  for (const user of ['ann', 'bob', 'carol', 'hana']) {
    const answer = await call('POST', '/api/signin', null, { user, password: 'demo' });
    assert.equal(answer.status, 200, user);
    cookies[user] = answer.headers.get('set-cookie').split(';')[0];
  }
});

after(() => server?.stop());

async function call(method, path, user, body, type = 'application/json', extra = {}) {
  const headers = { ...extra };
  if (user) headers.Cookie = cookies[user];
  if (body !== undefined) headers['Content-Type'] = type;
  const response = await fetch(server.baseUrl + path, {
    method,
    headers,
    body: body === undefined ? undefined : typeof body === 'string' ? body : JSON.stringify(body),
  });
  return { status: response.status, headers: response.headers, data: await response.json() };
}

test('who may call what, and what a body must hold', async () => {
  const status = (contact, status, more = {}) => ({ contact, status, ...more });
  const cases = [
    // method, path, user, body, expected status
    ['GET', '/api/me', null, undefined, 401],
    ['GET', '/api/board', null, undefined, 401],
    ['POST', '/api/status', null, status(1003, 3), 401],
    ['GET', '/api/wall-tokens', 'carol', undefined, 403],
    ['POST', '/api/wall-tokens', 'bob', { label: 'Hall' }, 403],
    ['POST', '/api/signin', null, { user: 'carol', password: 'wrong' }, 401],
    ['POST', '/api/signin', null, { user: 'dave', password: 'demo' }, 403],
    ['POST', '/api/signin', null, { user: 'ivo', password: 'demo' }, 403],
    ['POST', '/api/signin', null, { password: 'demo' }, 400],
    ['POST', '/api/status', 'carol', '{"contact": 1003,', 400],
    ['POST', '/api/status', 'carol', '[1003, 3]', 400],
    ['POST', '/api/status', 'carol', status(1003, 99), 400],
    ['POST', '/api/status', 'carol', status(1003, 8, { returnDate: '2030-02-30' }), 400],
    ['POST', '/api/status', 'carol', status(1003, 8, { returnTime: '25:00' }), 400],
    ['POST', '/api/status', 'carol', status(1003, 8, { comment: 'x'.repeat(256) }), 400],
    ['POST', '/api/status', 'carol', status(1003, 8, { comment: 'x'.repeat(255) }), 200],
    ['POST', '/api/status', 'carol', status(1002, 8), 403],
    ['POST', '/api/status', 'bob', status(1041, 8), 403], // another organisation
    ['POST', '/api/status', 'hana', status(1003, 8), 403],
    ['POST', '/api/status', 'bob', status(1003, 6, { returnTime: '09:15' }), 200],
    ['GET', '/api/history?contact=1003', 'carol', undefined, 200],
    ['GET', '/api/history?contact=1002', 'carol', undefined, 403],
    ['GET', '/api/history?contact=1002', 'bob', undefined, 200],
    ['GET', '/api/history?contact=1041', 'ann', undefined, 403],
    ['GET', '/api/history?contact=x', 'ann', undefined, 400],
    ['POST', '/api/wall-tokens', 'ann', { label: '' }, 400],
    ['POST', '/api/wall-tokens/revoke', 'ann', { id: 999 }, 404],
    ['GET', '/api/wall', null, undefined, 401],
    ['GET', '/api/nowhere', 'ann', undefined, 404],
    ['DELETE', '/api/me', 'ann', undefined, 405],
    // The administration's routes: the same guard, and their own organisation only.
    ['GET', '/admin/api/people', null, undefined, 401],
    ['GET', '/admin/api/people', 'carol', undefined, 403],
    ['POST', '/admin/api/chat', 'bob', { on: false }, 403],
    ['POST', '/admin/api/group/add', 'ann', '[1]', 400],
    ['POST', '/admin/api/group/add', 'ann', { name: ['Night'] }, 400],
    ['POST', '/admin/api/person/add', 'ann', { first: 'Al', last: 'Ex', user: 'ANN', email: 'al@demo.example' }, 400], // taken
    ['POST', '/admin/api/chat', 'ann', { on: 'maybe' }, 400],
    ['POST', '/admin/api/person/rights', 'ann', { contact: 1001, admin: false }, 400], // her own
    ['POST', '/admin/api/status/edit', 'ann', { status: 3, text: 'Here', colour: '#00FF00', order: 1 }, 400],
    ['GET', '/admin/api/person?contact=1041', 'ann', undefined, 404],
    ['GET', '/admin/api/person?contact=1002', 'ann', undefined, 200],
    ['GET', '/admin/api/nowhere', 'ann', undefined, 404],
    ['DELETE', '/admin/api/people', 'ann', undefined, 405],
  ];
  for (const [method, path, user, body, expected] of cases) {
    const answer = await call(method, path, user, body);
    assert.equal(answer.status, expected, `${method} ${path} as ${user}: ${JSON.stringify(answer.data)}`);
    if (expected !== 200) assert.equal(typeof answer.data.error, 'string');
  }
  const form = await call('POST', '/api/status', 'carol', 'contact=1003&status=8',
    'application/x-www-form-urlencoded');
  assert.equal(form.status, 415);
  const adminForm = await call('POST', '/admin/api/chat', 'ann', 'on=no',
    'application/x-www-form-urlencoded');
  assert.equal(adminForm.status, 415);
  // A cookie the server never gave opens no administration.
  const forged = await fetch(server.baseUrl + '/Administrator.asp', { headers: { Cookie: 'TavloWeb=0123456789abcdef' } });
  assert.equal(forged.status, 401);
  const chat = await call('GET', '/admin/api/chat', 'ann');
  assert.equal(chat.headers.get('x-frame-options'), 'DENY');
  assert.match(chat.headers.get('content-security-policy'), /default-src 'none'/);
});

test('a status change by someone with the right is kept with who made it', async () => {
  const history = await call('GET', '/api/history?contact=1003', 'carol');
  assert.deepEqual(history.data.history.map((h) => [h.from, h.to, h.by, h.via]), [
    ['Out', 'Unavailable', 'Bob Marsh', 'web'],
    ['In', 'Out', 'Carol Nolan', 'web'],
  ]);
  const board = await call('GET', '/api/board', 'carol');
  const carol = board.data.people.find((p) => p.contact === 1003);
  assert.deepEqual([carol.status, carol.returningDate, carol.returningTime, carol.comment],
    ['Unavailable', 'TODAY', '9:15 AM', '']);
  assert.equal(carol.colour, '#FFFF00');
});

test('a display token opens its own organisation\'s wall until it is revoked', async () => {
  const made = await call('POST', '/api/wall-tokens', 'ann', { label: 'Front desk' });
  const bearer = { Authorization: `Bearer ${made.data.token}` };
  const wall = await call('GET', '/api/wall', null, undefined, undefined, bearer);
  assert.equal(wall.data.organization, 'Norvane Demo');
  assert.equal(wall.data.people.length, 40);
  assert.deepEqual(Object.keys(wall.data.people[0]).sort(),
    ['colour', 'ext', 'name', 'returningDate', 'returningTime', 'status']);
  const listed = await call('GET', '/api/wall-tokens', 'ann');
  assert.deepEqual(listed.data.tokens.map((t) => [t.label, t.createdBy, t.revokedAt]),
    [['Front desk', 'Ann Lee', '']]);
  assert.equal((await call('POST', '/api/wall-tokens/revoke', 'ann', { id: made.data.id })).status, 200);
  assert.equal((await call('GET', '/api/wall', null, undefined, undefined, bearer)).status, 401);
  assert.doesNotMatch(JSON.stringify(await call('GET', '/api/wall-tokens', 'ann')), /[0-9a-f]{64}/);
});
