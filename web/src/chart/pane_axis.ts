// The value axis of a pane: its ends as the records in sight need them, its ticks, its tags.
import type { Pane as PaneSpec } from '../engine/types.ts';
import type { Sight } from './frame.ts';
import { endsFor, type Range, rangeInSight } from './range.ts';
import type { ShapeRecord } from './records.ts';
import {
  multiplied,
  type Scale,
  type ScaleName,
  scaleOf,
  type Tick,
  type Values,
} from './scale.ts';
import type { Sheet } from './sheet.ts';
import { closeTag, levelTags, type Tag, tickTexts } from './value_axis.ts';

/** As much of an axis as a legend may take. */
const mostForLegend = 0.4;

/** What is drawn on an axis. */
export interface PaneContent {
  sheet: Sheet;
  spec: PaneSpec;
  records: readonly ShapeRecord[];
  /** Records that are but a level. */
  levels: ReadonlyMap<ShapeRecord, number>;
  /** Begins with the prices at the left of the sight. */
  overlay: ShapeRecord | undefined;
  /** It has the tag of the newest close. */
  isFirst: boolean;
  /** No other pane follows below. */
  isLast: boolean;
}

export class PaneAxis {
  scale: Scale = scaleOf('linear', 1, 1);
  /** Of the overlay. */
  overlayScale: Scale = this.scale;
  /** Its ends, as places of its scale. */
  ends: Values = { low: 0, high: 1 };
  /** How many times as high as they need all values are drawn. */
  private stretch = 1;

  constructor(private readonly content: () => PaneContent) {}

  /** By a factor; without one the values have the height that they need. */
  stretchBy(factor: number | undefined): void {
    this.stretch = factor === undefined ? 1 : Math.min(Math.max(this.stretch * factor, 0.1), 50);
  }

  /** Has all that is in sight on the axis, below a legend that takes a share of the height. */
  take({ from, to }: Sight, scaleName: ScaleName, legend: number): void {
    const { sheet, records, levels } = this.content();
    const seen = records.filter((record) => !levels.has(record));
    const range = rangeInSight(seen, [...levels.values()], sheet.view, from, to);
    const factor = this.takeOverlay(range, { from, to });
    this.scale = scaleOf(scaleName, range.high, sheet.firstClose(from));
    this.overlayScale = multiplied(this.scale, factor);
    this.ends = endsFor(range, this.scale, seen);
    const share = Math.min(legend, mostForLegend);
    this.ends.high += ((this.ends.high - this.ends.low) * share) / (1 - share);
    const { low, high } = this.ends;
    const [middle, half] = [(low + high) / 2, (high - low) / 2 / this.stretch];
    if (this.stretch !== 1) this.ends = { low: middle - half, high: middle + half };
  }

  tickPlaces(height: number): number[] {
    return this.ticks(height).map(({ value }) => this.scale.place(value));
  }

  /** None where half of it would be cut off: above, and below where another pane follows. */
  tickTexts(height: number): string[] {
    const { scale, ends } = this;
    const { sheet, isLast } = this.content();
    const ticks = this.ticks(height);
    const texts = tickTexts(ticks, scale, ends, height, this.tags(), sheet.measures.halfTag);
    const margin = ((ends.high - ends.low) / height) * 7;
    const lowest = isLast ? ends.low : ends.low + margin;
    const isWhole = (place: number) => place >= lowest && place <= ends.high - margin;
    return ticks.map(({ value }, i) => (isWhole(scale.place(value)) ? texts[i] : ''));
  }

  tags(): Tag[] {
    const { low, high } = this.ends;
    const { sheet, spec, levels, isFirst } = this.content();
    const all = levelTags(levels, sheet, this.scale, spec.digits);
    if (isFirst) all.push(...closeTag(sheet, this.scale));
    return all.filter(({ value }) => {
      const place = this.scale.place(value);
      return place >= low && place <= high;
    });
  }

  /** The value at a place, as it is told there. */
  textAt(place: number): string {
    const { sheet, spec, isFirst } = this.content();
    const digits = Math.max(spec.digits, isFirst ? sheet.decimals : 0);
    return this.scale.text(this.scale.value(place), Math.min(digits, 8));
  }

  private ticks(height: number): Tick[] {
    const { scale, ends } = this;
    const { sheet, spec } = this.content();
    const values = { low: scale.value(ends.low), high: scale.value(ends.high) };
    return scale.ticks(values, height, spec.digits === 0, sheet.measures);
  }

  /** Gives how many times as high as it is the overlay is drawn. */
  private takeOverlay(range: Range, { from, to }: Sight): number {
    const { sheet, overlay } = this.content();
    if (!overlay) return 1;
    const factor = sheet.overlayFactor(from);
    const { low, high } = rangeInSight([overlay], [], sheet.view, from, to);
    for (const value of [low, high]) range.take(factor * value);
    return factor;
  }
}
