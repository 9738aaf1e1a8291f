// The package from its tarball, in a page, in a worker, and in the example of a page.
import assert from 'node:assert/strict';
import { copyFileSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import puppeteer from 'puppeteer-core';
import { addPackage, installed } from '../support/installed.mjs';
import { serve } from '../support/server.mjs';

const page = `<!doctype html><meta charset="utf-8">
<script type="importmap">{"imports":{"quor":"./node_modules/quor/dist/index.js"}}</script>
<script type="module">
  import { load, ScriptError } from 'quor';
  window.load = load;
  window.ScriptError = ScriptError;
  window.isReady = true;
</script>`;

const worker = `import { load } from './node_modules/quor/dist/index.js';
const engine = load();
onmessage = async ({ data: { source, bars } }) => {
  const script = (await engine).compile(source);
  const lines = script.run(bars);
  script.free();
  postMessage({ ...lines });
};`;

let at;
let server;
let browser;
let tab;
const faults = [];

async function open(path) {
  await tab.goto(`${server.address}/${path}`);
}

before(async () => {
  at = installed();
  addPackage(at.folder, 'uplot');
  writeFileSync(join(at.folder, 'page.html'), page);
  writeFileSync(join(at.folder, 'worker.js'), worker);
  copyFileSync(join(at.package, 'examples/page.html'), join(at.folder, 'example.html'));
  server = await serve(at.folder);
  const flags = ['--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage'];
  browser = await puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: flags,
  });
  tab = await browser.newPage();
  tab.on('pageerror', (fault) => faults.push(fault.message));
});

after(async () => {
  await browser?.close();
  await server?.close();
  if (at !== undefined) rmSync(at.folder, { recursive: true });
});

test('a page loads the engine in three ways, runs a script and is told of mistakes', async () => {
  await open('page.html');
  await tab.waitForFunction('window.isReady');
  const seen = await tab.evaluate(async () => {
    const quor = await load();
    const script = quor.compile('A:MA(C,2);');
    const lines = script.run({ time: [20240101, 20240102], close: Float64Array.of(1, 2) });
    let mistake;
    try {
      quor.compile('A:EMMA(C,5);');
    } catch (error) {
      mistake = [error instanceof ScriptError, error.message];
    }
    const other = await load(fetch('node_modules/quor/dist/quor.wasm'));
    const named = await load('node_modules/quor/dist/quor.wasm');
    const findings = quor.compile('A:C,LINETHIK2;').findings.length;
    return [[...lines.A].map(String), mistake, other.memory > 0, named.memory > 0, findings];
  });
  assert.deepEqual(seen[0], ['NaN', '1.5']);
  assert.deepEqual(seen[1], [true, '1:3: error: nothing defines EMMA (code 2); did you mean EMA?']);
  assert.deepEqual(seen.slice(2), [true, true, 1]);
});

test('a worker of a page calculates', async () => {
  await open('page.html');
  const sum = await tab.evaluate(
    () =>
      new Promise((done, failed) => {
        const worker = new Worker('./worker.js', { type: 'module' });
        worker.onmessage = ({ data }) => done(data.A.reduce((a, b) => a + b));
        worker.onerror = (event) => failed(new Error(event.message));
        const bars = { time: [20240103, 20240101, 20240102], close: [4, 1, 2] };
        worker.postMessage({ source: 'A:SUM(C,0);', bars });
      }),
  );
  assert.equal(sum, 7 + 1 + 3);
});

test('the page of the examples draws a script over a file that is dropped', async () => {
  await open('example.html');
  await tab.waitForFunction(() => document.body.dataset.ready === 'yes');
  const drop = (text) =>
    tab.evaluate((content) => {
      const files = new DataTransfer();
      files.items.add(new File([content], 'bars.csv'));
      document.dispatchEvent(new DragEvent('drop', { dataTransfer: files, bubbles: true }));
    }, text);
  const rows = Array.from({ length: 60 }, (_, i) => {
    const date = new Date(Date.UTC(2024, 0, 1 + i)).toISOString().slice(0, 10);
    return `${date},${10 + Math.sin(i / 5)}`;
  });
  await drop(`Date,Close\n${rows.join('\n')}\n`);
  await tab.waitForSelector('#chart canvas');
  const labels = await tab.$$eval('#chart .u-label', (all) =>
    all.map((label) => label.textContent),
  );
  assert.deepEqual(labels.slice(1), ['FAST', 'SLOW']);
  const ink = await tab.$eval('#chart canvas', (canvas) => {
    const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
    let coloured = 0;
    for (let i = 0; i < data.length; i += 4) {
      coloured += data[i + 3] > 0 && Math.abs(data[i] - data[i + 2]) > 60 ? 1 : 0;
    }
    return coloured;
  });
  assert.ok(ink > 500, `${ink} coloured pixels`);
  if (process.env.PICTURE) await tab.screenshot({ path: process.env.PICTURE });

  const write = (script) =>
    tab.$eval(
      '#script',
      (field, text) => {
        field.value = text;
        field.dispatchEvent(new Event('input'));
      },
      script,
    );
  const says = (words) =>
    tab.waitForFunction(
      (text) => document.getElementById('message').textContent.includes(text),
      { timeout: 5000 },
      words,
    );
  await write('A:EMMA(C,5);');
  await says('nothing defines EMMA');
  await write('A:MA(C,5);');
  await drop('no bars at all');
  await says('nothing holds the times');
  assert.deepEqual(faults, []);
});
