// A real tavlo-server for a browser test: the demo organisation in a fresh temp folder, served
// on a free loopback port, stopped (and the folder removed) by stop().
import { execFileSync, spawn, spawnSync } from 'node:child_process';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';

// The programs as the test's command names them, or where a default build puts them.
const binaryDir = process.env.TAVLO_BINARY_DIR ?? path.resolve('build/default');
const serverBinary = process.argv[2] ?? path.join(binaryDir, 'server', 'tavlo-server');
const queryBinary = process.argv[3] ?? path.join(binaryDir, 'tools', 'query', 'tavlo-query');

export class TavloServer {
  // prepare(dbFile) runs on the demo database before the server starts.
  static async start(prepare = () => {}) {
    const server = new TavloServer();
    server.folder = mkdtempSync(path.join(tmpdir(), 'tavlo-web-'));
    server.dbFile = path.join(server.folder, 'tavlo.db');
    const db = `sqlite:${server.dbFile}`;
    execFileSync(serverBinary, ['demo', '--db', db], { stdio: 'ignore' });
    prepare(server.dbFile);
    server.process = spawn(serverBinary, ['serve', '--listen', '127.0.0.1:0', '--db', db], {
      stdio: ['ignore', 'pipe', 'pipe'],
    });
    server.log = '';
    server.process.stderr.on('data', (chunk) => (server.log += chunk));
    server.baseUrl = await listeningAddress(server.process);
    return server;
  }

  // Runs one statement through the gateway as USER, as the client would; answers its output.
  // A write answers no rowset: that is its success, anything else throws.
  query(user, statement) {
    const passwordFile = path.join(this.folder, 'password');
    writeFileSync(passwordFile, 'demo\n');
    const args = ['--url', this.baseUrl, '--sign-in', user, '--password-file', passwordFile];
    const run = spawnSync(queryBinary, [...args, statement], { encoding: 'utf8' });
    const wrote = run.status === 3 && run.stderr.includes('empty answer (HTTP 200)');
    if (run.status !== 0 && !wrote) throw new Error(`tavlo-query: ${run.stderr}`);
    return run.stdout;
  }

  // A statement on the database file, through Debian's sqlite3.
  static sql(dbFile, statement) {
    return execFileSync('sqlite3', [dbFile, statement]).toString();
  }

  async stop() {
    if (this.process.exitCode === null) {
      const exited = new Promise((resolve) => this.process.once('exit', resolve));
      this.process.kill('SIGTERM');
      await exited;
    }
    rmSync(this.folder, { recursive: true, force: true });
  }
}

function listeningAddress(child) {
  return new Promise((resolve, reject) => {
    let out = '';
    const timer = setTimeout(() => reject(new Error(`no "listening on" line: ${out}`)), 15000);
    child.stdout.on('data', (chunk) => {
      out += chunk;
      const match = /listening on 127\.0\.0\.1:(\d+)/.exec(out);
      if (match) {
        clearTimeout(timer);
        resolve(`http://127.0.0.1:${match[1]}`);
      }
    });
    child.once('exit', (code) => reject(new Error(`the server ended (${code}): ${out}`)));
  });
}
