// A server of files for the tests in a browser.
import { createServer } from 'node:http';
import { readFile } from 'node:fs/promises';
import { extname, join, normalize } from 'node:path';

const types = {
  '.html': 'text/html',
  '.js': 'text/javascript',
  '.css': 'text/css',
  '.wasm': 'application/wasm',
};

/** Serves a folder on a free port of this machine; gives its address and its end. */
export async function serve(folder) {
  const server = createServer(async (request, response) => {
    const path = normalize(new URL(request.url, 'http://localhost').pathname);
    try {
      const content = await readFile(join(folder, path));
      response.setHeader('content-type', types[extname(path)] ?? 'application/octet-stream');
      response.end(content);
    } catch {
      response.statusCode = 404;
      response.end();
    }
  });
  await new Promise((listening) => server.listen(0, '127.0.0.1', listening));
  const close = () => new Promise((closed) => (server.close(closed), server.closeAllConnections()));
  return { address: `http://127.0.0.1:${server.address().port}`, close };
}
