// Securities of a folder: play, scan, files that are dropped, and what must be refused.
import assert from 'node:assert/strict';
import { existsSync, linkSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import type { Browser } from 'puppeteer-core';
import { Desk, folderOf, lastBars, onDesks, quorSays, Studio } from './support.ts';

const hostile = '<img src=x onerror=alert(1)>';
const names = ['alpha', 'beta', 'gamma', 'delta', hostile];
const folder = folderOf(names);
let studio: Studio;
let browser: Browser;
let desk: Desk;

onDesks((opened) => ({ studio, browser, desk } = opened), '--bars', folder);

const crossing =
  "F:=MA(C,3);\nS:=MA(C,8);\nM:MA(C,5);\nCROSS(F,S),BK(2);\nCROSS(S,F),SP;\nCROSS(C,M),NOTICE('over');";

test('200 bars are played, and fire what the command line fires', async () => {
  writeFileSync(join(folder, 'crossing.quor'), crossing);
  const bars = join(folder, 'alpha.csv');
  const fired = quorSays('run', join(folder, 'crossing.quor'), '--bars', bars, '--fire');
  await desk.page.click('::-p-xpath(//ul[@aria-label="Securities"]//button[.="alpha"])');
  await desk.settled();
  await desk.write(crossing);
  await desk.page.select('#play-ticks', '1');
  await desk.page.$eval('#play-speed', (speed) => {
    (speed as HTMLInputElement).value = '6';
    speed.dispatchEvent(new Event('input'));
  });
  await desk.page.click('#play-step');
  await desk.page.waitForFunction(
    () => document.getElementById('play-place')!.textContent === 'bar 201 of 400',
  );
  await desk.page.click('#play-toggle');
  const end = () => document.getElementById('play-place')!.textContent === 'bar 400 of 400';
  await desk.page.waitForFunction(end);
  await desk.settled();
  const played = await desk.texts('.event-list li[data-final="true"] .word');
  const times = await desk.texts('.event-list .time');
  const first = lastBars(200).split('\n')[1].split(',')[0];
  const expected = [...fired.matchAll(/^(?:signal|notice) +(\d{4}-\d\d-\d\d)/gm)].filter(
    ([, day]) => day >= first,
  );
  assert.ok(played.length > 20);
  assert.equal(played.length, expected.length);
  assert.ok(times.every((time) => time >= first));
  await desk.page.click('#play-stop');
  await desk.settled();
  assert.equal(await desk.text('#play-place'), '');
  await desk.page.click('.event-list button');
  assert.match(
    await desk.text('.caption'),
    new RegExp((await desk.text('.event-list .time')).slice(0, 10)),
  );
});

test('what a forming bar fires stands, or is taken back when the bar is whole', async () => {
  await desk.write("C>O,NOTICE('above');\nC>O,BK;");
  await desk.page.click('#play-step');
  await desk.page.$eval('#play-speed', (speed) => {
    (speed as HTMLInputElement).value = '6';
    speed.dispatchEvent(new Event('input'));
  });
  await desk.page.click('#play-toggle');
  await desk.page.waitForFunction(
    () => /bar 2[1-9]\d/.test(document.getElementById('play-place')!.textContent!),
    {
      timeout: 60_000,
    },
  );
  await desk.page.click('#play-toggle');
  await desk.settled();
  const newest = await desk.text('.event-list .time');
  const whole = (await desk.texts('.event-list li')).filter((text) => !text.includes(newest));
  assert.ok(whole.some((text) => text.includes('taken back')));
  assert.ok(whole.every((text) => !text.includes('above') || !text.includes('forming')));
  const { length } = await desk.page.$$('.event-list li[data-final="true"]');
  assert.equal(await desk.text('#tab-events'), `Events (${length})`);
});

test('a step forms the bar tick by tick', async () => {
  await desk.write('V1:V;');
  await desk.page.focus('#chart');
  await desk.press('End');
  for (let i = 0; i < 10; ++i) await desk.page.keyboard.press('ArrowLeft');
  const volumes: number[] = [];
  for (let i = 0; i < 4; ++i) {
    await desk.page.click('#play-step');
    await desk.settled();
    await desk.page.focus('#chart');
    await desk.press('Escape');
    volumes.push(Number.parseFloat((await desk.legend()).V1.replaceAll(',', '')));
    assert.equal(await desk.text('#play-place'), 'bar 390 of 400');
  }
  assert.ok(
    volumes[0] < volumes[1] && volumes[1] < volumes[2] && volumes[2] < volumes[3],
    volumes.join(' '),
  );
  await desk.page.click('#play-step');
  await desk.settled();
  assert.equal(await desk.text('#play-place'), 'bar 391 of 400');
});

test('what a script asks for comes from the folder, or is named', async () => {
  await desk.write('BETA:"beta$CLOSE";\nLACK:"other$CLOSE";\nLEAST:MINPRICE;');
  await desk.page.waitForFunction(() =>
    [...document.querySelectorAll('.legend > div')].some(
      ({ children: [title, value] }) =>
        title.textContent === 'BETA' && /\d/.test(value.textContent!),
    ),
  );
  const newest = lastBars(1).split('\n')[1].split(',');
  const close = newest[lastBars(1).split('\n')[0].split(',').indexOf('close')];
  assert.equal((await desk.legend()).BETA.replaceAll(',', ''), Number(close).toFixed(2));
  await desk.page.click('#tab-data');
  assert.deepEqual(await desk.texts('.need-list li'), [
    '✓ BETA CLOSE (11)',
    '– OTHER CLOSE (11): no other.csv is known: choose one',
    '– Constants of the market: give them below',
  ]);
  await desk.page.type('#panel-data input[type="number"]', '0.5');
  await desk.page.click('#panel-data button[type="submit"]');
  await desk.settled();
  assert.equal((await desk.texts('.need-list .there')).length, 2);
  assert.equal(Number((await desk.legend()).LEAST), 0.5);
});

test('a scan fills a table, and a click on it opens the chart', async () => {
  await desk.write('M:MA(C,5);');
  await desk.page.click('#tab-scan');
  await desk.page.type('#scan-where', 'M>0');
  await desk.page.click('#scan-start');
  await desk.page.waitForFunction(() =>
    document.getElementById('scan-state')!.textContent?.startsWith('done'),
  );
  assert.equal(await desk.text('#scan-state'), 'done, 5 of 5 files, 5 found');
  const found = await desk.texts('.scan-table tbody th');
  assert.deepEqual(found.sort(), [...names].sort());
  const cells = await desk.texts('.scan-table tbody tr:first-child td');
  assert.equal(cells.at(-1), (await desk.legend()).M);
  await desk.page.click('::-p-xpath(//th/button[.="Security"])');
  assert.deepEqual(await desk.texts('.scan-table tbody th'), [...names].sort());
  await desk.page.type('#scan-filter', 'MMA');
  assert.deepEqual(await desk.texts('.scan-table tbody th'), ['gamma']);
  const bar = await desk.text('.scan-table tbody td');
  await desk.page.click('::-p-xpath(//table//button[.="gamma"])');
  await desk.settled();
  assert.match(await desk.text('.caption'), new RegExp(`^gamma .*${bar}`));
  assert.match(await desk.text('.spoken'), new RegExp(`^${bar}`), 'the crosshair is at the bar');
  assert.deepEqual(await desk.texts('.security-list [aria-current]'), ['gamma']);
});

test('another security is laid over the prices and taken away', async () => {
  await desk.write('M:MA(C,5);');
  const titles = async () => Object.keys(await desk.legend()).slice(0, 2);
  const before = await desk.pixels();
  await desk.page.select('#overlay', 'beta');
  await desk.page.waitForFunction(() => document.querySelectorAll('.legend > div').length > 1);
  await desk.settled();
  assert.deepEqual(await titles(), ['M', 'beta']);
  assert.ok(!before.equals(await desk.pixels()));
  await desk.choose('gamma');
  assert.deepEqual(await titles(), ['M', 'beta'], 'over other bars, too');
  await desk.choose('alpha');
  await desk.page.select('#overlay', '');
  await desk.settled();
  assert.ok(!(await titles()).includes('beta'));
});

test('a scan is cancelled, and a page closed in its middle leaves the server well', async () => {
  const many = folderOf(['s0'], 3000);
  for (let i = 1; i < 3000; ++i) linkSync(join(many, 's0.csv'), join(many, `s${i}.csv`));
  const busy = await Studio.start('--bars', many);
  const closed = await Desk.open(browser, busy);
  // A scan of minutes, which is under way however late one looks.
  const slow = Array.from({ length: 20 }, (_, i) => `A${i}:PERCENTILE(C,${900 + i},90);`).join('');
  await closed.write(slow);
  await closed.page.click('#tab-scan');
  const placeOfCancel = async () => (await closed.page.$('#scan-cancel'))!.boundingBox();
  const place = await placeOfCancel();
  await closed.page.click('#scan-start');
  await closed.page.waitForFunction(() =>
    document.getElementById('scan-state')!.textContent?.startsWith('running'),
  );
  assert.deepEqual(await placeOfCancel(), place);
  await closed.page.click('#scan-cancel');
  await closed.page.waitForFunction(() =>
    document.getElementById('scan-state')!.textContent?.startsWith('cancelled'),
  );
  assert.deepEqual(await placeOfCancel(), place);
  await closed.page.click('#scan-start');
  await closed.page.waitForFunction(() =>
    document.getElementById('scan-state')!.textContent?.startsWith('running'),
  );
  const scanning = await closed.page.waitForRequest((request) =>
    /scans\/\w+\?/.test(request.url()),
  );
  const scan = scanning.url().replace(/\?.*/, '');
  const { href } = new URL('/', busy.origin);
  await closed.close();
  const page = await browser.newPage();
  await page.goto(href);
  await page.waitForSelector('.legend dd');
  await page.waitForFunction(async (scan) => (await fetch(scan)).status === 404, {}, scan);
  await page.close();
  await busy.stop();
});

test('a CSV that is dropped is shown, one that is none is refused', async () => {
  await desk.drop('my own.csv', lastBars(120));
  assert.match(await desk.text('.caption'), /^my own/);
  const shown = await desk.pixels();
  for (const bad of [
    '',
    'no,bars\nat,all\n',
    '\0\u0001\ufffd'.repeat(1000),
    'date,open,high,low,close\n2024-01-01,1,2,x,1\n',
  ]) {
    await desk.drop('bad.csv', bad);
    assert.ok((await desk.text('#message.error')).length > 5);
    assert.match(await desk.text('.caption'), /^my own/);
  }
  assert.ok(shown.equals(await desk.pixels()), 'the bars before are still there');
});

test('a script that is too large is refused, and the page lives on', async () => {
  await desk.page.evaluate(() => {
    const content = document
      .getElementById('editor')!
      .shadowRoot!.querySelector('.cm-content') as HTMLElement;
    content.focus();
    const clipboardData = new DataTransfer();
    clipboardData.setData('text/plain', 'A:C;\n'.repeat(210_000));
    content.dispatchEvent(
      new ClipboardEvent('paste', { clipboardData, bubbles: true, cancelable: true }),
    );
  });
  await desk.settled();
  assert.match(await desk.text('#message.error'), /KiB/);
  await desk.write('A:C;');
  assert.deepEqual(Object.keys(await desk.legend()).slice(0, 1), ['A']);
  assert.equal(await desk.text('#message'), '');
});

test('hostile text is text', async () => {
  const opened: string[] = [];
  desk.page.on('dialog', (dialog) => (opened.push(dialog.message()), void dialog.dismiss()));
  await desk.write("A:C;\nDRAWTEXT(C>O,L,'<s>x');\nDRAWBMP(C>O,H,'<u>x');");
  await desk.page.type('[aria-label="Name of a parameter"]', '<b>n</b>');
  await desk.page.click('.adder button');
  await desk.settled();
  assert.deepEqual(await desk.texts('.slider-name'), ['<B>N</B>']);
  await desk.drop('bad.csv', `date,close\n2024-01-01,${hostile}\n`);
  assert.ok((await desk.text('#message')).includes('<img'));
  await desk.page.click(
    `::-p-xpath(//ul[@aria-label="Securities"]//button[starts-with(.,"<img")])`,
  );
  await desk.settled();
  assert.ok((await desk.text('.caption')).startsWith(hostile));
  await desk.drop('<script>alert(2)</script>.csv', lastBars(50));
  assert.match(await desk.text('.caption'), /^<script>/);
  const made = await desk.page.$$eval(
    'img:not([src^="icon.svg?v="]), i, s, u, b, script:not([src^="studio.js?v="])',
    (all) => all.length,
  );
  assert.equal(made, 0);
  assert.deepEqual(opened, []);
});

test('a script is saved in the folder, over another one only if one says so', async () => {
  const save = async (name: string) => {
    await desk.page.click('#save');
    await desk.page.$eval('#save-name', (input) => ((input as HTMLInputElement).value = ''));
    await desk.page.type('#save-name', name);
    await desk.page.click('#save-do');
    await desk.settled();
  };
  await desk.write('ONE:C;');
  await save('mine');
  assert.equal(readFileSync(join(folder, 'mine.quor'), 'utf8'), 'ONE:C;');
  writeFileSync(join(folder, 'theirs.quor'), 'THEIRS:C;');
  await desk.write('TWO:C;');
  await save('theirs');
  assert.equal(readFileSync(join(folder, 'theirs.quor'), 'utf8'), 'THEIRS:C;');
  assert.deepEqual(await desk.texts('#save-both pre'), ['THEIRS:C;\n', 'TWO:C;\n']);
  assert.equal(await desk.text('#save-do'), 'Overwrite');
  await desk.page.click('#save-do');
  await desk.settled();
  assert.equal(readFileSync(join(folder, 'theirs.quor'), 'utf8'), 'TWO:C;');
  assert.equal(readFileSync(join(folder, 'mine.quor'), 'utf8'), 'ONE:C;');
  await save('../outside');
  assert.ok((await desk.text('#save-note')).length > 5);
  assert.ok(!existsSync(join(folder, '..', 'outside.quor')));
  await desk.page.click('#save-cancel');
});

test('no path leads outside, and no other page is answered', async () => {
  const paths = [
    '/api/scripts/..%2F..%2Fetc%2Fpasswd',
    '/api/scripts/%2Fetc%2Fpasswd.quor',
    '/api/bars/..%2F..%2Fetc%2Fpasswd',
    '/..%2f..%2fREADME.md',
    '/%2e%2e/%2e%2e/etc/passwd',
  ];
  const inside = await desk.page.evaluate(
    (all) => Promise.all(all.map(async (path) => (await fetch(path)).status)),
    paths,
  );
  assert.ok(
    inside.every((status) => status >= 400 && status < 500),
    inside.join(' '),
  );
  const cookie = (await browser.cookies()).map(({ name, value }) => `${name}=${value}`).join('; ');
  const ask = async (headers: Record<string, string>) =>
    (await fetch(`${studio.origin}/api/files`, { headers })).status;
  assert.equal(await ask({ cookie }), 200);
  assert.equal(await ask({}), 403);
  assert.equal(await ask({ cookie, origin: 'http://evil.example' }), 403);
  assert.equal(
    (await fetch(studio.link, { redirect: 'manual' })).status,
    403,
    'the token is for once',
  );
});
