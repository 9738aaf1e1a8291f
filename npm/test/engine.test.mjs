// The engine itself: loading, memory, and its end.
import assert from 'node:assert/strict';
import { readFile } from 'node:fs/promises';
import { brotliCompressSync } from 'node:zlib';
import { describe, test } from 'node:test';
import { EngineStopped, load } from 'quor';
import { bars } from './support/made.mjs';

const module = new URL(import.meta.resolve('quor/quor.wasm'));
describe('an engine', () => {
  test('is loaded from an address, bytes, an answer, and a module', async () => {
    const bytes = await readFile(module);
    const answer = new Response(bytes, { headers: { 'content-type': 'application/wasm' } });
    for (const source of [module, module.href, bytes, answer, new WebAssembly.Module(bytes)]) {
      const lines = (await load(source)).compile('A:C;').run({ time: [20240101], C: [1] });
      assert.equal(lines.A[0], 1);
    }
    await assert.rejects(load(new Response('', { status: 404 })), /status 404/);
  });

  test('is at most 450 kB, compressed as servers of pages do it', async () => {
    assert.ok(brotliCompressSync(await readFile(module)).length <= 450_000);
  });

  test('gives memory back', async () => {
    const quor = await load();
    const many = bars(20_000);
    const grown = () => {
      for (let i = 0; i < 20; ++i) {
        const script = quor.compile('A:MA(C,5);B:EMA(C,9);');
        const live = script.live(many);
        script.run(many);
        assert.equal(live.length, 20_000);
        live.free();
        script[Symbol.dispose]();
      }
      // Memory comes in large pieces, which many small losses fill, too.
      for (let i = 0; i < 3000; ++i) {
        const script = quor.compile('A:MA(C,5);B:EMA(C,9);');
        script.run({ time: [20240101], C: [1] });
        script.free();
      }
      return quor.memory;
    };
    const first = grown();
    grown();
    assert.equal(grown(), first);
  });

  test('takes memory in few pieces, each of which the host pays for', async () => {
    const quor = await load();
    const lines = Array.from({ length: 300 }, (_, i) => `A${i}:MA(C,${i + 2});`);
    const sizes = new Set([quor.memory]);
    for (let count = 1; count <= lines.length; ++count) {
      const script = quor.compile(lines.slice(0, count).join(''));
      script.run(bars(2000));
      sizes.add(quor.memory);
      script.free();
    }
    const [first, last] = [Math.min(...sizes), Math.max(...sizes)];
    const leaps = Math.log(last / first) / Math.log(1.25);
    assert.ok(last > 3 * first && sizes.size <= leaps + 2, `${[...sizes]}`);
  });

  test('refuses what was given back', async () => {
    const script = (await load()).compile('A:C;');
    const live = script.live();
    for (const object of [script, live]) {
      object.free();
      object.free();
    }
    for (const use of [
      () => script.run({ time: [20240101], C: [1] }),
      () => script.findings,
      () => script.shapes,
      () => live.length,
      () => live.update({ time: 20240101, C: 1 }),
    ]) {
      assert.throws(use, /given back by free/);
    }
  });

  test('says when it has stopped, and another one works', async () => {
    const quor = await load();
    const script = quor.compile('A:C;');
    const clock = quor.compile('A:CURRENTTIME;');
    // A trap in the midst of a call, while the engine asks for the clock; the package asks before.
    const { now } = Date;
    let asked = 0;
    Date.now = () => {
      if (++asked === 1) return now();
      throw new WebAssembly.RuntimeError('unreachable');
    };
    try {
      assert.throws(() => clock.run({ time: [20240101] }), EngineStopped);
    } finally {
      Date.now = now;
    }
    assert.equal(asked, 2);
    assert.throws(() => script.run({ time: [20240101], C: [1] }), EngineStopped);
    assert.throws(() => quor.compile('A:C;'), /load\(\) gives a new one/);
    script.free();
    assert.equal((await load()).compile('A:C;').lines.length, 1);
  });
});
