// Every answer and every ranking score of the package must be the native library's, bit for
// bit, on this repository's sources and on a generated hostile set, under several options.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

import { createEngine } from '../src/index.js';
import { hostileSet } from './hostile.js';

const repo = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '../..');
const driver = process.env.LINGOMAT_NATIVE_ANSWERS ??
  path.join(repo, 'build/tests/js/lingomat_native_answers');
const dataFile = path.join(repo, 'data/lingomat.json');

const OPTION_SETS = [
  {},
  { minTokens: 0, minScorePerToken: 0 },
  { maxScanBytes: 0, maxTokens: 0, only: ['C', 'Python', 'Shell', 'Markdown'] },
  { maxScanBytes: 1, maxTokens: 3, minTokens: 1, minScorePerToken: -3.5 },
];

function repositoryFiles() {
  const listed = execFileSync('git', ['-C', repo, 'ls-files', '-z'], { encoding: 'utf8' });
  return listed.split('\0').filter(Boolean).map((file) => ({
    id: file,
    bytes: new Uint8Array(readFileSync(path.join(repo, file))),
    name: path.basename(file),
  })).filter((entry) => entry.bytes.length < (4 << 20));
}

function nativeFlags(options) {
  const flags = ['--data', dataFile];
  const names = { maxScanBytes: '--max-scan-bytes', maxTokens: '--max-tokens',
    minTokens: '--min-tokens', minScorePerToken: '--min-score-per-token' };
  for (const [key, flag] of Object.entries(names)) {
    if (options[key] !== undefined) flags.push(flag, String(options[key]));
  }
  for (const name of options.only ?? []) flags.push('--only', name);
  return flags;
}

function nativeNumber(text) {
  return { inf: Infinity, '-inf': -Infinity, nan: NaN, '-nan': NaN }[text] ?? Number(text);
}

// The native answers for `cases`, each { language, ranking }, in order.
function nativeAnswers(cases, options, folder) {
  const lines = cases.map((entry, i) => {
    const file = path.join(folder, String(i));
    writeFileSync(file, entry.bytes);
    return `${file}\t${entry.name}\n`;
  });
  const run = spawnSync(driver, nativeFlags(options), {
    input: lines.join(''), maxBuffer: 256 << 20, encoding: 'utf8',
  });
  assert.equal(run.status, 0, `native driver failed: ${run.stderr}`);
  return run.stdout.split('\n').slice(0, -1).map((line) => {
    const fields = line.split('\t');
    const ranking = [];
    for (let i = 2; i < fields.length; i += 2) {
      ranking.push({ language: fields[i], score: nativeNumber(fields[i + 1]) });
    }
    assert.equal(ranking.length, Number(fields[1]));
    return { language: fields[0] === '' ? null : fields[0], ranking };
  });
}

function sameRanking(actual, expected) {
  return actual.length === expected.length && actual.every((entry, i) =>
    entry.language === expected[i].language && Object.is(entry.score, expected[i].score));
}

test('the package answers as the native library does', async (t) => {
  assert.ok(existsSync(driver),
    `${driver} is missing: build it first (cmake --build build --target lingomat_native_answers)`);
  const cases = [...repositoryFiles(), ...hostileSet()];
  const folder = mkdtempSync(path.join(tmpdir(), 'lingomat-js-'));
  const utf8 = new TextDecoder('utf-8', { fatal: true, ignoreBOM: true });
  try {
    for (const options of OPTION_SETS) {
      await t.test(`options ${JSON.stringify(options)}`, async () => {
        const expected = nativeAnswers(cases, options, folder);
        const engine = await createEngine(options);
        const differences = [];
        cases.forEach((entry, i) => {
          const language = engine.identify(entry.bytes, entry.name);
          const ranking = engine.rank(entry.bytes, entry.name);
          if (language !== expected[i].language || !sameRanking(ranking, expected[i].ranking)) {
            differences.push(`${entry.id}: ${language} vs native ${expected[i].language}`);
          }
          let text = null;
          try {
            text = utf8.decode(entry.bytes);
          } catch {
            // Not UTF-8: only the bytes can stand for it.
          }
          if (text !== null && engine.identify(text, entry.name) !== language) {
            differences.push(`${entry.id}: the string and its bytes differ`);
          }
        });
        engine.dispose();
        assert.ok(cases.length > 100, `only ${cases.length} files`);
        assert.deepEqual(differences, []);
      });
    }
  } finally {
    rmSync(folder, { recursive: true, force: true });
  }
});
