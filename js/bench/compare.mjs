// Measures this package against the native library on the same labelled files, by content
// only (no file names): accuracy and files/s, and the package's size, start-up and memory,
// with the native library (the test driver's --time mode) as the baseline.
//   node bench/compare.mjs [--per-language N] [--runs N]
// LINGOMAT_CORPUS_GIT names a local copy of the sample projects (see labelled-files.js).
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { gzipSync } from 'node:zlib';

const memoryAtStart = process.memoryUsage();
const { createEngine } = await import('../src/index.js');
const { repositoryFiles, sampleFiles } = await import('./labelled-files.js');

const here = path.dirname(fileURLToPath(import.meta.url));
const repo = path.resolve(here, '../..');
const args = process.argv.slice(2);
const option = (name, fallback) => {
  const at = args.indexOf(name);
  return at >= 0 ? Number(args[at + 1]) : fallback;
};
const perLanguage = option('--per-language', 5);
const runs = option('--runs', 5);
const driver = process.env.LINGOMAT_NATIVE_ANSWERS ??
  path.join(repo, 'build/tests/js/lingomat_native_answers');

const median = (values) => [...values].sort((a, b) => a - b)[Math.floor(values.length / 2)];
const mib = (bytes) => `${(bytes / 2 ** 20).toFixed(2)} MiB`;
const percent = (part, whole) => `${((100 * part) / whole).toFixed(1)}%`;

function timeRuns(count, work) {
  const seconds = [];
  for (let i = 0; i < count; i++) {
    const start = performance.now();
    work();
    seconds.push((performance.now() - start) / 1000);
  }
  return median(seconds);
}

// --- files ---
const files = [...repositoryFiles(repo), ...sampleFiles(process.env.LINGOMAT_CORPUS_GIT, perLanguage)]
  .map((file) => ({ ...file, text: readFileSync(file.path, 'utf8') }));
const sets = ['repository', 'samples', 'all'].map((set) => ({
  set, files: set === 'all' ? files : files.filter((file) => file.set === set),
})).filter(({ files: chosen }) => chosen.length > 0);

// --- package size ---
const dist = path.join(here, '../dist');
const sizes = ['lingomat-engine.wasm', 'lingomat-engine.mjs', 'lingomat.json.gz'].map((name) => {
  const bytes = readFileSync(path.join(dist, name));
  return { name, raw: bytes.length, gzip: name.endsWith('.gz') ? bytes.length : gzipSync(bytes, { level: 9 }).length };
});
const rawData = statSync(path.join(repo, 'data/lingomat.json')).size;

// --- start-up and memory ---
let start = performance.now();
const engine = await createEngine();
const firstCreate = (performance.now() - start) / 1000;
const memoryWithEngine = process.memoryUsage();
const creates = [];
for (let i = 0; i < runs; i++) {
  start = performance.now();
  (await createEngine()).dispose();
  creates.push((performance.now() - start) / 1000);
}
const noFloor = await createEngine({ minTokens: 0, minScorePerToken: 0 });

// --- the native baseline, on the same texts ---
const folder = mkdtempSync(path.join(tmpdir(), 'lingomat-bench-'));
const list = files.map((file, i) => {
  const copy = path.join(folder, String(i));
  writeFileSync(copy, file.text);  // the same UTF-8 the package is given
  return `${copy}\t\n`;
}).join('');
const native = Object.fromEntries(execFileSync(driver, ['--data', path.join(repo, 'data/lingomat.json'),
  '--time', String(runs)], { input: list, encoding: 'utf8' }).trim().split('\n')
  .map((line) => line.split('\t')).map(([key, value]) => [key, Number(value)]));
rmSync(folder, { recursive: true, force: true });

// --- speed and accuracy ---
const detectors = [
  { name: 'lingomat (library defaults)', answer: (text) => engine.identify(text), runs },
  { name: 'lingomat (no floor)', answer: (text) => noFloor.identify(text), runs },
];
const results = [];
for (const detector of detectors) {
  const answers = [];
  const seconds = [];
  for (let run = 0; run < detector.runs; run++) {
    answers.length = 0;
    start = performance.now();
    for (const file of files) answers.push(await detector.answer(file.text));
    seconds.push((performance.now() - start) / 1000);
  }
  const perSet = sets.map(({ set, files: chosen }) => {
    const right = chosen.filter((file) => answers[files.indexOf(file)] === file.language).length;
    return { set, right, total: chosen.length };
  });
  results.push({ name: detector.name, seconds: median(seconds), perSet });
}

// --- report ---
const ours = median(creates);
console.log(`Files: ${sets.map(({ set, files: chosen }) => `${set} ${chosen.length}`).join(', ')}` +
  `; ${runs} runs (median).\n`);
console.log('| What | Raw | gzip |\n|---|---|---|');
for (const size of sizes) console.log(`| ${size.name} | ${size.name.endsWith('.gz') ? mib(rawData) + ' (unpacked)' : mib(size.raw)} | ${mib(size.gzip)} |`);
console.log(`\nStart-up (create from the bundled data): first ${(firstCreate * 1000).toFixed(0)} ms ` +
  `(compiles the module), then median ${(ours * 1000).toFixed(0)} ms; native ${(native.create_seconds * 1000).toFixed(0)} ms: ` +
  `${(ours / native.create_seconds).toFixed(2)}x native.`);
console.log(`Memory for one engine: +${mib(memoryWithEngine.rss - memoryAtStart.rss)} resident, ` +
  `+${mib(memoryWithEngine.arrayBuffers - memoryAtStart.arrayBuffers)} in array buffers (the wasm memory).`);
const nativeRate = native.files / native.identify_all_seconds;
console.log(`Native library: ${nativeRate.toFixed(0)} files/s.\n`);
console.log(`| Configuration | files/s | vs native | ${sets.map(({ set }) => `right, ${set}`).join(' | ')} |`);
console.log(`|---|---|---|${sets.map(() => '---|').join('')}`);
for (const result of results) {
  const rate = files.length / result.seconds;
  console.log(`| ${result.name} | ${rate.toFixed(0)} | ${(rate / nativeRate).toFixed(3)} | ` +
    `${result.perSet.map(({ right, total }) => percent(right, total)).join(' | ')} |`);
}
engine.dispose();
noFloor.dispose();
