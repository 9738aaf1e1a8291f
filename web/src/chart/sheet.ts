// What a chart is drawn from: a script's records and the values that were loaded for them.
import type { Measures } from '../engine/language_types.ts';
import type { Drawn, Shown } from '../engine/types.ts';
import type { Sight } from './frame.ts';
import { groupedText } from './numbers.ts';
import type { ShapeRecord } from './records.ts';
import type { Theme } from './theme.ts';
import { keyText, type TimeMark, timeMarks } from './time.ts';
import { type View } from './view.ts';

const closeField = 11;

export interface PlacedMark extends Omit<TimeMark, 'index'> {
  /** On the time axis, in rows. */
  place: number;
}

export class Sheet {
  private marks: { from: number; to: number; width: number; marks: PlacedMark[] } | undefined;

  constructor(
    readonly drawn: Drawn,
    readonly view: View,
    /** By the index of the record. */
    private readonly shown: ReadonlyMap<number, readonly Shown[]>,
    readonly theme: Theme,
    /** Of the prices. */
    readonly decimals: number,
    readonly intraday: boolean,
    readonly measures: Measures,
    /** A line over the prices that begins with them wherever the sight begins. */
    readonly overlay?: ShapeRecord,
  ) {}

  shownOf(record: ShapeRecord): readonly Shown[] {
    return this.shown.get(Number(record.index)) ?? [];
  }

  withTheme(theme: Theme): Sheet {
    const { drawn, view, shown, decimals, intraday, measures, overlay } = this;
    return new Sheet(drawn, view, shown, theme, decimals, intraday, measures, overlay);
  }

  /** NaN while the newest bar isn't loaded. */
  get newestClose(): number {
    return this.view.valueAt(closeField, this.view.rows - 1);
  }

  get closeBefore(): number {
    return this.view.step === 1 ? this.view.valueAt(closeField, this.view.rows - 2) : NaN;
  }

  /** How many times as high as it is the overlay is drawn; NaN without any. */
  overlayFactor(from: number): number {
    if (!this.overlay) return NaN;
    const [close, other] = [
      this.view.track(closeField),
      this.view.column(this.overlay, 'Field1Id'),
    ];
    const { begin, end } = this.view.slots(from, this.view.to);
    for (let slot = begin; slot < end; ++slot) {
      const factor = close.first[slot] / other.first[slot];
      if (Number.isFinite(factor)) return factor;
    }
    return NaN;
  }

  /** Of the bars from a row on; NaN without one. */
  firstClose(from: number): number {
    const { begin } = this.view.slots(from, this.view.to);
    return this.view.track(closeField).first.subarray(begin).find(Number.isFinite) ?? NaN;
  }

  /** The date and time of a row that is loaded. */
  timeText(row: number): string {
    const key = this.keyOf(row);
    return key === undefined ? '' : keyText(key, this.intraday);
  }

  /** Of the slot of a row that is loaded. */
  keyOf(row: number): number | undefined {
    const slot = Math.floor((row - this.view.from) / this.view.step);
    return slot >= 0 && slot < this.view.count ? this.view.keys[slot] : undefined;
  }

  /** From the close before to that of a row; none while bars share slots. */
  changeText(row: number): string {
    if (this.view.step > 1) return '';
    const [before, close] = [row - 1, row].map((at) => this.view.valueAt(closeField, at));
    const change = close - before;
    if (!Number.isFinite(change / before)) return '';
    const sign = change > 0 ? '+' : '';
    const share = ((100 * change) / before).toFixed(2);
    return `${sign}${groupedText(change, this.decimals)} (${sign}${share}%)`;
  }

  timeMarks(sight: Sight, width: number): PlacedMark[] {
    const { from, to } = sight;
    if (this.marks?.from === from && this.marks.to === to && this.marks.width === width)
      return this.marks.marks;
    const { begin, end } = this.view.slots(from, to);
    const keys = this.view.keys.subarray(begin, end);
    const room = this.measures.timeMarkRoom / ((width / (to - from)) * this.view.step);
    const marks = timeMarks(keys, room).map(({ index, ...mark }) => ({
      ...mark,
      place: this.view.middle(begin + index),
    }));
    this.marks = { from, to, width, marks };
    return marks;
  }
}
