// Debian's chromium driven by playwright-core (from npm, never a downloaded browser), and
// screenshots into $TAVLO_BINARY_DIR/test-screenshots.
import { mkdirSync } from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';

const modules = process.env.TAVLO_WEB_MODULES ?? path.resolve('tests/web');
const { chromium } = createRequire(path.join(modules, 'package.json'))('playwright-core');

export const shots = path.join(process.env.TAVLO_BINARY_DIR ?? '.', 'test-screenshots');
mkdirSync(shots, { recursive: true });

export function launch() {
  return chromium.launch({
    executablePath: process.env.TAVLO_CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-gpu'],
  });
}

// The whole page, or only the window (a dialog over the page).
export function screenshot(page, name, { fullPage = true } = {}) {
  return page.screenshot({ path: path.join(shots, `${name}.png`), fullPage });
}
