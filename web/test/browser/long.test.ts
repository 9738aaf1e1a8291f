// Calculations that take long: the page stays free, they can be stopped, and a newer script ends them.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Desk, manyBars, onDesks } from './support.ts';

let desk: Desk;

onDesks((opened) => ({ desk } = opened));

/** Far longer than any test waits. */
const endless = Array.from({ length: 200 }, (_, i) => `A${i}:STD(C,${9000 + i});`).join('\n');

const busy = () => !document.getElementById('busy')!.hidden;

/** Has a script for ever in work over many bars, of which another one is drawn. */
async function beginEndless(): Promise<void> {
  await desk.write('QUICK:MA(C,5);');
  await desk.drop('many.csv', manyBars(60_000));
  await desk.page.locator('#editor >>> .cm-content').click();
  await desk.page.keyboard.down('Control');
  await desk.page.keyboard.press('a');
  await desk.page.keyboard.up('Control');
  await desk.page.keyboard.sendCharacter(endless);
  await desk.page.waitForFunction(busy);
}

test('a long calculation leaves the editor its words, and is stopped, and the chart of before lives on', async () => {
  await beginEndless();
  await desk.page.keyboard.down('Control');
  await desk.page.keyboard.press('Space');
  await desk.page.keyboard.up('Control');
  await desk.seen('.cm-completionLabel');
  assert.ok(await desk.page.evaluate(busy), 'words are offered meanwhile');
  const began = Date.now();
  await desk.page.click('#stop');
  await desk.page.waitForFunction(() => document.getElementById('busy')!.hidden);
  console.log(`stopped in ${Date.now() - began} ms`);
  await desk.settled();
  assert.equal(await desk.text('#message'), 'Stopped');
  assert.ok('QUICK' in (await desk.legend()));
  const before = await desk.pixels();
  await desk.page.click('#zoom-all');
  await desk.settled();
  assert.ok(!before.equals(await desk.pixels()), 'other rows are drawn');
  assert.match(await desk.text('.caption'), /^many/);
});

test('a newer script ends an older one, and who types waits for neither', async () => {
  await beginEndless();
  const waits: number[] = [];
  for (let i = 0; i < 10; ++i) {
    const began = Date.now();
    await desk.page.keyboard.type('B');
    waits.push(Date.now() - began);
  }
  console.log(`a key while a script is calculated: ${Math.max(...waits)} ms at worst`);
  await desk.write('NEWER:MA(C,9);');
  assert.deepEqual(Object.keys(await desk.legend()).slice(0, 1), ['NEWER']);
  assert.match(await desk.text('.caption'), /^many/);
});

test('other bars end a calculation, too', async () => {
  await beginEndless();
  await desk.page.click('::-p-xpath(//ul[@aria-label="Securities"]//button)');
  await desk.page.waitForFunction(busy);
  await desk.write('NEWER:MA(C,9);');
  await desk.captioned('index-daily');
  assert.deepEqual(Object.keys(await desk.legend()).slice(0, 1), ['NEWER']);
});

test('what says so covers nothing', async () => {
  await desk.page.click('#second-open');
  await beginEndless();
  for (const width of [1360, 900]) {
    await desk.page.setViewport({ width, height: 860 });
    await desk.page.waitForSelector('#second .caption:not(:empty)');
    await desk.page.waitForFunction(busy);
    const covered = await desk.page.evaluate(() => {
      const mark = document.getElementById('busy')!.getBoundingClientRect();
      const others = document.querySelectorAll('button, select, .caption, .legend div');
      const isUnder = (one: Element) => {
        const { left, right, top, bottom } = one.getBoundingClientRect();
        const end = right - parseFloat(getComputedStyle(one).paddingRight);
        return left < mark.right && end > mark.left && top < mark.bottom && bottom > mark.top;
      };
      return [...others].filter((one) => one.id !== 'stop' && isUnder(one)).map((one) => one.id);
    });
    assert.deepEqual(covered, [], `at ${width} pixels`);
  }
});
