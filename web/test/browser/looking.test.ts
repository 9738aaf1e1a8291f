// How one looks at a chart: scales, axes and borders, values and their reasons, alarms, pictures.
import assert from 'node:assert/strict';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { Desk, makeFolder, onDesks, quorSays, sampleBars, samples } from './support.ts';

declare global {
  interface Window {
    saved?: Blob;
    notices: string[];
    tones: number[];
  }
}

let desk: Desk;

onDesks((opened) => ({ desk } = opened));

const two = 'M:MA(C,5);\nDIF:EMA(C,12)-EMA(C,26);';

const boxOf = async (selector: string) => (await (await desk.page.$(selector))!.boundingBox())!;
const heights = () =>
  desk.page.$$eval('.pane', (all) => all.map((one) => one.getBoundingClientRect().height));

/** Drags what is found by so many pixels down. */
async function drag(selector: string, by: number): Promise<void> {
  const { x, y, width, height } = await boxOf(selector);
  const [left, top] = [x + width / 2, y + height / 2];
  await desk.page.mouse.move(left, top);
  await desk.page.mouse.down();
  await desk.page.mouse.move(left, top + by, { steps: 4 });
  await desk.page.mouse.up();
  await desk.settled();
}

async function resetBy(selector: string): Promise<void> {
  const { x, y, width, height } = await boxOf(selector);
  await desk.page.mouse.click(x + width / 2, y + height / 2, { clickCount: 2 });
  await desk.page.mouse.move(5, 5);
  await desk.settled();
}

/** What the axis says at a share of the height of the price pane. */
async function levelAt(share: number): Promise<string> {
  const { x, y, height } = await boxOf('.pane .u-over');
  await desk.page.mouse.move(x + 200, y + share * height);
  await desk.settled();
  return desk.text('.cursor-tag');
}

test('prices go by logarithms or percent, as chosen last', async () => {
  await desk.write(two);
  await desk.page.click('#zoom-all');
  await desk.settled();
  const numberAt = async (share: number) => Number((await levelAt(share)).replaceAll(',', ''));
  const [low, middle, high] = [await numberAt(0.9), await numberAt(0.5), await numberAt(0.1)];
  assert.ok(Math.abs((low + high) / 2 - middle) < 0.01 * middle, `${low} ${middle} ${high}`);
  await desk.page.select('#scale', 'log');
  const [lowLog, middleLog, highLog] = [
    await numberAt(0.9),
    await numberAt(0.5),
    await numberAt(0.1),
  ];
  const mean = Math.sqrt(lowLog * highLog);
  assert.ok(Math.abs(mean - middleLog) < 0.01 * mean, `${lowLog} ${middleLog} ${highLog}`);
  await desk.page.select('#scale', 'percent');
  await desk.goTo();
  assert.equal(
    await desk.page.$eval('#scale', (menu) => (menu as HTMLSelectElement).value),
    'percent',
  );
  const text = await levelAt(0.1);
  assert.match(text, /^[+-]\d+(\.\d\d)?%$/);
  await desk.page.select('#scale', 'linear');
  assert.doesNotMatch(await levelAt(0.1), /%/);
});

test('a value axis is stretched by a drag or keys, and back by a double click', async () => {
  await desk.write(two);
  await desk.page.mouse.move(5, 5);
  const spanOf = async () => {
    const [top, bottom] = [await levelAt(0.05), await levelAt(0.95)];
    return Number(top.replaceAll(',', '')) - Number(bottom.replaceAll(',', ''));
  };
  const usual = await spanOf();
  await drag('.axis-grip', 75);
  const wide = await spanOf();
  assert.ok(Math.abs(wide / usual - Math.exp(0.5)) < 0.02, `${usual} becomes ${wide}`);
  await resetBy('.axis-grip');
  assert.equal(await spanOf(), usual);
  await desk.page.focus('#chart');
  await desk.chord('Shift', 'ArrowUp');
  const narrow = await spanOf();
  assert.ok(Math.abs(usual / narrow - 1.25) < 0.02, `${usual} becomes ${narrow}`);
});

test('the border of two panes is dragged or moved by keys, and stays there', async () => {
  await desk.write(two);
  const [price, other] = await heights();
  await drag('.border-grip', -80);
  assert.deepEqual(await heights(), [price - 80, other + 80]);
  await desk.page.focus('.border-grip');
  await desk.press('ArrowDown');
  const moved = await heights();
  assert.deepEqual(moved, [price - 70, other + 70]);
  await desk.goTo();
  assert.deepEqual(await heights(), moved);
  await drag('.border-grip', -2000);
  assert.ok((await heights()).every((height) => height >= 40));
  await resetBy('.border-grip');
  assert.deepEqual(await heights(), [price, other]);
});

const valuesShown = () =>
  desk.page.$$eval('.value-list li', (all) =>
    Object.fromEntries(
      all.map((one) => ['.name', '.value'].map((part) => one.querySelector(part)!.textContent)),
    ),
  );

test('all values stand in a table, and say why they are null', async () => {
  const script = 'X:=C-O;\nSLOW:MA(C,30);\nY:SLOW*2;';
  const folder = makeFolder();
  writeFileSync(join(folder, 'x.quor'), script);
  const lines = quorSays(
    'run',
    join(folder, 'x.quor'),
    join(samples, 'index-daily.csv'),
    '--all',
    '--csv',
  );
  const row = lines.split('\n')[1 + 12].split(',').slice(1);
  await desk.write(script);
  await desk.page.click('#tab-values');
  await desk.page.focus('#chart');
  await desk.press('Home');
  for (let i = 0; i < 12; ++i) await desk.press('ArrowRight');
  const day = sampleBars.split('\n')[13].split(',')[0];
  assert.equal(await desk.text('#values-place'), `${day}, row 12`);
  const shown = await valuesShown();
  assert.equal(Number(shown.X).toFixed(4), Number(row[0]).toFixed(4));
  assert.deepEqual([shown.SLOW, shown.Y], ['null', 'null']);
  await desk.page.click('[aria-label="Why is Y null?"]');
  await desk.page.waitForSelector('.reason li');
  const reasons = await desk.texts('.reason li');
  assert.match(reasons[1], /^SLOW has no value there: it is MA\(C,30\)\.$/);
  assert.match(reasons[2], /its first one stands at row 29 /);
  const before = await desk.text('#values-place');
  const { x, y, width } = await boxOf('.pane .u-over');
  await desk.page.mouse.click(x + width / 2, y + 60);
  await desk.settled();
  const held = await desk.text('#values-place');
  assert.match(held, /, held$/);
  const marks = await desk.page.$$eval('.held:not([hidden])', (all) =>
    all.map((one) => ({
      text: (one as HTMLElement).dataset.text,
      left: one.getBoundingClientRect().left,
    })),
  );
  assert.equal(marks.length, (await desk.page.$$('.pane')).length);
  assert.equal(marks.at(-1)!.text, held.slice(0, 10));
  for (const { left } of marks) assert.ok(Math.abs(left - x - width / 2) < 5, `${left}`);
  assert.notEqual(held, before);
  assert.deepEqual(await desk.texts('.reason li'), [], 'they were of another bar');
  await desk.page.mouse.move(x + width / 4, y + 60);
  await desk.settled();
  assert.equal(await desk.text('#values-place'), held);
  await desk.page.click('#values-follow');
  assert.equal(await desk.page.$('.held:not([hidden])'), null);
  await desk.page.mouse.move(x + width / 4, y + 60);
  await desk.settled();
  assert.doesNotMatch(await desk.text('#values-place'), /held/);
  await desk.page.focus('#chart');
  await desk.press('Home', 'ArrowRight', 'ArrowRight', 'Escape');
  for (const ticks of [1, 2]) {
    await desk.page.click('#play-step');
    await desk.settled();
    const { X, ...others } = await valuesShown();
    assert.equal(others.CLOSE === others.OPEN, ticks === 1, 'the first tick is the open');
    assert.ok(Math.abs(Number(others.CLOSE) - Number(others.OPEN) - Number(X)) < 1e-5);
  }
});

test('play calculates each tick and draws no more than the screen shows', async () => {
  await desk.write("C>O,NOTICE('up');C<O,SOUND('C');UP:=C>O;");
  await desk.page.evaluate(() => {
    [window.notices, window.tones] = [[], []];
    window.Notification = class {
      static permission = 'default';
      static requestPermission() {
        this.permission = 'granted';
        return Promise.resolve(this.permission);
      }
      constructor(_title: string, { body }: { body: string }) {
        window.notices.push(...body.split('\n'));
      }
    } as unknown as typeof Notification;
    const { start } = OscillatorNode.prototype;
    OscillatorNode.prototype.start = function (when) {
      window.tones.push(this.frequency.value);
      start.call(this, when);
    };
  });
  await desk.page.click('#play-step');
  assert.deepEqual(await desk.page.evaluate(() => window.notices), [], 'nobody has asked for them');
  await desk.page.click('#alarms');
  await desk.page.$eval('#play-speed', (speed) => {
    (speed as HTMLInputElement).value = '6';
    speed.dispatchEvent(new Event('input'));
  });
  const ticks = await desk.page.evaluate(async () => {
    window.asked = [];
    let frames = 0;
    const count = () => {
      ++frames;
      requestAnimationFrame(count);
    };
    requestAnimationFrame(count);
    const drawnBefore = window.drawn.count;
    const bar = () => Number(/\d+/.exec(document.getElementById('play-place')!.textContent!)![0]);
    const [barBefore, start] = [bar(), performance.now()];
    document.getElementById('play-toggle')!.click();
    await new Promise((resolve) => setTimeout(resolve, 2000));
    document.getElementById('play-toggle')!.click();
    const seconds = (performance.now() - start) / 1000;
    const steps = window.asked as unknown as { call: string; ticks?: number }[];
    return {
      asked: steps.reduce((sum, { call, ticks }) => sum + (call === 'step' ? ticks! : 0), 0),
      bars: (bar() - barBefore) / seconds,
      drawn: window.drawn.count - drawnBefore,
      frames,
      wanted: 256 * seconds,
    };
  });
  console.log(
    `play at 64 bars a second: ${ticks.bars.toFixed(1)}, ${ticks.drawn} pictures in ${ticks.frames} frames`,
  );
  assert.ok(ticks.drawn <= ticks.frames + 2, 'no more pictures than frames');
  assert.ok(
    ticks.asked > 0.5 * ticks.wanted && ticks.asked <= 1.1 * ticks.wanted,
    `${ticks.asked}`,
  );
  await desk.settled();
  const { notices, tones } = await desk.page.evaluate(() => ({
    notices: window.notices,
    tones: window.tones,
  }));
  assert.ok(notices.length > 10 && notices.every((text) => /^\d{4}-\d\d-\d\d {2}up$/.test(text)));
  assert.equal(new Set(notices).size, notices.length, 'once for a bar, however it forms');
  const pitches = [...new Set(tones.map(Math.round))].sort();
  assert.deepEqual(pitches, [523, 659], 'of notices, and of the third sound');
});

test('a picture that is dropped brings its script and parameters back', async () => {
  await desk.write('M:MA(C,N);\n涨:=C>O;');
  await desk.page.type('[aria-label="Name of a parameter"]', 'N');
  await desk.page.click('::-p-xpath(//button[.="Add parameter"])');
  await desk.settled();
  await desk.page.evaluate(() => {
    const make = URL.createObjectURL.bind(URL);
    URL.createObjectURL = (blob: Blob) => make((window.saved = blob));
  });
  await desk.page.click('#export-png');
  await desk.page.waitForFunction(() => window.saved);
  await desk.page.click('[aria-label="Remove N"]');
  await desk.write('OTHER:C;');
  const drop = (isOurs: boolean) =>
    desk.page.evaluate(async (isOurs) => {
      const bytes = await window.saved!.arrayBuffer();
      const dataTransfer = new DataTransfer();
      const content = isOurs ? bytes : bytes.slice(0, 60);
      dataTransfer.items.add(new File([content], 'shared.png', { type: 'image/png' }));
      const event = new DragEvent('drop', { dataTransfer, bubbles: true, cancelable: true });
      document.getElementById('chart')!.dispatchEvent(event);
    }, isOurs);
  await drop(false);
  await desk.page.waitForSelector('#message.error:not(:empty)');
  assert.equal(await desk.text('#message'), 'this picture holds no script');
  assert.equal(await desk.script(), 'OTHER:C;');
  await drop(true);
  await desk.page.waitForFunction(
    () => document.querySelector('.slider-name')?.textContent === 'N',
  );
  await desk.settled();
  assert.equal(await desk.script(), 'M:MA(C,N);\n涨:=C>O;');
  assert.ok('M' in (await desk.legend()));
  assert.ok((await desk.texts('#scripts [role="tab"]')).some((name) => name.includes('shared')));
});
