// One script over the bars of one security: values, times, names, errors, events, live bars.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { describe, test } from 'node:test';
import { load, ScriptError } from 'quor';

const quor = await load();

/** n bars from a day on, with closes of one's own. */
function daily(closes, first = '2024-01-01') {
  const start = Date.parse(first);
  return {
    time: closes.map((_, i) => new Date(start + i * 86_400_000)),
    open: closes.map((close) => close - 1),
    high: closes.map((close) => close + 2),
    low: closes.map((close) => close - 2),
    close: closes,
    volume: closes.map((_, i) => 100 + i),
  };
}

const run = (source, bars, options) => quor.compile(source).run(bars, options);
const values = (lines) => Object.fromEntries(Object.entries(lines).map(([k, v]) => [k, [...v]]));

describe('a script', () => {
  test('gives its lines as arrays, null as NaN', () => {
    const lines = run('a:MA(C,2);B:=V+H;', daily([1, 2, 4]));
    assert.deepEqual(values(lines), { A: [NaN, 1.5, 3], B: [103, 105, 108] });
    assert.ok(lines.A instanceof Float64Array);
  });

  test('describes itself', () => {
    const script = quor.compile('a:MA(C,N),COLORRED,LINETHICK2;hid:=C;', { parameters: { n: 9 } });
    assert.deepEqual(
      script.lines.map(({ name, statement, look }) => [name, statement, look?.width]),
      [
        ['A', 0, 2],
        ['HID', 1, undefined],
      ],
    );
    assert.deepEqual(script.fields, ['close']);
    assert.equal(script.lookBack, 9);
    assert.deepEqual(script.report.words, ['MA', 'POLYLINE']);
    assert.deepEqual(
      script.shapes.map((shape) => shape.Field1Text),
      ['A'],
    );
    assert.deepEqual(script.findings, []);
    assert.match(quor.compile('A:C,LINETHIK2;').findings[0].sentence, /LINETHIK/);
  });

  test('tells code, sentence and place of a mistake', () => {
    assert.throws(
      () => quor.compile('A:C;\nB:EMMA(C,5);'),
      (error) => {
        assert.ok(error instanceof ScriptError);
        assert.deepEqual([error.code, error.line, error.column], [2, 2, 3]);
        assert.equal(error.sentence, 'nothing defines EMMA');
        assert.equal(error.message, '2:3: error: nothing defines EMMA (code 2); did you mean EMA?');
        return true;
      },
    );
    assert.throws(
      () => quor.compile('A:EMMA(C,5);\nB:C;\nD:MA(C);'),
      (error) => {
        const places = error.errors.map(({ code, line }) => [code, line]);
        assert.deepEqual(places, [
          [2, 1],
          [7, 3],
        ]);
        assert.match(error.message, /nothing defines EMMA.*\n3:3: error: MA takes 2 arguments/);
        return true;
      },
    );
  });

  test('is sound after a run that failed', () => {
    const script = quor.compile('A:STD(C,IFF(C>200,0-5,2));');
    assert.throws(() => script.run(daily([1, 300, 2])), /vector too long/);
    assert.deepEqual(values(script.run(daily([1, 3, 5]))), { A: [NaN, NaN, Math.SQRT2] });
  });

  test('takes texts in quotes, other letters and halves of characters', () => {
    const script = quor.compile("DRAWTEXT(C>1,C,'a\\b,\t均线');");
    assert.equal(script.shapes[0].Text, 'a\\b,\t均线');
    assert.ok(quor.compile("DRAWTEXT(C>1,C,'\ud800');").shapes.length === 1);
  });

  test('gives notices and signals of its last run', () => {
    const script = quor.compile("A:C;CROSS(C,10),NOTICE('up');C<5,BK(3);C>11,SP;");
    script.run(daily([9, 12, 4]));
    assert.deepEqual(
      script.events.map(({ row, word, name, quantity }) => [row, word, name, quantity]),
      [
        [1, 'NOTICE', 'up', null],
        [1, 'SP', '', null],
        [2, 'BK', '', 3],
      ],
    );
    assert.equal(script.events[0].key, 20240102000000);
    script.run(daily([1]));
    assert.equal(script.events.length, 1);
  });

  test('reads its trading calendar', () => {
    const sample = (name) =>
      readFileSync(new URL(`../../samples/${name}`, import.meta.url), 'utf8');
    const rows = sample('night.csv')
      .trim()
      .split('\n')
      .slice(1)
      .map((row) => row.split(','));
    const column = (i) => rows.map((row) => Number(row[i]));
    const script = quor.compile(sample('cookbook/session_average.quor'), {
      period: 0x3005,
      code: 'TEST',
      market: 'NIGHT',
      calendar: sample('night-calendar.json'),
    });
    const { AVERAGE } = script.run({
      time: rows.map(([date, time]) => `${date} ${time}`),
      ...{ open: column(2), high: column(3), low: column(4), close: column(5), volume: column(6) },
    });
    // The second trading day begins with its night session, in row 72.
    const [, , high, low, close] = [0, 1, 3, 4, 5].map((i) => column(i)[72]);
    assert.ok(Math.abs(AVERAGE[72] - (high + low + close) / 3) < 1e-9);
    assert.notEqual(AVERAGE[71], AVERAGE[72]);
  });
});

describe('bars', () => {
  const expected = { D: [20240102, 20240103], T: [2359, 0] };
  const clocks = {
    Dates: [new Date('2024-01-02T23:59:00Z'), new Date('2024-01-03T00:00:59.9Z')],
    texts: ['2024-01-02 23:59', '2024-01-03'],
    'texts with zones': ['2024-01-02T23:59:00Z', '2024-01-03T09:00:00+09:00'],
    numbers: [20240102235900, 20240103],
    'big numbers': [20240102235900n, 20240103n],
    'an array of numbers': Float64Array.of(20240102235900, 20240103000000),
  };
  for (const [kind, time] of Object.entries(clocks)) {
    test(`have times as ${kind}`, () => {
      const script = quor.compile('D:=DATE;T:=TIME;', { period: 0x3005 });
      assert.deepEqual(values(script.run({ time })), expected);
    });
  }

  test('have times as days and clock times apart', () => {
    const script = quor.compile('D:=DATE;T:=TIME;', { period: 0x3005 });
    const bars = { date: ['2024-01-02', '20240103'], Time: ['23:59', '0:00:00'] };
    assert.deepEqual(values(script.run(bars)), expected);
    assert.deepEqual(values(script.run({ ...bars, date: [20240102, 20240103] })), expected);
    const live = script.live(bars);
    live.update({ date: 20240103, time: '09:30' });
    assert.deepEqual(live.last, { D: 20240103, T: 930 });
    assert.throws(() => live.update({ date: 20240103, time: 931 }), /"09:35"/);
  });

  test('reach the script as the clock of a zone shows them', () => {
    const script = quor.compile('D:=DATE;T:=TIME;', { period: 0x3005 });
    // Summer time begins in New York on the tenth, at seven by UTC.
    const time = ['2024-03-10T06:59:00Z', '2024-03-10T07:00:00Z'].map((text) => new Date(text));
    assert.deepEqual(values(script.run({ time }, { timeZone: 'America/New_York' })), {
      D: [20240310, 20240310],
      T: [159, 300],
    });
  });

  test('come back in their order, and of repeated times the last counts', () => {
    const bars = { date: [20240103, 20240101, 20240102, 20240103], C: [7, 1, 2, 4] };
    assert.deepEqual(values(run('A:MA(C,2);', bars)), { A: [3, NaN, 1.5, 3] });
  });

  test('have fields by usual words, ids and sources', () => {
    const time = [20240101];
    const source = 'A:C+V;B:"600000$CLOSE";';
    for (const bars of [
      { time, Close: [1], ' Vol': [2], '600000|11': [3] },
      { time, 11: [1], 13: [2], '600000|11': [3] },
    ]) {
      assert.deepEqual(values(run(source, bars)), { A: [3], B: [3] });
    }
    assert.deepEqual(values(run('A:C;', { time, C: [null] })), { A: [NaN] });
    assert.deepEqual(values(run('A:C;', { time: [], C: [] })), { A: [] });
  });

  const detached = Float64Array.of(1);
  structuredClone(detached.buffer, { transfer: [detached.buffer] });
  const time = [20240101];
  const faults = [
    [{ time }, /reads 'close', and nothing in the bars is called so/],
    [{ time, C: [1], close: [1] }, /two arrays are 'close': 'close' and 'C'/],
    [{ time, C: [1, 2] }, /'C' has 2 values for 1 bars/],
    [{ time, C: ['1'] }, /'C' holds a string in bar 0/],
    [{ time, C: 1 }, /'C' is no array/],
    [{ time, C: detached }, /the buffer of 'C' is detached/],
    [{ C: [1] }, /nothing holds the times/],
    [{ time: [NaN], C: [1] }, /bar 0 .*NaN/],
    [{ time: [new Date(NaN)], C: [1] }, /bar 0 .* has no time/],
    [{ time: [null], C: [1] }, /bar 0 .* has no time/],
    [{ time: ['noon'], C: [1] }, /"noon" can't be read/],
    [{ time: [20230229], C: [1] }, /20230229 isn't/],
    [{ time: [1704067200000], C: [1] }, /of others make Dates/],
    [{ time, C: [Symbol('1')] }, /'C' holds a symbol in bar 0/],
    [
      { date: time, time: [930], C: [1] },
      /bar 0 .*20240102, and the 'time' a text such as "09:35"/,
    ],
    [{ date: time, time: [], C: [1] }, /'time' has 0 values for 1 days of 'date'/],
    [{ time, C: new DataView(new ArrayBuffer(8)) }, /'C' is no array/],
    [{ time: Float64Array.of(20240101.5), C: [1] }, /20240101.5 isn't/],
    [{ time: [20240101n, 'noon'], C: [1, 2] }, /bar 1 .*"noon" can't be read/],
    [{ time: 20240101, C: [1] }, /'time' is no array/],
    [null, /bars are an object/],
    [5, /bars are an object/],
  ];
  for (const [bars, message] of faults) {
    test(`are refused: ${message.source}`, () => {
      const script = quor.compile('A:C;');
      assert.throws(() => script.run(bars), { name: 'TypeError', message });
      assert.throws(() => script.live(bars), { name: 'TypeError', message });
      assert.deepEqual(values(script.run({ time, C: [5] })), { A: [5] });
    });
  }

  test('are refused with options that are none', () => {
    const script = quor.compile('A:C;');
    for (const [options, message] of [
      [null, /options are an object/],
      [{ timeZone: 8 }, /a time zone is a text/],
      [{ timeZone: 'Mars' }, /no time zone is called 'Mars'/],
    ]) {
      const fault = { name: 'TypeError', message };
      assert.throws(() => script.run({ time, C: [5] }, options), fault);
      assert.throws(() => script.live({ time, C: [5] }, options), fault);
    }
  });

  test('of big numbers, truths and shared memory are numbers', () => {
    const shared = new Float64Array(new SharedArrayBuffer(8));
    shared[0] = 7;
    for (const [C, expected] of [
      [[3n], 3],
      [BigInt64Array.of(4n), 4],
      [[true], 1],
      [shared, 7],
      [Int8Array.of(-5), -5],
    ]) {
      assert.deepEqual(values(run('A:C;', { time, C })), { A: [expected] });
    }
  });
});

describe('settings', () => {
  for (const [settings, message] of [
    [{ parameters: { N: NaN } }, /N is no finite number/],
    [{ parameters: { N: '5' } }, /N is no finite number/],
    [{ period: 'day' }, /period/],
    [{ parameters: new Map([['N', 5]]) }, /parameters are an object of numbers/],
    [{ code: 600000 }, /code is no text/],
    [{ calendar: 5 }, /a calendar is an object/],
    [{ isTrading: 1 }, /isTrading is true or false/],
    [{ paramters: { N: 5 } }, /no setting is called 'paramters'/],
    [null, /settings are an object/],
    [{ minPrice: '1' }, /minPrice is no number/],
  ]) {
    test(`are refused: ${JSON.stringify(settings)}`, () => {
      assert.throws(() => quor.compile('A:MA(C,N);', settings), { name: 'TypeError', message });
    });
  }
  test('a script is a text', () => {
    assert.throws(() => quor.compile(5), { name: 'TypeError', message: /a script is a text/ });
  });
});

describe('live bars', () => {
  test('give what a whole run gives, changed ones too', () => {
    const closes = Array.from({ length: 50 }, (_, i) => 10 + Math.sin(i) * 3);
    const bars = daily(closes);
    const script = quor.compile('A:EMA(C,5);CROSS(C,A),BK(1);');
    const whole = script.run(bars);
    const first = Object.fromEntries(Object.entries(bars).map(([k, v]) => [k, v.slice(0, 30)]));
    const live = script.live(first);
    for (let i = 30; i < 50; ++i) {
      live.update({ time: bars.time[i], close: closes[i] + 3 });
      assert.deepEqual(live.update({ time: bars.time[i], close: closes[i] }), live.last);
      assert.equal(live.last.A, whole.A[i]);
    }
    assert.equal(live.length, 50);
    assert.deepEqual(live.values(), whole);
    assert.deepEqual(values(live.values(2)), { A: [...whole.A.slice(-2)] });
    assert.deepEqual([...live.keys(2)], [20240218000000, 20240219000000]);
    const fires = script.events.some(({ row }) => row === 49);
    assert.equal(live.events.length, fires ? 1 : 0);
    live[Symbol.dispose]();
    assert.throws(() => live.last, /given back by free/);
  });

  test('refuse what is no bar and no count, and go on', () => {
    const live = quor.compile('A:C;').live();
    live.update({ time: 20240101, C: 1 });
    for (const [bar, message] of [
      [null, /a bar is an object/],
      [{ C: 1 }, /nothing holds the times/],
      [{ time: NaN, C: 1 }, /the bar: .*NaN isn't/],
      [{ time: 20240102, C: '1' }, /'C' is a string/],
      [{ time: 20240102, C: 1, close: 2 }, /two arrays are 'close'/],
    ]) {
      assert.throws(() => live.update(bar), { name: 'TypeError', message });
    }
    for (const count of [NaN, -1, 1.5, '1', null]) {
      assert.throws(() => live.values(count), { name: 'TypeError', message: /a count of bars/ });
      assert.throws(() => live.keys(count), { name: 'TypeError', message: /a count of bars/ });
    }
    assert.deepEqual(values(live.values()), { A: [1] });
    assert.deepEqual(live.update({ C: null, Time: 20240102 }), { A: NaN });
    assert.deepEqual(live.update({ time: 20240101, close: 4 }), { A: NaN });
    assert.deepEqual([...live.values(5).A], [4, NaN]);
  });

  test('start from nothing and want whole bars', () => {
    const live = quor.compile('A:C+O;').live();
    assert.deepEqual(live.last, {});
    assert.throws(() => live.update({ time: 20240101, close: 1 }), /reads 'open'/);
    assert.deepEqual(live.update({ time: 20240101, close: 1, open: 2 }), { A: 3 });
    live.free();
  });
});
