// What the administration reads: the client release (and publishing a new one), the mail sent
// to the organisation's people, their clients' error reports, and the status history.
import { el } from './dom.js';
import { adminGet, adminPost, fillRows, moment, say } from './admin-common.js';

const started = { release: false, history: false };

const RELEASE_WORDS = [
  ['version', 'Version'], ['ftpSite', 'FTP site'], ['ftpDir', 'FTP folder'], ['file', 'File'],
  ['ftpUser', 'FTP user'], ['sha256', 'SHA-256'],
];

export async function showRelease() {
  if (!started.release) {
    started.release = true;
    document.getElementById('release-form').addEventListener('submit', publishRelease);
  }
  const release = await adminGet('release');
  if (release) renderRelease(release);
}

function renderRelease(release) {
  const list = document.getElementById('release-now');
  if (!release.version) {
    list.replaceChildren(el('dt', { text: 'No release has been published.' }));
    return;
  }
  list.replaceChildren(...RELEASE_WORDS.flatMap(([key, words]) => [
    el('dt', { text: words }), el('dd', { text: release[key] ?? '(none)' }),
  ]));
}

async function publishRelease(event) {
  event.preventDefault();
  const form = event.target;
  const fields = {};
  for (const name of ['version', 'ftpSite', 'ftpDir', 'file', 'ftpUser', 'ftpPassword', 'sha256'])
    fields[name] = form[name].value;
  const release = await adminPost('release', fields);
  if (!release) return;
  form.reset();
  renderRelease(release);
  say(`Release ${release.version} is published.`);
}

function mailState(mail) {
  if (mail.sent) return `sent ${moment(mail.sent)}`;
  return Number(mail.gaveUp) ? 'given up' : 'waiting';
}

export async function showOutbox() {
  const mails = await adminGet('outbox');
  if (mails) {
    fillRows('outbox-list', mails.map((m) =>
      [moment(m.queued), m.to, m.subject, mailState(m), m.error]), 'No mail yet.');
  }
}

export async function showReports() {
  const [reports, people] = await Promise.all([adminGet('anomalies'), adminGet('people')]);
  if (!reports) return;
  const names = new Map((people ?? []).map((p) => [p.contact, `${p.first} ${p.last}`]));
  fillRows('report-list', reports.map((r) => [
    moment(r.logged), names.get(r.contact) ?? String(r.contact ?? ''), r.computer, r.program,
    r.procedure, r.number === null ? '' : String(r.number), r.text,
  ]), 'No error reports.');
}

export async function showHistory() {
  const days = document.getElementById('history-days');
  if (!started.history) {
    started.history = true;
    days.addEventListener('change', showHistory);
  }
  const history = await adminGet('history', { days: days.value });
  if (!history) return;
  // The newest first.
  fillRows('history-list', history.slice().reverse().map((h) =>
    [moment(h.when), h.by, h.whose, h.from, h.to, h.via]), 'No status changes in that time.');
}
