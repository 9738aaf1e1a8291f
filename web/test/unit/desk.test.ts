// Scripts over bars, as the page has them calculated.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import type { OverlayAnswer, ScriptAnswer } from '../../src/engine/types.ts';
import type { Refusal } from '../../src/refusal.ts';
import { Desk, madeBars, sampleBars } from './support.ts';

const quor = process.env.QUOR ?? '../build/release/host/quor';
const samples = ['../samples', '../samples/cookbook'].flatMap((folder) =>
  readdirSync(folder)
    .filter((name) => name.endsWith('.quor'))
    .map((name) => `${folder}/${name}`),
);

/** A folder that is gone when the tests end. */
function makeFolder(): string {
  const folder = mkdtempSync(join(tmpdir(), 'quor-desk-'));
  process.on('exit', () => rmSync(folder, { recursive: true, force: true }));
  return folder;
}

function refusal(work: () => unknown): Refusal {
  try {
    work();
  } catch (error) {
    return error as Refusal;
  }
  return assert.fail('nothing was refused');
}

test('lines are those of the command line, to the last bit', async () => {
  const desk = await Desk.make(sampleBars);
  assert.ok(samples.length >= 25);
  for (const path of samples) {
    assert.ok(desk.script(readFileSync(path, 'utf8')).sound, path);
    const options = ['--csv', '--period', 'day', '--bars', '../samples/index-daily.csv'];
    const printed = execFileSync(quor, ['run', path, ...options], {
      encoding: 'utf8',
      maxBuffer: 1 << 28,
    });
    assert.ok(desk.csv() === printed, path);
  }
});

test('a mistake is told at its place, and the chart of before stays', async () => {
  const desk = await Desk.make(sampleBars);
  desk.script('A:MA(C,5);');
  // The note takes two units in front of the place, though it is one character of four bytes.
  const script = '{\u{1d11e} é}\nA:MA(C,5);\r\nB:EMMA(C,3);';
  const answer = desk.script(script);
  assert.ok(!answer.sound && !('records' in answer));
  const { sentence, line, from, to } = answer.findings.at(-1)!;
  assert.deepEqual({ sentence, line }, { sentence: 'nothing defines EMMA', line: 3 });
  assert.equal(script.slice(from!, to!), 'EMMA');
  assert.equal(desk.values(10).lines.length, 1);
});

test('sliders have parameters and constants', async () => {
  const desk = await Desk.make(sampleBars);
  const script = 'CONST N:20;\nCONST F:-0.5;A:MA(C,N)*F+MA(C,M);';
  const given = [
    { name: 'm', value: 6 },
    { name: 'X', value: 1 },
  ];
  const { sliders, sound } = desk.script(script, given);
  assert.ok(sound);
  for (const { low, value, high, step } of sliders)
    assert.ok(low <= value && value <= high && step > 0);
  const found = Object.fromEntries(
    sliders.map(({ name, from, to, idle }) => [
      name,
      from === null ? idle : script.slice(from, to!),
    ]),
  );
  assert.deepEqual(found, { M: false, X: true, N: '20', F: '-0.5' });
});

test('a view has the values of all its rows', async () => {
  const desk = await Desk.make(sampleBars);
  const { lines } = desk.script('A:MA(C,5);B:=C>O;');
  const view = desk.view({ from: 100, to: 140, points: 40 });
  assert.deepEqual([view.step, view.from, view.count, view.rows], [1, 100, 40, 5105]);
  for (const row of [100, 117, 139]) {
    const values = desk.values(row);
    assert.equal(values.fields['11'], view.valueAt(11, row));
    lines!.forEach(({ column }, i) => assert.equal(values.lines[i], view.valueAt(column, row)));
  }
  assert.equal(refusal(() => desk.values(5105)).status, 404);
  assert.equal(desk.view({ from: 9000, to: 9100 }).count, 0);
});

test('a thinned view keeps the ends of its slots', async () => {
  const desk = await Desk.make(sampleBars);
  const { lines, records } = desk.script('A:C-O;PARTLINE(C>O,C*2,COLORRED);');
  const part = records!.find(({ Style }) => Style === 'PartLine')!;
  const [value, mark] = [part.Field1Id as number, part.Field1VisibleId as number];
  const all = desk.view({ points: 20000 });
  const few = desk.view({ from: 3, to: 5105, points: 100 });
  assert.equal(few.step, 52);
  const shown = (column: number, row: number) =>
    column === value && all.valueAt(mark, row) !== 1 ? NaN : all.valueAt(column, row);
  for (let slot = 0; slot < few.count; ++slot) {
    const begin = 3 + slot * 52;
    const rows = Array.from({ length: Math.min(52, 5105 - begin) }, (_, i) => begin + i);
    const of = (column: number) => rows.map((row) => shown(column, row));
    const first = (column: number) => few.track(column).first[slot];
    assert.equal(first(7), of(7)[0]);
    assert.equal(first(8), Math.max(...of(8)));
    assert.equal(first(9), Math.min(...of(9)));
    assert.equal(first(11), of(11).at(-1));
    assert.equal(
      first(13),
      of(13).reduce((sum, one) => sum + one),
    );
    for (const column of [lines![0].column, value]) {
      const values = of(column).filter((one) => !Number.isNaN(one));
      const ends = [Math.min(...values), Math.max(...values)];
      const inOrder = ends.sort((one, other) => values.indexOf(one) - values.indexOf(other));
      const { second } = few.track(column);
      assert.deepEqual([first(column), second[slot]], inOrder, `${column} at ${begin}`);
    }
  }
});

test('panes hold what shares an axis', async () => {
  const desk = await Desk.make(sampleBars);
  const { panes, records, colours } = desk.script('A:MA(C,20);OSC:MA(C>O,9)*100;EIGHTY:80;');
  assert.deepEqual(
    panes!.map((pane) => pane.records),
    [
      [0, 1],
      [2, 3],
    ],
  );
  assert.deepEqual(panes![1].levels, [{ record: 3, value: 80 }]);
  assert.ok(Math.abs(panes![0].weight + panes![1].weight - 1) < 1e-9);
  assert.deepEqual([records![2].title, records![2].pane], ['OSC', 1]);
  assert.ok((records![2].LineColor as string) in colours!);
  const alone = desk.script('A:MA(C,20);');
  assert.equal(alone.panes!.length, 2);
  assert.equal(alone.records!.at(-1)!.ShapeName, 'VolumeShape');
});

test('all kinds of records say where they show', async () => {
  const desk = await Desk.make(sampleBars);
  const script =
    "BACKGROUNDSTYLE(1);PLAYSOUND(C>O,'A');FILLRGN(C>O,O,C,COLORRED);" +
    "CROSS(C,MA(C,5)),NOTICE('up');CROSS(C,MA(C,9)),BK(1);";
  const showcases = samples.filter((path) => path.includes('showcase'));
  const [kinds, shown] = [new Set(), new Set()];
  for (const text of [script, ...showcases.map((path) => readFileSync(path, 'utf8'))]) {
    const { records } = desk.script(text);
    for (const { ShapeName } of records!) kinds.add(ShapeName);
    for (const { index, shown: bars } of desk.records(4900, 5105).records) {
      if (bars.length > 0) shown.add(records![index].ShapeName);
      assert.ok(bars.every(({ row }) => row < 5105));
    }
  }
  const atBars =
    'FuturesTradeShape ImageShape NoticeShape PolylineShape RectShape SoundShape StraightLineShape TextShape';
  const others = 'BarShape CandleShape PolygonShape YAxisRange';
  for (const kind of atBars.split(' ')) assert.ok(shown.has(kind), kind);
  for (const kind of others.split(' ')) assert.ok(kinds.has(kind), kind);
});

test('an answer tells what is to be drawn, whatever came before', async () => {
  const desk = await Desk.make(sampleBars);
  const expectSeen = (drawn: { rows?: number; lines?: { column: number }[] }, rows: number) => {
    const view = desk.view();
    assert.deepEqual([drawn.rows, view.rows], [rows, rows]);
    for (const { column } of drawn.lines!) assert.ok(view.has(column));
  };
  expectSeen(desk.script('A:MA(C,2);'), 5105);
  expectSeen(desk.bars(madeBars(50)).script!, 50);
  const broken = desk.script('A:MA(C,2;');
  assert.ok(!('records' in broken), 'the chart stays as it is');
  const more = desk.bars(madeBars(60)).script!;
  assert.ok(!more.sound);
  assert.deepEqual(more.findings, broken.findings);
  assert.equal(more.lines![0].name, 'A', 'what was seen is seen over other bars');
  expectSeen(more, 60);
  const none = (await Desk.make(madeBars(9))).script('A:MA(C,2;');
  assert.deepEqual([none.sound, none.lines], [false, []]);
  assert.equal(none.records![0].ShapeName, 'CandleShape', 'the bars alone');
});

test('bars of a text take the place of those before, in the order of their times', async () => {
  const desk = await Desk.make(sampleBars);
  desk.script('A:MA(C,2);');
  const answer = desk.bars(
    '\uFEFFdate,close\n2024-01-02 09:35,2\n2024-01-02 09:30,1\n2024-01-02 09:40,4\n',
    '<b>"',
  );
  assert.deepEqual(
    [answer.name, answer.rows, answer.period.name, answer.intraday, answer.script!.sound],
    ['<b>"', 3, '5min', true, true],
  );
  assert.equal(
    desk.csv(),
    'date,A\n2024-01-02 09:30:00,\n2024-01-02 09:35:00,1.5\n2024-01-02 09:40:00,3\n',
  );
  assert.equal(desk.script('A:V;').missing![0].field, 13);
});

test('bars that are none leave those before', async () => {
  const desk = await Desk.make(madeBars(300));
  for (const csv of [
    '',
    'x',
    'date,close\n2024-01-01\n',
    'date,close\n2024-01-01,x\n',
    'date,close\n1,1\n',
    'date,close\n',
    '"'.repeat(5000),
    '\0'.repeat(1000),
    'date,close\n2024-01-01,1\n2024-01-01,2\n',
  ]) {
    const { status, message } = refusal(() => desk.bars(csv, 'mine'));
    assert.ok(status === 400 && message.startsWith('mine'), `${csv.slice(0, 30)}: ${message}`);
  }
  const workbook = refusal(() => desk.bars('PK\u0003\u0004', 'mine'));
  assert.match(workbook.message, /save its sheet as CSV/);
  assert.equal(refusal(() => desk.bars(madeBars(9), 'mine', 'often')).status, 400);
  assert.equal(desk.values(299).row, 299);
});

test('calls that no page of ours makes are refused', async () => {
  const desk = await Desk.make(madeBars(30));
  const cases: [object, number][] = [
    [{}, 400],
    [{ call: 'none' }, 404],
    [{ call: 'script' }, 400],
    [{ call: 'script', script: 'A'.repeat(1 << 20) }, 413],
    [{ call: 'script', script: 'A:C;', parameters: [{ name: 'N' }] }, 400],
    [{ call: 'script', script: 'A:C;', parameters: [{ name: 'A"B', value: 1 }] }, 400],
    [{ call: 'view', from: -1 }, 400],
    [{ call: 'view', points: 1e9 }, 400],
    [{ call: 'csv' }, 409],
    [{ call: 'step' }, 409],
    [{ call: 'play', row: 0 }, 400],
    [{ call: 'play', row: 30 }, 400],
    [{ call: 'play', row: 1.5 }, 400],
    [{ call: 'play', row: 5, ticks: 99 }, 400],
  ];
  for (const [call, status] of cases) {
    const refused = refusal(() => desk.text(call));
    assert.equal(refused.status, status, JSON.stringify(call).slice(0, 80));
    assert.ok(refused.message.length > 5);
  }
});

test('other securities come by their keys, and a script says what it lacks', async () => {
  const desk = await Desk.make('date,close\n2024-01-02,10\n2024-01-03,20\n2024-01-04,30\n');
  const first = desk.script('A:"bbb$CLOSE"/C;');
  assert.deepEqual(first.references, [
    { name: 'BBB', text: 'BBB CLOSE (11)', security: true, given: false },
  ]);
  assert.equal(desk.csv(), 'date,A\n2024-01-02,\n2024-01-03,\n2024-01-04,\n');
  const answer = desk.json<ScriptAnswer>(
    { call: 'other', name: 'bbb' },
    'date,close\n2024-01-04,3\n2024-01-02,1\n',
  );
  assert.equal(answer.references![0].given, true);
  assert.equal(desk.csv(), 'date,A\n2024-01-02,0.1\n2024-01-03,\n2024-01-04,0.1\n');
  desk.play(1);
  desk.step({ bars: 2 });
  assert.equal(desk.csv(), 'date,A\n2024-01-02,0.1\n2024-01-03,\n2024-01-04,0.1\n');
});

test('longer periods are made of the bars, and show what is over', async () => {
  const rows = ['date,close', '2024-01-04 09:30,1', '2024-01-04 09:35,2', '2024-01-05 09:30,3'];
  const desk = await Desk.make(rows.join('\n') + '\n2024-01-05 09:35,4\n2024-01-08 09:30,5\n');
  const answer = desk.script('A:"DAY$1$CLOSE";B:"WEEK$1$CLOSE";');
  assert.deepEqual(
    answer.references!.map(({ name, given }) => [name, given]),
    [
      ['DAY1', true],
      ['WEEK1', true],
    ],
  );
  const values = ['', '', '2,', '2,', '4,4'].map((text) => text || ',');
  const played = () => desk.csv().trimEnd().split('\n').slice(1);
  assert.deepEqual(
    played().map((row) => row.slice(20)),
    values,
    desk.csv(),
  );
  desk.play(1);
  desk.step({ bars: 4 });
  assert.deepEqual(
    played().map((row) => row.slice(20)),
    values,
    'live',
  );
});

/** Five days of four bars of an hour each, in which everything changes. */
function hourBars(): string[] {
  const made = ['date,open,high,low,close,volume'];
  for (let i = 0; i < 20; ++i) {
    const day = String(8 + Math.floor(i / 4)).padStart(2, '0');
    const close = 100 + ((i * 37) % 23);
    const prices = [close - (i % 3), close + (i % 5), close - 4 - (i % 2), close];
    made.push(`2024-01-${day} ${10 + (i % 4)}:00,${prices.join()},${i + 1}`);
  }
  return made;
}

/** Each of them joined with those of its day before it. */
function daysSoFar(): string[] {
  const [head, ...rows] = hourBars();
  let day: number[] = [];
  const joined = rows.map((row, i) => {
    const [date, ...texts] = row.split(',');
    const [open, high, low, close, volume] = texts.map(Number);
    if (i % 4 === 0) day = [open, high, low, close, volume];
    else day = [day[0], Math.max(day[1], high), Math.min(day[2], low), close, day[4] + volume];
    return [date, ...day].join();
  });
  return [head, ...joined];
}

test('longer periods as they form are those of the command line, and never of the future', async () => {
  const script =
    'O1:"DAY$1$OPEN";H1:"DAY$1$HIGH";L1:"DAY$1$LOW";C1:"DAY$1$CLOSE";V1:"DAY$1$VOL";M:MA(C1,3);';
  const folder = makeFolder();
  const write = (name: string, text: string): string => {
    writeFileSync(join(folder, name), text);
    return join(folder, name);
  };
  const hours = hourBars().join('\n') + '\n';
  const [path, bars] = [write('x.quor', script), write('hours.csv', hours)];
  const days = write('days.csv', daysSoFar().join('\n') + '\n');
  const options = ['--csv', '-p', '1hour', '--reference', `DAY1=${days}`, '--forming'];
  const printed = execFileSync(quor, ['run', path, bars, ...options], {
    encoding: 'utf8',
    stdio: ['ignore', 'pipe', 'ignore'],
  });
  const desk = await Desk.make(hours);
  desk.script(script);
  const finished = desk.csv();
  assert.notEqual(finished, printed);
  const answer = desk.json<ScriptAnswer>({ call: 'forming', on: true });
  assert.ok(answer.sound && answer.references!.every(({ given }) => given));
  assert.equal(desk.csv(), printed);
  desk.play(3, 4);
  desk.step({ bars: 17 });
  assert.equal(desk.csv(), printed, 'live');
  desk.stop();
  desk.bars(hours.split('\n').slice(0, 12).join('\n'));
  assert.equal(desk.csv().trimEnd(), printed.split('\n').slice(0, 12).join('\n'), 'of fewer bars');
  desk.bars(hours);
  desk.json({ call: 'forming', on: false });
  assert.equal(desk.csv(), finished);
  assert.equal(refusal(() => desk.text({ call: 'forming', on: 1 })).status, 400);
});

test('a longer period than that of the bars joins them, those of others too', async () => {
  const days = 'date,open,close\n2024-01-04,1,2\n2024-01-05,3,4\n2024-01-08,5,6\n2024-01-09,7,8\n';
  const desk = await Desk.make();
  assert.equal(desk.bars(days, 'days', 'week').rows, 2);
  desk.json({ call: 'other', name: 'bbb' }, days);
  desk.script('A:O;B:C;D:"bbb$CLOSE";');
  assert.equal(desk.csv(), 'date,A,B,D\n2024-01-04,1,4,4\n2024-01-08,5,8,8\n');
  const more = () =>
    desk.json({ call: 'more', name: 'days' }, days.slice(0, 16) + '2024-01-10,9,9\n');
  assert.equal(refusal(more).status, 409, 'the week would be made of its last day alone');
  assert.equal(desk.bars(days, 'days', 'day').rows, 4);
});

test('a script has the code, the market and the constants of its security', async () => {
  const desk = await Desk.make(madeBars(3));
  const lacking = desk.script("A:MINPRICE;B:CODELIKE('6');");
  assert.deepEqual(lacking.needs, { calendar: false, constants: true });
  assert.ok(lacking.findings.some(({ suggestion }) => suggestion.includes('tab Data')));
  const answer = desk.json<ScriptAnswer>({ call: 'subject', code: '600000', minPrice: 0.01 });
  assert.deepEqual(answer.findings, []);
  assert.deepEqual(desk.values(2).lines, [0.01, 1]);
  const bad = refusal(() => desk.json({ call: 'subject', calendar: 'none' }));
  assert.ok(bad.status === 400 && bad.message.length > 5);
  assert.deepEqual(desk.values(2).lines, [0.01, 1], 'what was known before stays');
});

test('another security lies over the bars, under the same keys', async () => {
  const csvOf = (closes: readonly (readonly [day: number, close: number])[]) =>
    ['date,close', ...closes.map(([day, close]) => `2024-01-0${day},${close}`)].join('\n');
  const desk = await Desk.make(csvOf([1, 2, 3, 5].map((day) => [day, 10 * day])));
  const { column, bars } = desk.json<OverlayAnswer>(
    { call: 'overlay', name: 'other' },
    csvOf([
      [2, 7],
      [4, 8],
      [5, 9],
    ]),
  );
  const laid = () => {
    const view = desk.view();
    assert.equal(view.has(column), true);
    return Array.from({ length: view.rows }, (_, row) => view.valueAt(column, row));
  };
  assert.deepEqual(laid(), [NaN, 7, NaN, 9]);
  assert.equal(bars, 2);
  desk.script('A:C;');
  desk.play(1);
  desk.step({ bars: 1 });
  assert.deepEqual(laid(), [NaN, 7]);
  desk.bars(csvOf([[4, 1]]));
  assert.deepEqual(laid(), [8]);
  const broken = { call: 'overlay', name: 'broken' };
  assert.throws(() => desk.text(broken, 'date,volume\n2024-01-01,5'), { status: 400 });
  assert.deepEqual(laid(), [8], 'what is refused changes nothing');
  assert.equal(desk.text({ call: 'overlay' }), 'null');
  assert.equal(desk.view().has(column), false);
});
