// The binary answer with what is in sight: a header of JSON, then columns of doubles.
import type { Track, ViewData } from '../chart/view.ts';

interface Header {
  from: number;
  rows: number;
  bucket: number;
  count: number;
  columns: { id: number; as: string }[];
}

export function readView(answer: ArrayBuffer): ViewData {
  const length = new DataView(answer).getUint32(0, true);
  const text = new TextDecoder().decode(new Uint8Array(answer, 4, length));
  const header = JSON.parse(text) as Header;
  let place = 4 + length;
  const next = (): Float64Array => {
    const column = new Float64Array(answer, place, header.count);
    place += column.byteLength;
    return column;
  };
  next(); // the rows, which follow from the first one and the bucket
  const keys = next();
  const tracks = new Map<number, Track>();
  for (const { id, as } of header.columns) {
    const first = next();
    tracks.set(id, { first, second: as === 'pair' ? next() : first });
  }
  const { from, rows, bucket } = header;
  return { from, rows, step: bucket, keys, tracks };
}
