// lingomat for JavaScript: the engine compiled to WebAssembly, with the shipped data file.
import createLingomatModule from '../dist/lingomat-engine.mjs';
import { loadBundledData, loadEngineBytes, inflateIfGzip } from './assets.js';
import { engineOptions } from './options.js';

export { defaultOptions } from './options.js';

const encoder = new TextEncoder();
const DATA_PATH = '/lingomat-data.json';

export class LingomatError extends Error {
  constructor(message, status) {
    super(message);
    this.name = 'LingomatError';
    this.status = status;
  }
}

let compiledEngine = null;

// Compiled once per process; every engine gets its own instance and memory.
async function compileEngine() {
  if (!compiledEngine) {
    compiledEngine = loadEngineBytes().then((bytes) => WebAssembly.compile(bytes));
    compiledEngine.catch(() => {
      compiledEngine = null;
    });
  }
  return compiledEngine;
}

async function instantiate() {
  const compiled = await compileEngine();
  return createLingomatModule({
    instantiateWasm(imports, receive) {
      WebAssembly.instantiate(compiled, imports).then((instance) => receive(instance, compiled));
      return {};
    },
  });
}

function failure(module, status, what) {
  const text = module.UTF8ToString(module._lm_status_text(status));
  return new LingomatError(`lingomat: ${what}: ${text} (${status})`, status);
}

// Copies `strings` into wasm memory as NUL-terminated bytes and an array of pointers to them.
function writeStringArray(module, strings) {
  const pointers = module._malloc(Math.max(strings.length, 1) * 4);
  const owned = [pointers];
  strings.forEach((text, i) => {
    const bytes = encoder.encode(text);
    const at = module._malloc(bytes.length + 1);
    module.HEAPU8.set(bytes, at);
    module.HEAPU8[at + bytes.length] = 0;
    module.HEAPU32[(pointers >> 2) + i] = at;
    owned.push(at);
  });
  return { pointers, owned };
}

function createNative(module, data, opts) {
  module.FS.writeFile(DATA_PATH, data);
  const only = writeStringArray(module, opts.only);
  const out = module._malloc(4);
  const path = writeStringArray(module, [DATA_PATH]);
  try {
    const status = module._lm_create(
      module.HEAPU32[path.pointers >> 2], opts.maxScanBytes, opts.maxTokens, opts.minTokens,
      opts.minScorePerToken, only.pointers, opts.only.length, out);
    if (status !== 0) throw failure(module, status, 'cannot create the engine');
    return module.HEAPU32[out >> 2];
  } finally {
    module.FS.unlink(DATA_PATH);
    for (const at of [...only.owned, ...path.owned, out]) module._free(at);
  }
}

class Engine {
  #module;
  #native;
  #languages;
  #names = new Map(); // resident name pointer -> string
  #scratch = 0;
  #scratchSize = 0;
  #status;

  constructor(module, native) {
    this.#module = module;
    this.#native = native;
    this.#status = module._malloc(4);
    const count = module._lm_language_count(native);
    this.#languages = [];
    for (let i = 0; i < count; i++) {
      this.#languages.push(module.UTF8ToString(module._lm_language_name(native, i)));
    }
  }

  /** Every language the data file holds statistics for, in byte order. */
  get languages() {
    return this.#languages.slice();
  }

  identify(text, filename) {
    const module = this.#live();
    const [code, codeLength, name, nameLength] = this.#place(text, filename);
    const at = module._lm_identify(this.#native, code, codeLength, name, nameLength, this.#status);
    if (at === 0) {
      const status = module.HEAP32[this.#status >> 2];
      if (status !== 0) throw failure(module, status, 'cannot identify');
      return null;
    }
    let language = this.#names.get(at);
    if (language === undefined) {
      language = module.UTF8ToString(at);
      this.#names.set(at, language);
    }
    return language;
  }

  rank(text, filename) {
    const count = this.#call('_lm_rank', text, filename);
    return this.#ranking(count);
  }

  /** What decided the answer: the strategies' findings, the ranking and the tokens. */
  explain(text, filename) {
    const count = this.#call('_lm_explain', text, filename);
    const module = this.#module;
    const trace = JSON.parse(module.UTF8ToString(module._lm_text_result(this.#native)));
    const ranking = this.#ranking(count);
    return {
      language: this.identify(text, filename),
      ...trace,
      ranking: ranking.map((entry, i) => ({
        ...entry,
        perToken: entry.score / trace.tokenCount,
        kept: i < trace.keptCount,
      })),
    };
  }

  dispose() {
    if (!this.#module) return;
    this.#module._lm_destroy(this.#native);
    if (this.#scratch) this.#module._free(this.#scratch);
    this.#module._free(this.#status);
    this.#module = null;
  }

  #live() {
    if (!this.#module) throw new LingomatError('lingomat: the engine was disposed', -2);
    return this.#module;
  }

  #call(entry, text, filename) {
    const module = this.#live();
    const [code, codeLength, name, nameLength] = this.#place(text, filename);
    const count = module[entry](this.#native, code, codeLength, name, nameLength);
    if (count < 0) throw failure(module, count, 'cannot identify');
    return count;
  }

  #ranking(count) {
    const module = this.#module;
    const languages = module._lm_ranked_languages(this.#native) >> 2;
    const scores = module._lm_ranked_scores(this.#native) >> 3;
    const ranking = [];
    for (let i = 0; i < count; i++) {
      ranking.push({
        language: this.#languages[module.HEAPU32[languages + i]],
        score: module.HEAPF64[scores + i],
      });
    }
    return ranking;
  }

  // Puts the text and the file name, UTF-8 encoded, side by side in one reused buffer in wasm
  // memory.
  #place(text, filename = '') {
    if (typeof text !== 'string' && !(text instanceof Uint8Array)) {
      throw new TypeError('lingomat: the text must be a string or a Uint8Array');
    }
    if (filename === null) filename = '';
    if (typeof filename !== 'string') {
      throw new TypeError('lingomat: the file name must be a string');
    }
    // The C interface takes NUL-terminated names; a name is what comes before its first NUL.
    const end = filename.indexOf('\0');
    if (end >= 0) filename = filename.slice(0, end);
    const textRoom = typeof text === 'string' ? text.length * 3 : text.length;
    this.#reserve(textRoom + filename.length * 3 + 1);
    const module = this.#module;
    const heap = module.HEAPU8;
    const code = this.#scratch;
    let codeLength;
    if (typeof text === 'string') {
      codeLength = encoder.encodeInto(text, heap.subarray(code, code + textRoom)).written;
    } else {
      heap.set(text, code);
      codeLength = text.length;
    }
    const name = code + codeLength;
    const nameLength = encoder.encodeInto(
      filename, heap.subarray(name, name + filename.length * 3)).written;
    return [code, codeLength, name, nameLength];
  }

  #reserve(size) {
    if (size <= this.#scratchSize) return;
    const module = this.#module;
    if (this.#scratch) module._free(this.#scratch);
    this.#scratchSize = Math.max(size, this.#scratchSize * 2, 64 * 1024);
    this.#scratch = module._malloc(this.#scratchSize);
    if (!this.#scratch) {
      this.#scratchSize = 0;
      throw new LingomatError('lingomat: out of memory for the text', -3);
    }
  }
}

/**
 * Creates an engine from the bundled data file, or from `options.data` (bytes of a data
 * file, plain or gzip-compressed). Options are those of the C interface.
 */
export async function createEngine(options = {}) {
  const opts = engineOptions(options);
  const [module, data] = await Promise.all([
    instantiate(),
    opts.data ? inflateIfGzip(opts.data) : loadBundledData(),
  ]);
  return new Engine(module, createNative(module, data, opts));
}
