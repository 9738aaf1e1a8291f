// The plot of a pane while it is drawn: what is in sight, and where it lies on the canvas.
import type { Measures } from '../engine/language_types.ts';
import type { Shown } from '../engine/types.ts';
import { type Box, Placement } from './placement.ts';
import { flagOf, isKind, numberOf, type ShapeRecord, textOf } from './records.ts';
import type { Scale, Values } from './scale.ts';
import type { Theme } from './theme.ts';
import type { View } from './view.ts';

export interface Point {
  x: number;
  y: number;
}

export interface Stroke {
  color: string;
  width: number;
  dashes: readonly number[];
}

/** Edges in rows of the part of the axis that is in sight; row r reaches from r to r + 1. */
export interface Sight {
  from: number;
  to: number;
}

/** What the letters of a text cover, from their left edge, above and below their base line. */
export interface Letters {
  width: number;
  above: number;
  below: number;
}

export const fontFamily = 'system-ui, "Segoe UI", Roboto, "Noto Sans", "DejaVu Sans", sans-serif';

export class Frame {
  readonly placement: Placement;
  /** Pixels of a row and of a slot. */
  readonly rowWidth: number;
  readonly slotWidth: number;
  /** Of a candle or a stick: an odd number where there is room, so that its wick is in its middle. */
  readonly barWidth: number;
  /** The slots in sight. */
  readonly begin: number;
  readonly end: number;
  /** Of the bars to keep clear of. */
  private bars: ShapeRecord | undefined;

  constructor(
    readonly ctx: CanvasRenderingContext2D,
    readonly theme: Theme,
    readonly view: View,
    readonly measures: Measures,
    /** Of the plot, in pixels of the page. */
    readonly box: Box,
    readonly sight: Sight,
    /** The ends of the value axis, as places of its scale. */
    private readonly ends: Values,
    private readonly scale: Scale,
    private readonly shownOf: (record: ShapeRecord) => readonly Shown[],
  ) {
    this.placement = new Placement(box);
    this.rowWidth = (box.right - box.left) / Math.max(sight.to - sight.from, 1e-9);
    this.slotWidth = this.rowWidth * view.step;
    const odd = 2 * Math.floor((this.slotWidth * measures.barShare) / 2) + 1;
    const fitting = odd < this.slotWidth ? odd : odd - 2;
    this.barWidth = Math.min(Math.max(fitting, 1), measures.broadestBar);
    ({ begin: this.begin, end: this.end } = view.slots(sight.from, sight.to));
  }

  /** Of a place on the axis in rows. */
  x(place: number): number {
    return this.box.left + (place - this.sight.from) * this.rowWidth;
  }

  rowX(row: number): number {
    return this.x(row + 0.5);
  }

  slotX(slot: number): number {
    return this.x(this.view.middle(slot));
  }

  y(value: number): number {
    const { low, high } = this.ends;
    const share = (this.scale.place(value) - low) / (high - low);
    return this.box.bottom - share * (this.box.bottom - this.box.top);
  }

  /** The bars at which a record shows, at most one of each slot: the newest. */
  shown(record: ShapeRecord): Shown[] {
    const all = this.shownOf(record).filter(
      ({ row }) => row + 1 > this.sight.from && row < this.sight.to,
    );
    if (this.slotWidth >= 1 && this.view.step === 1) return all;
    const slots = new Map(all.map((shown) => [Math.floor(shown.row / this.view.step), shown]));
    return [...slots.values()];
  }

  allShown(record: ShapeRecord): readonly Shown[] {
    return this.shownOf(record);
  }

  /** The slots in sight at which a column is 1 for one bar or more. */
  slotsThatHold(record: ShapeRecord, key: string): number[] {
    const { first, second } = this.view.column(record, key);
    const found: number[] = [];
    for (let slot = this.begin; slot < this.end; ++slot) {
      if (first[slot] === 1 || second[slot] === 1) found.push(slot);
    }
    return found;
  }

  strokeOf(record: ShapeRecord): Stroke {
    const { narrowSlot, broadestNarrowLine, broadestLine, lineEase, dashes } = this.measures;
    const broadest = this.slotWidth < narrowSlot ? broadestNarrowLine : broadestLine;
    return {
      color: this.theme.line(textOf(record, 'LineColor')),
      width: Math.min(numberOf(record, 'LineWidth', 1) + lineEase, broadest),
      dashes: dashes[textOf(record, 'LineShapeStyle')] ?? [],
    };
  }

  /** A line of one point is a dot. */
  line(points: readonly Point[], { color, width, dashes: pattern }: Stroke): void {
    if (points.length === 0) return;
    if (points.length === 1) return this.disc(points[0], (width + 1.5) / 2, color);
    const { ctx } = this;
    ctx.beginPath();
    for (const { x, y } of points) ctx.lineTo(x, y);
    ctx.strokeStyle = color;
    ctx.lineWidth = width;
    ctx.setLineDash([...pattern]);
    ctx.lineJoin = 'round';
    ctx.lineCap = 'round';
    ctx.stroke();
    ctx.setLineDash([]);
  }

  disc({ x, y }: Point, radius: number, color: string): void {
    this.ctx.beginPath();
    this.ctx.arc(x, y, radius, 0, 2 * Math.PI);
    this.ctx.fillStyle = color;
    this.ctx.fill();
  }

  fill({ left, top, right, bottom }: Box, color: string): void {
    this.ctx.fillStyle = color;
    this.ctx.fillRect(left, top, right - left, bottom - top);
  }

  outline({ left, top, right, bottom }: Box, color: string): void {
    this.ctx.strokeStyle = color;
    this.ctx.lineWidth = 1;
    this.ctx.strokeRect(left + 0.5, top + 0.5, right - left - 1, bottom - top - 1);
  }

  area(points: readonly Point[], color: string): void {
    const { ctx } = this;
    ctx.beginPath();
    for (const { x, y } of points) ctx.lineTo(x, y);
    ctx.closePath();
    ctx.fillStyle = color;
    ctx.fill();
  }

  /** Sets the letters and gives the size of a text in them. */
  measure(text: string, size: number, bold = false): Letters {
    this.ctx.font = `${bold ? '600 ' : ''}${size}px ${fontFamily}`;
    const found = this.ctx.measureText(text);
    return {
      width: Math.ceil(found.width),
      above: Math.ceil(found.actualBoundingBoxAscent),
      below: Math.max(Math.ceil(found.actualBoundingBoxDescent), 0),
    };
  }

  /** Writes around the middle of a base line, with the letters that were measured last. A halo of
   * the ground keeps a text readable over lines. */
  write(text: string, { x, y }: Point, color: string, halo = true): void {
    const { ctx } = this;
    ctx.textAlign = 'center';
    ctx.textBaseline = 'alphabetic';
    if (halo) {
      ctx.strokeStyle = this.theme.palette.ground;
      ctx.lineWidth = 3;
      ctx.lineJoin = 'round';
      ctx.strokeText(text, x, y);
    }
    ctx.fillStyle = color;
    ctx.fillText(text, x, y);
  }

  /** The box of a bar in whole pixels, at least one high. */
  barBox(x: number, width: number, from: number, to: number): Box {
    const top = Math.round(Math.min(from, to));
    const left = Math.round(x - width / 2);
    return {
      left,
      top,
      right: left + width,
      bottom: Math.max(Math.round(Math.max(from, to)), top + 1),
    };
  }

  /** Keeps texts and signs off the bars of a record, beside which they stand from now on. */
  keepClear(record: ShapeRecord): void {
    this.bars = record;
    for (let slot = this.begin; slot < this.end; ++slot) {
      const bar = this.barAt(slot);
      if (bar) this.placement.occupy(bar);
    }
  }

  /** The bar of a slot, from its high to its low; none in a pane without bars. */
  barAt(slot: number): Box | undefined {
    if (!this.bars || slot < 0 || slot >= this.view.count) return undefined;
    const isCandle = isKind(this.bars, 'CandleShape');
    const { first: highs, second: otherHighs } = this.view.column(
      this.bars,
      isCandle ? 'HighField' : 'Field1Id',
    );
    const { first: lows, second: otherLows } = this.view.column(
      this.bars,
      isCandle ? 'LowField' : 'Field1Id',
    );
    const high = Math.max(highs[slot], otherHighs[slot]);
    const low = Math.min(lows[slot], otherLows[slot]);
    if (Number.isNaN(high + low)) return undefined;
    return this.barBox(this.slotX(slot), this.barWidth, this.y(high), this.y(low));
  }

  /** Of the slot that a row is in. */
  barAtRow(row: number): Box | undefined {
    return this.barAt(Math.floor((row - this.view.from) / this.view.step));
  }
}

/** Records that a script draws as candles of its own, which take the place of the bars. */
export function isBars(record: ShapeRecord): boolean {
  return record.own === false || (isKind(record, 'CandleShape') && !flagOf(record, 'IsColorKLine'));
}
