// What tools for accessibility find on the page in each of its states: nothing.
import assert from 'node:assert/strict';
import { createRequire } from 'node:module';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import type { AxeResults, RunOptions } from 'axe-core';
import { type Desk, folderOf, onDesks } from './support.ts';

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

/** The editor's list of completions scrolls with what arrow keys have chosen, while the focus stays in
 * the text and tells of it: that the list itself takes no focus is as it should be. */
const completions = /^scrollable-region-focusable: \S*#cm-ac-/;

let desk: Desk;

onDesks((opened) => ({ desk } = opened), '--bars', folderOf(['one', 'two']));

/** What is found, a line for each place. */
async function violations(): Promise<string[]> {
  await desk.settled();
  if (!(await desk.page.evaluate(() => 'axe' in window))) await desk.page.evaluate(axe);
  const { passes, violations } = await desk.page.evaluate(() => {
    const { axe } = window as unknown as { axe: { run: (by: RunOptions) => Promise<AxeResults> } };
    return axe.run({ resultTypes: ['violations'] });
  });
  assert.ok(passes.length > 10, `${passes.length} rules have been looked at`);
  const found = violations.flatMap(({ id, nodes }) =>
    nodes.map(({ target, failureSummary }) => `${id}: ${target.join(' ')}: ${failureSummary}`),
  );
  return found.filter((one) => !completions.test(one));
}

async function assertNone(state: string): Promise<void> {
  assert.deepEqual(await violations(), [], state);
}

const states: readonly (readonly [state: string, enter: () => Promise<unknown>])[] = [
  ['fresh', async () => undefined],
  ['an error', () => desk.write('A:MA(C,5;\nB:NOSUCH(C);')],
  ['warnings and parameters', () => desk.write('CONST N:5;\nA:MA(C,N);\nX:=C;\nB:A/0;')],
  ['completion', () => desk.page.keyboard.type('\nC:M', { delay: 30 })],
  ['crosshair', async () => (await desk.page.focus('#chart'), desk.press('End', 'ArrowLeft'))],
  ['search', async () => (await desk.page.click('#editor'), desk.chord('Control', 'f'))],
  ['versions', () => desk.page.click('#versions')],
  ['versions closed', () => desk.page.click('#version-close')],
  ['save', () => desk.page.click('#save')],
  ['save closed', () => desk.page.click('#save-cancel')],
];

const looks: readonly (readonly [theme: string, width: number, height: number])[] = [
  ['light', 1360, 860],
  ['dark', 1360, 860],
  ['light', 390, 800],
  ['dark', 390, 800],
];

for (const [theme, width, height] of looks) {
  test(`${theme}, ${width} pixels wide`, async () => {
    await desk.page.emulateMediaFeatures([
      { name: 'prefers-color-scheme', value: theme },
      { name: 'prefers-reduced-motion', value: 'reduce' },
    ]);
    await desk.page.setViewport({ width, height });
    for (const [state, enter] of states) {
      await enter();
      const isDialog = ['versions', 'save'].includes(state);
      assert.equal((await desk.page.$('dialog[open]')) !== null, isDialog, state);
      await assertNone(state);
    }
    const tabs = await desk.page.$$('[role="tab"]');
    assert.ok(tabs.length >= 4, `${tabs.length} tabs`);
    for (const tab of tabs) {
      await tab.click();
      await assertNone(await tab.evaluate((one) => one.textContent ?? ''));
    }
  });
}
