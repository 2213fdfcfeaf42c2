// The administration page in a real browser against a real server: ann signs in at
// /Administrator.asp, adds a group and a person in it, who then signs in on the board; the
// client's link to one person opens that person; the status history lists a change made by
// the client and one made on the web with who made them; each section and a phone are
// photographed; the new person is changed and disabled; carol, no administrator, gets no
// administration.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { launch, screenshot } from './support/browser.mjs';
import { TavloServer } from './support/server.mjs';

let server;
let browser;

before(async () => {
  server = await TavloServer.start();
  browser = await launch();
});

after(async () => {
  await browser?.close();
  await server?.stop();
});

async function newPage(viewport = { width: 1280, height: 860 }) {
  return (await browser.newContext({ viewport })).newPage();
}

// The administration's address without a session answers the sign-in form; a good sign-in
// opens the session, and the same address then answers what the user may see.
async function signInThere(page, user, path = '/Administrator.asp') {
  const refused = await page.goto(server.baseUrl + path);
  assert.equal(refused.status(), 401);
  await page.fill('input[name=UserName]', user);
  await page.fill('input[name=Password]', 'demo');
  await page.click('button[type=submit]');
  await page.waitForURL('**/logincheck.asp');
  return page.goto(server.baseUrl + path);
}

const section = (page, name) => page.click(`#sections button:text-is("${name}")`);
const notice = (page, text) => page.locator('#notice', { hasText: text }).waitFor();
const historyRow = (page, by, whose, via) =>
  page.locator('#history-list tbody tr', { hasText: by })
    .filter({ hasText: whose }).filter({ has: page.locator(`td:text-is("${via}")`) });

test('an administrator keeps the organisation on the page; others get none', async () => {
  const ann = await newPage();
  const response = await signInThere(ann, 'ann');
  assert.equal(response.status(), 200);
  assert.match(response.headers()['content-security-policy'], /script-src 'self'/);
  await ann.locator('#people-list tbody tr').nth(39).waitFor();
  assert.equal(await ann.locator('#organization').textContent(), 'Norvane Demo administration');
  await ann.fill('#people-search', 'marsh');
  assert.deepEqual(await ann.locator('#people-list td.name').allTextContents(), ['Marsh, Bob']);
  await ann.fill('#people-search', '');

  // A group, and a person in it who then signs in on the board.
  await section(ann, 'Groups');
  await ann.fill('#group-form input[name=name]', 'Night Shift');
  await ann.click('#group-form button');
  await notice(ann, 'The group Night Shift was added.');
  await section(ann, 'People');
  await ann.click('#add-person-open');
  const form = ann.locator('#add-person-form');
  await form.locator('select[name=group] option', { hasText: 'Night Shift' }).waitFor({ state: 'attached' });
  await form.locator('input[name=first]').fill('Zoe');
  await form.locator('input[name=last]').fill('Quay');
  await form.locator('input[name=user]').fill('zoe');
  await form.locator('input[name=email]').fill('zoe@demo.example');
  await form.locator('input[name=ext]').fill('299');
  await form.locator('select[name=group]').selectOption('Night Shift');
  await form.locator('select[name=location]').selectOption('Warehouse');
  await form.locator('button[type=submit]').click();
  const password = await ann.locator('#added-person code').textContent();
  assert.match(password, /^\S{8,}$/);
  await ann.locator('#people-list td.name', { hasText: 'Quay, Zoe' }).waitFor();
  await screenshot(ann, 'admin-people');

  const zoe = await newPage();
  await zoe.goto(`${server.baseUrl}/board`);
  await zoe.fill('#sign-in-form input[name=user]', 'zoe');
  await zoe.fill('#sign-in-form input[name=password]', password);
  await zoe.click('#sign-in-form button[type=submit]');
  await zoe.locator('#tabs button:text-is("Night Shift")').click();
  assert.deepEqual(await zoe.locator('#people td.name').allTextContents(), ['Quay, Zoe']);

  // One change by the client (bob sets carol's status through the gateway), one on the web.
  server.query('bob', "EXEC tl_SetStatus 1003, 2, NULL, NULL, 'Standup', 5002");
  await zoe.click('#my-status');
  await zoe.selectOption('#status-form select[name=status]', { label: 'Out' });
  await zoe.click('#status-save');
  await zoe.locator('#people tr[data-contact] td.status', { hasText: 'Out' }).waitFor();

  // The client's link to one person, and that person put in the new group.
  await ann.goto(`${server.baseUrl}/Administrator.asp?p=1002&v=5002&r=0&visit_num=0&sentby=menu`);
  await ann.locator('#person-name', { hasText: 'Bob Marsh' }).waitFor();
  assert.match(await ann.locator('#person-state').textContent(), /^User bob /);
  assert.equal(await ann.inputValue('#person-form input[name=email]'), await ann.evaluate(
    async () => (await (await fetch('/admin/api/person?contact=1002')).json()).email));
  await ann.locator('#person-groups label', { hasText: 'Night Shift' }).locator('input').check();
  await notice(ann, 'Bob Marsh is in Night Shift.');
  await screenshot(ann, 'admin-person');

  await section(ann, 'History');
  await historyRow(ann, 'Bob Marsh (bob)', 'Carol Nolan', 'client').waitFor();
  await historyRow(ann, 'Zoe Quay (zoe)', 'Zoe Quay', 'web').waitFor();
  await screenshot(ann, 'admin-history');

  // The legend is shown, not offered for change; a status of the organisation's own is.
  await section(ann, 'Statuses');
  await ann.locator('#status-list tr.legend').nth(2).waitFor();
  assert.deepEqual(await ann.locator('#status-list tr.legend td:nth-child(2)').allTextContents(),
    ['In', 'Unavailable', 'Out']);
  assert.equal(await ann.locator('#status-list tr.shared input').count(), 0);
  await ann.fill('#status-add-form input[name=text]', 'Working From Home');
  await ann.fill('#status-add-form input[name=order]', '15');
  await ann.click('#status-add-form button');
  await notice(ann, 'The status Working From Home was added.');
  const own = ann.locator('#status-list tr:not(.shared)');
  await own.locator('input[name=colour]').fill('#3366cc');
  await own.locator('button').click();
  await notice(ann, 'Working From Home was saved.');
  assert.equal(await own.locator('input[name=colour]').inputValue(), '#3366cc');
  await screenshot(ann, 'admin-statuses');
  await section(ann, 'Groups');
  await ann.locator('#group-list .group', { hasText: 'Night Shift (2)' }).waitFor();
  await screenshot(ann, 'admin-groups');
  for (const [name, shot] of [['Locations', 'admin-locations'], ['Chat', 'admin-chat'],
    ['Release', 'admin-release'], ['Outbox', 'admin-outbox'], ['Error reports', 'admin-reports']]) {
    await section(ann, name);
    await ann.waitForLoadState('networkidle');
    await screenshot(ann, shot);
  }

  // Zoe's details and rights changed, then her account disabled: she stays listed, signed out.
  await section(ann, 'People');
  await ann.click('#people-list td.name:text-is("Quay, Zoe")');
  await ann.fill('#person-form input[name=ext]', '298');
  await ann.click('#person-form button[type=submit]');
  await notice(ann, 'Saved.');
  await ann.check('#rights-form input[name=othersStatus]');
  await ann.click('#rights-form button[type=submit]');
  await notice(ann, 'Rights saved.');
  ann.once('dialog', (dialog) => dialog.accept());
  await ann.click('#person-disable');
  await notice(ann, 'Zoe Quay was disabled.');
  assert.deepEqual((await ann.locator('#people-list tr[data-contact]', { hasText: 'Quay, Zoe' })
    .locator('td').allTextContents()).slice(1), ['zoe', '298', 'Warehouse', 'Out',
    "disabled, changes others' status"]);
  assert.equal(await zoe.evaluate(async () => (await fetch('/api/me')).status), 401);

  // On a phone the page fits the screen's width.
  const phone = await browser.newContext({
    viewport: { width: 390, height: 844 },
    storageState: await ann.context().storageState(),
  });
  const small = await phone.newPage();
  await small.goto(`${server.baseUrl}/Administrator.asp`);
  await small.locator('#people-list tbody tr').nth(40).waitFor();
  assert.ok(await small.evaluate(() => document.documentElement.scrollWidth <= 390));
  await screenshot(small, 'admin-phone', { fullPage: false });

  // carol holds no administrator right: a page that says so, and the routes refuse her.
  const carol = await newPage();
  const refused = await signInThere(carol, 'carol');
  assert.equal(refused.status(), 403);
  await carol.locator('text=You do not have administrator rights.').waitFor();
  assert.equal(await carol.evaluate(async () => (await fetch('/admin/api/people')).status), 403);
});
