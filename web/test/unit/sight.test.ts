import assert from 'node:assert/strict';
import { test } from 'node:test';
import {
  keptIn,
  newest,
  panned,
  serves,
  showing,
  wantedFor,
  zoomed,
} from '../../src/chart/sight.ts';

const near = (one: number, other: number) =>
  assert.ok(Math.abs(one - other) < 1e-6, `${one} is not ${other}`);

test('the newest bars end shortly before the right edge', () => {
  const sight = newest(250, 5000);
  near(sight.from, 4750);
  assert.ok(sight.to > 5000 && sight.to < 5015);
});

test('zooming keeps the place under the pointer, as long as there are bars on both sides', () => {
  const sight = { from: 1000, to: 1200 };
  const nearer = zoomed(sight, 0.5, 1150, 5000);
  near(nearer.to - nearer.from, 100);
  near((1150 - nearer.from) / 100, 0.75);
});

test('no gesture leaves the bars, or shows fewer than can be seen', () => {
  for (const rows of [1, 2, 7, 100, 200_000]) {
    for (const sight of [
      panned(newest(250, rows), -1e9, rows),
      panned(newest(250, rows), 1e9, rows),
      zoomed(newest(250, rows), 1e9, rows, rows),
      zoomed(newest(250, rows), 1e-9, rows / 2, rows),
      keptIn({ from: -50, to: -20 }, rows),
    ]) {
      assert.ok(sight.from < rows && sight.to > 0, `${rows}: ${sight.from} to ${sight.to}`);
      assert.ok(sight.to - sight.from >= Math.min(rows, 8), `${rows}: ${sight.to - sight.from}`);
    }
  }
});

test('a row is brought into the middle only if it is out of sight', () => {
  const sight = { from: 100, to: 200 };
  assert.equal(showing(sight, 150, 1000), sight);
  const other = showing(sight, 700, 1000);
  near((other.from + other.to) / 2, 700.5);
});

test('what is loaded has no more slots in sight than pixels, and serves until it is panned away', () => {
  const rows = 200_000;
  for (const span of [50, 1000, 1001, 33_333, rows]) {
    const sight = { from: rows - span, to: rows };
    const wanted = wantedFor(sight, 1000, rows);
    assert.ok(
      span / wanted.step <= 1000 && wanted.step < Math.max(2 * (span / 1000), 2),
      `${span}: ${wanted.step}`,
    );
    assert.equal(wanted.from % wanted.step, 0);
    assert.ok(wanted.from <= sight.from && wanted.to >= sight.to);
    assert.ok(serves(wanted, panned(sight, -span / 2, rows), wanted, rows));
    if (span < 50_000) assert.ok(!serves(wanted, panned(sight, -3 * span, rows), wanted, rows));
  }
});
