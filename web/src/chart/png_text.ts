// Texts inside a PNG: chunks of the kind iTXt, in UTF-8.

const signature = [0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a];
/** Length, kind and checksum of a chunk. */
const frameSize = 12;
/** Where the header chunk, which must come first, ends. */
const headerEnd = signature.length + frameSize + 13;

const encoder = new TextEncoder();
const decoder = new TextDecoder();

const checksums = Uint32Array.from({ length: 256 }, (_, byte) => {
  let sum = byte;
  for (let bit = 0; bit < 8; ++bit) sum = sum & 1 ? 0xedb88320 ^ (sum >>> 1) : sum >>> 1;
  return sum;
});

function checksum(bytes: Uint8Array): number {
  let sum = 0xffffffff;
  for (const byte of bytes) sum = checksums[(sum ^ byte) & 255] ^ (sum >>> 8);
  return (sum ^ 0xffffffff) >>> 0;
}

export function isPng(bytes: Uint8Array): boolean {
  return signature.every((byte, i) => bytes[i] === byte);
}

function chunkOf(kind: string, data: Uint8Array): Uint8Array<ArrayBuffer> {
  const chunk = new Uint8Array(frameSize + data.length);
  const view = new DataView(chunk.buffer);
  view.setUint32(0, data.length);
  chunk.set(encoder.encode(kind), 4);
  chunk.set(data, 8);
  view.setUint32(8 + data.length, checksum(chunk.subarray(4, 8 + data.length)));
  return chunk;
}

/** Puts a text under a key into a picture; plain, in no language, without a translated key. */
export async function withText(png: Blob, key: string, text: string): Promise<Blob> {
  const bytes = new Uint8Array(await png.arrayBuffer());
  const chunk = chunkOf('iTXt', encoder.encode(`${key}\0\0\0\0\0${text}`));
  return new Blob([bytes.subarray(0, headerEnd), chunk, bytes.subarray(headerEnd)], {
    type: 'image/png',
  });
}

/** The text under a key; none in a picture without it, or a broken one. */
export function textIn(png: Uint8Array, key: string): string | undefined {
  if (!isPng(png)) return undefined;
  const view = new DataView(png.buffer, png.byteOffset, png.byteLength);
  const start = encoder.encode(`${key}\0\0\0\0\0`);
  for (let at = signature.length; at + frameSize <= png.length;) {
    const end = at + 8 + view.getUint32(at);
    if (end + 4 > png.length) return undefined;
    const kind = decoder.decode(png.subarray(at + 4, at + 8));
    const data = png.subarray(at + 8, end);
    if (kind === 'iTXt' && start.every((byte, i) => data[i] === byte))
      return view.getUint32(end) === checksum(png.subarray(at + 4, end))
        ? decoder.decode(data.subarray(start.length))
        : undefined;
    at = end + 4;
  }
  return undefined;
}
