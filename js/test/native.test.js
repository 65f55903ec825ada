// Every answer and every ranking score of the package must be the native library's, bit for
// bit, on this repository's sources and on hostile texts, under several options; a string
// answers as its UTF-8 bytes.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

import { createEngine } from '../src/index.js';

const repo = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '../..');
const driver = process.env.LINGOMAT_NATIVE_ANSWERS ??
  path.join(repo, 'build/tests/js/lingomat_native_answers');
const encoder = new TextEncoder();

const OPTION_SETS = [{}, { minTokens: 0, minScorePerToken: 0 },
  { maxScanBytes: 0, maxTokens: 0, only: ['C', 'Python', 'Shell', 'Markdown'] },
  { maxScanBytes: 1, maxTokens: 3, minTokens: 1, minScorePerToken: -3.5 }];
// Empty and binary input, broken UTF-8, unterminated strings and comments, huge lines and
// tags, odd #! lines, each under two names; the repository's files give the ordinary texts.
function hostileSet() {
  const names = ['', 'Makefile', 'x.h', 'a.b.c.rb', '.bashrc', 'n\u00e4me.py', 'script', 'x.', 'cut\u0000.py'];
  let seed = 24;
  const next = () => (seed = (seed * 1103515245 + 12345) % 2147483648) / 2147483648;
  const texts = ['', ' \n\t\r\n   ', '\u0000\u0000\u0000int\u0000main',
    new Uint8Array([0xff, 0xfe, 0x00, 0x41, 0xc3, 0x28, 0xe2, 0x82, 0xf0, 0x9f, 0x98]),
    Uint8Array.from({ length: 4096 }, () => Math.floor(next() * 256)), 'x'.repeat(100000),
    '('.repeat(5000) + ')'.repeat(4999), '/* never closed ' + 'int x; '.repeat(300),
    '"never closed ' + 'word '.repeat(500), '<' + 'a '.repeat(20000), '<div ' + 'attr="v" '.repeat(3000) + '>',
    '#!\n', '#! /bin/sh\necho $1\n', '#!/usr/bin/env -S python3 -u\nprint(1)\n', '#!/usr/local/bin/perl5.36 -w\n$x;\n',
    '\ufeff// a byte-order mark first\nvar x = 1;\n', 'caf\u00e9 \u65e5\u672c \ud83d\ude00 '.repeat(200),
    '\r\n'.repeat(3000) + 'end', '\'\'\'\n"""\n`\n' + '\\'.repeat(999)];
  return texts.flatMap((text, i) => [names[i % names.length], names[(i * 7 + 3) % names.length]].map((name, j) => ({
    id: `hostile-${i}-${j}`, bytes: typeof text === 'string' ? encoder.encode(text) : text, name })));
}

function repositoryFiles() {
  return execFileSync('git', ['-C', repo, 'ls-files', '-z'], { encoding: 'utf8' }).split('\0').filter(Boolean).map((file) => ({
    id: file, bytes: new Uint8Array(readFileSync(path.join(repo, file))), name: path.basename(file),
  })).filter((entry) => entry.bytes.length < (4 << 20));
}

// The native answers for `cases`, each { language, ranking }, in order. The driver prints
// answer<TAB>count{<TAB>language<TAB>score} per "path<TAB>name" line it reads.
function nativeAnswers(cases, options, folder) {
  const flags = ['--data', path.join(repo, 'data/lingomat.json')];
  for (const key of ['maxScanBytes', 'maxTokens', 'minTokens', 'minScorePerToken']) {
    if (options[key] !== undefined) flags.push(`--${key}`, String(options[key]));
  }
  for (const name of options.only ?? []) flags.push('--only', name);
  const input = cases.map((entry, i) => {
    writeFileSync(path.join(folder, String(i)), entry.bytes);
    return `${path.join(folder, String(i))}\t${entry.name}\n`;
  }).join('');
  const run = spawnSync(driver, flags, { input, maxBuffer: 256 << 20, encoding: 'utf8' });
  assert.equal(run.status, 0, `native driver failed: ${run.stderr}`);
  const number = (text) => ({ inf: Infinity, '-inf': -Infinity, nan: NaN, '-nan': NaN }[text] ?? Number(text));
  return run.stdout.split('\n').slice(0, -1).map((line) => {
    const fields = line.split('\t');
    const ranking = [];
    for (let i = 2; i < fields.length; i += 2) ranking.push({ language: fields[i], score: number(fields[i + 1]) });
    assert.equal(ranking.length, Number(fields[1]));
    return { language: fields[0] === '' ? null : fields[0], ranking };
  });
}

test('the package answers as the native library does', async (t) => {
  assert.ok(existsSync(driver), `${driver} is missing: build it (target lingomat_native_answers)`);
  const cases = [...repositoryFiles(), ...hostileSet()];
  assert.ok(cases.length > 100, `only ${cases.length} files`);
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
          const same = ranking.length === expected[i].ranking.length && ranking.every((r, k) =>
            r.language === expected[i].ranking[k].language && Object.is(r.score, expected[i].ranking[k].score));
          if (language !== expected[i].language || !same) {
            differences.push(`${entry.id}: ${language} vs native ${expected[i].language}`);
          }
          let text = null;
          try {
            text = utf8.decode(entry.bytes);
          } catch { /* not UTF-8: only the bytes can stand for it */ }
          if (text !== null && engine.identify(text, entry.name) !== language) {
            differences.push(`${entry.id}: the string and its bytes differ`);
          }
        });
        engine.dispose();
        assert.deepEqual(differences, []);
      });
    }
  } finally {
    rmSync(folder, { recursive: true, force: true });
  }
});
