// Other bars take the place of those that are seen: by the list, from a file, under another period.
import assert from 'node:assert/strict';
import { createHash } from 'node:crypto';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import type { Browser } from 'puppeteer-core';
import { toFragment } from '../../src/link.ts';
import { Desk, makeFolder, manyBars, onDesks, type Studio } from './support.ts';

const script = 'A:MA(C,5),COLORRED;\nB:MA(C,20),COLORBLUE;\nR:C/REF(C,1);';

/** Files of different lengths, and two of one length whose prices lie elsewhere. */
const files: Readonly<Record<string, string>> = {
  few: manyBars(144, 1),
  many: manyBars(5105, 2),
  one: manyBars(2000, 3),
  other: manyBars(2000, 4),
};
const folder = makeFolder();
for (const [name, content] of Object.entries(files))
  writeFileSync(join(folder, `${name}.csv`), content);
const rowsOf = (name: string) => files[name].trimEnd().split('\n').length - 1;

let studio: Studio;
let browser: Browser;
let desk: Desk;

onDesks((opened) => ({ studio, browser, desk } = opened), '--bars', folder);

/** All that is seen of the chart after a move. */
async function seen(of: Desk, move: (on: Desk) => Promise<unknown> = async () => {}) {
  await of.page.bringToFront();
  await move(of);
  await of.settled();
  await of.page.evaluate(() => new Promise((drawn) => requestAnimationFrame(drawn)));
  const pictures = await of.pictures();
  return {
    pictures: pictures.map((picture) => createHash('md5').update(picture).digest('hex')),
    legend: await of.legend(),
    caption: (await of.text('.caption')).replace(/^.*? {2}\S+ */, ''),
    ink: await of.ink(8),
  };
}

/** Both of a page's moves that ask for other rows and those that draw what is loaded. */
const moves: readonly (readonly [string, (on: Desk) => Promise<unknown>])[] = [
  ['zoom in', (on) => on.page.click('#zoom-in')],
  ['pan', async (on) => (await on.page.focus('#chart'), on.page.keyboard.press('PageUp'))],
  ['All', (on) => on.page.click('#zoom-all')],
  ['Home', async (on) => (await on.page.focus('#chart'), on.page.keyboard.press('Home'))],
];

type Seen = Awaited<ReturnType<typeof seen>>;

/** What a page shows of a security at first and through all moves. */
async function seenOf(on: Desk, what: string): Promise<Seen[]> {
  const all = [await seen(on)];
  for (const [, act] of moves) all.push(await seen(on, act));
  for (const [i, { ink }] of all.entries())
    assert.ok(
      ink.slice(0, 7).every((pixels) => pixels > 100),
      `${what}, ${nameOf(i)}: ${ink.join(' ')}`,
    );
  return all;
}

const nameOf = (i: number): string => (i === 0 ? 'at first' : moves[i - 1][0]);
const expected = new Map<string, Promise<Seen[]>>();

/** What a page shows that has shown no other security. */
async function seenAfresh(security: string, text: string): Promise<Seen[]> {
  const fragment = await toFragment({ script: text, parameters: {}, security });
  const fresh = await Desk.open(browser, studio, fragment);
  const all = await seenOf(fresh, `${security} afresh`);
  await fresh.close();
  return all;
}

async function assertShows(name: string, way: string, text = script): Promise<void> {
  const key = `${name} ${text}`;
  if (!expected.has(key)) expected.set(key, seenAfresh(name, text));
  const afresh = await expected.get(key)!;
  for (const [i, one] of (await seenOf(desk, way)).entries())
    assert.deepEqual(one, afresh[i], `${way}, ${nameOf(i)}`);
}

test('whatever was seen before, the chart is that of its bars', async () => {
  await desk.write(script);
  const ways: readonly (readonly [name: string, way: string, act: () => Promise<unknown>])[] = [
    ['many', 'few to many', () => desk.choose('many')],
    ['few', 'many to few', () => desk.choose('few')],
    ['many', 'a file with many', () => desk.drop('many.csv', files.many)],
    ['one', 'a file with fewer', () => desk.drop('one.csv', files.one)],
  ];
  await desk.choose('few');
  for (const [name, way, act] of ways) {
    const ends = (await desk.views(act)).map(({ to }) => to);
    assert.ok(ends.length > 0 && ends.every((end) => end === rowsOf(name)), `${way}: ${ends}`);
    await assertShows(name, way);
  }
  await desk.choose('one');
  const before = await seen(desk);
  await desk.page.select('#period', 'week');
  await desk.captioned('one  week');
  assert.notDeepEqual(await seen(desk), before, 'weeks are made of the bars');
  await desk.page.select('#period', '');
  await desk.captioned('one  1min');
  assert.deepEqual(await seen(desk), before, 'and the bars are there again');
  await desk.choose('many');
  await desk.page.select('#period', 'day');
  await desk.captioned('many  day');
  await desk.page.select('#period', '');
  await desk.captioned('many  1min');
  await assertShows('many', 'another period');
});

test('of securities of one length none is mixed with another', async () => {
  await desk.write(script);
  await desk.choose('one');
  const one = await seen(desk);
  await desk.page.focus('#chart');
  await desk.press('Home', 'PageUp');
  await desk.choose('other');
  const other = await seen(desk);
  for (const [i, picture] of one.pictures.entries()) assert.notEqual(picture, other.pictures[i]);
  await assertShows('other', 'with the crosshair at the first bar');
});

test('a script with an error keeps the lines of the one before over other bars', async () => {
  await desk.write('A:MA(C,5);');
  await desk.choose('few');
  await desk.write('A:MA(C,5;');
  await desk.choose('many');
  assert.match(await desk.text('.finding-head'), /1 error/);
  await assertShows('many', 'the last script that was sound', 'A:MA(C,5);');
});

test('without any sound script the bars are drawn', async () => {
  const fragment = await toFragment({ script: 'A:MA(C,5;', parameters: {}, security: 'few' });
  const broken = await Desk.open(browser, studio, fragment);
  await broken.choose('many');
  assert.match(await broken.text('.finding-head'), /1 error/);
  assert.match(await broken.text('.caption'), /^many .* C [\d,.]+/);
  await seenOf(broken, 'the bars alone');
  await broken.write('A:MA(C,5);');
  assert.deepEqual(Object.keys(await broken.legend()).slice(0, 1), ['A']);
  await broken.close();
});

test('bars come while a script is calculated and while others come', async () => {
  const slow = `${script}\nS:PERCENTILE(C,400,90);`;
  await desk.choose('many');
  await desk.write(slow);
  const names = ['few', 'many', 'one', 'other', 'few', 'one'];
  await desk.page.evaluate((names) => {
    const { shadowRoot } = document.getElementById('editor')!;
    const content = shadowRoot!.querySelector<HTMLElement>('.cm-content')!;
    content.focus();
    for (const name of names) {
      document.execCommand('insertText', false, ' ');
      const buttons = [...document.querySelectorAll<HTMLElement>('.security-list button')];
      buttons.find((button) => button.textContent === name)!.click();
    }
  }, names);
  await desk.settled();
  assert.deepEqual(await desk.texts('.security-list [aria-current]'), ['one']);
  await desk.write(script);
  await assertShows('one', 'the last of many');
});

test('bars that come while others are played end play', async () => {
  await desk.write(script);
  await desk.choose('many');
  const height = () => desk.page.$eval('#chart', ({ clientHeight }) => clientHeight);
  const before = await height();
  await desk.page.$eval('#play-speed', (speed) => {
    (speed as HTMLInputElement).value = '6';
    speed.dispatchEvent(new Event('input'));
  });
  await desk.page.click('#play-toggle');
  await desk.page.waitForFunction(() =>
    /bar 49[1-9]\d/.test(document.getElementById('play-place')!.textContent!),
  );
  assert.equal(await height(), before, 'nothing moves');
  await desk.choose('other');
  assert.equal(await desk.text('#play-place'), '');
  assert.equal(await desk.text('#message'), '');
  await assertShows('other', 'after play');
  await desk.choose('one');
  await desk.page.click('#play-step');
  await desk.settled();
  await desk.write('A:MA(C,5;');
  await desk.page.click('#play-stop');
  await desk.settled();
  await assertShows('one', 'after play that ends with a mistake in the script');
});
