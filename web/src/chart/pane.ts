// One pane of the chart: axes, grid and crosshair by the charting library, records by our painters.
import uPlot from 'uplot';
import type { Pane as PaneSpec } from '../engine/types.ts';
import { element } from '../dom.ts';
import { fontFamily, Frame, type Sight } from './frame.ts';
import { Legend, type LegendEntry } from './legend.ts';
import { shortText } from './numbers.ts';
import { paint } from './paint.ts';
import { rangeInSight } from './range.ts';
import { isFigure, type ShapeRecord } from './records.ts';
import type { Sheet } from './sheet.ts';
import {
  closeTag,
  levelTags,
  paintTag,
  type Tag,
  tickTexts,
  ticksOf,
  valueAxisWidth,
} from './value_axis.ts';

const timeAxisHeight = 26;
const axisFont = `11px ${fontFamily}`;

export interface PaneEvents {
  /** The pointer is at a place of the time axis, or has left. */
  point: (place: number | undefined) => void;
}

export class ChartPane {
  readonly root = element('div', { class: 'pane' });
  readonly legend = new Legend();
  private readonly plot: uPlot;
  private readonly cursorTag = element('div', { class: 'cursor-tag', 'aria-hidden': 'true' });
  private records: readonly ShapeRecord[] = [];
  private levels: ReadonlyMap<ShapeRecord, number> = new Map();
  private sight: Sight = { from: 0, to: 1 };
  private values = { low: 0, high: 1 };

  constructor(
    private sheet: Sheet,
    public spec: PaneSpec,
    private readonly isFirst: boolean,
    private readonly isLast: boolean,
    events: PaneEvents,
  ) {
    this.take(sheet, spec);
    this.plot = new uPlot(this.options(), this.ends(), this.root);
    this.followPointer(events);
    this.root.append(this.legend.root, this.cursorTag);
  }

  /** Other records take the place of those before. */
  take(sheet: Sheet, spec: PaneSpec): void {
    const { records } = sheet.drawn;
    this.sheet = sheet;
    this.spec = spec;
    this.records = spec.records.map((index) => records[index]);
    this.levels = new Map(spec.levels.map(({ record, value }) => [records[record], value]));
    this.legend.take(this.records);
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

  resize(width: number, height: number): void {
    if (this.plot.width !== width || this.plot.height !== height)
      this.plot.setSize({ width, height });
  }

  draw(sheet: Sheet, sight: Sight): void {
    this.sheet = sheet;
    this.sight = sight;
    const seen = this.records.filter((record) => !this.levels.has(record));
    this.values = rangeInSight(seen, [...this.levels.values()], sheet.view, sight.from, sight.to);
    this.takeShown(seen);
    this.makeRoomForLegend();
    this.plot.batch(() => {
      this.plot.setData(this.ends(), false);
      this.plot.setScale('x', { min: sight.from, max: sight.to });
      this.plot.setScale('y', { min: this.values.low, max: this.values.high });
      // The texts of the axes hang on more than their scales: on other bars, or a tag.
      this.plot.redraw(false, true);
    });
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
    if (place === undefined) this.cursorTag.hidden = true;
  }

  /** What the legend shows of the values at a bar. */
  entriesAt(valueOf: (id: number) => number): LegendEntry[] {
    return this.legend.entries(this.spec.digits, valueOf);
  }

  /** Figures count with the anchors that are in sight. */
  private takeShown(records: readonly ShapeRecord[]): void {
    const { from, to } = this.sight;
    for (const record of records.filter(isFigure)) {
      for (const shown of this.sheet.shownOf(record)) {
        const value = shown.values.Field1Id;
        if (shown.row + 1 < from || shown.row > to || typeof value !== 'number') continue;
        this.values.low = Math.min(this.values.low, value);
        this.values.high = Math.max(this.values.high, value);
      }
    }
  }

  private makeRoomForLegend(): void {
    const share = Math.min(this.legend.height / Math.max(this.plotHeight(), 1), 0.4);
    this.values.high += ((this.values.high - this.values.low) * share) / (1 - share);
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
        sync: { key: 'panes', scales: ['x', null], setSeries: false },
        move: (_plot, left, top) => [this.snapped(left), top],
      },
      axes: [
        {
          ...axis,
          size: this.isLast ? timeAxisHeight : 0,
          splits: () =>
            this.sheet.timeMarks(this.sight, this.plotWidth()).map(({ place }) => place),
          values: () =>
            this.isLast
              ? this.sheet.timeMarks(this.sight, this.plotWidth()).map(({ text }) => text)
              : [],
        },
        {
          ...axis,
          side: 1,
          size: valueAxisWidth,
          splits: () => this.ticks().values,
          values: (_plot, values) =>
            tickTexts(values, this.ticks().step, this.values, this.plotHeight(), this.tags()),
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

  private ticks(): { step: number; values: number[] } {
    return ticksOf(this.values, this.plotHeight(), this.spec.digits === 0, this.sheet.measures);
  }

  private tags(): Tag[] {
    const { low, high } = this.values;
    const all = levelTags(this.levels, this.sheet, this.spec.digits);
    if (this.isFirst) all.push(...closeTag(this.sheet));
    return all.filter(({ value }) => value >= low && value <= high);
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
    const digits = Math.max(this.spec.digits, this.isFirst ? this.sheet.decimals : 0);
    this.cursorTag.textContent = shortText(plot.posToVal(top, 'y'), Math.min(digits, 8));
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
    const { theme, view } = this.sheet;
    ctx.save();
    ctx.scale(ratio, ratio);
    ctx.save();
    ctx.beginPath();
    ctx.rect(box.left, box.top, box.right - box.left, box.bottom - box.top);
    ctx.clip();
    const frame = new Frame(ctx, theme, view, box, this.sight, this.values, (record) =>
      this.sheet.shownOf(record),
    );
    paint(frame, this.records, this.levels);
    ctx.restore();
    for (const tag of this.tags()) paintTag(frame, tag);
    if (!this.isLast)
      frame.fill(
        { ...box, right: box.right + valueAxisWidth, top: box.bottom - 1 },
        theme.palette.mark,
      );
    ctx.restore();
  }
}
