// The page without a server of ours: its files on any host.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { createServer, type Server } from 'node:http';
import { extname, join, resolve } from 'node:path';
import { after, before, test } from 'node:test';
import type { Browser } from 'puppeteer-core';
import { Desk, lastBars, startBrowser } from './support.ts';

const folder = resolve('dist');
const types: Readonly<Record<string, string>> = {
  '.html': 'text/html',
  '.js': 'text/javascript',
  '.css': 'text/css',
  '.svg': 'image/svg+xml',
};

/** A host that knows nothing but files, and not even all of their types, below a folder. */
const host = createServer(({ url }, answer) => {
  const path = /^\/pages\/([\w.-]*)$/.exec(new URL(url!, 'http://host').pathname)?.[1];
  const name = path === '' ? 'index.html' : (path ?? 'none');
  try {
    const bytes = readFileSync(join(folder, name));
    answer.writeHead(200, { 'Content-Type': types[extname(name)] ?? 'text/plain' });
    answer.end(bytes);
  } catch {
    answer.writeHead(404).end();
  }
});

let browser: Browser;
let entry: { origin: string; takeEntry: () => string };

before(async () => {
  await new Promise<Server>((done) => {
    const server = host.listen(0, '127.0.0.1', () => done(server));
  });
  const origin = `http://127.0.0.1:${(host.address() as { port: number }).port}`;
  entry = { origin, takeEntry: () => `${origin}/pages/` };
  browser = await startBrowser();
});
after(async () => {
  await browser.close();
  host.close();
});

test('the page shows the sample, takes bars, and keeps scripts in the browser', async () => {
  const desk = await Desk.open(browser, entry);
  assert.match(await desk.text('.caption'), /^index-daily/);
  assert.equal(await desk.page.$('#tab-scan'), null);
  await desk.drop('mine.csv', lastBars(90));
  await desk.write('MINE:MA(C,7);');
  await desk.page.click('#save');
  await desk.page.type('#save-name', 'mine');
  await desk.page.click('#save-do');
  await desk.settled();
  assert.equal(await desk.text('#message'), 'Saved as mine.quor');
  await desk.write('OTHER:C;');
  await desk.chord('Control', 's');
  await desk.close();
  const next = await Desk.open(browser, entry);
  await next.openScript('mine');
  assert.equal(await next.script(), 'OTHER:C;');
  await next.close();
});

test('a link works for someone else', async () => {
  const desk = await Desk.open(browser, entry);
  await desk.write('LINKED:MA(C,LEN);');
  await desk.page.type('[aria-label="Name of a parameter"]', 'LEN');
  await desk.page.click('.adder button');
  await desk.settled();
  const legend = await desk.legend();
  await desk.page.click('#copy-link');
  await desk.page.waitForFunction(() => location.hash.length > 5);
  const { hash } = new URL(desk.page.url());
  await desk.close();
  const context = await browser.createBrowserContext();
  const other = await Desk.open(context, entry, hash);
  assert.equal(await other.script(), 'LINKED:MA(C,LEN);');
  assert.deepEqual(await other.legend(), legend);
  await other.close();
  await context.close();
});
