// A script's chart is the same on the page as `quor chart` draws it: what is drawn of each kind of
// record, axes and captions. `npm run drawings` writes the held lists anew: look at what has changed.
import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { before, test } from 'node:test';
import type { Language, ThemeName } from '../../src/engine/language_types.ts';
import type { CompletionsAnswer } from '../../src/engine/text_types.ts';
import type { BarsAnswer } from '../../src/engine/types.ts';
import { lastBars, makeFolder, quorSays } from '../browser/support.ts';
import { cases } from '../drawings/cases.ts';
import { type Ink, inkText, type Place } from '../drawings/ink.ts';
import { PageChart, type PagePane } from '../drawings/page.ts';
import { type Panel, type Picture, readPicture } from '../drawings/svg.ts';
import { Desk } from './support.ts';

const count = 24;
/** Pixels of a bar: an odd number has its middle in the middle of a pixel, where the chart has it. */
const rowWidth = 21;
const size = '628x420';
/** In pixels: the chart brings what it fills to whole ones. */
const near = 1;

let desk: Desk;
let language: Language;
let bars: BarsAnswer;
let file: string;

before(async () => {
  const csv = lastBars(count);
  file = join(makeFolder(), 'bars.csv');
  writeFileSync(file, csv);
  desk = await Desk.make();
  language = desk.json({ call: 'library' });
  bars = desk.bars(csv);
});

function pictureOf(script: string, theme: ThemeName): Picture {
  const look = ['--last', String(count), '--size', size, '--theme', theme, '--quiet'];
  return readPicture(quorSays('chart', '-e', script, '--bars', file, ...look, '--out', '-'));
}

const pageOf = (script: string, theme: ThemeName) =>
  new PageChart(desk, language, bars, script, theme);

const lies = ([x, y]: Place, [otherX, otherY]: Place) =>
  Math.abs(x - otherX) <= near && Math.abs(y - otherY) <= near;

function isSame(one: Ink | undefined, other: Ink | undefined): boolean {
  if (!one || !other || one.kind !== other.kind || one.look !== other.look) return false;
  return (
    one.points.length === other.points.length &&
    one.points.every((point, i) => lies(point, other.points[i]))
  );
}

function assertSameInk(chart: readonly Ink[], page: readonly Ink[], what: string): void {
  for (let i = 0; i < Math.max(chart.length, page.length); ++i) {
    const texts = [chart[i], page[i]].map((ink) => (ink ? inkText(ink) : 'nothing'));
    assert.ok(isSame(chart[i], page[i]), `${what}:\nchart ${texts[0]}\npage  ${texts[1]}`);
  }
}

const lettersOf = ({ look }: Ink): string => JSON.parse(/^"(?:[^"\\]|\\.)*"/.exec(look)![0]);

/** The texts of a panel's value axis, to the right of it, from above to below. */
function axisOf({ box, around }: Panel): { text: string; y: number }[] {
  const toBaseLine = 4.5;
  return around
    .filter(({ kind, points }) => kind === 'text' && points[0][0] > box.right)
    .map((ink) => ({ text: lettersOf(ink), y: ink.points[0][1] - toBaseLine - box.top }));
}

function assertSameAxis(panel: Panel, { axis }: PagePane, what: string): void {
  const [chart, page] = [axisOf(panel), axis.filter(({ text }) => text !== '')].map((texts) =>
    texts.sort((one, other) => one.y - other.y),
  );
  assert.deepEqual(
    page.map(({ text }) => text),
    chart.map(({ text }) => text),
    `${what}, value axis`,
  );
  for (const [i, { text, y }] of page.entries())
    assert.ok(Math.abs(y - chart[i].y) <= near, `${what}: ${text} at ${y}, not ${chart[i].y}`);
}

const legendOf = ({ box, around }: Panel): string[] =>
  around
    .filter(({ kind, points }) => kind === 'text' && points[0][0] < box.right)
    .map((ink) => lettersOf(ink));

for (const theme of ['light', 'dark'] as const) {
  test(`what is drawn is the same, ${theme}`, () => {
    for (const { name, script } of cases) {
      const [picture, page] = [pictureOf(script, theme), pageOf(script, theme)];
      assert.equal(page.drawn.panes.length, picture.panels.length, `${name}, panes`);
      picture.panels.forEach((panel, i) => {
        const what = `${name}, pane ${i}`;
        assert.equal((panel.box.right - panel.box.left - 45) / count, rowWidth);
        const pane = page.pane(i, panel.box, rowWidth);
        assertSameInk(panel.ink, pane.ink, what);
        assertSameAxis(panel, pane, what);
        assert.deepEqual(pane.legend, legendOf(panel), `${what}, legend`);
      });
    }
  });
}

test('the time axis and the caption are the same', () => {
  const { head, panels } = pictureOf('X:=C;', 'light');
  const { box } = panels[0];
  const page = pageOf('X:=C;', 'light');
  const texts = head.filter(({ kind }) => kind === 'text');
  const below = texts.filter(({ points }) => points[0][1] > panels.at(-1)!.box.bottom);
  const last = panels.at(-1)!.box;
  const time = { grid: page.time(box, rowWidth).grid, texts: page.time(last, rowWidth).texts };
  const placed = below.map((ink) => ({
    ...ink,
    points: ink.points.map(([x, y]) => [x - last.left, y - last.top] as const),
  }));
  assertSameInk(placed, time.texts, 'time axis');
  assert.ok(
    below.some(({ look }) => look.includes('"Apr" #1b2330')),
    'a month is stronger',
  );
  const upright = head.filter(
    ({ kind, points: [[x, top], [otherX] = [NaN]] }) =>
      kind === 'line' && x === otherX && top === box.top,
  );
  const grid = upright.map((ink) => ({
    ...ink,
    points: ink.points.map(([x, y]) => [x - box.left, y - box.top] as const),
  }));
  assertSameInk(grid, time.grid, 'upright lines');
  const caption = texts.map(lettersOf);
  for (const text of page.newestTexts) assert.ok(caption.includes(text), `${text}: ${caption}`);
});

/** Without the bars, which are the same in all cases and stand in one of them. */
function isOfScript({ kind, look }: Ink): boolean {
  const { rise, fall, ground } = language.theme.light;
  return !['box', 'line'].includes(kind) || ![rise, fall, ground].includes(look.slice(0, 7));
}

function heldText(inkOf: (script: string, pane: number) => readonly Ink[] | undefined): string {
  const lines: string[] = [];
  for (const { name, script } of cases) {
    lines.push(`## ${name}`, script);
    const before = lines.length;
    for (let pane = 0; ; ++pane) {
      const ink = inkOf(script, pane);
      if (!ink) break;
      if (pane === 1 && ink.every(({ look }) => look.endsWith('*0.75'))) continue; // the volume
      if (pane > 0) lines.push('-- below');
      lines.push(...ink.filter((one) => name === 'bars' || isOfScript(one)).map(inkText));
    }
    assert.equal(lines.length > before, name !== 'NODRAW', `${name} is drawn`);
  }
  return `${lines.join('\n')}\n`;
}

test('each drawing is as it is held', () => {
  const held = {
    chart: heldText((script, pane) => pictureOf(script, 'light').panels[pane]?.ink),
    page: heldText((script, pane) => {
      const panel = pictureOf(script, 'light').panels[pane];
      return panel && pageOf(script, 'light').pane(pane, panel.box, rowWidth).ink;
    }),
  };
  for (const [name, text] of Object.entries(held)) {
    const path = `test/drawings/${name}.txt`;
    if (process.env.RENEW_DRAWINGS) writeFileSync(path, text);
    assert.equal(text, readFileSync(path, 'utf8'), `${path}: see npm run drawings`);
  }
});

/** Kind and style of each record that the documentation of hosts tells of. */
function shapesOfDocs(): string[] {
  const docs = readFileSync('../docs/host.md', 'utf8');
  const sections = [...docs.matchAll(/^### `(\w+(?:Shape|Range))`\n([^#]*)/gm)];
  return sections.flatMap(([, kind, text]) => {
    const told = /^\| `Style` \| "(\w+)" \|(.*)\|$/m.exec(text);
    const styles = told?.[2].match(/(?<=`)[A-Z][a-z]\w+(?=`)/g) ?? [told?.[1] ?? kind];
    return styles.map((style) => `${kind} ${style}`);
  });
}

test('each word that draws, each style and each kind of record has its drawing', () => {
  const written = cases.map(({ script }) => script).join('\n');
  /** A number at the end of a word may be another one. */
  const missing = (words: readonly string[]) =>
    words.filter((word) => !new RegExp(`\\b${word.replace(/\d+$/, '\\d+')}\\b`).test(written));
  const help = quorSays('help');
  for (const group of ['Drawing', 'Notices, signals and sounds']) {
    const words = new RegExp(`^${group}\\n((?:  .*\\n)+)`, 'm').exec(help)![1].trim().split(/\s+/);
    assert.ok(words.length >= 10, group);
    assert.deepEqual(missing(words), [], group);
  }
  const at = 'A:MA(C,5),'.length;
  const { items } = desk.json<CompletionsAnswer>({ call: 'complete', script: 'A:MA(C,5),', at });
  for (const kind of ['style', 'colour']) {
    const words = items.filter((item) => item.kind === kind).map(({ label }) => label);
    assert.ok(words.length >= 10, kind);
    assert.deepEqual(missing(words), [], kind);
  }
  const records = cases.flatMap(({ script }) => pageOf(script, 'light').drawn.records);
  const kinds = new Set(records.map(({ ShapeName: kind, Style: style }) => `${kind} ${style}`));
  const told = shapesOfDocs();
  assert.ok(told.length >= 25, told.join());
  for (const one of told) assert.ok(kinds.has(one), `${one}: not drawn by a case`);
  const untold = [...kinds].filter(
    (kind) => !told.includes(kind) && !/undefined|^Volume/.test(kind),
  );
  assert.deepEqual(untold, [], 'records that the documentation does not tell of');
});
