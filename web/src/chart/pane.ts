// One pane of the chart: axes, grid and crosshair by the charting library, records by our painters.
import uPlot from 'uplot';
import type { Pane as PaneSpec } from '../engine/types.ts';
import { element } from '../dom.ts';
import { fontFamily, Frame, type Sight } from './frame.ts';
import { axisGrip, type BorderEvents, borderGrip } from './grips.ts';
import { Legend, type LegendEntry } from './legend.ts';
import { paint } from './paint.ts';
import { drawPolyline } from './paint_lines.ts';
import { endsFor, type Range, rangeInSight } from './range.ts';
import { type ShapeRecord } from './records.ts';
import {
  multiplied,
  type Scale,
  type ScaleName,
  scaleOf,
  type Tick,
  type Values,
} from './scale.ts';
import type { Sheet } from './sheet.ts';
import { paintTimeGrid, paintTimeTexts } from './time_axis.ts';
import {
  closeTag,
  levelTags,
  paintTag,
  type Tag,
  tickTexts,
  valueAxisWidth,
} from './value_axis.ts';

export const timeAxisHeight = 26;
const axisFont = `11px ${fontFamily}`;

export interface PanePlace {
  isFirst: boolean;
  isLast: boolean;
  /** The panes of a chart share their crosshair. */
  chart: string;
}

export interface PaneEvents {
  /** The pointer is at a place of the time axis, or has left. */
  point: (place: number | undefined) => void;
  /** The value axis is dragged, or given back its usual height. */
  stretched: () => void;
  border: BorderEvents;
}

export class ChartPane {
  readonly root = element('div', { class: 'pane' });
  readonly legend = new Legend();
  private readonly plot: uPlot;
  private readonly cursorTag = element('div', { class: 'cursor-tag', 'aria-hidden': 'true' });
  /** At the bar that is held. */
  private readonly heldMark = element('div', { class: 'held', hidden: true });
  private border: HTMLElement | undefined;
  private records: readonly ShapeRecord[] = [];
  private overlay: ShapeRecord | undefined;
  private overlayFactor = NaN;
  private levels: ReadonlyMap<ShapeRecord, number> = new Map();
  private sight: Sight = { from: 0, to: 1 };
  private scale: Scale = scaleOf('linear', 1, 1);
  /** The ends of the value axis, as places of its scale. */
  private axis: Values = { low: 0, high: 1 };
  /** How many times as high as they need all values are drawn. */
  private stretch = 1;

  constructor(
    private sheet: Sheet,
    public spec: PaneSpec,
    private readonly place: PanePlace,
    events: PaneEvents,
  ) {
    this.take(sheet, spec);
    this.plot = new uPlot(this.options(), this.ends(), this.root);
    this.followPointer(events);
    const grip = axisGrip((factor) => {
      this.stretchBy(factor);
      events.stretched();
    });
    grip.style.width = `${valueAxisWidth}px`;
    this.plot.over.append(this.heldMark);
    this.root.append(this.legend.root, this.cursorTag, grip);
    if (!this.place.isLast) this.root.append((this.border = borderGrip(events.border)));
  }

  /** Other records take the place of those before. */
  take(sheet: Sheet, spec: PaneSpec): void {
    const { records } = sheet.drawn;
    this.sheet = sheet;
    this.spec = spec;
    this.records = spec.records.map((index) => records[index]);
    this.levels = new Map(spec.levels.map(({ record, value }) => [records[record], value]));
    this.overlay = this.place.isFirst ? sheet.overlay : undefined;
    this.legend.take(this.overlay ? [...this.records, this.overlay] : this.records);
  }

  destroy(): void {
    this.plot.destroy();
    this.root.remove();
  }

  get canvas(): HTMLCanvasElement {
    return this.plot.ctx.canvas;
  }

  /** The part of the pane in which lines are drawn, the pointer is followed. */
  get over(): HTMLElement {
    return this.plot.over;
  }

  /** `share` is its part of both panes at its border, in percent. */
  resize(width: number, height: number, share: number): void {
    this.border?.setAttribute('aria-valuenow', String(share));
    if (this.plot.width !== width || this.plot.height !== height)
      this.plot.setSize({ width, height });
  }

  draw(sheet: Sheet, sight: Sight, scaleName: ScaleName): void {
    this.sheet = sheet;
    this.sight = sight;
    this.takeAxis(this.place.isFirst ? scaleName : 'linear');
    this.plot.batch(() => {
      this.plot.setData(this.ends(), false);
      this.plot.setScale('x', { min: sight.from, max: sight.to });
      this.plot.setScale('y', { min: this.axis.low, max: this.axis.high });
      // The texts of the axes hang on more than their scales: on other bars, or a tag.
      this.plot.redraw(false, true);
    });
  }

  /** By a factor; without one the values have the height that they need. */
  stretchBy(factor: number | undefined): void {
    this.stretch = factor === undefined ? 1 : Math.min(Math.max(this.stretch * factor, 0.1), 50);
  }

  placeAt(left: number): number {
    return this.plot.posToVal(left, 'x');
  }

  /** Moves the crosshair to a place on the time axis; away without one. */
  setCrosshair(place: number | undefined): void {
    const left = place === undefined ? -10 : this.plot.valToPos(place, 'x');
    this.plot.setCursor(
      { left, top: place === undefined ? -10 : (this.plot.cursor.top ?? -10) },
      false,
    );
    this.showLevel(this.plot);
  }

  /** Marks a place on the time axis, with a text below the last pane; none without a place. */
  setHeld(place: number | undefined, text: string): void {
    const isSeen = place !== undefined && place >= this.sight.from && place <= this.sight.to;
    this.heldMark.hidden = !isSeen;
    if (!isSeen) return;
    this.heldMark.style.left = `${this.plot.valToPos(place, 'x')}px`;
    this.heldMark.dataset.text = this.place.isLast ? text : '';
  }

  /** What the legend shows of the values at a bar. */
  entriesAt(valueOf: (id: number) => number): LegendEntry[] {
    return this.legend.entries(this.spec.digits, valueOf);
  }

  private takeAxis(scaleName: ScaleName): void {
    const { from, to } = this.sight;
    const seen = this.records.filter((record) => !this.levels.has(record));
    const range = rangeInSight(seen, [...this.levels.values()], this.sheet.view, from, to);
    this.takeOverlay(range);
    this.scale = scaleOf(scaleName, range.high, this.sheet.firstClose(from));
    this.axis = endsFor(range, this.scale, seen);
    this.makeRoomForLegend();
    const { low, high } = this.axis;
    const [middle, half] = [(low + high) / 2, (high - low) / 2 / this.stretch];
    if (this.stretch !== 1) this.axis = { low: middle - half, high: middle + half };
  }

  private takeOverlay(range: Range): void {
    if (!this.overlay) return;
    const { from, to } = this.sight;
    this.overlayFactor = this.sheet.overlayFactor(from);
    const { low, high } = rangeInSight([this.overlay], [], this.sheet.view, from, to);
    for (const value of [low, high]) range.take(this.overlayFactor * value);
  }

  private makeRoomForLegend(): void {
    const share = Math.min(this.legend.height / Math.max(this.plotHeight(), 1), 0.4);
    this.axis.high += ((this.axis.high - this.axis.low) * share) / (1 - share);
  }

  private ends(): uPlot.AlignedData {
    return [
      [this.sight.from, this.sight.to],
      [null, null],
    ];
  }

  private options(): uPlot.Options {
    const grid = { stroke: () => this.sheet.theme.palette.grid, width: 1 };
    const stroke = () => this.sheet.theme.palette.label;
    const axis = { stroke, font: axisFont, gap: 4, grid, ticks: { show: false } };
    return {
      width: 300,
      height: 100,
      legend: { show: false },
      padding: [0, 0, 0, 0],
      scales: {
        x: { time: false, range: (_plot, min, max) => [min, max] },
        y: { range: (_plot, min, max) => [min, max] },
      },
      series: [{}, { show: false }],
      cursor: {
        drag: { x: false, y: false, setScale: false },
        points: { show: false },
        sync: { key: this.place.chart, scales: ['x', null], setSeries: false },
        move: (_plot, left, top) => [this.snapped(left), top],
      },
      axes: [
        {
          ...axis,
          size: this.place.isLast ? timeAxisHeight : 0,
          splits: () => [],
        },
        {
          ...axis,
          side: 1,
          size: valueAxisWidth,
          splits: () => this.ticks().map(({ value }) => this.scale.place(value)),
          values: () => this.tickTexts(),
        },
      ],
      hooks: {
        draw: [() => this.paint()],
        setCursor: [(plot) => this.showLevel(plot)],
      },
    };
  }

  private plotWidth(): number {
    return this.plot.bbox.width / uPlot.pxRatio;
  }

  private plotHeight(): number {
    return this.plot.bbox.height / uPlot.pxRatio;
  }

  private ticks(): Tick[] {
    const { scale, axis } = this;
    const values = { low: scale.value(axis.low), high: scale.value(axis.high) };
    const isWhole = this.spec.digits === 0;
    return scale.ticks(values, this.plotHeight(), isWhole, this.sheet.measures);
  }

  /** None where half of it would be cut off: above, and below where another pane follows. */
  private tickTexts(): string[] {
    const { scale, axis, sheet } = this;
    const ticks = this.ticks();
    const height = this.plotHeight();
    const texts = tickTexts(ticks, scale, axis, height, this.tags(), sheet.measures.halfTag);
    const margin = ((axis.high - axis.low) / height) * 7;
    const lowest = this.place.isLast ? axis.low : axis.low + margin;
    const isWhole = (place: number) => place >= lowest && place <= axis.high - margin;
    return ticks.map(({ value }, i) => (isWhole(scale.place(value)) ? texts[i] : ''));
  }

  private tags(): Tag[] {
    const { low, high } = this.axis;
    const all = levelTags(this.levels, this.sheet, this.scale, this.spec.digits);
    if (this.place.isFirst) all.push(...closeTag(this.sheet, this.scale));
    return all.filter(({ value }) => {
      const place = this.scale.place(value);
      return place >= low && place <= high;
    });
  }

  private snapped(left: number): number {
    if (left < 0) return left;
    const { view } = this.sheet;
    if (view.count === 0) return left;
    const { begin } = view.slots(this.placeAt(left), this.placeAt(left));
    return this.plot.valToPos(view.middle(Math.min(begin, view.count - 1)), 'x');
  }

  /** The library tells of its crosshair at each redraw, too: the pointer is followed by itself. */
  private followPointer({ point }: PaneEvents): void {
    this.over.addEventListener('mousemove', (event) => point(this.placeAt(event.offsetX)));
    this.over.addEventListener('mouseleave', () => point(undefined));
  }

  private showLevel(plot: uPlot): void {
    const { left = -10, top = -10 } = plot.cursor;
    this.cursorTag.hidden = left < 0 || top < 0;
    if (this.cursorTag.hidden) return;
    const digits = Math.max(this.spec.digits, this.place.isFirst ? this.sheet.decimals : 0);
    const value = this.scale.value(plot.posToVal(top, 'y'));
    this.cursorTag.textContent = this.scale.text(value, Math.min(digits, 8));
    this.cursorTag.style.top = `${top}px`;
    this.cursorTag.style.left = `${this.plotWidth()}px`;
  }

  private paint(): void {
    const { ctx, bbox } = this.plot;
    const ratio = uPlot.pxRatio;
    const box = {
      left: bbox.left / ratio,
      top: bbox.top / ratio,
      right: (bbox.left + bbox.width) / ratio,
      bottom: (bbox.top + bbox.height) / ratio,
    };
    const { theme, view, measures } = this.sheet;
    ctx.save();
    ctx.scale(ratio, ratio);
    ctx.save();
    ctx.beginPath();
    ctx.rect(box.left, box.top, box.right - box.left, box.bottom - box.top);
    ctx.clip();
    const shownOf = (record: ShapeRecord) => this.sheet.shownOf(record);
    const frameOf = (scale: Scale) =>
      new Frame(ctx, theme, view, measures, box, this.sight, this.axis, scale, shownOf);
    const frame = frameOf(this.scale);
    const marks = this.sheet.timeMarks(this.sight, box.right - box.left);
    paintTimeGrid(frame, marks);
    paint(frame, this.records, this.levels);
    if (this.overlay)
      drawPolyline(frameOf(multiplied(this.scale, this.overlayFactor)), this.overlay);
    ctx.restore();
    for (const tag of this.tags()) paintTag(frame, tag);
    if (this.place.isLast) paintTimeTexts(frame, marks);
    if (!this.place.isLast)
      frame.fill(
        { ...box, right: box.right + valueAxisWidth, top: box.bottom - 1 },
        theme.palette.mark,
      );
    ctx.restore();
  }
}
