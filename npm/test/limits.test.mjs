// Where the engine comes to the end of memory: it says so, and goes on or is loaded anew.
import assert from 'node:assert/strict';
import { readFile } from 'node:fs/promises';
import { describe, test } from 'node:test';
import { load, OutOfMemory } from 'quor';
import { bars, faultOf } from './support/made.mjs';

const bytes = await readFile(new URL(import.meta.resolve('quor/quor.wasm')));
const memorySection = 5;
const page = 65_536;

function leb128(value) {
  const digits = [];
  for (; value > 127; value >>>= 7) digits.push((value & 127) | 128);
  return [...digits, value];
}

function readLeb128(at) {
  for (let value = 0, shift = 0; ; shift += 7) {
    const byte = bytes[at++];
    value |= (byte & 127) << shift;
    if (byte < 128) return [value >>> 0, at];
  }
}

/** The module with no more memory than this, in bytes beyond what it starts with. */
function moduleWith(room) {
  for (let at = 8; ;) {
    const start = at;
    const [length, content] = readLeb128(at + 1);
    at = content + length;
    if (bytes[start] !== memorySection) continue;
    const [count, kind] = readLeb128(content);
    const [least] = readLeb128(kind + 1);
    assert.deepEqual([count, bytes[kind]], [1, 0], 'one memory, without a limit');
    const section = [1, 1, ...leb128(least), ...leb128(least + Math.ceil(room / page))];
    const head = [memorySection, ...leb128(section.length), ...section];
    return Buffer.concat([bytes.subarray(0, start), Buffer.from(head), bytes.subarray(at)]);
  }
}

describe('without memory', () => {
  test('a history is refused and what was there stands', async () => {
    const quor = await load(moduleWith(16e6));
    const script = quor.compile('A:MA(C,2);B:A+1;');
    const live = script.live(bars(1000));
    const before = live.values();
    let length = 1000;
    let fault;
    while (((fault = faultOf(() => script.run(bars((length *= 2))))), fault === undefined));
    assert.ok(fault instanceof OutOfMemory, String(fault));
    assert.ok(length > 20_000, `${length} bars were too many`);
    assert.deepEqual(live.values(), before);
    assert.equal(live.update({ time: 20300101, close: 5 }).B, live.last.B);
    assert.equal(script.run(bars(1000)).A[1], (100 + 100 + Math.sin(1)) / 2);
  });

  test('a script is refused, and others go on and give memory back', async () => {
    const quor = await load(moduleWith(4e6));
    const kept = [];
    let fault;
    while (fault === undefined) {
      fault = faultOf(() => kept.push(quor.compile(`A:MA(C,${kept.length + 1});`)));
    }
    assert.ok(fault instanceof OutOfMemory, String(fault));
    assert.ok(kept.length > 10, `${kept.length} scripts were too many`);
    for (const script of kept.splice(0, 10)) script.free();
    assert.equal(kept[0].run({ time: [20240101], C: [3] }).A.length, 1);
    assert.equal(quor.compile('A:C;').run({ time: [20240101], C: [3] }).A[0], 3);
  });

  test('more bars than any memory holds are refused at once', async () => {
    const script = (await load()).compile('A:C;');
    const time = new Array(2 ** 32 - 1);
    assert.throws(() => script.run({ time, C: time }), OutOfMemory);
    assert.equal(script.run({ time: [20240101], C: [1] }).A[0], 1);
  });
});
