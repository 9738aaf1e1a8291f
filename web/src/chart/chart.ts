// The chart: panes over one another that share the time axis, the crosshair and the sight.
import type { Sight } from './frame.ts';
import { followGestures } from './gestures.ts';
import { followKeys } from './keys.ts';
import { PaneStack } from './pane_stack.ts';
import { pictureOf } from './picture.ts';
import { Readout } from './readout.ts';
import type { ScaleName } from './scale.ts';
import type { Sheet } from './sheet.ts';
import { keptIn, newest, panned, showing, usualBars, zoomed } from './sight.ts';
import type { Theme } from './theme.ts';

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

export class Chart {
  private readonly stack: PaneStack;
  private readonly readout: Readout;
  private sheet: Sheet | undefined;
  private rows = 0;
  private sight: Sight = { from: 0, to: usualBars };
  /** The row of the crosshair. */
  private row: number | undefined;
  /** The row whose values are held. */
  private held: number | undefined;
  private frameAsked = 0;
  private scaleName: ScaleName = 'linear';

  constructor(
    root: HTMLElement,
    private readonly events: ChartEvents,
  ) {
    const state = () => {
      const { sheet, sight, rows, row } = this;
      return { sheet, sight, rows, row, panes: this.stack.all };
    };
    this.stack = new PaneStack({
      point: (place) => this.followPointer(place),
      stretched: () => this.askForFrame(),
      laidOut: () => {
        this.events.sight(this.sight, this.stack.plotWidth);
        this.askForFrame();
      },
    });
    this.readout = new Readout(state, events.values);
    root.append(this.readout.caption, this.stack.root, this.readout.spoken);
    followGestures(this.stack.root, {
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
    this.stack.close();
    this.sheet = undefined;
  }

  /** What the chart needs values for: the sight and the width of its plot in pixels. */
  get need(): { sight: Sight; pixels: number } {
    return { sight: this.sight, pixels: this.stack.plotWidth };
  }

  /** The row under the crosshair. */
  get pointedRow(): number | undefined {
    return this.row;
  }

  /** Of which values are told: the row of the crosshair, or the newest one in sight. */
  get toldRow(): number {
    return this.readout.row;
  }

  /** Other bars are on their way. What is seen of those before stays until then, but is moved no
   * more: its rows are other rows. */
  setBars(title: string, rows: number): void {
    this.moveCrosshair(undefined);
    this.sheet = undefined;
    this.readout.title = title;
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
    this.events.sight(sight, this.stack.plotWidth);
    this.askForFrame();
  }

  /** Of the price pane. */
  setScale(name: ScaleName): void {
    this.scaleName = name;
    this.askForFrame();
  }

  /** Other heights of panes are kept by now. */
  takeHeights(): void {
    this.stack.takeHeights();
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
    this.readout.forget();
    if (isAnother) this.stack.take(sheet);
    void this.readout.askForValues();
    this.drawNow();
    this.readout.tellIfWanted();
    this.events.drawn(sheet);
  }

  setTheme(theme: Theme): void {
    if (this.sheet) this.show(this.sheet.withTheme(theme));
  }

  /** The chart as a picture, with its caption and legends. */
  picture(): Promise<Blob> {
    if (!this.sheet) return Promise.reject(new Error('there is no chart yet'));
    const panes = this.stack.all.map((pane) => ({
      canvas: pane.canvas,
      entries: this.readout.entriesOf(pane),
    }));
    return pictureOf(this.readout.caption.textContent, panes, this.sheet.theme);
  }

  private get rowWidth(): number {
    return this.stack.plotWidth / (this.sight.to - this.sight.from);
  }

  private placeAt(left: number): number {
    return this.sight.from + left / this.rowWidth;
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
    this.readout.show();
    for (const pane of this.stack.all) pane.draw(sheet, this.sight, this.scaleName);
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
    this.readout.tell();
  }

  private showHeld(): void {
    const place = this.held === undefined ? undefined : this.held + 0.5;
    const text = this.held === undefined ? '' : (this.sheet?.timeText(this.held) ?? '');
    for (const pane of this.stack.all) pane.setHeld(place, text);
  }

  private showCrosshair(): void {
    const place = this.row === undefined ? undefined : this.row + 0.5;
    for (const pane of this.stack.all) pane.setCrosshair(place);
  }

  private pointAt(row: number | undefined, isBrought: boolean): void {
    this.takeRow(row);
    this.events.pointed(row, isBrought);
  }

  private takeRow(row: number | undefined): void {
    this.row = row;
    this.readout.show();
    void this.readout.askForValues();
  }

  /** The newest row of the slot at a place. */
  private rowAt(place: number): number {
    const { view } = this.sheet!;
    const slot = Math.min(Math.max(Math.floor((place - view.from) / view.step), 0), view.count - 1);
    return Math.min(view.from + (slot + 1) * view.step, view.rows) - 1;
  }

  /** The prices, up and down. */
  private stretch(factor: number): void {
    this.stack.all[0]?.stretchBy(factor);
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
