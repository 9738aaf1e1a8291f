import assert from 'node:assert/strict';
import { deflateSync } from 'node:zlib';
import { test } from 'node:test';
import { fromFragment, toFragment } from '../../src/link.ts';

const fragmentOf = (value: unknown) =>
  `#s=${deflateSync(JSON.stringify(value)).toString('base64url')}`;

test('a link gives back the script and its parameters', async () => {
  const shared = {
    script: "跌:C<O,NOTICE('<b>&');\n".repeat(500),
    parameters: { N: 2.5 },
    security: 'IF2403 主',
  };
  const fragment = await toFragment(shared);
  assert.match(fragment, /^#s=[\w-]+$/);
  assert.ok(fragment.length < 500);
  assert.deepEqual(await fromFragment(fragment), shared);
});

test('what is no link of ours is none', async () => {
  for (const fragment of [
    '',
    '#top',
    '#s=',
    '#s=!!!!',
    '#s=AAAA',
    fragmentOf(null),
    fragmentOf({ script: 5, parameters: {} }),
    fragmentOf({ script: 'C;', parameters: { N: 'x' } }),
    fragmentOf({ script: 'C;', parameters: {}, security: {} }),
    fragmentOf({ script: ' '.repeat(5_000_000), parameters: {} }),
  ]) {
    assert.equal(await fromFragment(fragment), undefined, fragment.slice(0, 60));
  }
});
