// The files the package ships beside its code: the WebAssembly module and the data file,
// gzip-compressed. Read from disk in Node and from the package's own URL in a browser.
const isNode = typeof process === 'object' && typeof process.versions?.node === 'string';
const engineUrl = new URL('../dist/lingomat-engine.wasm', import.meta.url);
const dataUrl = new URL('../dist/lingomat.json.gz', import.meta.url);

async function readAsset(url) {
  if (isNode) {
    const { readFile } = await import('node:fs/promises');
    return new Uint8Array(await readFile(url));
  }
  const response = await fetch(url);
  if (!response.ok) throw new Error(`lingomat: cannot load ${url}: ${response.status}`);
  return new Uint8Array(await response.arrayBuffer());
}

export function loadEngineBytes() {
  return readAsset(engineUrl);
}

export async function inflateIfGzip(bytes) {
  if (bytes.length < 2 || bytes[0] !== 0x1f || bytes[1] !== 0x8b) return bytes;
  if (isNode) {
    const { gunzipSync } = await import('node:zlib');
    return new Uint8Array(gunzipSync(bytes));
  }
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('gzip'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

export async function loadBundledData() {
  return inflateIfGzip(await readAsset(dataUrl));
}
