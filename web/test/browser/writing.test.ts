// A script is written, and the page says and shows what becomes of it.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import type { Browser } from 'puppeteer-core';
import { Desk, makeFolder, manyBars, onDesks, quorSays, samples } from './support.ts';

let browser: Browser;
let desk: Desk;

onDesks((opened) => ({ browser, desk } = opened));

test('the page opens with a sample over the sample bars', async () => {
  const legend = await desk.legend();
  assert.ok('DIF' in legend && 'DEA' in legend, JSON.stringify(legend));
  assert.match(legend.DIF, /^-?\d+\.\d+$/);
  assert.match(await desk.text('.caption'), /index-daily/);
  assert.ok(new Set(await desk.pixels()).size > 20);
  const groups = await desk.page.$$eval('#library optgroup:not([hidden])', (all) =>
    all.map((one) => one.label),
  );
  assert.deepEqual(groups, ['Samples', 'Cookbook']);
});

test('a mistake is underlined where it is, named, and gone when it is mended', async () => {
  await desk.write('A:MA(C,5);\nB:EMMA(C,5);');
  assert.deepEqual(await desk.texts('#editor >>> .cm-lintRange-error'), ['EMMA']);
  const [finding] = await desk.texts('.finding');
  assert.match(finding, /^2:3.*EMMA/);
  assert.match(await desk.text('.finding-head'), /1 error/);
  await desk.page.click('.finding');
  await desk.page.keyboard.sendCharacter('EMA');
  await desk.settled();
  assert.equal(await desk.script(), 'A:MA(C,5);\nB:EMA(C,5);');
  assert.deepEqual(await desk.texts('.finding'), []);
  assert.deepEqual(Object.keys(await desk.legend()).slice(0, 2), ['A', 'B']);
});

test('words are completed with their forms and explained', async () => {
  await desk.write('A:');
  await desk.page.keyboard.type('barsla');
  await desk.seen('.cm-completionLabel');
  const options = await desk.texts('#editor >>> .cm-completionLabel');
  assert.deepEqual(options.slice(0, 2).sort(), ['BARSLAST', 'BARSLASTCOUNT']);
  await desk.seen('.cm-completionInfo p');
  assert.ok(
    quorSays('help', 'BARSLAST').includes(await desk.text('#editor >>> .cm-completionInfo p')),
  );
  await new Promise((resolve) => setTimeout(resolve, 100)); // the list takes no key at once
  await desk.press('Enter');
  assert.match(await desk.script(), /^A:BARSLAST(COUNT)?\(/);
});

test('sliders of constants and parameters recalculate while they move', async () => {
  await desk.write('CONST N:5;\nA:MA(C,N)+M;');
  await desk.page.type('[aria-label="Name of a parameter"]', 'm');
  await desk.page.click('.adder button');
  await desk.settled();
  assert.deepEqual((await desk.texts('.slider-name')).sort(), ['M', 'N']);
  const { A: before } = await desk.legend();
  await desk.page.focus('input[type="range"][aria-label="N"]');
  await desk.press('ArrowRight', 'ArrowRight', 'ArrowRight');
  const moved = Number(/N:([\d.]+);/.exec(await desk.script())?.[1]);
  assert.ok(moved > 5, `N is ${moved}`);
  const { A: between } = await desk.legend();
  assert.notEqual(between, before);
  await desk.page.$eval('input[aria-label="M as a number"]', (input) => {
    input.value = '1000';
    input.dispatchEvent(new Event('input'));
  });
  await desk.settled();
  const number = (text: string) => Number(text.replaceAll(',', ''));
  const { A: last } = await desk.legend();
  assert.ok(Math.abs(number(last) - number(between) - 990) < 0.02, `${between} to ${last}`);
});

test('a link opens the same script with the same parameters', async () => {
  await desk.page.type('[aria-label="Name of a parameter"]', 'LEN');
  await desk.page.click('.adder button');
  await desk.write("Q:MA(C,LEN),COLORRED;\nC>O,NOTICE('涨');");
  const legend = await desk.legend();
  await desk.page.click('#copy-link');
  await desk.page.waitForFunction(() => location.hash.length > 5);
  const address = desk.page.url();
  const script = await desk.script();
  await desk.write('C;');
  await desk.page.goto('about:blank');
  await desk.goTo(address);
  assert.equal(await desk.script(), script);
  assert.deepEqual(await desk.legend(), legend);
});

test('what is being written survives a reload', async () => {
  await desk.write('MINE:MA(C,7);');
  await desk.page.waitForFunction(() => Object.values(localStorage).join().includes('MINE'));
  await desk.page.reload();
  await desk.page.waitForFunction(() => window.drawn.count > 0);
  await desk.settled();
  assert.equal(await desk.script(), 'MINE:MA(C,7);');
});

test('the CSV is that of the command line, the picture is one', async () => {
  const folder = makeFolder();
  const session = await browser.target().createCDPSession();
  await session.send('Browser.setDownloadBehavior', {
    behavior: 'allow',
    downloadPath: folder,
    eventsEnabled: true,
  });
  const save = async (button: string, name: string) => {
    const done = new Promise<void>((resolve) =>
      session.on('Browser.downloadProgress', ({ state }) => state === 'completed' && resolve()),
    );
    await desk.page.click(button);
    await done;
    return readFileSync(join(folder, name));
  };
  await desk.write(readFileSync(join(samples, 'kdj.quor'), 'utf8'));
  const csv = await save('#export-csv', 'index-daily.csv');
  const expected = quorSays(
    'run',
    '--csv',
    join(samples, 'kdj.quor'),
    '--bars',
    join(samples, 'index-daily.csv'),
  );
  assert.equal(csv.toString(), expected);
  const png = await save('#export-png', 'index-daily.png');
  assert.equal(png.subarray(1, 4).toString(), 'PNG');
  assert.ok(png.readUInt32BE(16) > 600 && png.readUInt32BE(20) > 300 && png.length > 10_000);
  await session.detach();
});

test('a keystroke is answered by new lines soon (a figure, no limit)', async () => {
  await desk.drop('minutes.csv', manyBars(10_000));
  const lines = [
    'CONST N:12;',
    'DIF:EMA(C,N)-EMA(C,26);',
    'DEA:EMA(DIF,9);',
    'BAR:2*(DIF-DEA),COLORSTICK;',
  ];
  lines.push(
    'MID:MA(C,20);',
    'UP:MID+2*STD(C,20);',
    'DN:MID-2*STD(C,20);',
    'RSV:=(C-LLV(L,9))/(HHV(H,9)-LLV(L,9))*100;',
  );
  lines.push('K:SMA(RSV,3,1);', 'CROSS(DIF,DEA),BK;');
  await desk.write(lines.join('\n'));
  await desk.page.click('.finding-head');
  await desk.page.focus('#editor >>> .cm-content');
  await desk.press('ArrowUp');
  await desk.page.keyboard.down('Control');
  await desk.press('Home');
  await desk.page.keyboard.up('Control');
  await desk.press('End', 'ArrowLeft');
  const times: number[] = [];
  for (let i = 0; i < 20; ++i) {
    await desk.page.evaluate(() => {
      const note = (event: KeyboardEvent) =>
        (document.body.dataset.pressed = String(event.timeStamp));
      window.addEventListener('keydown', note, { capture: true, once: true });
      window.drawn.count = 0;
    });
    await desk.page.keyboard.press(i % 2 === 0 ? '5' : 'Backspace');
    await desk.page.waitForFunction(() => window.drawn.count > 0);
    times.push(
      await desk.page.evaluate(() => window.drawn.at - Number(document.body.dataset.pressed)),
    );
    await desk.settled();
  }
  times.sort((one, other) => one - other);
  const [median, worst] = [times[10], times[19]].map((time) => time.toFixed(1));
  console.log(
    `keystroke to new lines, 10,000 bars and ten lines of script: ${median} ms, ${worst} ms at worst`,
  );
  assert.match(await desk.text('.finding-head'), /compiles|warning/);
});
