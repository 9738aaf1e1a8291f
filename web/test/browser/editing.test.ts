// The editor knows the language: it offers, explains, mends, renames and lays out.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { type Desk, onDesks } from './support.ts';

let desk: Desk;

onDesks((opened) => ({ desk } = opened));

/** Puts the cursor into a line, from 1, in front of a column, from 0. */
async function goTo(line: number, column: number): Promise<void> {
  await desk.chord('Control', 'Home');
  await desk.press(
    ...Array.from({ length: line - 1 }, () => 'ArrowDown' as const),
    ...Array.from({ length: column }, () => 'ArrowRight' as const),
  );
}

const written = (expected: string) =>
  desk.page.waitForFunction(
    (expected) =>
      [...document.getElementById('editor')!.shadowRoot!.querySelectorAll('.cm-line')]
        .map((line) => line.textContent)
        .join('\n') === expected,
    {},
    expected,
  );

/** Points at a word of the script. */
async function pointAt(text: string): Promise<void> {
  const place = await desk.page.evaluate((text) => {
    const root = document.getElementById('editor')!.shadowRoot!.querySelector('.cm-content')!;
    const walk = document.createTreeWalker(root, NodeFilter.SHOW_TEXT);
    while (walk.nextNode()) {
      const at = walk.currentNode.textContent!.indexOf(text);
      if (at < 0) continue;
      const range = document.createRange();
      range.setStart(walk.currentNode, at);
      range.setEnd(walk.currentNode, at + text.length);
      const { left, top, width, height } = range.getBoundingClientRect();
      return { x: left + width / 2, y: top + height / 2 };
    }
    throw new Error(`nowhere is ${text}`);
  }, text);
  await desk.page.mouse.move(place.x + 3, place.y + 40);
  await desk.page.mouse.move(place.x, place.y);
}

test('styles come with their colours, signs with their pictures', async () => {
  await desk.write('A:C');
  await desk.page.keyboard.type(',colorre');
  await desk.seen('.cm-tooltip-autocomplete .swatch');
  const color = await desk.page.$eval(
    '#editor >>> .cm-tooltip-autocomplete .swatch',
    (found) => getComputedStyle(found).backgroundColor,
  );
  assert.equal(color, 'rgb(204, 48, 48)');
  await desk.write('C>O,ICON(1,');
  await desk.page.keyboard.type("'ico3");
  await desk.seen('.cm-tooltip-autocomplete');
  const options = await desk.texts('#editor >>> .cm-tooltip-autocomplete li');
  assert.equal(options[0], 'ICO3B');
});

test('a name is told with its value where the chart tells values', async () => {
  await desk.write('CONST N:5;\nMID:=MA(C,N);\nA:MID,COLORRED;');
  const { A: value } = await desk.legend();
  await pointAt('MID');
  await desk.seen('.cm-tooltip .value');
  const told = await desk.text('#editor >>> .cm-tooltip .value');
  assert.match(told, /^\d+\.\d+ at 2020-04-17$/);
  assert.equal(parseFloat(told).toFixed(2), value.replaceAll(',', ''));
  await pointAt('COLORRED');
  await desk.page.waitForFunction(() =>
    document
      .getElementById('editor')!
      .shadowRoot!.querySelector('.cm-tooltip .help')
      ?.textContent?.includes('#CC3030'),
  );
});

test('the form of a call is shown while its arguments are written', async () => {
  await desk.write('A:');
  await desk.page.keyboard.type('STD(');
  await desk.seen('.cm-tooltip strong');
  assert.equal(await desk.text('#editor >>> .cm-tooltip strong'), 'X');
  await desk.page.keyboard.type('C,');
  await desk.page.waitForFunction(
    () =>
      document.getElementById('editor')!.shadowRoot!.querySelector('.cm-tooltip strong')
        ?.textContent === 'N',
  );
  await desk.press('Escape', 'Escape');
  assert.deepEqual(await desk.texts('#editor >>> .cm-tooltip'), []);
});

test('findings are mended by a click and by a key, each with all others told', async () => {
  await desk.write('A:EMMA(C,5);\nB:C,COLORRDE;\nD:MA(A,2)');
  await desk.page.waitForFunction(() => document.querySelectorAll('.mend').length === 3);
  assert.deepEqual(await desk.texts('.mend'), ['write EMA', 'write COLORRED', "write ';' here"]);
  await desk.page.click('.mend');
  await written('A:EMA(C,5);\nB:C,COLORRDE;\nD:MA(A,2)');
  await desk.page.waitForFunction(() => document.querySelectorAll('.mend').length === 2);
  await goTo(2, 6);
  await desk.chord('Control', '.');
  await written('A:EMA(C,5);\nB:C,COLORRED;\nD:MA(A,2)');
});

test('a name leads to its declaration and takes another one everywhere', async () => {
  await desk.write('GAP:=C-O;\nA:MA(gap,5);\nB:gap>0;');
  await goTo(3, 3);
  await desk.press('F2');
  await desk.seen('.cm-dialog input');
  await desk.page.keyboard.type('MA');
  await desk.press('Enter');
  await desk.page.waitForSelector('#message.error:not(:empty)');
  assert.match(await desk.text('#message'), /MA is a word of the language/);
  await desk.press('F2');
  await desk.seen('.cm-dialog input');
  await desk.page.keyboard.type('move');
  await desk.press('Enter');
  await written('move:=C-O;\nA:MA(move,5);\nB:move>0;');
  await desk.press('F12');
  await desk.page.keyboard.type('X');
  await written('X:=C-O;\nA:MA(move,5);\nB:move>0;');
});

test('a script is laid out around the cursor', async () => {
  await desk.write('A:ma(c,5);b:A*2;');
  await goTo(1, 12); // behind the colon of b
  await desk.page.click('#format');
  await written('A : ma(c, 5);\nb : A * 2;\n');
  await desk.page.keyboard.type('C+');
  await written('A : ma(c, 5);\nb :C+ A * 2;\n');
});

test('another colour is picked from the patch in front of one', async () => {
  await desk.write('A:C,COLORRED;\nDRAWLINE(C>O,L,C>O,H,1),RGB(1,2,3);');
  await desk.page.waitForFunction(
    () =>
      document.getElementById('editor')!.shadowRoot!.querySelectorAll('input.swatch').length === 2,
  );
  const pick = (which: number, value: string) =>
    desk.page.$$eval(
      '#editor >>> input.swatch',
      (all, which, value) => {
        const input = all[which] as HTMLInputElement;
        input.value = value;
        input.dispatchEvent(new Event('change'));
      },
      which,
      value,
    );
  await pick(0, '#0c993f');
  await written('A:C,COLORGREEN;\nDRAWLINE(C>O,L,C>O,H,1),RGB(1,2,3);');
  await pick(1, '#0c993f');
  await written('A:C,COLORGREEN;\nDRAWLINE(C>O,L,C>O,H,1),RGB(12, 153, 63);');
});
