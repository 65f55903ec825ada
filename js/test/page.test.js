// The page in a real headless Chromium: type text and a file name, read the answer, the
// candidates and the deciding tokens. Skipped, saying why, only where Chromium cannot start.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { existsSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { chromium } from 'playwright-core';

import { createEngine } from '../src/index.js';
import { servePackage } from '../page/serve.mjs';

const CHROMIUM = process.env.LINGOMAT_CHROMIUM ?? '/usr/bin/chromium';
// Where to keep a picture of the page (docs/images/page.png was taken so), if anywhere.
const screenshot = process.env.LINGOMAT_PAGE_SCREENSHOT;

const SCRIPT = `#!/bin/sh
# Rebuilds the site when a source changes.
set -eu
for dir in "$@"; do
  if [ -d "$dir" ]; then
    find "$dir" -name '*.md' -newer stamp -exec make -C "$dir" {} +
  fi
done
echo "done: $# folders" >&2
`;
const PYTHON = `import sys
from collections import defaultdict


class Index(object):
    """Words to the lines they occur on."""

    def __init__(self):
        self.lines = defaultdict(list)

    def add(self, number, line):
        for word in line.split():
            self.lines[word.lower()].append(number)


def main(argv):
    index = Index()
    with open(argv[1]) as text:
        for number, line in enumerate(text, 1):
            index.add(number, line)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
`;

// By content alone; by a #! line, with too few tokens for the classifier and with enough;
// under a misleading name.
const cases = [
  [PYTHON, ''], [SCRIPT, 'rebuild'], [SCRIPT.repeat(2), 'rebuild'], [PYTHON, 'notes.txt'],
];

async function launch(profile) {
  try {
    // A persistent context is how a fresh --user-data-dir is given.
    return await chromium.launchPersistentContext(profile, {
      executablePath: CHROMIUM,
      headless: true,
      viewport: { width: 1000, height: 900 },
      args: ['--no-sandbox', '--disable-gpu', '--disable-background-networking',
        '--disable-component-update', '--disable-sync', '--no-first-run'],
    });
  } catch (error) {
    return { failed: error.message.split('\n')[0] };
  }
}

test('the page names pasted text and shows why', async (t) => {
  const profile = mkdtempSync(path.join(tmpdir(), 'lingomat-chromium-'));
  const browser = existsSync(CHROMIUM) ? await launch(profile) : { failed: `${CHROMIUM} is missing` };
  if (browser.failed) {
    rmSync(profile, { recursive: true, force: true });
    t.skip(`Chromium cannot start here: ${browser.failed}`);
    return;
  }
  const server = await servePackage();
  const engine = await createEngine();
  try {
    const page = await browser.newPage();
    const errors = [];
    page.on('pageerror', (error) => errors.push(error.message));
    await page.goto(`http://127.0.0.1:${server.address().port}/page/`);
    await page.waitForSelector('body[data-ready="true"]', { timeout: 60000 });
    assert.equal(await page.textContent('#answer'), 'no answer');

    for (const [text, name] of cases) {
      await page.fill('#filename', name);
      await page.fill('#text', '');
      await page.type('#text', text.slice(0, 40));  // typed, as a person would
      await page.fill('#text', text);
      const expected = engine.explain(text, name);
      await page.waitForFunction((answer) => document.getElementById('answer').textContent === answer,
        expected.language ?? 'no answer');
      const candidates = await page.$$eval('#candidates li', (items) => items.map((li) => li.textContent));
      const distinct = [...new Set(expected.ranking.map((entry) => entry.language))].slice(0, 5);
      assert.deepEqual(candidates.map((line) => line.split(':')[0]), distinct);
      const tokens = await page.$$eval('#tokens li', (items) => items.map((li) => li.textContent));
      assert.deepEqual(tokens.map((line) => line.split('  ')[0]),
        expected.decidingTokens.map((token) => token.token));
    }
    assert.equal(await page.textContent('#answer'), 'Python');
    if (screenshot) await page.screenshot({ path: screenshot, fullPage: true });
    assert.deepEqual(errors, []);
  } finally {
    engine.dispose();
    await browser.close();
    server.close();
    rmSync(profile, { recursive: true, force: true });
  }
});
