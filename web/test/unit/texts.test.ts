import assert from 'node:assert/strict';
import { test } from 'node:test';
import { inkOn, withAlpha } from '../../src/chart/color.ts';
import { groupedText, multiples, niceStep, shortText, tickText } from '../../src/chart/numbers.ts';
import { isIntraday, keyText, timeMarks } from '../../src/chart/time.ts';

test('numbers are grouped before the point only, and great ones have units', () => {
  assert.equal(groupedText(1234567.12345, 5), '1,234,567.12345');
  assert.equal(groupedText(-12345, 0), '-12,345');
  assert.equal(groupedText(9999.5, 1), '9999.5');
  assert.equal(shortText(NaN, 2), '–');
  assert.equal(shortText(12_345_678, 2), '12.3M');
  assert.equal(shortText(-3e20, 2), '-3.00e+20');
  assert.equal(groupedText(1e300, 2), '1e+300');
});

test('axes count in steps of 1, 2 and 5', () => {
  assert.deepEqual(multiples(niceStep(93, 5), 2, 95), [20, 40, 60, 80]);
  assert.equal(tickText(2.5e6, 5e5, 4e6), '2.5M');
  assert.equal(tickText(0.30000000000000004, 0.1, 1), '0.3');
  assert.ok(multiples(1e-9, 0, 1).length <= 100);
});

const days = [20231228, 20231229, 20240102, 20240103, 20240201].map((day) => day * 1e6);

test('the time axis names the greatest span that begins at a bar', () => {
  const marks = timeMarks(days, 1);
  assert.deepEqual(
    marks.map(({ index, text }) => [index, text]),
    [
      [1, '29'],
      [2, '2024'],
      [3, '3'],
      [4, 'Feb'],
    ],
  );
  assert.deepEqual(
    timeMarks(days, 10).map(({ text }) => text),
    ['2024'],
  );
  assert.deepEqual(timeMarks([], 10), []);
});

test('within a day the time is told', () => {
  const keys = [20240108145500, 20240109090000, 20240109090500];
  assert.ok(isIntraday(keys) && !isIntraday(days));
  assert.deepEqual(
    timeMarks(keys, 1).map(({ text }) => text),
    ['Jan 9', '09:05'],
  );
  assert.equal(keyText(20240109090530, true), '2024-01-09 09:05:30');
  assert.equal(keyText(20240109090500, false), '2024-01-09');
  assert.equal(keyText(NaN, true), '');
});

test('letters on a colour are black or white, whichever is easier to read', () => {
  assert.equal(inkOn('#ffd933'), '#000000');
  assert.equal(inkOn('#1d5fd6'), '#ffffff');
  assert.equal(withAlpha('#102030', 0.5), '#10203080');
});
