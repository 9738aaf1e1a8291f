// The range of values that a pane shows.
import { isKind, numberOf, type ShapeRecord, textOf } from './records.ts';
import type { Scale, Values } from './scale.ts';
import type { Track, View } from './view.ts';

export class Range {
  low = Infinity;
  high = -Infinity;
  /** Above 0. */
  leastPositive = Infinity;

  get isEmpty(): boolean {
    return this.low > this.high;
  }

  get span(): number {
    return this.isEmpty ? 0 : this.high - this.low;
  }

  get reach(): number {
    return this.isEmpty ? 0 : Math.max(Math.abs(this.low), Math.abs(this.high));
  }

  take(value: number): void {
    if (!(Math.abs(value) < 1e100)) return;
    if (value < this.low) this.low = value;
    if (value > this.high) this.high = value;
    if (value > 0 && value < this.leastPositive) this.leastPositive = value;
  }

  takeTrack(
    { first, second }: Track,
    shows: (slot: number) => boolean,
    begin: number,
    end: number,
  ): void {
    for (let slot = begin; slot < end; ++slot) {
      if (!shows(slot)) continue;
      this.take(first[slot]);
      this.take(second[slot]);
    }
  }
}

/** The values of a record, and the marks of the bars where they show. */
const places = [
  ['Field1Id', 'Field1VisibleId'],
  ['Field2Id', 'Field2VisibleId'],
  ['Field3Id', 'Field3VisibleId'],
  ['HighField', 'Field1VisibleId'],
  ['LowField', 'Field1VisibleId'],
] as const;

function takeRecord(
  range: Range,
  record: ShapeRecord,
  view: View,
  begin: number,
  end: number,
): void {
  if (record.valued === false || isKind(record, 'YAxisRange')) return;
  if (textOf(record, 'Style') === 'DoubleRect' || isKind(record, 'VolumeShape')) range.take(0);
  for (const [key, ownMark] of places) {
    const mark = numberOf(record, ownMark, -1) < 0 ? 'Field1VisibleId' : ownMark;
    const shows = record.always ? () => true : view.marks(record, mark);
    range.takeTrack(view.column(record, key), shows, begin, end);
  }
}

/** A record of the axis has a number as its title, up to which the axis goes if it lies near. */
function reachFor(range: Range, record: ShapeRecord): void {
  const number = Number(textOf(record, 'Field1Text'));
  const room = 1.5 * Math.max(range.span, 0.01 * range.reach, 1e-9);
  if (number > range.low - room && number < range.high + room) range.take(number);
}

function standsOnZero(range: Range, records: readonly ShapeRecord[]): boolean {
  return (
    range.low === 0 &&
    records.every((record) => isKind(record, 'BarShape') || isKind(record, 'VolumeShape'))
  );
}

/** The range of what records show between two rows. */
export function rangeInSight(
  records: readonly ShapeRecord[],
  levels: readonly number[],
  view: View,
  from: number,
  to: number,
): Range {
  const { begin, end } = view.slots(from, to);
  const range = new Range();
  for (const record of records) takeRecord(range, record, view, begin, end);
  for (const level of levels) range.take(level);
  for (const record of records) if (isKind(record, 'YAxisRange')) reachFor(range, record);
  return range;
}

/** How far an axis of logarithms goes down, as a share of its high end. */
const deepest = 1e-6;

/** The ends of the axis for a range, with a margin, as places of a scale. */
export function endsFor(range: Range, scale: Scale, records: readonly ShapeRecord[]): Values {
  if (range.isEmpty) return { low: scale.place(0), high: scale.place(1) };
  const high = scale.place(range.high);
  const least = Math.max(range.leastPositive, deepest * range.high);
  const low = scale.place(scale.isLogged ? Math.max(range.low, least) : range.low);
  const span = high - low;
  const margin = span > 0 ? 0.06 * span : high !== 0 ? 0.1 * Math.abs(high) : 0.1;
  return { low: standsOnZero(range, records) ? low : low - margin, high: high + margin };
}
