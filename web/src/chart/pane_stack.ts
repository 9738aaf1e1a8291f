// The panes of a chart over one another: which there are, and how high each is.
import { element } from '../dom.ts';
import { Heights } from './heights.ts';
import { ChartPane, type PaneEvents, type PanePlace, timeAxisHeight } from './pane.ts';
import type { Sheet } from './sheet.ts';

export interface PaneStackEvents extends Pick<PaneEvents, 'point' | 'stretched'> {
  /** The panes have other sizes. */
  laidOut: () => void;
}

/** In pixels: what is smaller isn't drawn. */
const least = { width: 80, height: 60 };

let charts = 0;

export class PaneStack {
  readonly root = element('div', { class: 'panes' });
  private readonly name = `chart ${++charts}`;
  private readonly heights = new Heights(localStorage);
  private panes: ChartPane[] = [];

  constructor(private readonly events: PaneStackEvents) {
    new ResizeObserver(() => this.layOut()).observe(this.root);
  }

  get all(): readonly ChartPane[] {
    return this.panes;
  }

  /** Of that in which lines are drawn. */
  get plotWidth(): number {
    return this.panes[0]?.over.clientWidth || this.root.clientWidth || 1;
  }

  close(): void {
    for (const pane of this.panes) pane.destroy();
    this.panes = [];
  }

  /** Has the panes of a sheet. */
  take(sheet: Sheet): void {
    const { panes } = sheet.drawn;
    if (panes.length === this.panes.length)
      this.panes.forEach((pane, i) => pane.take(sheet, panes[i]));
    else this.build(sheet);
    this.takeHeights();
  }

  /** Others may be kept by now. */
  takeHeights(): void {
    this.heights.take(this.weights);
    this.layOut();
  }

  private build(sheet: Sheet): void {
    this.close();
    const { panes } = sheet.drawn;
    this.panes = panes.map(
      (spec, i) => new ChartPane(sheet, spec, this.placeOf(i, panes.length), this.eventsOf(i)),
    );
    this.root.replaceChildren(...this.panes.map(({ root }) => root));
  }

  private placeOf(index: number, count: number): PanePlace {
    return { isFirst: index === 0, isLast: index === count - 1, chart: this.name };
  }

  private eventsOf(index: number): PaneEvents {
    const { point, stretched } = this.events;
    return {
      point,
      stretched,
      border: {
        move: (pixels) => {
          this.heights.move(index, pixels, this.root.clientHeight - timeAxisHeight);
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
    const width = Math.floor(this.root.clientWidth);
    const height = Math.floor(this.root.clientHeight);
    if (width < least.width || height < least.height) return;
    const pixels = this.heights.pixels(height, timeAxisHeight);
    this.panes.forEach((pane, i) => pane.resize(width, pixels[i], this.heights.percentAbove(i)));
    this.events.laidOut();
  }
}
