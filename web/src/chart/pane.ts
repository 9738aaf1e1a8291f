// One pane of the chart: axes, grid and crosshair by the charting library, records by our painters.
import uPlot from 'uplot';
import type { Pane as PaneSpec } from '../engine/types.ts';
import { element } from '../dom.ts';
import { fontFamily, Frame, type Sight } from './frame.ts';
import { axisGrip, type BorderEvents, borderGrip } from './grips.ts';
import { Legend, type LegendEntry } from './legend.ts';
import { paint } from './paint.ts';
import { drawPolyline } from './paint_lines.ts';
import { PaneAxis, type PaneContent } from './pane_axis.ts';
import type { ShapeRecord } from './records.ts';
import type { Box } from './placement.ts';
import type { Scale, ScaleName } from './scale.ts';
import type { Sheet } from './sheet.ts';
import { paintTimeGrid, paintTimeTexts } from './time_axis.ts';
import { paintTag, valueAxisWidth } from './value_axis.ts';

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
  private content: PaneContent;
  private readonly axis = new PaneAxis(() => this.content);
  private sight: Sight = { from: 0, to: 1 };

  constructor(
    sheet: Sheet,
    spec: PaneSpec,
    private readonly place: PanePlace,
    events: PaneEvents,
  ) {
    this.content = this.contentOf(sheet, spec);
    this.plot = new uPlot(this.options(), this.ends(), this.root);
    this.followPointer(events);
    const grip = axisGrip((factor) => {
      this.axis.stretchBy(factor);
      events.stretched();
    });
    grip.style.width = `${valueAxisWidth}px`;
    this.plot.over.append(this.heldMark);
    this.root.append(this.legend.root, this.cursorTag, grip);
    if (!this.place.isLast) this.root.append((this.border = borderGrip(events.border)));
  }

  /** Other records take the place of those before. */
  take(sheet: Sheet, spec: PaneSpec): void {
    this.content = this.contentOf(sheet, spec);
  }

  get spec(): PaneSpec {
    return this.content.spec;
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
    this.content = { ...this.content, sheet };
    this.sight = sight;
    const legend = this.legend.height / Math.max(this.plotHeight(), 1);
    this.axis.take(sight, this.place.isFirst ? scaleName : 'linear', legend);
    this.plot.batch(() => {
      this.plot.setData(this.ends(), false);
      this.plot.setScale('x', { min: sight.from, max: sight.to });
      this.plot.setScale('y', { min: this.axis.ends.low, max: this.axis.ends.high });
      // The texts of the axes hang on more than their scales: on other bars, or a tag.
      this.plot.redraw(false, true);
    });
  }

  /** The values, up and down. */
  stretchBy(factor: number): void {
    this.axis.stretchBy(factor);
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

  private contentOf(sheet: Sheet, spec: PaneSpec): PaneContent {
    const all = sheet.drawn.records;
    const { isFirst, isLast } = this.place;
    const records = spec.records.map((index) => all[index]);
    const levels = new Map(spec.levels.map(({ record, value }) => [all[record], value]));
    const overlay = isFirst ? sheet.overlay : undefined;
    this.legend.take(overlay ? [...records, overlay] : records);
    return { sheet, spec, records, levels, overlay, isFirst, isLast };
  }

  private ends(): uPlot.AlignedData {
    return [
      [this.sight.from, this.sight.to],
      [null, null],
    ];
  }

  private options(): uPlot.Options {
    const grid = { stroke: () => this.content.sheet.theme.palette.grid, width: 1 };
    const stroke = () => this.content.sheet.theme.palette.label;
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
          splits: () => this.axis.tickPlaces(this.plotHeight()),
          values: () => this.axis.tickTexts(this.plotHeight()),
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

  private snapped(left: number): number {
    if (left < 0) return left;
    const { view } = this.content.sheet;
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
    this.cursorTag.textContent = this.axis.textAt(plot.posToVal(top, 'y'));
    this.cursorTag.style.top = `${top}px`;
    this.cursorTag.style.left = `${this.plotWidth()}px`;
  }

  private paint(): void {
    const { ctx } = this.plot;
    const ratio = uPlot.pxRatio;
    const box = this.plotBox();
    const { sheet, records, levels, overlay } = this.content;
    const { axis, place } = this;
    ctx.save();
    ctx.scale(ratio, ratio);
    ctx.save();
    ctx.beginPath();
    ctx.rect(box.left, box.top, box.right - box.left, box.bottom - box.top);
    ctx.clip();
    const frame = this.frameOf(axis.scale, box);
    const marks = sheet.timeMarks(this.sight, box.right - box.left);
    paintTimeGrid(frame, marks);
    paint(frame, records, levels);
    if (overlay) drawPolyline(this.frameOf(axis.overlayScale, box), overlay);
    ctx.restore();
    for (const tag of axis.tags()) paintTag(frame, tag);
    if (place.isLast) paintTimeTexts(frame, marks);
    else
      frame.fill(
        { ...box, right: box.right + valueAxisWidth, top: box.bottom - 1 },
        sheet.theme.palette.mark,
      );
    ctx.restore();
  }

  private plotBox(): Box {
    const { left, top, width, height } = this.plot.bbox;
    const ratio = uPlot.pxRatio;
    return {
      left: left / ratio,
      top: top / ratio,
      right: (left + width) / ratio,
      bottom: (top + height) / ratio,
    };
  }

  private frameOf(scale: Scale, box: Box): Frame {
    const { sheet } = this.content;
    const { theme, view, measures } = sheet;
    const shownOf = (record: ShapeRecord) => sheet.shownOf(record);
    const { sight, axis } = this;
    return new Frame(this.plot.ctx, theme, view, measures, box, sight, axis.ends, scale, shownOf);
  }
}
