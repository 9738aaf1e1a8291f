// The crosshair of one chart follows that of another one, whose desk may be at work.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Crosshair } from '../../src/crosshair.ts';

/** A desk that answers when it is told to, and what the chart was told. */
function makeCrosshair() {
  const asked: { key: number; answer: (row: number) => void; fail: () => void }[] = [];
  const followed: (number | undefined)[] = [];
  const session = {
    rowOf: (key: number) =>
      new Promise<number>((answer, reject) => asked.push({ key, answer, fail: () => reject() })),
  };
  const chart = { follow: (row: number | undefined) => void followed.push(row) };
  const settled = () => new Promise((resolve) => setTimeout(resolve));
  return { asked, followed, settled, crosshair: new Crosshair(session, () => chart) };
}

test('at last it stands where it was wanted last', async () => {
  const { asked, followed, settled, crosshair } = makeCrosshair();
  for (const key of [100, 200, 300]) crosshair.point(key, true);
  asked[0].answer(1);
  await settled();
  asked[1].answer(3);
  await settled();
  assert.deepEqual(
    asked.map(({ key }) => key),
    [100, 300],
  );
  assert.deepEqual(followed, [1, 3]);
});

test('it leaves at once, and stays away, and where nobody knows the row it stays', async () => {
  const { asked, followed, settled, crosshair } = makeCrosshair();
  crosshair.point(100, false);
  crosshair.point(undefined, false);
  assert.deepEqual(followed, [undefined]);
  asked[0].answer(1);
  await settled();
  assert.deepEqual(followed, [undefined]);
  crosshair.point(200, false);
  asked[1].fail();
  await settled();
  assert.deepEqual(followed, [undefined]);
});
