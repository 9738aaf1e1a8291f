// Scripts of a million letters are taken or refused, in seconds, and the engine goes on.
import assert from 'node:assert/strict';
import { describe, test } from 'node:test';
import { load, ScriptError } from 'quor';
import { faultOf } from '../support/made.mjs';

describe('a script of a million letters', () => {
  const numbered = (piece) => {
    const pieces = [];
    for (let i = 0, length = 0; length < 1e6; ++i) {
      pieces.push(piece.replaceAll('#', i));
      length += pieces.at(-1).length;
    }
    return pieces.join('');
  };
  for (const [what, source, name, code] of [
    ['blanks', `A:C;${' '.repeat(1e6)}`],
    ['a comment', `{${'x'.repeat(1e6)}}A:C;`],
    ['pairs of parentheses', `A:${'('.repeat(5e5)}C${')'.repeat(5e5)};`],
    ['open parentheses', '('.repeat(1e6), 'ScriptError', 14],
    ['sums', `A:C${'+1'.repeat(5e5)};`],
    ['nested calls', `A:${'ABS('.repeat(2e5)}C${')'.repeat(2e5)};`, 'ScriptError', 4000],
    ['lines', numbered('A#:MA(C,5)+1;')],
    ['calls', `A:C${'+MA(C,5)'.repeat(1.25e5)};`],
  ]) {
    test(`of ${what} is taken or refused`, async () => {
      const quor = await load();
      const fault = faultOf(() => {
        const script = quor.compile(source);
        script.run({ time: [20240101, 20240102], C: [1, 2] });
        assert.ok(Array.isArray(script.findings));
        script.free();
      });
      assert.equal(fault?.name, name, String(fault));
      if (fault instanceof ScriptError) assert.equal(fault.code, code);
      assert.equal(quor.compile('A:C;').run({ time: [20240101], C: [1] }).A[0], 1);
    });
  }
});
