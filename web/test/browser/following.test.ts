// Files that change while the page is open: bars that grow, scripts that another program writes, new ones.
import assert from 'node:assert/strict';
import { appendFileSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { type Desk, folderOf, lastBars, makeFolder, onDesks } from './support.ts';

const folder = folderOf(['alpha', 'beta']);
const script = join(makeFolder(), 'mine.quor');
const fileOf = (name: string) => join(folder, name);
writeFileSync(script, 'A:C;');

let desk: Desk;

onDesks((opened) => ({ desk } = opened), script, '--bars', folder);

const day = (number: number, close: number) =>
  `2020-05-${String(number).padStart(2, '0')},3000,3100,2900,${close},1000,0\n`;

const shows = (selector: string, text: string) =>
  desk.page.waitForFunction(
    (selector, text) => document.querySelector(selector)?.textContent?.includes(text),
    {},
    selector,
    text,
  );

test('bars that come into the file come onto the chart, and who looks at others is left alone', async () => {
  assert.match(readFileSync(fileOf('alpha.csv'), 'utf8'), /^date,open,high,low,close,\w+,\w+\n/);
  appendFileSync(fileOf('alpha.csv'), day(4, 3011.25));
  await shows('.caption', '2020-05-04');
  await desk.settled();
  assert.equal((await desk.legend()).A, '3011.25');
  // The crosshair stands, and the sight with it.
  await desk.page.focus('#chart');
  await desk.press('ArrowLeft', 'ArrowLeft', 'PageUp');
  const [caption, before] = [await desk.text('.caption'), await desk.legend()];
  const views = await desk.views(async () => {
    appendFileSync(fileOf('alpha.csv'), `${day(5, 3020)}2020-05-06,3000,31`);
    await desk.page.waitForFunction(() => window.asked.some(({ call }) => call === 'bars'));
  });
  assert.ok(views.length > 0);
  assert.deepEqual([await desk.text('.caption'), await desk.legend()], [caption, before]);
  // The newest bar is the last whole one.
  await desk.press('End', 'Escape');
  assert.match(await desk.text('.caption'), /2020-05-05/);
  assert.equal((await desk.legend()).A, '3020.00');
  appendFileSync(fileOf('alpha.csv'), '00,2900,3030,1000,0\n');
  await shows('.caption', '2020-05-06');
});

test('a file that is written anew is shown anew', async () => {
  await desk.choose('beta');
  writeFileSync(fileOf('beta.csv'), lastBars(50));
  await desk.page.waitForFunction(
    () => window.asked.filter(({ call }) => call === 'bars').length > 2,
  );
  await desk.settled();
  await desk.page.focus('#chart');
  await desk.press('Home');
  assert.match(await desk.text('.caption'), /2020-02-06/);
});

test('new files appear in the lists', async () => {
  writeFileSync(fileOf('gamma.csv'), lastBars(30));
  writeFileSync(join(script, '..', 'other.quor'), 'OTHER:O;');
  await shows('ul[aria-label="Securities"]', 'gamma');
  await desk.choose('gamma');
  await desk.openScript('other');
  assert.equal(await desk.script(), 'OTHER:O;');
});

test('a script that was changed elsewhere is offered, and nothing is lost', async () => {
  await desk.write('MINE:O;');
  writeFileSync(script, 'THEIRS:H;');
  await shows('#offer', 'mine.quor has been changed elsewhere');
  assert.equal(await desk.script(), 'MINE:O;');
  await desk.page.click('::-p-xpath(//*[@id="offer"]//button[.="Keep mine"])');
  assert.equal(await desk.page.$eval('#offer', (offer) => (offer as HTMLElement).hidden), true);
  writeFileSync(script, 'THEIRS:L;');
  await shows('#offer', 'mine.quor');
  await desk.page.click('::-p-xpath(//*[@id="offer"]//button[.="Take it"])');
  await desk.settled();
  assert.equal(await desk.script(), 'THEIRS:L;');
  await desk.chord('Control', 'z');
  assert.equal(await desk.script(), 'MINE:O;', 'one step away');
  await desk.chord('Control', 's');
  assert.equal(readFileSync(script, 'utf8'), 'MINE:O;');
  // What was there before can be had again.
  await desk.page.click('#versions');
  const list = '#version-before option';
  assert.equal((await desk.texts(list))[0], 'As it is written now');
  const sides = () =>
    desk.page.$$eval('#version-both >>> .cm-content', (all) => all.map((one) => one.textContent));
  assert.deepEqual(await sides(), ['THEIRS:L;', 'MINE:O;']);
  await desk.page.click('#version-take');
  await desk.settled();
  assert.equal(await desk.script(), 'THEIRS:L;');
  assert.equal(readFileSync(script, 'utf8'), 'MINE:O;', 'it is not saved thereby');
});
