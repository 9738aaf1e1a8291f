// What the editor is told about a script: places are those of a browser, words are the language's.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import type {
  CallHint,
  Colour,
  CompletionsAnswer,
  Fix,
  Formatted,
  HoverAnswer,
  NameAnswer,
  Place,
} from '../../src/engine/text_types.ts';
import { blocksOf } from '../../src/editor/markdown.ts';
import { Desk } from './support.ts';

const desk = await Desk.make();

/** A question about a script at its '|'. */
function ask<T>(call: string, marked: string, more: object = {}): T {
  const at = marked.indexOf('|');
  return desk.json({ call, script: marked.replace('|', ''), at, ...more });
}

const cut = (script: string, places: readonly Place[]): string[] =>
  places.map(({ from, to }) => script.slice(from, to));

test('what fits the place is offered, with the colour of colours', () => {
  // A note in front takes two units, but four bytes.
  const { from, to, items } = ask<CompletionsAnswer>('complete', '{\u{1d11e}é}A:C,colo|;');
  assert.deepEqual([from, to], [9, 13]);
  const red = items.find(({ label }) => label === 'COLORRED');
  assert.deepEqual([red?.kind, red?.code], ['colour', 0xcc3030]);
  assert.ok(!items.some(({ kind }) => kind === 'function'));
  const ranked = ask<CompletionsAnswer>('complete', 'MID:=C;A:M|');
  const rank = (label: string) => ranked.items.find((item) => item.label === label)?.rank ?? NaN;
  assert.ok(rank('MID') < rank('CLOSE') && rank('CLOSE') < rank('MA'));
  assert.equal(ranked.items.find(({ label }) => label === 'MA')?.insert, 'MA(${1:X}, ${2:N})');
  const sign = ask<CompletionsAnswer>('complete', "C>O,ICON(1,'|").items[2];
  assert.deepEqual([sign.label, sign.detail], ['ICO3', 'B']);
});

test('names are told, followed and changed wherever they stand', () => {
  const script = 'CONST N:5;\nmid:=MA(C,n)*W; // mid\nB:MID+m|id;';
  const plain = script.replace('|', '');
  const parameters = [{ name: 'W', value: 2 }];
  const told = ask<HoverAnswer>('hover', script, { parameters });
  assert.deepEqual([told.name, plain.slice(told.from, told.to)], ['MID', 'mid']);
  assert.match(told.markdown, /calculated, not drawn/);
  const name = ask<NameAnswer>('name', script, { parameters });
  assert.deepEqual(cut(plain, [name.declared!, ...name.places]), ['mid', 'mid', 'MID', 'mid']);
  assert.equal(name.declared!.from, 11);
  assert.deepEqual(ask<Place[]>('rename', script, { parameters, to: 'gap' }), name.places);
  const refused = (marked: string, to: string) =>
    assert.throws(() => ask('rename', marked, { parameters, to }), { status: 409 });
  refused(script, 'close');
  refused(script, 'N');
  refused('A:M|A(C,5);', 'B');
  // What the script doesn't declare can be asked about, and not renamed.
  assert.equal(ask<NameAnswer>('name', 'A:C*w|;', { parameters }).declared, null);
  refused('A:C*w|;', 'B');
  assert.equal(ask('name', 'A:|MA(C,5);'), null);
  assert.equal(ask('hover', 'A:C; // M|A'), null);
});

test('the argument that is written stands out in its form', () => {
  const argument = (marked: string) => {
    const hint = ask<CallHint | null>('hint', marked);
    return hint && [hint.text, hint.text.slice(hint.from, hint.to), hint.about];
  };
  assert.deepEqual(argument('A:MA(C,|'), ['MA(X,N)', 'N', 'the period']);
  assert.deepEqual(argument("C>O,NOTICE('u|"), [
    "COND,NOTICE('NAME')",
    "'NAME'",
    '1 to 10 characters',
  ]);
  assert.equal(argument('A:MA(C,5)|'), null);
});

test('a finding is mended by what is written over its place', () => {
  const mended = (script: string, parameters: object[] = []) => {
    const { findings } = desk.script(script, parameters);
    const all = desk.json<Fix[][]>({ call: 'fixes', script, parameters, findings });
    assert.equal(all.length, findings.length);
    return all.map(([fix]) => fix && script.slice(0, fix.from) + fix.text + script.slice(fix.to));
  };
  assert.deepEqual(mended('{\u{1d11e}}A:EMMA(C,5);'), ['{\u{1d11e}}A:EMA(C,5);']);
  // Each of several at once.
  assert.deepEqual(mended('A:EMMA(C,5);\nB:C,COLORRDE;'), [
    'A:EMA(C,5);\nB:C,COLORRDE;',
    'A:EMMA(C,5);\nB:C,COLORRED;',
  ]);
  assert.throws(() => desk.json({ call: 'fixes', script: 'A:C;', findings: 5 }), { status: 400 });
});

test('a script is laid out as quor format does, or stays where it makes no sense', () => {
  const format = (script: string) => desk.json<Formatted>({ call: 'format', script });
  assert.deepEqual(format('a:=ma(c,5);b:a*2;'), {
    text: 'a := ma(c, 5);\nb : a * 2;\n',
    unreadable: null,
  });
  const open = "{\u{1d11e}}C>O,NOTICE('up);";
  assert.deepEqual(format(open), { text: open, unreadable: open.indexOf("'") });
});

test('colours are found and written', () => {
  const script = '{\u{1d11e}}A:C,COLORRED;B:C,COLOR00FF00;DRAWLINE(C>O,L,C>O,H,1),RGB(255, 128,0);';
  const colours = desk.json<Colour[]>({ call: 'colours', script });
  assert.deepEqual(cut(script, colours), ['COLORRED', 'COLOR00FF00', 'RGB(255, 128,0)']);
  assert.deepEqual(
    colours.map(({ code }) => code),
    [0xcc3030, 0x00ff00, 0xff8000],
  );
  const texts = (code: number) => desk.json<string[]>({ call: 'colour', code });
  assert.deepEqual(texts(0xcc3030), ['COLORRED', 'COLORCC3030', 'RGB(204, 48, 48)']);
  assert.deepEqual(texts(0x010203), ['COLOR010203', 'RGB(1, 2, 3)']);
});

test('help is parted into paragraphs, lists and code', () => {
  const { markdown } = desk.json<{ markdown: string }>({ call: 'help', word: 'MA' });
  const blocks = blocksOf(markdown);
  assert.deepEqual(blocks[0], { kind: 'code', text: 'MA(X,N)' });
  assert.deepEqual(blocks[2], { kind: 'list', items: ['X: the series', 'N: the period'] });
  assert.equal(blocks.at(-1)?.kind, 'code');
  assert.deepEqual(blocksOf('a \\* b \\_c\n\n```quor\nX\\Y\n\nZ\n```\n\nlast  \nline'), [
    { kind: 'text', text: 'a * b _c' },
    { kind: 'code', text: 'X\\Y\n\nZ' },
    { kind: 'text', text: 'last\nline' },
  ]);
});
