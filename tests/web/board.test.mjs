// The web board in a real browser against a real server: sign-in, the board with its tabs and
// search, one's own status change seen through the gateway and kept in the history, a change
// refused without the right, the refresh without reload, a phone, the wall with a display
// token until it is revoked, and a name holding markup shown as text.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { launch, screenshot } from './support/browser.mjs';
import { TavloServer } from './support/server.mjs';

const MARKUP_NAME = '<script>window.pwned = 1</script>Hugo';
const REFRESHED_WITHIN = 20000; // the pages read anew every 15 s

let server;
let browser;
let carol; // carol's page on a desk, kept from one step to the next

before(async () => {
  server = await TavloServer.start((db) =>
    TavloServer.sql(db, `UPDATE contact SET firstname = '${MARKUP_NAME}' WHERE contactsys = 1008`),
  );
  browser = await launch();
});

after(async () => {
  await browser?.close();
  await server?.stop();
});

async function openBoard(user, viewport = { width: 1280, height: 860 }) {
  const page = await (await browser.newContext({ viewport })).newPage();
  await page.goto(`${server.baseUrl}/board`);
  await signIn(page, user, 'demo');
  await page.locator('#people tbody tr').first().waitFor();
  return page;
}

async function signIn(page, user, password) {
  await page.fill('#sign-in-form input[name=user]', user);
  await page.fill('#sign-in-form input[name=password]', password);
  await page.click('#sign-in-form button[type=submit]');
}

const row = (page, contact) => page.locator(`#people tbody tr[data-contact="${contact}"]`);
const cells = (page, contact) => row(page, contact).locator('td').allTextContents();
const post = (page, path, body, type = 'application/json') =>
  page.evaluate(
    async ([p, b, t]) => (await fetch(p, { method: 'POST', headers: { 'Content-Type': t }, body: b })).status,
    [path, JSON.stringify(body), type],
  );
const getJson = (page, path) =>
  page.evaluate(async (p) => {
    const r = await fetch(p);
    return { status: r.status, data: await r.json() };
  }, path);

function localDate(daysAhead) {
  const d = new Date();
  d.setDate(d.getDate() + daysAhead);
  return `${d.getFullYear()}-${String(d.getMonth() + 1).padStart(2, '0')}-${String(d.getDate()).padStart(2, '0')}`;
}

async function setStatus(page, status, date, time, comment) {
  await page.locator('#status-dialog[open]').waitFor();
  await page.selectOption('#status-form select[name=status]', { label: status });
  await page.fill('#status-form input[name=returnDate]', date);
  await page.fill('#status-form input[name=returnTime]', time);
  await page.fill('#status-form input[name=comment]', comment);
}

test('sign-in, the board, and one\'s own status change through to the gateway and history', async () => {
  carol = await (await browser.newContext({ viewport: { width: 1280, height: 860 } })).newPage();
  const response = await carol.goto(`${server.baseUrl}/board`);
  const headers = response.headers();
  assert.match(headers['content-security-policy'], /script-src 'self'; style-src 'self'/);
  assert.equal(headers['x-frame-options'], 'DENY');
  assert.equal(headers['cache-control'], 'no-store');
  await carol.locator('#sign-in-form').waitFor();
  await signIn(carol, 'carol', 'wrong');
  await carol.locator('#sign-in-reason', { hasText: 'Invalid Login, please try again!' }).waitFor();
  await screenshot(carol, 'web-sign-in');
  await signIn(carol, 'carol', 'demo');
  await carol.locator('#people tbody tr').nth(39).waitFor();
  assert.equal(await carol.locator('#people tbody tr').count(), 40);
  assert.deepEqual(await carol.locator('#tabs button').allTextContents(),
    ['All', 'Engineering', 'Sales', 'Support', 'My Friends']);

  // The returning words and colours as the client shows them.
  assert.deepEqual((await cells(carol, 1019)).slice(1, 6),
    ['Ellis, Sam', '218', 'At Lunch', 'TODAY', '4:00 PM']);
  assert.deepEqual((await cells(carol, 1020)).slice(3, 6), ['In a Meeting', 'TOMORROW', '5:30 PM']);
  assert.deepEqual((await cells(carol, 1017)).slice(3, 6), ['Unavailable', 'Unspecified', '']);
  assert.deepEqual((await cells(carol, 1001)).slice(3, 6), ['In', '', '']);
  const colour = (contact) => row(carol, contact).locator('td.status')
    .evaluate((td) => getComputedStyle(td).backgroundColor);
  assert.equal(await colour(1019), 'rgb(255, 128, 0)');

  // A name holding markup is text, and its script never ran.
  assert.equal((await cells(carol, 1008))[1], `Stone, ${MARKUP_NAME}`);
  assert.equal(await carol.evaluate(() => window.pwned), undefined);

  await carol.fill('#search', 'MARSH');
  assert.deepEqual(await carol.locator('#people td.name').allTextContents(), ['Marsh, Bob']);
  await carol.fill('#search', '');
  await carol.click('#tabs button:text-is("Sales")');
  assert.equal(await carol.locator('#people tbody tr').count(), 14);
  await carol.click('#tabs button:text-is("My Friends")');
  assert.equal(await carol.locator('#people tbody tr').count(), 0);
  await carol.click('#tabs button:text-is("All")');

  await carol.click('#my-status');
  await setStatus(carol, 'At Lunch', localDate(1), '13:30', 'Back after lunch');
  await carol.locator('#status-history li', { hasText: 'No changes kept yet.' }).waitFor();
  await screenshot(carol, 'web-status-dialog', { fullPage: false });
  await carol.click('#status-save');
  await carol.locator('#status-dialog[open]').waitFor({ state: 'detached' });
  await row(carol, 1003).locator('td.status', { hasText: 'At Lunch' }).waitFor();
  assert.deepEqual((await cells(carol, 1003)).slice(3), ['At Lunch', 'TOMORROW', '1:30 PM', 'Back after lunch']);
  await screenshot(carol, 'web-board');

  // The gateway the client uses reads the same status.
  assert.match(server.query('bob', 'EXEC tl_GetContactStatus 1003'), /\| At Lunch .*\| Back after lunch/);
  const history = await getJson(carol, '/api/history?contact=1003');
  assert.deepEqual(history.data.history[0], {
    at: history.data.history[0].at, by: 'Carol Nolan', comment: 'Back after lunch',
    from: 'In', to: 'At Lunch', via: 'web',
  });
  assert.equal(TavloServer.sql(server.dbFile,
    "SELECT changedby, via, tostatus FROM statushistory WHERE contactsys = 1003").trim(), '5003|web|1');
});

test('without the right, another\'s status is not offered and the server refuses it', async () => {
  await row(carol, 1002).click();
  assert.equal(await carol.locator('#status-dialog[open]').count(), 0);
  assert.equal(await post(carol, '/api/status', { contact: 1002, status: 8 }), 403);
  assert.equal(await post(carol, '/api/status', { contact: 1003, status: 8 }, 'text/plain'), 415);
  assert.equal((await getJson(carol, '/api/wall-tokens')).status, 403);
  assert.match(server.query('bob', 'EXEC tl_GetContactStatus 1002'), /\|\s+In\s+\|/);
  assert.match(server.log, /refused from 127\.0\.0\.1: web status change by user 5003/);
});

test('the board reads changes made elsewhere by itself, without a reload', async () => {
  await carol.evaluate(() => { window.sameDocument = true; });
  server.query('bob', "EXEC tl_SetStatus 1003, 2, NULL, NULL, 'Standup', 5002");
  await row(carol, 1003).locator('td.status', { hasText: 'In a Meeting' })
    .waitFor({ timeout: REFRESHED_WITHIN });
  assert.equal(await carol.evaluate(() => window.sameDocument), true);
  await carol.click('#my-status');
  await carol.locator('#status-history li').nth(1).waitFor();
  assert.match(await carol.locator('#status-history li').first().textContent(),
    /At Lunch → In a Meeting \(Standup\) by Bob Marsh via client$/);
  await carol.click('#status-cancel');
});

test('on a phone, someone with the right changes a colleague\'s status', async () => {
  const bob = await openBoard('bob', { width: 390, height: 844 });
  assert.equal(await row(bob, 1004).locator('td.ext').isVisible(), false);
  await row(bob, 1004).click();
  await setStatus(bob, 'Out', localDate(0), '17:00', 'Site visit');
  await bob.click('#status-save');
  await row(bob, 1004).locator('td.status', { hasText: 'Out' }).waitFor();
  await screenshot(bob, 'web-phone');
  const history = await getJson(bob, '/api/history?contact=1004');
  assert.equal(history.data.history[0].by, 'Bob Marsh');
  assert.equal(history.data.history[0].via, 'web');
});

test('the wall opens with a display token and is refused once it is revoked', async () => {
  const ann = await openBoard('ann');
  await ann.fill('#token-form input[name=label]', 'Reception');
  await ann.click('#token-form button');
  await ann.locator('#token-link').waitFor();
  const address = await ann.locator('#token-link').getAttribute('href');
  assert.match(address, /\/board\?wall=1&token=[0-9a-f]{64}$/);
  await screenshot(ann, 'web-wall-tokens');

  const wall = await (await browser.newContext({ viewport: { width: 1920, height: 1080 } })).newPage();
  await wall.goto(address);
  await wall.locator('#wall-page .tile').first().waitFor();
  assert.equal(await wall.locator('#wall-title').textContent(), 'Norvane Demo');
  assert.match(await wall.locator('#wall-footer').textContent(), /^Page 1 of [2-9] /);
  const tiles = await wall.locator('#wall-page .tile').count();
  assert.ok(tiles >= 12 && tiles < 40, `${tiles} tiles on the first page`);
  const size = await wall.locator('.tile .name').first().evaluate((n) => parseFloat(getComputedStyle(n).fontSize));
  assert.ok(size >= 28, `names in ${size}px type`);
  await screenshot(wall, 'web-wall');

  await ann.click('#token-list button:text-is("Revoke")');
  await ann.locator('#token-list td', { hasText: /^revoked / }).waitFor();
  await wall.locator('#wall-title', { hasText: 'This display\'s token is not valid.' })
    .waitFor({ timeout: REFRESHED_WITHIN });
  assert.equal(await wall.locator('#wall-page .tile').count(), 0);
  await wall.reload();
  await wall.locator('#wall-title', { hasText: 'not valid' }).waitFor();
  await screenshot(wall, 'web-wall-refused');
});

test('signing out ends the session', async () => {
  await carol.click('#sign-out');
  await carol.locator('#sign-in-reason', { hasText: 'You have signed out.' }).waitFor();
  assert.equal((await getJson(carol, '/api/me')).status, 401);
  assert.equal(await post(carol, '/api/status', { contact: 1003, status: 3 }), 401);
});
