// Scripts are opened, changed, saved and left: a name belongs to its text, and no text is lost.
import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { beforeEach, test } from 'node:test';
import type { Browser } from 'puppeteer-core';
import { toFragment } from '../../src/link.ts';
import { Desk, folderOf, onDesks, type Studio } from './support.ts';

const folder = folderOf(['alpha', 'beta']);
const fileOf = (name: string) => join(folder, `${name}.quor`);
const texts = { one: 'ONE:MA(C,5);', two: 'TWO:MA(C,9);' };

let studio: Studio;
let browser: Browser;
let desk: Desk;

// The studio lists the scripts that are there when a page is opened.
const restore = () => {
  for (const [name, text] of Object.entries(texts)) writeFileSync(fileOf(name), text);
};
restore();
onDesks((opened) => ({ studio, browser, desk } = opened), '--bars', folder);
beforeEach(restore);

/** Writes in front of the script. */
async function prepend(text: string, on = desk): Promise<void> {
  await on.page.focus('#editor >>> .cm-content');
  await on.chord('Control', 'Home');
  await on.page.keyboard.type(text);
  await on.settled();
}

const undo = async (on = desk) => {
  await on.page.focus('#editor >>> .cm-content');
  await on.chord('Control', 'z');
};

/** The script of the folder that would be saved, and what the menu says of it. */
async function names(on = desk): Promise<{ file: string; shown: string }> {
  await on.page.click('#save');
  const file = await on.page.$eval('#save-name', (input) => (input as HTMLInputElement).value);
  await on.page.click('#save-cancel');
  const shown = await on.page.$eval(
    '#library',
    (menu) => (menu as HTMLSelectElement).selectedOptions[0].textContent!,
  );
  return { file, shown };
}

test('undo stays within a script, and its name with its text', async () => {
  await desk.openScript('one');
  await prepend('X:C;');
  await desk.openScript('two');
  assert.deepEqual(await names(), { file: 'two.quor', shown: 'two.quor' });
  for (let i = 0; i < 3; ++i) await undo();
  assert.equal(await desk.script(), texts.two);
  await prepend('Y:O;');
  assert.deepEqual(await names(), { file: 'two.quor', shown: '• two.quor' });
  await desk.openScript('one');
  assert.equal(await desk.script(), `X:C;${texts.one}`, 'what was not saved is still there');
  assert.deepEqual(await names(), { file: 'one.quor', shown: '• one.quor' });
  await undo();
  assert.equal(await desk.script(), texts.one);
  assert.deepEqual(await names(), { file: 'one.quor', shown: 'one.quor' });
  await desk.openScript('two');
  assert.equal(await desk.script(), `Y:O;${texts.two}`);
  assert.deepEqual(Object.keys(await desk.legend()).slice(0, 2), ['Y', 'TWO']);
  await desk.chord('Control', 's');
  assert.equal(readFileSync(fileOf('two'), 'utf8'), `Y:O;${texts.two}`);
  assert.equal(readFileSync(fileOf('one'), 'utf8'), texts.one);
  assert.deepEqual(await names(), { file: 'two.quor', shown: 'two.quor' });
  await desk.page.reload();
  assert.equal(desk.warnings, 0, 'nothing is left to be saved');
});

test('a sample that is saved becomes a file, and a file is read anew', async () => {
  await desk.openScript('kdj');
  assert.equal((await names()).file, 'script.quor');
  await prepend('Z:C;');
  await desk.chord('Control', 's');
  await desk.page.$eval('#save-name', (input) => ((input as HTMLInputElement).value = ''));
  await desk.page.type('#save-name', 'mine');
  await desk.page.click('#save-do');
  await desk.settled();
  assert.deepEqual(await names(), { file: 'mine.quor', shown: 'mine.quor' });
  await desk.openScript('kdj');
  assert.doesNotMatch(await desk.script(), /^Z:C;/, 'the sample is what it was');
  await desk.openScript('one');
  writeFileSync(fileOf('one'), 'ELSEWHERE:C;');
  await desk.openScript('two');
  await desk.openScript('one');
  assert.equal(await desk.script(), 'ELSEWHERE:C;');
});

test('a page with unsaved text warns, and has all of it when it is loaded again', async () => {
  await desk.goTo();
  assert.equal(desk.warnings, 0, 'without changes there is nothing to warn of');
  await desk.openScript('one');
  await prepend('X:C;');
  await desk.openScript('two');
  await desk.choose('beta');
  await desk.page.type('[aria-label="Name of a parameter"]', 'LEN');
  await desk.page.click('.adder button');
  await prepend('Y:O;');
  await desk.stay();
  assert.equal(await desk.script(), `Y:O;${texts.two}`, 'one who stays has it all');
  assert.deepEqual(Object.keys(await desk.legend()).slice(0, 2), ['Y', 'TWO']);
  await desk.page.keyboard.type('W:C;'); // and leaves at once
  await desk.goTo();
  assert.equal(await desk.script(), `Y:O;W:C;${texts.two}`);
  assert.deepEqual(await names(), { file: 'two.quor', shown: '• two.quor' });
  assert.match(await desk.text('.caption'), /^beta/);
  assert.deepEqual(await desk.texts('.slider-name'), ['LEN']);
  await undo();
  assert.equal(await desk.script(), texts.two, 'what is saved is one step away');
  await desk.openScript('one');
  assert.equal(await desk.script(), `X:C;${texts.one}`);
  assert.deepEqual(await names(), { file: 'one.quor', shown: '• one.quor' });
});

test('what was unsaved in a tab that is closed is offered by the next one', async () => {
  await desk.page.evaluate(() => localStorage.clear());
  const closing = await Desk.open(browser, studio);
  await closing.openScript('one');
  await prepend('X:C;', closing);
  await closing.leave();
  assert.equal(closing.warnings, 1);
  const next = await Desk.open(browser, studio);
  assert.doesNotMatch(await next.script(), /X:C;/);
  await next.openScript('one', true);
  assert.equal(await next.script(), `X:C;${texts.one}`);
  assert.deepEqual(await names(next), { file: 'one.quor', shown: '• one.quor' });
  await undo(next);
  await next.leave();
  assert.equal(next.warnings, 0);
  const last = await Desk.open(browser, studio);
  assert.equal((await last.page.$$('optgroup[label="Left unsaved"] option')).length, 0);
  await last.close();
});

test('a link opens beside what is written, and writing on goes on when it is loaded again', async () => {
  await desk.openScript('one');
  await prepend('X:C;');
  const linked = await toFragment({ script: 'LINKED:MA(C,3);', parameters: {} });
  await desk.page.evaluate((hash) => (location.hash = hash), linked);
  await desk.page.waitForFunction(
    () => document.querySelector('.legend dt')?.textContent === 'LINKED',
  );
  assert.deepEqual(await names(), { file: 'script.quor', shown: 'link' });
  await prepend('K:O;');
  await desk.goTo();
  assert.equal(await desk.script(), 'K:O;LINKED:MA(C,3);');
  await desk.openScript('one');
  assert.equal(await desk.script(), `X:C;${texts.one}`);
  await desk.openScript('link');
  assert.equal(await desk.script(), 'K:O;LINKED:MA(C,3);');
});

test('Ctrl-S saves, and shows both texts where the file has been changed meanwhile', async () => {
  await desk.openScript('one');
  await prepend('X:C;');
  await desk.chord('Control', 's');
  assert.equal(readFileSync(fileOf('one'), 'utf8'), `X:C;${texts.one}`);
  assert.equal(await desk.text('#message'), 'Saved as one.quor');
  assert.deepEqual(await names(), { file: 'one.quor', shown: 'one.quor' });
  writeFileSync(fileOf('one'), 'ELSEWHERE:C;\n');
  await prepend('Y:O;');
  await desk.chord('Control', 's');
  assert.equal(await desk.text('#save-note'), 'one.quor has been changed elsewhere');
  assert.deepEqual(await desk.texts('#save-both mark'), [
    'ELSEWHERE:C;\n',
    `Y:O;X:C;${texts.one}\n`,
  ]);
  assert.equal(readFileSync(fileOf('one'), 'utf8'), 'ELSEWHERE:C;\n');
  await desk.page.click('#save-take');
  await desk.settled();
  assert.equal(await desk.script(), 'ELSEWHERE:C;\n');
  assert.equal((await names()).shown, 'one.quor');
  await undo();
  assert.equal(await desk.script(), `Y:O;X:C;${texts.one}`, 'what was written is one step away');
  await desk.chord('Control', 's');
  assert.equal(readFileSync(fileOf('one'), 'utf8'), `Y:O;X:C;${texts.one}`);
});

test('open scripts stand in tabs, with changes and an undo of their own', async () => {
  const tabs = () => desk.texts('#scripts [role="tab"]');
  const current = () => desk.text('#scripts [aria-selected="true"]');
  await desk.openScript('one');
  await prepend('X:C;');
  await desk.openScript('two');
  assert.deepEqual((await tabs()).slice(-2), ['• one.quor', 'two.quor']);
  await desk.page.click('::-p-xpath(//*[@id="scripts"]//button[.="• one.quor"])');
  await desk.settled();
  assert.equal(await desk.script(), `X:C;${texts.one}`);
  await desk.page.focus('#scripts [aria-selected="true"]');
  await desk.press('ArrowRight');
  assert.equal(await current(), 'two.quor');
  await desk.page.click('[aria-label="New script"]');
  await desk.page.keyboard.type('NEW:H;');
  await desk.settled();
  assert.equal(await current(), '• script');
  const asked = new Promise<string>((resolve) =>
    desk.page.once('dialog', (dialog) => {
      resolve(dialog.message());
      void dialog.accept();
    }),
  );
  await desk.page.click('[aria-label="Close script"]');
  assert.match(await asked, /script has changes that are not saved/);
  await desk.settled();
  assert.equal(await current(), 'two.quor');
  await desk.page.click('[aria-label="Close two.quor"]');
  await desk.settled();
  assert.equal(await current(), '• one.quor');
  await undo();
  assert.equal(await desk.script(), texts.one);
});
