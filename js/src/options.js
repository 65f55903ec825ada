// The engine's options, checked before anything is built: a bad one is refused by name.
const DEFAULTS = Object.freeze({
  maxScanBytes: 10240,
  maxTokens: 500,
  minTokens: 40,
  minScorePerToken: -8.0,
});
const COUNTS = ['maxScanBytes', 'maxTokens', 'minTokens'];
const KNOWN = new Set([...Object.keys(DEFAULTS), 'data', 'only']);

export const defaultOptions = DEFAULTS;

function bytesOf(data) {
  if (data instanceof Uint8Array) return data;
  if (data instanceof ArrayBuffer) return new Uint8Array(data);
  if (ArrayBuffer.isView(data)) return new Uint8Array(data.buffer, data.byteOffset, data.byteLength);
  throw new TypeError('lingomat: option data must be the bytes of a data file (Uint8Array or ArrayBuffer)');
}

export function engineOptions(options) {
  if (options === null || typeof options !== 'object' || Array.isArray(options)) {
    throw new TypeError('lingomat: options must be an object');
  }
  for (const key of Object.keys(options)) {
    if (!KNOWN.has(key)) throw new TypeError(`lingomat: unknown option ${key}`);
  }
  const opts = { ...DEFAULTS, only: [], data: null };
  for (const key of COUNTS) {
    if (options[key] === undefined) continue;
    const value = options[key];
    // Counts are unsigned 64-bit in the engine; JavaScript numbers are exact up to 2^53.
    if (!Number.isSafeInteger(value) || value < 0) {
      throw new RangeError(`lingomat: option ${key} must be a whole number from 0 to 2^53-1, not ${String(value)}`);
    }
    opts[key] = value;
  }
  if (options.minScorePerToken !== undefined) {
    if (typeof options.minScorePerToken !== 'number') {
      throw new TypeError('lingomat: option minScorePerToken must be a number');
    }
    opts.minScorePerToken = options.minScorePerToken;
  }
  if (options.only !== undefined) {
    if (!Array.isArray(options.only) || !options.only.every((name) => typeof name === 'string')) {
      throw new TypeError('lingomat: option only must be an array of language names');
    }
    opts.only = options.only.slice();
  }
  if (options.data !== undefined && options.data !== null) opts.data = bytesOf(options.data);
  return opts;
}
