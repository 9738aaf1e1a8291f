import assert from 'node:assert/strict';
import { test } from 'node:test';
import { readView } from '../../src/engine/view_answer.ts';
import { endsFor, rangeInSight } from '../../src/chart/range.ts';
import type { ShapeRecord } from '../../src/chart/records.ts';
import { scaleOf } from '../../src/chart/scale.ts';
import { View } from '../../src/chart/view.ts';

const endsInSight = (
  records: readonly ShapeRecord[],
  levels: readonly number[],
  view: View,
  from: number,
  to: number,
) => endsFor(rangeInSight(records, levels, view, from, to), scaleOf('linear', 1, 1), records);

/** An answer as the desk writes it: rows 100 to 105 in slots of two. */
function answer(): ArrayBuffer {
  const columns = [
    { id: 11, as: 'last' },
    { id: 20000, as: 'pair' },
    { id: 20001, as: 'any' },
  ];
  let text = JSON.stringify({
    from: 100,
    to: 105,
    rows: 105,
    bucket: 2,
    count: 3,
    columns,
  });
  while ((4 + text.length) % 8 !== 0) text += ' ';
  const bytes = new Uint8Array(4 + text.length + 6 * 3 * 8);
  new DataView(bytes.buffer).setUint32(0, text.length, true);
  bytes.set(new TextEncoder().encode(text), 4);
  const rows = [100, 102, 104];
  const keys = [1, 2, 3].map((day) => 20240100000000 + day * 1e6);
  const values = [...rows, ...keys, 9, 8, 7, 5, -40, 3, 6, -30, 4, 1, -10000, 1];
  new Float64Array(bytes.buffer, 4 + text.length).set(values);
  return bytes.buffer;
}

test('the columns of an answer are read by their ids', () => {
  const view = new View(readView(answer()));
  assert.equal(view.step, 2);
  assert.deepEqual([...view.keys].map(String), [
    '20240101000000',
    '20240102000000',
    '20240103000000',
  ]);
  assert.deepEqual([...view.track(20000).first], [5, -40, 3]);
  assert.deepEqual([...view.track(20000).second], [6, -30, 4]);
  assert.equal(view.valueAt(11, 103), 8);
  assert.ok(Number.isNaN(view.valueAt(11, 99)) && Number.isNaN(view.valueAt(999, 100)));
  assert.deepEqual(view.slots(101, 103), { begin: 0, end: 2 });
  assert.equal(view.middle(2), 104.5, 'the last slot has one row');
});

test('the range of a pane leaves out what is hidden or out of sight', () => {
  const view = new View(readView(answer()));
  const line = {
    ShapeName: 'PolylineShape',
    Style: 'Polyline',
    Field1Id: 20000,
    Field1VisibleId: 20001,
  };
  const { low, high } = endsInSight([line], [], view, 100, 105);
  assert.ok(low > 2.5 && high < 6.5, `${low} to ${high}`);
  const always = endsInSight([{ ...line, always: true }], [], view, 100, 105);
  assert.ok(always.low < -40);
  const first = endsInSight([line], [], view, 100, 101);
  assert.ok(first.low > 4.5);
});

test('a level counts, a signal has no value, and a pane of nothing has a range', () => {
  const view = new View(readView(answer()));
  const notice = { ShapeName: 'NoticeShape', Field1Id: 20000, valued: false };
  assert.deepEqual(endsInSight([notice], [], view, 100, 105), { low: 0, high: 1 });
  assert.ok(endsInSight([notice], [80], view, 100, 105).high > 80);
});
