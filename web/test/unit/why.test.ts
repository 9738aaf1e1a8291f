// Why a line has no value at a bar.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { WhyAnswer } from '../../src/engine/types.ts';
import { Desk } from './support.ts';

/** Ten days without an amount, the volume of the fourth one missing. */
const bars = [
  'date,open,high,low,close,volume',
  ...Array.from({ length: 10 }, (_, i) => {
    const volume = i === 3 ? '' : 100 + i;
    return `2024-01-${String(i + 1).padStart(2, '0')},${10 + i},${12 + i},${9 + i},${11 + i},${volume}`;
  }),
].join('\n');

/** A script, the row at which its last line is asked for, and what is said, beginning each. */
const cases: readonly (readonly [script: string, row: number, ...said: string[]])[] = [
  [
    'A:MA(C,5);',
    2,
    'A has no value at row 2 (2024-01-03); its first one stands at row 4 (2024-01-05).',
    'MA(C,5) has no value there, though its arguments have: its first one stands at row 4 (2024-01-05). Here C is 13. MA(X,N): From row N-1 on.',
  ],
  [
    'CONST N:20;A:=MA(C,N);B:A*2+(C-O);',
    9,
    'B has no value at row 9 (2024-01-10); it has none at any of the 10 bars.',
    'A has no value there: it is MA(C,N).',
    'MA(C,N) has no value there, though its arguments have: it has none at any of the 10 bars. Here C is 20, N is 20.',
  ],
  ['A:V+1;', 3, 'A has no value at row 3', 'The bar has no value for V.'],
  [
    'A:REF(V,2);',
    5,
    'A has no value at row 5',
    'REF(V,2) has no value there, though its arguments have: its first one stands at row 2 (2024-01-03). Here V is 105. V was null last at row 3 (2024-01-04).',
  ],
  ['A:AMOUNT/V;', 5, 'A has no value', 'The bars have no AMOUNT.'],
  [
    'A:"BBB$CLOSE"-C;',
    5,
    'A has no value at row 5 (2024-01-06); it has none at any of the 10 bars.',
    '"BBB$CLOSE" has no value there: no bars of BBB are known. Give them in the tab Data.',
  ],
  // The first of January was a Monday, and a week is over when the next one begins.
  [
    'A:"WEEK$1$CLOSE";',
    3,
    'A has no value at row 3 (2024-01-04); its first one stands at row 7 (2024-01-08).',
    '"WEEK$1$CLOSE" has no value there: the bars make no such period, or none of it is over',
  ],
  // The branch that is not taken is null, too.
  [
    'A:IF(C<O,MA(C,99),SQRT(O-C));',
    5,
    'A has no value',
    'IF(C<O,MA(C,99),SQRT(O-C)) has no value there, and SQRT(O-C), which it reads, has none, either.',
    'SQRT(O-C) has no value there, though its arguments have: it has none at any of the 10 bars. Here O-C is -1.',
  ],
  [
    'WHY:MA(C,20);WHY0:(2*WHY);',
    1,
    'WHY0 has no value',
    'WHY has no value there: it is MA(C,20).',
    'MA(C,20)',
  ],
  [
    'A:IF(C>O,NULL,C);',
    1,
    'A has no value',
    'IF(C>O,NULL,C) has no value there, and NULL',
    'NULL stands there',
  ],
];

test('the way from a line down to what has no value of its own', async () => {
  for (const [script, row, ...said] of cases) {
    const desk = await Desk.make(bars);
    const { sound, lines } = desk.script(script);
    assert.ok(sound, script);
    const { sentences } = desk.json<WhyAnswer>({ call: 'why', line: lines!.length - 1, row });
    assert.equal(sentences.length, said.length, sentences.join('\n'));
    for (const [i, start] of said.entries())
      assert.ok(sentences[i].startsWith(start), `${script}: ${sentences[i]}`);
  }
});

test('it is asked for nulls alone, also while bars are played, and changes nothing', async () => {
  const desk = await Desk.make(bars);
  desk.script('A:MA(C,5);B:C;');
  const ask = (line: number, row: number) => () =>
    desk.json<WhyAnswer>({ call: 'why', line, row }).sentences;
  const before = desk.csv();
  assert.throws(ask(0, 4), { status: 409 });
  assert.throws(ask(2, 1), { status: 404 });
  assert.throws(ask(0, 10), { status: 404 });
  desk.play(2);
  assert.match(ask(0, 1)()[0], /it has none at any of the 2 bars/);
  desk.stop();
  assert.match(ask(0, 1)()[0], /its first one stands at row 4/);
  assert.equal(desk.csv(), before);
});

test('a key has its row, or that of the bar before it', async () => {
  const desk = await Desk.make(bars);
  const rowOf = (key: number) => desk.json<{ row: number }>({ call: 'row', key }).row;
  assert.equal(rowOf(20240103000000), 2);
  assert.equal(rowOf(20240103120000), 2);
  assert.equal(rowOf(20300101000000), 9);
  assert.throws(() => rowOf(20231231000000), { status: 404 });
});
