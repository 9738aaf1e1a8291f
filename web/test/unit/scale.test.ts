// How values lie on an axis, and how high panes are.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Heights } from '../../src/chart/heights.ts';
import { endsFor, Range } from '../../src/chart/range.ts';
import { type Scale, scaleOf } from '../../src/chart/scale.ts';

const measures = { timeMarkRoom: 46, tickRoom: 54, leastTickRoom: 18, enoughTicks: 3 };
const log = scaleOf('log', 4000, NaN);

function rangeOf(...values: number[]): Range {
  const range = new Range();
  for (const value of values) range.take(value);
  return range;
}

const textsOf = (scale: Scale, low: number, high: number, height = 300) =>
  scale.ticks({ low, high }, height, false, measures).map(({ text }) => text);

test('ticks stand at round values, none too near to the next', () => {
  assert.deepEqual(textsOf(scaleOf('linear', 1, 1), 480, 1130, 165), ['600', '800', '1000']);
  assert.deepEqual(textsOf(scaleOf('percent', 1, 500), 480, 1130, 165), ['0%', '+50%', '+100%']);
  assert.deepEqual(textsOf(scaleOf('percent', 1, 500), 497, 503, 165), ['-0.5%', '0%', '+0.5%']);
  // 300 pixels for three tens: 5 lies 30 of them from 10, nearer than 36, and 4 lies 40 of them.
  assert.deepEqual(textsOf(log, 1, 1000), ['1', '4', '10', '40', '100', '400', '1000']);
  for (const [low, high] of [
    [640, 3600],
    [0.0004, 900],
    [2800, 2900],
    [7, 7000000],
  ]) {
    const ticks = log.ticks({ low, high }, 400, false, measures);
    assert.ok(ticks.length >= 3, `${ticks.length} from ${low} to ${high}`);
    const places = ticks.map(({ value }) => (400 * Math.log(value / low)) / Math.log(high / low));
    for (const [i, place] of places.entries())
      assert.ok(place - (places[i - 1] ?? -99) > 18, `${low} to ${high}: ${places}`);
  }
});

test('an axis of logarithms has the same margin above and below, and an end above 0', () => {
  const { low, high } = endsFor(rangeOf(100, 1000), log, []);
  // 6 of 100 parts of a ten on each side.
  assert.ok(Math.abs(log.value(low) - 100 * 10 ** -0.06) < 1e-9);
  assert.ok(Math.abs(log.value(high) - 1000 * 10 ** 0.06) < 1e-9);
  const crossing = endsFor(rangeOf(-5, 0, 2, 8), log, []);
  assert.ok(log.value(crossing.low) < 2 && log.value(crossing.low) > 1.8);
  assert.ok(log.place(-5) < crossing.low && Number.isFinite(log.place(-5)));
  assert.ok(Number.isNaN(log.place(NaN)));
  assert.ok(!scaleOf('log', -1, NaN).isLogged, 'nothing is above 0');
});

test('panes keep the heights that they were given, for as many panes', () => {
  const kept = new Map<string, string>();
  const store = {
    getItem: (key: string) => kept.get(key) ?? null,
    setItem: (key: string, value: string) => void kept.set(key, value),
    removeItem: (key: string) => void kept.delete(key),
  };
  const heights = new Heights(store);
  heights.take([0.6, 0.4]);
  assert.deepEqual(heights.pixels(526, 26), [300, 226]);
  heights.move(0, 50, 500);
  assert.deepEqual(heights.pixels(526, 26), [350, 176]);
  heights.move(0, 1000, 500);
  assert.deepEqual(heights.pixels(526, 26), [460, 66], 'a pane stays 40 pixels high');
  const other = new Heights(store);
  other.take([0.5, 0.3, 0.2]);
  assert.deepEqual(other.pixels(526, 26), [250, 150, 126]);
  other.take([0.6, 0.4]);
  assert.deepEqual(other.pixels(526, 26), [460, 66]);
  other.reset([0.6, 0.4]);
  assert.deepEqual(other.pixels(526, 26), [300, 226]);
  for (const broken of ['{', '[1]', '[1,-1]', '["a",1]']) {
    kept.set('quor-studio-heights-2', broken);
    heights.take([0.6, 0.4]);
    assert.deepEqual(heights.pixels(526, 26), [300, 226], broken);
  }
});
