import assert from 'node:assert/strict';
import { deflateSync, gzipSync } from 'node:zlib';
import { test } from 'node:test';
import { fromFragment, fromPicture, intoPicture, toFragment } from '../../src/link.ts';

const fragmentOf = (value: unknown) =>
  `#s=${deflateSync(JSON.stringify(value)).toString('base64url')}`;

test('a link gives back the script and its parameters', async () => {
  const shared = {
    script: "跌:C<O,NOTICE('<b>&');\n".repeat(500),
    parameters: { N: 2.5 },
    security: 'IF2403 主',
    forming: true,
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
    fragmentOf({ script: 'C;', parameters: {}, forming: 'yes' }),
    fragmentOf({ script: ' '.repeat(5_000_000), parameters: {} }),
  ]) {
    assert.equal(await fromFragment(fragment), undefined, fragment.slice(0, 60));
  }
});

/** A chunk as the format says: length, kind, data, and a checksum, which gzip has at its end, too. */
function chunkOf(kind: string, data: Buffer): Buffer {
  const body = Buffer.concat([Buffer.from(kind), data]);
  const ends = [Buffer.alloc(4), Buffer.from(gzipSync(body).subarray(-8, -4)).reverse()];
  ends[0].writeUInt32BE(data.length);
  return Buffer.concat([ends[0], body, ends[1]]);
}

test('a picture gives back what was put into it, and nothing where it is broken', async () => {
  const start = Buffer.from('89504e470d0a1a0a', 'hex');
  const rest = [
    ['IHDR', 13],
    ['IDAT', 40],
    ['IEND', 0],
  ] as const;
  const [header, ...others] = rest.map(([kind, size]) => chunkOf(kind, Buffer.alloc(size, 7)));
  const plain = Buffer.concat([start, header, ...others]);
  const shared = { script: "跌:C<O,NOTICE('é');", parameters: { N: 2.5 } };
  const made = await intoPicture(new Blob([plain]), shared);
  const bytes = new Uint8Array(await made.arrayBuffer());
  const text = Buffer.from(`quor-studio\0\0\0\0\0${JSON.stringify(shared)}`);
  assert.deepEqual(
    Buffer.from(bytes),
    Buffer.concat([start, header, chunkOf('iTXt', text), ...others]),
  );
  assert.deepEqual(fromPicture(bytes), shared);
  assert.equal(fromPicture(plain), undefined);
  for (let size = 0; size < start.length + header.length + text.length + 12; size += 5)
    assert.equal(fromPicture(bytes.subarray(0, size)), undefined, `${size} bytes`);
  bytes[100] ^= 1;
  assert.equal(fromPicture(bytes), undefined, 'another byte than the checksum knows');
});
