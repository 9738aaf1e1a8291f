// What the page takes to load.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { type Desk, onDesks } from './support.ts';

let desk: Desk;

onDesks((opened) => ({ desk } = opened));

interface Taken {
  file: string;
  sent: number;
  packed: number;
  whole: number;
}

const taken = (): Promise<Taken[]> =>
  desk.page.evaluate(() =>
    (performance.getEntriesByType('resource') as PerformanceResourceTiming[])
      .filter(({ name }) => name.includes('?v='))
      .map(({ name, transferSize, encodedBodySize, decodedBodySize }) => ({
        file: /\/([^/?]+)\?/.exec(name)![1],
        sent: transferSize,
        packed: encodedBodySize,
        whole: decodedBodySize,
      })),
  );

test('files come packed, and a second load takes none of them', async () => {
  const first = await taken();
  for (const file of [
    'studio.js',
    'studio.css',
    'studio.wasm',
    'samples.json',
    'index-daily.csv',
  ]) {
    const { packed, whole } = first.find((one) => one.file === file)!;
    assert.ok(packed > 0 && packed < 0.45 * whole, `${file}: ${packed} of ${whole}`);
  }
  assert.ok(first.some(({ sent }) => sent > 0));
  await desk.goTo();
  const second = await taken();
  assert.ok(second.length >= first.length, `${second.length} files`);
  assert.deepEqual(
    second.filter(({ sent }) => sent > 0),
    [],
  );
});
