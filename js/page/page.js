// The page's one job: identify what is pasted, and show why.
import { createEngine } from '../src/index.js';

const $ = (id) => document.getElementById(id);
const TOP = 5;

function list(names) {
  return names.length ? names.join(', ') : '(none)';
}

function row(label, value) {
  const tr = document.createElement('tr');
  for (const text of [label, value]) {
    const td = document.createElement('td');
    td.textContent = text;
    tr.append(td);
  }
  return tr;
}

function item(text, className) {
  const li = document.createElement('li');
  li.textContent = text;
  if (className) li.className = className;
  return li;
}

function show(engine) {
  const text = $('text').value;
  const name = $('filename').value;
  const why = engine.explain(text, name);
  $('answer').textContent = why.language ?? 'no answer';
  $('reason').textContent = `(${why.reason})`;
  $('evidence').tBodies[0].replaceChildren(
    row('file name', list(why.byFilename)),
    row('interpreter', why.interpreter ? `${why.interpreter}: ${list(why.byInterpreter)}` : '(none)'),
    row('extension', why.extension ? `${why.extension}: ${list(why.byExtension)}` : '(none)'),
    row('candidates', list(why.candidates)),
    row('tokens', String(why.tokenCount)));
  const seen = new Set();
  const top = why.ranking.filter((entry) => !seen.has(entry.language) && seen.add(entry.language));
  $('candidates').replaceChildren(...top.slice(0, TOP).map((entry) => item(
    `${entry.language}: ${entry.score.toFixed(2)} (${entry.perToken.toFixed(3)} per token)` +
      (entry.kept ? '' : ', below the floor'), entry.kept ? '' : 'below')));
  $('tokens-title').textContent = why.rival
    ? `Tokens that decided, ${why.language ?? ''} over ${why.rival}` : 'Tokens that decided';
  $('tokens').replaceChildren(...why.decidingTokens.map((token) => item(
    `${token.token}  ×${token.count}  ${token.margin >= 0 ? '+' : ''}${token.margin.toFixed(2)}`)));
}

async function main() {
  const engine = await createEngine();
  const update = () => show(engine);
  $('text').addEventListener('input', update);
  $('filename').addEventListener('input', update);
  update();
  document.body.dataset.ready = 'true';
}

main().catch((error) => {
  $('answer').textContent = `the engine failed to start: ${error.message}`;
});
