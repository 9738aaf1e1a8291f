// Longer periods: those that a script reads, finished or under way, and a second chart of one.
import assert from 'node:assert/strict';
import { appendFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import type { Browser } from 'puppeteer-core';
import { Desk, makeFolder, onDesks, type Studio } from './support.ts';

/** Bars of an hour, four a day, from Monday the 8th of January on: closes count up from 1, times a factor. */
function hourRows(from: number, to: number, factor = 1): string {
  const rows = Array.from({ length: to - from }, (_, at) => {
    const i = from + at;
    const day = new Date(Date.UTC(2024, 0, 8 + Math.floor(i / 4))).toISOString().slice(0, 10);
    const prices = [i + 1, i + 1.5, i + 0.5, i + 1].map((price) => factor * price);
    return `${day} ${10 + (i % 4)}:00,${prices.join(',')},${100 + i}\n`;
  });
  return rows.join('');
}
const hourBars = (count: number, factor = 1) =>
  'date,open,high,low,close,volume\n' + hourRows(0, count, factor);

const folder = makeFolder();
const days = 30;
const fileOf = (name: string) => join(folder, `${name}.csv`);
writeFileSync(fileOf('hours'), hourBars(4 * days));
writeFileSync(fileOf('more'), hourBars(4 * days));
writeFileSync(fileOf('run'), hourBars(4 * days - 2));
writeFileSync(fileOf('under'), hourBars(4 * days + 4, 2));

let studio: Studio;
let browser: Browser;
let desk: Desk;

onDesks((opened) => ({ studio, browser, desk } = opened), '--bars', folder);

test('a longer period is the last finished one, or by choice the one under way', async () => {
  await desk.write('DAY1:"DAY$1$CLOSE";');
  const last = 4 * days;
  assert.equal(Number((await desk.legend()).DAY1), last - 4);
  await desk.page.click('#tab-data');
  assert.deepEqual(await desk.texts('.need-list li'), ['✓ DAY1 CLOSE (11): the last finished one']);
  await desk.page.click('#forming');
  await desk.settled();
  assert.deepEqual(await desk.texts('.need-list li'), ['✓ DAY1 CLOSE (11): the one under way']);
  assert.equal(Number((await desk.legend()).DAY1), last);
  await desk.page.focus('#chart');
  await desk.press('ArrowLeft', 'ArrowLeft');
  assert.equal(Number((await desk.legend()).DAY1), last - 1, 'nothing of the future');
  await desk.page.click('#copy-link');
  await desk.page.waitForFunction(() => location.hash.length > 5);
  const { hash } = new URL(desk.page.url());
  await desk.goTo();
  assert.equal(Number((await desk.legend()).DAY1), last);
  const other = await Desk.open(browser, studio, hash);
  assert.equal(Number((await other.legend()).DAY1), last);
  await other.page.click('#tab-data');
  await other.page.click('#forming');
  await other.settled();
  assert.equal(Number((await other.legend()).DAY1), last - 4);
  await other.close();
});

/** What the second chart says of its bar. */
const secondCaption = () => desk.text('#second .caption');
const secondSays = (pattern: RegExp) =>
  desk.page.waitForFunction(
    // A condition that throws is not asked again, and there may be no second chart yet.
    (source) =>
      new RegExp(source).test(document.querySelector('#second .caption')?.textContent ?? ''),
    {},
    pattern.source,
  );
const secondValue = (title: string) =>
  desk.page.$$eval(
    '#second .legend > div',
    (entries, title) =>
      Number(entries.find((one) => one.children[0].textContent === title)?.children[1].textContent),
    title,
  );

/** Waits for a value in the legends of the second chart. */
const secondHas = (title: string, value: number) =>
  desk.page.waitForFunction(
    (title, value) =>
      [...document.querySelectorAll('#second .legend > div')].some(
        ({ children: [name, text] }) =>
          name.textContent === title && Number(text.textContent) === value,
      ),
    {},
    title,
    value,
  );

test('a second chart shows the script over another period, and follows what is written', async () => {
  await desk.write('T:C;');
  await desk.page.click('#second-open');
  await secondSays(/^hours {2}day .*2024-02-06/);
  await desk.settled();
  assert.equal(await desk.page.$eval('#second-open', (one) => one.ariaPressed), 'true');
  await desk.write('T:C-O;U:MA(C,2);');
  await desk.page.waitForFunction(
    () => document.querySelectorAll('#second .legend dt').length >= 2,
  );
  await desk.settled();
  assert.equal(await secondValue('T'), 3, 'of a day of four bars');
  await desk.write('T:C-O;U:MA(C,;');
  assert.equal(await secondValue('T'), 3, 'a script with an error leaves it as it is');
  await desk.write('T:C-O;');
  await desk.page.select('#second-period', 'week');
  await secondSays(/week .*2024-02-05/);
  await desk.settled();
  assert.equal(await secondValue('T'), 7, 'Monday and Tuesday');
  await desk.choose('more');
  await secondSays(/^more {2}week/);
  await desk.page.click('#second-close');
  assert.equal(await desk.page.$eval('#second', (one) => (one as HTMLElement).hidden), true);
  assert.equal(await desk.page.$('#second .chart'), null);
  assert.equal(await desk.page.evaluate(() => document.activeElement?.id), 'second-open');
});

test('it goes on as the bars do, and so does the security over them', async () => {
  await desk.choose('run');
  await desk.write('T:C;');
  await desk.page.click('#second-open');
  await desk.page.select('#overlay', 'under');
  await secondSays(/^run {2}day {3}2024-02-06 {2}O 117 {2}H 119/);
  await secondHas('under', 240);
  appendFileSync(fileOf('run'), hourRows(4 * days - 2, 4 * days + 1));
  await secondSays(/^run {2}day {3}2024-02-07 {2}O 121/);
  await secondHas('T', 121);
  await secondHas('under', 248);
  writeFileSync(fileOf('under'), hourBars(4 * days + 4, 3));
  await secondHas('under', 372);
  writeFileSync(fileOf('under'), 'broken');
  appendFileSync(fileOf('run'), hourRows(4 * days + 1, 4 * days + 2));
  await secondHas('T', 122);
  await secondHas('under', 372);
  writeFileSync(fileOf('newer'), hourBars(8));
  await desk.page.waitForSelector('#overlay option[value="newer"]');
});

test('while no script is sound it shows the bars alone', async () => {
  await desk.write('T:C-;');
  await desk.goTo();
  await desk.page.click('#second-open');
  await secondSays(/^hours {2}day {3}2024-02-06/);
  assert.equal(await desk.text('#second-note'), '');
  await desk.write('T:C;');
  await secondHas('T', 120);
});

test('both crosshairs stand at the same time', async () => {
  await desk.write('T:C;');
  await desk.page.click('#second-open');
  await secondSays(/day /);
  await desk.settled();
  await desk.page.focus('#chart');
  await desk.press('Home');
  for (let i = 0; i < 9; ++i) await desk.page.keyboard.press('ArrowRight');
  await secondSays(/2024-01-10/);
  assert.match(await desk.text('.caption'), /2024-01-10 11:00/);
  await desk.page.focus('#second .chart');
  await desk.press('ArrowRight');
  assert.match(await secondCaption(), /2024-01-11/);
  await desk.page.waitForFunction(() =>
    /2024-01-11 10:00/.test(document.querySelector('.caption')!.textContent!),
  );
  await desk.press('Escape');
  await desk.page.waitForFunction(() =>
    /2024-02-06 13:00/.test(document.querySelector('.caption')!.textContent!),
  );
});

test('layouts are kept by name, switched by menu and keys, and survive a reload', async () => {
  await desk.write('T:C;');
  const seen = () =>
    desk.page.evaluate(() => {
      const chosen = (id: string) => (document.getElementById(id) as HTMLSelectElement).value;
      const isThere = document.querySelector('#second .chart') !== null;
      const tab = document.querySelector('#tabs [aria-selected="true"]')?.id;
      return [chosen('layout'), chosen('scale'), chosen('overlay'), tab, isThere].join(' ');
    });
  const usual = '=  linear  tab-securities false';
  const two = '= two log more tab-values true';
  assert.equal(await seen(), usual);
  await desk.page.select('#scale', 'log');
  await desk.page.click('#second-open');
  await desk.page.click('#tab-values');
  await desk.page.select('#overlay', 'more');
  await desk.settled();
  await desk.page.select('#layout', 'edit');
  await desk.page.type('#layout-name', 'two');
  await desk.page.click('#layout-form button');
  assert.equal(await seen(), two);
  await desk.page.select('#layout', '= ');
  await desk.settled();
  assert.equal(await seen(), usual);
  await desk.page.keyboard.down('Shift');
  await desk.chord('Alt', 'Digit2');
  await desk.page.keyboard.up('Shift');
  assert.equal(await seen(), two);
  await desk.goTo();
  await secondSays(/day /);
  assert.equal(await seen(), two);
  await desk.page.select('#layout', 'edit');
  await desk.page.click('[aria-label="Remove two"]');
  assert.deepEqual(await desk.texts('#layout-list li'), []);
  await desk.page.click('#layout-close');
  await desk.page.select('#layout', '= ');
  await desk.page.evaluate(() => localStorage.setItem('quor-studio-layouts', '[{"name":5}]'));
  await desk.goTo();
  assert.equal(await seen(), usual);
});

test('while bars are played, and on a phone, there is no second chart', async () => {
  await desk.write('T:C;');
  await desk.page.click('#second-open');
  await secondSays(/day /);
  const isSeen = async () => (await desk.page.$('#second .chart')) !== null;
  await desk.page.click('#play-step');
  await desk.settled();
  assert.equal(await isSeen(), false);
  await desk.page.click('#play-stop');
  await secondSays(/day /);
  await desk.page.setViewport({ width: 390, height: 844 });
  await desk.page.waitForFunction(() => !document.querySelector('#second .chart'));
  assert.equal(
    await desk.page.$eval('#second-open', (one) => getComputedStyle(one).display),
    'none',
  );
  await desk.page.setViewport({ width: 1360, height: 860 });
  await secondSays(/day /);
});
