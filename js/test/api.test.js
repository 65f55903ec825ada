// What the package promises beyond the native answers: option checking, errors that name the
// problem and leave the engine usable, host-supplied data, explanations and disposal.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { gzipSync } from 'node:zlib';

import { createEngine, LingomatError } from '../src/index.js';

const data = new Uint8Array(readFileSync(new URL('../../data/lingomat.json', import.meta.url)));
const C_TEXT = '#include <stdio.h>\nint main(void) {\n  printf("%d\\n", 42);\n  return 0;\n}\n'.repeat(4);

test('absurd options and bad data files are refused, naming the problem', async () => {
  for (const [options, message] of [
    [{ maxTokens: -1 }, /maxTokens/], [{ minTokens: 1.5 }, /minTokens/],
    [{ maxScanBytes: 2 ** 60 }, /maxScanBytes/], [{ maxScanBytes: '10' }, /maxScanBytes/],
    [{ minScorePerToken: '-8' }, /minScorePerToken/], [{ only: 'C' }, /only/], [{ only: ['C', 7] }, /only/],
    [{ data: 'lingomat.json' }, /data/], [{ maxtokens: 10 }, /unknown option maxtokens/],
    [[], /options must be an object/]]) {
    await assert.rejects(createEngine(options), message, JSON.stringify(options));
  }
  // Bad data fails with the C interface's status for bad JSON.
  for (const bytes of ['{"languages": ', '{"languages": {}}', gzipSync(Buffer.from('[1, 2')), '']) {
    await assert.rejects(createEngine({ data: typeof bytes === 'string' ? new TextEncoder().encode(bytes) : bytes }),
      (error) => error instanceof LingomatError && error.status === -5 && /JSON/.test(error.message));
  }
});

test('host data, plain or compressed, answers as the bundled data does', async () => {
  const engines = await Promise.all([undefined, data.buffer, gzipSync(data)].map((bytes) =>
    createEngine({ data: bytes, only: ['C', 'C++'] })));
  for (const engine of engines) {
    assert.equal(engine.identify(C_TEXT), 'C');
    assert.deepEqual(engine.rank(C_TEXT), engines[0].rank(C_TEXT));
    assert.equal(engine.identify('plain words', 'README'), null);
  }
  // Restricted to two languages, the classifier ranks only those.
  assert.deepEqual(engines[0].rank(C_TEXT).map((entry) => entry.language).sort(), ['C', 'C++']);
  for (const engine of engines) engine.dispose();
});

test('wrong arguments are refused and the engine stays usable; a disposed one refuses all', async () => {
  const engine = await createEngine();
  assert.throws(() => engine.identify(42), TypeError);
  assert.throws(() => engine.rank(C_TEXT, 7), TypeError);
  assert.equal(engine.identify(C_TEXT, 'main.c'), 'C');
  assert.equal(engine.identify(new Uint8Array(0)), null);
  assert.ok(engine.languages.includes('Python'));
  // The explanation names the answer and ranks as rank() does.
  const why = engine.explain(C_TEXT, 'main.h');
  assert.equal(why.language, engine.identify(C_TEXT, 'main.h'));
  assert.deepEqual(why.ranking.map(({ language, score }) => ({ language, score })), engine.rank(C_TEXT, 'main.h'));
  // Texts larger than any before grow the shared buffer; answers do not change.
  assert.equal(engine.identify(C_TEXT.repeat(5000), 'main.c'), engine.identify(C_TEXT, 'main.c'));
  engine.dispose();
  engine.dispose();  // twice is harmless
  assert.throws(() => engine.identify(C_TEXT), (error) => error.status === -2);
});
