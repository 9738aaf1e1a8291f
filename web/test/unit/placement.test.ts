import assert from 'node:assert/strict';
import { test } from 'node:test';
import { boxAround, meets, Placement } from '../../src/chart/placement.ts';

const bounds = { left: 0, top: 0, right: 400, bottom: 200 };

test('texts at one point are stacked and never cover one another', () => {
  const placement = new Placement(bounds);
  const wanted = boxAround(200, 150, 40, 12, [0.5, 1]);
  const placed = [1, 2, 3, 4, 5].map(() =>
    placement.place(wanted, true, { ahead: 60, behind: 40, sideways: true }),
  );
  for (const [i, one] of placed.entries()) {
    assert.ok(one);
    for (const other of placed.slice(i + 1)) assert.ok(other && !meets(one, other));
  }
});

test('where there is no room there is no text', () => {
  const placement = new Placement(bounds);
  placement.occupy(bounds);
  assert.equal(placement.place(boxAround(10, 10, 20, 10, [0, 0]), true, { ahead: 500 }), undefined);
});

test('a text that reaches beyond the edge is brought in', () => {
  const placed = new Placement(bounds).place(boxAround(-30, 250, 50, 10, [0.5, 0]), true, {
    ahead: 0,
  });
  assert.deepEqual(placed, { left: 0, top: 190, right: 50, bottom: 200 });
});
