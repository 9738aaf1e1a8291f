// The chart: panes over one another that share the time axis, the crosshair and the sight.
import { element, setText } from '../dom.ts';
import type { Sight } from './frame.ts';
import { followGestures } from './gestures.ts';
import { Heights } from './heights.ts';
import { followKeys } from './keys.ts';
import { ChartPane, type PaneEvents, type PanePlace, timeAxisHeight } from './pane.ts';
import { groupedText } from './numbers.ts';
import { pictureOf } from './picture.ts';
import type { ScaleName } from './scale.ts';
import type { Sheet } from './sheet.ts';
import { keptIn, newest, panned, showing, usualBars, zoomed } from './sight.ts';
import type { Theme } from './theme.ts';

const priceFields = [
  ['O', 7],
  ['H', 8],
  ['L', 9],
  ['C', 11],
] as const;

export interface ChartEvents {
  /** Another part of the axis is to be seen, `pixels` wide. */
  sight: (sight: Sight, pixels: number) => void;
  /** A chart with new values has been drawn. */
  drawn: (sheet: Sheet) => void;
  /** Values of columns at a row of which several share a slot. */
  values: (row: number) => Promise<ReadonlyMap<number, number> | undefined>;
  /** The crosshair is at a row, or away; by a step it is brought there. */
  pointed: (row: number | undefined, isBrought: boolean) => void;
  /** A row was clicked. */
  clicked: (row: number) => void;
}

let charts = 0;

export class Chart {
  private readonly name = `chart ${++charts}`;
  private readonly panesRoot = element('div', { class: 'panes' });
  private readonly caption = element('div', { class: 'caption' });
  private readonly spoken = element('p', { class: 'spoken', 'aria-live': 'polite' });
  private panes: ChartPane[] = [];
  private sheet: Sheet | undefined;
  private rows = 0;
  private sight: Sight = { from: 0, to: usualBars };
  /** The row of the crosshair. */
  private row: number | undefined;
  /** The row whose values are held. */
  private held: number | undefined;
  private exact: { row: number; values: ReadonlyMap<number, number> } | undefined;
  private title = '';
  private isToBeTold = false;
  private frameAsked = 0;
  private readonly heights = new Heights(localStorage);
  private scaleName: ScaleName = 'linear';

  constructor(
    root: HTMLElement,
    private readonly events: ChartEvents,
  ) {
    root.append(this.caption, this.panesRoot, this.spoken);
    new ResizeObserver(() => this.layOut()).observe(this.panesRoot);
    followGestures(this.panesRoot, {
      pan: (pixels) => this.setSight(panned(this.sight, -pixels / this.rowWidth, this.rows)),
      zoom: (factor, left) =>
        this.setSight(zoomed(this.sight, factor, this.placeAt(left), this.rows)),
      reset: () => this.setSight(newest(usualBars, this.rows)),
      click: (left) => {
        if (this.sheet && this.sheet.view.count > 0)
          this.events.clicked(this.rowAt(this.placeAt(left)));
      },
    });
    followKeys(root, {
      step: (slots) => this.stepCrosshair(slots * (this.sheet?.view.step ?? 1)),
      zoom: (factor) => this.zoom(factor),
      stretch: (factor) => this.stretch(factor),
      pan: (share) => this.pan(share),
      first: () => this.showRow(0),
      newest: () => this.showRow(this.rows - 1),
      showAll: () => this.showAll(),
      leave: () => this.moveCrosshair(undefined),
    });
  }

  close(): void {
    for (const pane of this.panes) pane.destroy();
    this.panes = [];
    this.sheet = undefined;
  }

  /** What the chart needs values for: the sight and the width of its plot in pixels. */
  get need(): { sight: Sight; pixels: number } {
    return { sight: this.sight, pixels: this.plotWidth };
  }

  /** The row under the crosshair. */
  get pointedRow(): number | undefined {
    return this.row;
  }

  /** Other bars are on their way. What is seen of those before stays until then, but is moved no
   * more: its rows are other rows. */
  setBars(title: string, rows: number): void {
    this.moveCrosshair(undefined);
    this.sheet = undefined;
    this.title = title;
    this.rows = rows;
    this.setSight(newest(usualBars, rows));
  }

  /** One bar more while bars are played: the newest stays where it is. */
  setRows(rows: number): void {
    if (rows === this.rows) return;
    const follows = this.sight.to >= Math.min(this.rows, rows);
    const by = rows - this.rows;
    this.rows = rows;
    this.sight = follows
      ? keptIn({ from: this.sight.from + by, to: this.sight.to + by }, rows)
      : keptIn(this.sight, rows);
  }

  setSight(sight: Sight): void {
    this.sight = sight;
    this.events.sight(sight, this.plotWidth);
    this.askForFrame();
  }

  /** Of the price pane. */
  setScale(name: ScaleName): void {
    this.scaleName = name;
    this.askForFrame();
  }

  zoom(factor: number): void {
    this.setSight(zoomed(this.sight, factor, this.sight.to, this.rows));
  }

  showAll(): void {
    this.setSight(newest(this.rows, this.rows));
  }

  /** The crosshair of another chart is at the time of a row, or away. */
  follow(row: number | undefined, isBrought: boolean): void {
    if (row !== undefined && isBrought) this.setSight(showing(this.sight, row, this.rows));
    this.takeRow(row);
    this.showCrosshair();
  }

  /** Of a row, or of the first one that shares its slot, if it is loaded. */
  keyOf(row: number): number | undefined {
    return this.sheet?.keyOf(row);
  }

  /** Marks the row whose values are held, or none. */
  setHeld(row: number | undefined): void {
    this.held = row;
    this.showHeld();
  }

  /** Has a row in sight, under the crosshair. */
  showRow(row: number): void {
    this.setSight(showing(this.sight, row, this.rows));
    this.moveCrosshair(row);
  }

  show(sheet: Sheet): void {
    const isAnother = sheet.drawn !== this.sheet?.drawn;
    this.sheet = sheet;
    this.exact = undefined;
    if (isAnother) this.takePanes(sheet);
    if (this.row !== undefined && sheet.view.step > 1) void this.askForValues(this.row);
    this.drawNow();
    this.tellIfWanted();
    this.events.drawn(sheet);
  }

  setTheme(theme: Theme): void {
    if (this.sheet) this.show(this.sheet.withTheme(theme));
  }

  /** The chart as a picture, with its caption and legends. */
  picture(): Promise<Blob> {
    if (!this.sheet) return Promise.reject(new Error('there is no chart yet'));
    const panes = this.panes.map((pane) => ({
      canvas: pane.canvas,
      entries: this.entriesOf(pane),
    }));
    return pictureOf(this.caption.textContent, panes, this.sheet.theme);
  }

  private get rowWidth(): number {
    return this.plotWidth / (this.sight.to - this.sight.from);
  }

  private get plotWidth(): number {
    return this.panes[0]?.over.clientWidth || this.panesRoot.clientWidth || 1;
  }

  private placeAt(left: number): number {
    return this.sight.from + left / this.rowWidth;
  }

  private takePanes(sheet: Sheet): void {
    const { panes } = sheet.drawn;
    if (panes.length === this.panes.length)
      this.panes.forEach((pane, i) => pane.take(sheet, panes[i]));
    else this.buildPanes(sheet);
    this.heights.take(this.weights);
    this.layOut();
  }

  private buildPanes(sheet: Sheet): void {
    for (const pane of this.panes) pane.destroy();
    const { panes } = sheet.drawn;
    this.panes = panes.map(
      (spec, i) => new ChartPane(sheet, spec, this.placeOf(i, panes.length), this.eventsOf(i)),
    );
    this.panesRoot.replaceChildren(...this.panes.map(({ root }) => root));
  }

  private placeOf(index: number, count: number): PanePlace {
    return { isFirst: index === 0, isLast: index === count - 1, chart: this.name };
  }

  private eventsOf(index: number): PaneEvents {
    return {
      point: (place) => this.followPointer(place),
      stretched: () => this.askForFrame(),
      border: {
        move: (pixels) => {
          this.heights.move(index, pixels, this.panesRoot.clientHeight - timeAxisHeight);
          this.layOut();
        },
        reset: () => {
          this.heights.reset(this.weights);
          this.layOut();
        },
      },
    };
  }

  private get weights(): number[] {
    return this.panes.map(({ spec }) => spec.weight);
  }

  private layOut(): void {
    const width = Math.floor(this.panesRoot.clientWidth);
    const height = Math.floor(this.panesRoot.clientHeight);
    if (width < 80 || height < 60) return;
    const pixels = this.heights.pixels(height, timeAxisHeight);
    this.panes.forEach((pane, i) => pane.resize(width, pixels[i], this.heights.percentAbove(i)));
    this.events.sight(this.sight, this.plotWidth);
    this.askForFrame();
  }

  private askForFrame(): void {
    if (this.frameAsked) return;
    this.frameAsked = requestAnimationFrame(() => this.drawNow());
  }

  private drawNow(): void {
    cancelAnimationFrame(this.frameAsked);
    this.frameAsked = 0;
    const { sheet } = this;
    if (!sheet) return;
    this.showLegends();
    for (const pane of this.panes) pane.draw(sheet, this.sight, this.scaleName);
    if (this.row !== undefined) this.showCrosshair();
    this.showHeld();
  }

  private followPointer(place: number | undefined): void {
    if (!this.sheet || this.sheet.view.count === 0) return;
    const row = place === undefined ? undefined : this.rowAt(place);
    if (row !== this.row) this.pointAt(row, false);
  }

  /** Has the crosshair at a row, or away, and tells its values as soon as they are there. */
  private moveCrosshair(row: number | undefined): void {
    this.pointAt(row, true);
    this.showCrosshair();
    this.isToBeTold = row !== undefined;
    this.tellIfWanted();
  }

  private showHeld(): void {
    const place = this.held === undefined ? undefined : this.held + 0.5;
    const text = this.held === undefined ? '' : (this.sheet?.timeText(this.held) ?? '');
    for (const pane of this.panes) pane.setHeld(place, text);
  }

  private showCrosshair(): void {
    const place = this.row === undefined ? undefined : this.row + 0.5;
    for (const pane of this.panes) pane.setCrosshair(place);
  }

  private pointAt(row: number | undefined, isBrought: boolean): void {
    this.takeRow(row);
    this.events.pointed(row, isBrought);
  }

  private takeRow(row: number | undefined): void {
    this.row = row;
    this.showLegends();
    if (row !== undefined && this.sheet && this.sheet.view.step > 1) void this.askForValues(row);
  }

  private tellIfWanted(): void {
    const { row, sheet } = this;
    if (!this.isToBeTold || row === undefined || !sheet?.view.holds(row)) return;
    this.isToBeTold = false;
    setText(this.spoken, this.sentence());
  }

  /** The newest row of the slot at a place. */
  private rowAt(place: number): number {
    const { view } = this.sheet!;
    const slot = Math.min(Math.max(Math.floor((place - view.from) / view.step), 0), view.count - 1);
    return Math.min(view.from + (slot + 1) * view.step, view.rows) - 1;
  }

  private async askForValues(row: number): Promise<void> {
    if (this.exact?.row === row) return;
    const values = await this.events.values(row).catch(() => undefined);
    if (!values || this.row !== row) return;
    this.exact = { row, values };
    this.showLegends();
  }

  private valueOf(row: number): (id: number) => number {
    const exact = this.exact?.row === row ? this.exact.values : undefined;
    return (id) => exact?.get(id) ?? this.sheet?.view.valueAt(id, row) ?? NaN;
  }

  /** Of which values are told: the row of the crosshair, or the newest one in sight. */
  get toldRow(): number {
    const { row, sheet, sight, rows } = this;
    const isThere = row !== undefined && sheet?.view.holds(row);
    return isThere ? row : Math.min(Math.ceil(sight.to), rows) - 1;
  }

  private entriesOf(pane: ChartPane) {
    return pane.entriesAt(this.valueOf(this.toldRow));
  }

  private showLegends(): void {
    const { sheet } = this;
    if (!sheet) return;
    for (const pane of this.panes) pane.legend.show(this.entriesOf(pane), sheet.theme);
    setText(this.caption, [this.title, this.priceText()].filter(Boolean).join('   '));
  }

  private priceText(): string {
    const sheet = this.sheet!;
    const row = this.toldRow;
    const valueOf = this.valueOf(row);
    const prices = priceFields
      .filter(([, field]) => sheet.view.has(field) && Number.isFinite(valueOf(field)))
      .map(([sign, field]) => `${sign} ${groupedText(valueOf(field), sheet.decimals)}`);
    const change = sheet.changeText(row);
    return [sheet.timeText(row), ...prices, change].filter(Boolean).join('  ');
  }

  /** What the crosshair shows, for a screen reader. */
  private sentence(): string {
    const values = this.panes
      .flatMap((pane) => this.entriesOf(pane))
      .map(({ title, text }) => `${title} ${text}`);
    return [this.priceText(), ...values].join(', ');
  }

  /** The prices, up and down. */
  private stretch(factor: number): void {
    this.panes[0]?.stretchBy(factor);
    this.askForFrame();
  }

  private pan(share: number): void {
    this.setSight(panned(this.sight, share * (this.sight.to - this.sight.from), this.rows));
  }

  private stepCrosshair(by: number): void {
    const row = this.row === undefined ? this.rows - 1 : this.row + by;
    this.showRow(Math.min(Math.max(row, 0), this.rows - 1));
  }
}
