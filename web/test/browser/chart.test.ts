// What the chart draws, and how one moves in it.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Desk, manyBars, onDesks } from './support.ts';

let desk: Desk;

onDesks((opened) => ({ desk } = opened));

/** How many pixels differ, and how many have got a colour. */
function compare(
  before: Buffer,
  now: Buffer,
  color: readonly number[] | undefined,
): { changed: number; colored: number } {
  assert.equal(now.length, before.length, 'the pane has kept its size');
  let [changed, colored] = [0, 0];
  for (let i = 0; i < now.length; i += 4) {
    const differs = now.readUInt32LE(i) !== before.readUInt32LE(i);
    if (!differs) continue;
    ++changed;
    if (color?.every((byte, k) => Math.abs(now[i + k] - byte) < 3)) ++colored;
  }
  return { changed, colored };
}

/** Of the text of an element to what lies behind it, as accessibility guidelines reckon. */
function contrastOf(of: Element): { text: string; contrast: number } {
  const canvas = new OffscreenCanvas(1, 1).getContext('2d', { willReadFrequently: true })!;
  const brightnessOf = (color: string) => {
    canvas.fillStyle = color;
    canvas.fillRect(0, 0, 1, 1);
    const [red, green, blue] = [...canvas.getImageData(0, 0, 1, 1).data].map((byte) =>
      byte <= 10 ? byte / 255 / 12.92 : ((byte / 255 + 0.055) / 1.055) ** 2.4,
    );
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
  };
  let ground = of;
  while (getComputedStyle(ground).backgroundColor === 'rgba(0, 0, 0, 0)')
    ground = ground.parentElement!;
  const [less, more] = [
    brightnessOf(getComputedStyle(of).color),
    brightnessOf(getComputedStyle(ground).backgroundColor),
  ].sort((one, other) => one - other);
  return { text: of.textContent!, contrast: (more + 0.05) / (less + 0.05) };
}

const blue = [0x19, 0xa0, 0xff] as const; // COLORBLUE, a little darker where it must be readable

/** A statement of each kind of record whose ink lies in the price pane and not beyond the bars, how
 * many pixels it changes at least, and the colour that they get. */
const kinds: readonly (readonly [
  kind: string,
  statement: string,
  least: number,
  color?: readonly number[],
])[] = [
  ['BarShape', 'STICKLINE(C>O,H,L,COLOR804010,0);', 2000, [0x80, 0x40, 0x10]],
  ['CandleShape', 'DRAWCOLORKLINE(C>O,COLOR804010,0);', 500, [0x80, 0x40, 0x10]],
  ['FuturesTradeShape', 'CROSS(C,MA(C,20)),BK;', 300, [0x1d, 0x5f, 0xd6]],
  ['ImageShape', "DRAWBMP(C<REF(C,1)*0.98,H,'pic');", 100],
  ['NoticeShape', "C>O,NOTICE('up');", 300, [0xb8, 0x7a, 0x00]],
  ['PolygonShape', 'FILLRGN(C>O,H,L,COLORBLUE);', 1000],
  ['PolylineShape', 'A:MA(C,5),COLOR804010,LINETHICK3;', 500, [0x80, 0x40, 0x10]],
  ['RectShape', 'DRAWGBK1(C>O,COLORBLUE);', 5000],
  ['SoundShape', "C>O,SOUND('A');", 300],
  ['StraightLineShape', 'VERTLINE1(C>REF(C,1)*1.01),COLOR804010;', 500, [0x80, 0x40, 0x10]],
  ['TextShape', "DRAWTEXT(C>REF(C,1)*1.01,L,'T'),COLOR804010;", 100, [0x80, 0x40, 0x10]],
];

test('each kind of record leaves its ink', async () => {
  await desk.write('X:=C;');
  const bare = await desk.pixels();
  for (const [kind, statement, least, color] of kinds) {
    await desk.write(`X:=C;\n${statement}`);
    assert.deepEqual(await desk.texts('.finding.error'), [], statement);
    const { changed, colored } = compare(bare, await desk.pixels(), color);
    assert.ok(changed >= least, `${kind}: ${changed} pixels differ`);
    if (color)
      assert.ok(colored >= least / 10, `${kind}: ${colored} of ${changed} pixels have its colour`);
  }
  await desk.write('X:=C;');
  assert.equal(compare(bare, await desk.pixels(), blue).changed, 0, 'and takes it away');
});

test('the axis reaches to the number that the script asks for', async () => {
  await desk.write('R:(C/REF(C,1)-1)*100;');
  const shot = () =>
    desk.page.$$eval('.pane canvas', (all) => (all[1] as HTMLCanvasElement).toDataURL());
  const before = await shot();
  await desk.write('R:(C/REF(C,1)-1)*100;\nBACKGROUNDSTYLE(-15);');
  assert.notEqual(await shot(), before);
});

test('lines far from the price have a pane of their own, and the crosshair tells all values', async () => {
  await desk.write('M:MA(C,5);\nR:SMA(MAX(C-REF(C,1),0),6,1)/SMA(ABS(C-REF(C,1)),6,1)*100;');
  assert.equal((await desk.page.$$('.pane')).length, 2);
  const newest = await desk.legend();
  await desk.page.focus('#chart');
  await desk.press('End', 'ArrowLeft', 'ArrowLeft', 'ArrowLeft');
  const before = await desk.legend();
  assert.notDeepEqual(before, newest);
  const spoken = await desk.text('.spoken');
  for (const [title, text] of Object.entries(before))
    assert.ok(spoken.includes(`${title} ${text}`), spoken);
  const box = await (await desk.page.$('.pane .u-over'))!.boundingBox();
  await desk.page.mouse.move(box!.x + 100, box!.y + 60);
  await desk.settled();
  assert.notDeepEqual(await desk.legend(), before);
  assert.match(await desk.text('.cursor-tag'), /^[\d,]+(\.\d+)?$/);
  await desk.page.focus('#chart');
  await desk.press('Home');
  assert.match(await desk.text('.caption'), /2000-01-03/);
  await desk.press('PageDown', 'PageDown', 'PageDown');
  const [oldest, ...values] = [await desk.text('.caption'), ...Object.values(await desk.legend())];
  assert.match(
    oldest,
    /2003-07-15  O 1003.86/,
    'row 885, the newest in sight: 260.42 rows, moved three times by 0.8 of it',
  );
  for (const value of values) assert.match(value, /^-?[\d,]+(\.\d+)?$/);
});

test('wheel, drag and keys move the sight', async () => {
  const place = async () => {
    await desk.settled();
    return desk.pixels();
  };
  const box = (await (await desk.page.$('.pane .u-over'))!.boundingBox())!;
  const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
  await desk.page.mouse.move(x, y);
  const acts: readonly (readonly [string, () => Promise<unknown>])[] = [
    ['wheel', () => desk.page.mouse.wheel({ deltaY: 400 })],
    ['wheel across', () => desk.page.mouse.wheel({ deltaX: -300 })],
    [
      'drag',
      async () => {
        await desk.page.mouse.down();
        await desk.page.mouse.move(x + 200, y, { steps: 4 });
        await desk.page.mouse.up();
      },
    ],
    ['button', () => desk.page.click('#zoom-all')],
    ['key', async () => (await desk.page.focus('#chart'), desk.page.keyboard.press('+'))],
    ['page key', () => desk.page.keyboard.press('PageUp')],
  ];
  let before = await place();
  for (const [name, act] of acts) {
    await act();
    const now = await place();
    assert.ok(compare(before, now, undefined).changed > 500, name);
    before = now;
  }
});

test('200,000 bars are sent thinned, and panning stays smooth (a figure, no limit)', async () => {
  await desk.write('A:MA(C,20);\nB:MA(C,60);\nDIF:EMA(C,12)-EMA(C,26);');
  await desk.drop('many.csv', manyBars(200_000));
  const views = await desk.views(() => desk.page.click('#zoom-all'));
  const points = views.map(({ points = Infinity }) => points);
  assert.ok(points.length > 0 && Math.max(...points) < 2000, `${points}`);
  const box = (await (await desk.page.$('.pane .u-over'))!.boundingBox())!;
  await desk.page.mouse.move(box.x + box.width / 2, box.y + 60);
  await desk.page.mouse.wheel({ deltaY: -300 });
  await desk.page.mouse.wheel({ deltaY: -300 });
  await desk.settled();
  const frames = desk.page.evaluate(
    () =>
      new Promise<number[]>((resolve) => {
        const times: number[] = [];
        let last = performance.now();
        const next = (now: number) => {
          times.push(now - last);
          last = now;
          if (times.length < 60) requestAnimationFrame(next);
          else resolve(times.slice(1).sort((one, other) => one - other));
        };
        requestAnimationFrame(next);
      }),
  );
  await desk.page.mouse.down();
  await desk.page.mouse.move(box.x + box.width - 5, box.y + 60, { steps: 60 });
  await desk.page.mouse.up();
  const times = await frames;
  console.log(
    `a frame while panning 200,000 bars: ${times[30].toFixed(1)} ms, ${times[58].toFixed(1)} ms at worst`,
  );
  await desk.settled();
  assert.ok(new Set(await desk.pixels()).size > 20);
});

test('light and dark follow the system until one chooses', async () => {
  const ground = () => desk.page.$eval('body', (body) => getComputedStyle(body).backgroundColor);
  const light = await ground();
  const before = await desk.pixels();
  await desk.page.click('#theme');
  assert.notEqual(await ground(), light);
  assert.ok(compare(before, await desk.pixels(), undefined).changed > 1000);
  await desk.page.click('#theme');
  assert.equal(await ground(), light);
});

test('a narrow window has all of it, one below the other, and first a chart of good height', async () => {
  for (const [width, height] of [
    [390, 800],
    [360, 640],
    [844, 390],
  ]) {
    await desk.page.setViewport({ width, height });
    await desk.goTo();
    const { wide, parts, chart, end, panes } = await desk.page.evaluate(() => {
      const sizeOf = (selector: string) =>
        document.querySelector(selector)!.getBoundingClientRect();
      return {
        wide: document.documentElement.scrollWidth,
        parts: ['#editor', '#chart', '#play', '#drawer'].map((part) => sizeOf(part).width),
        chart: sizeOf('#chart').height,
        end: sizeOf('#chart').bottom,
        panes: [...document.querySelectorAll('.pane canvas')].map((pane) => pane.clientHeight),
      };
    });
    assert.ok(wide <= width, `${wide} pixels wide`);
    for (const part of parts) assert.ok(part > width - 60, `${part} of ${width} pixels`);
    assert.ok(chart >= 0.6 * height && chart < 0.8 * height, `${chart} of ${height} pixels`);
    assert.ok(end <= height, `the chart ends at ${end} of ${height} pixels`);
    const high = panes.reduce((sum, pane) => sum + pane, 0);
    assert.ok(high > chart - 60, `panes of ${panes} in ${chart} pixels`);
    const ink = await desk.ink(8);
    assert.ok(
      ink.slice(0, 7).every((pixels) => pixels > 20),
      ink.join(' '),
    );
  }
});

test('what stands on a button can be read, under the pointer or not', async () => {
  const themes = ['light', 'dark'];
  for (const theme of themes) {
    await desk.page.emulateMediaFeatures([
      { name: 'prefers-color-scheme', value: theme },
      { name: 'prefers-reduced-motion', value: 'reduce' },
    ]);
    const buttons = await desk.page.$$('button:not(:disabled)');
    let count = 0;
    for (const button of buttons) {
      if (!(await button.isVisible())) continue;
      for (const isPointedAt of [false, true]) {
        await (isPointedAt ? button.hover() : desk.page.mouse.move(0, 0));
        const { text, contrast } = await button.evaluate(contrastOf);
        assert.ok(contrast >= 4.5, `${text}, ${theme}, ${isPointedAt}: ${contrast.toFixed(1)}`);
        ++count;
      }
    }
    assert.ok(count >= 30, `${count} looked at`);
  }
});

test('what can be used has a name for screen readers', async () => {
  const nameless = await desk.page.$$eval(
    'button, select, input:not([hidden]), [role="tabpanel"], [tabindex="0"]',
    (all) =>
      all
        .filter(
          (one) =>
            !one.getAttribute('aria-label') &&
            !one.getAttribute('aria-labelledby') &&
            !one.textContent?.trim(),
        )
        .filter((one) => !(one as HTMLInputElement).labels?.length)
        .map((one) => one.outerHTML),
  );
  assert.deepEqual(nameless, []);
});
