// What has come into a file of bars.

const lineEnd = 10;
/** With which packed files begin, of whose lines nothing is known. */
const packed = 0x1f;

function areSame(one: Uint8Array, other: Uint8Array, length: number): boolean {
  for (let i = 0; i < length; ++i) if (one[i] !== other[i]) return false;
  return true;
}

/** The head line and what stands from the last line of before on, which may have been a forming bar;
 * nothing if what stood in front of it is another text by now. */
export async function grownBy(before: Blob, now: Blob): Promise<Blob | undefined> {
  const [old, all] = (await Promise.all([before.arrayBuffer(), now.arrayBuffer()])).map(
    (buffer) => new Uint8Array(buffer),
  );
  const head = old.indexOf(lineEnd) + 1;
  const last = old.lastIndexOf(lineEnd, old.length - 2) + 1;
  if (head === 0 || last <= head || all.length <= last || old[0] === packed) return undefined;
  if (!areSame(old, all, last)) return undefined;
  return new Blob([all.subarray(0, head), all.subarray(last)]);
}
