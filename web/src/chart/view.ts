// What is in sight of the bars and of the script's columns: a slot per row, or per several rows
// where more are in sight than there are pixels.
import { columnOf, type ShapeRecord } from './records.ts';

/** The values of a column by slot, NaN where there is none: of a slot of several rows the least and
 * the greatest one as they follow each other, else the same array twice. */
export interface Track {
  first: Float64Array;
  second: Float64Array;
}

export interface ViewData {
  /** The first row of the first slot. */
  from: number;
  /** Rows that there are, in sight or not. */
  rows: number;
  /** Rows of a slot. */
  step: number;
  /** Keys of the first rows of the slots. */
  keys: Float64Array;
  /** By the id of the column. */
  tracks: ReadonlyMap<number, Track>;
}

export class View {
  readonly from: number;
  readonly step: number;
  readonly count: number;
  readonly rows: number;
  readonly keys: Float64Array;
  private readonly nothing: Track;

  constructor(readonly data: ViewData) {
    this.from = data.from;
    this.step = data.step;
    this.rows = data.rows;
    this.keys = data.keys;
    this.count = data.keys.length;
    const nan = new Float64Array(this.count).fill(NaN);
    this.nothing = { first: nan, second: nan };
  }

  /** Behind the last row. */
  get to(): number {
    return Math.min(this.from + this.count * this.step, this.rows);
  }

  has(id: number): boolean {
    return this.data.tracks.has(id);
  }

  track(id: number | undefined): Track {
    return (id === undefined ? undefined : this.data.tracks.get(id)) ?? this.nothing;
  }

  column(record: ShapeRecord, key: string): Track {
    return this.track(columnOf(record, key));
  }

  /** At which slots a record shows. */
  marks(record: ShapeRecord, key = 'Field1VisibleId'): (slot: number) => boolean {
    const mark = columnOf(record, key);
    if (mark === undefined) return () => true;
    const { first } = this.track(mark);
    return (slot) => first[slot] === 1;
  }

  holds(row: number): boolean {
    return row >= this.from && row < this.to;
  }

  /** The value of a column at a row, or at one of the slot where the row is; NaN out of sight. */
  valueAt(id: number | undefined, row: number): number {
    const slot = Math.floor((row - this.from) / this.step);
    return slot >= 0 && slot < this.count ? this.track(id).second[slot] : NaN;
  }

  /** The middle of a slot on the axis, where row r reaches from r to r + 1. */
  middle(slot: number): number {
    const begin = this.from + slot * this.step;
    return (begin + Math.min(begin + this.step, this.rows)) / 2;
  }

  /** The slots that a range of rows touches. */
  slots(from: number, to: number): { begin: number; end: number } {
    const begin = Math.max(Math.floor((from - this.from) / this.step), 0);
    const end = Math.min(Math.ceil((to - this.from) / this.step), this.count);
    return { begin, end: Math.max(begin, end) };
  }
}
