// Serves the package folder on the loopback interface, so the page can load its module, the
// WebAssembly engine and the data file: `node page/serve.mjs [port]`, then open /page/.
import { createServer } from 'node:http';
import { readFile } from 'node:fs/promises';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '..');
const TYPES = {
  '.html': 'text/html; charset=utf-8', '.js': 'text/javascript', '.mjs': 'text/javascript',
  '.css': 'text/css', '.wasm': 'application/wasm', '.gz': 'application/gzip',
};

export function servePackage(port = 0) {
  const server = createServer(async (request, response) => {
    let file = decodeURIComponent(new URL(request.url, 'http://localhost').pathname);
    if (file.endsWith('/')) file += 'index.html';
    const full = path.join(root, path.normalize(file));
    if (!full.startsWith(root + path.sep)) {
      response.writeHead(403).end();
      return;
    }
    try {
      const body = await readFile(full);
      response.writeHead(200, { 'content-type': TYPES[path.extname(full)] ?? 'application/octet-stream' });
      response.end(body);
    } catch {
      response.writeHead(404).end();
    }
  });
  return new Promise((resolve) => {
    server.listen(port, '127.0.0.1', () => resolve(server));
  });
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const server = await servePackage(Number(process.argv[2] ?? 8024));
  console.log(`http://127.0.0.1:${server.address().port}/page/`);
}
