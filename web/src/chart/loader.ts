// Loads what the chart shows: one request at a time, and after it the newest that was wanted.
import { Ended } from '../engine/line.ts';
import type { Session } from '../engine/session.ts';
import type { Shown } from '../engine/types.ts';
import type { Sight } from './frame.ts';
import { serves, type Wanted, wantedFor } from './sight.ts';
import { View } from './view.ts';

export interface Loaded {
  view: View;
  shown: ReadonlyMap<number, readonly Shown[]>;
}

interface Goal {
  wanted: Wanted;
  /** Whether bars at which records show are asked for, too. */
  withRecords: boolean;
}

export class Loader {
  /** What was asked for last, of the values that are at the desk. */
  private loaded: Goal | undefined;
  private next: Goal | undefined;
  private working: Promise<void> | undefined;

  constructor(
    private readonly session: Session,
    private readonly take: (loaded: Loaded) => void,
    private readonly fail: (error: unknown) => void,
  ) {}

  /** Sees to it that a sight can be drawn. */
  want(sight: Sight, pixels: number, rows: number, withRecords: boolean): void {
    const wanted = wantedFor(sight, pixels, rows);
    const isThere = this.loaded && serves(this.loaded.wanted, sight, wanted, rows);
    if (isThere || rows === 0) return;
    this.next = { wanted, withRecords };
    this.working ??= this.work();
  }

  /** Other values are at the desk. */
  forget(): void {
    this.loaded = this.next = undefined;
  }

  /** All that was wanted has come, or failed. */
  async finished(): Promise<void> {
    await this.working;
  }

  private async work(): Promise<void> {
    while (this.next) {
      const goal = this.next;
      this.next = undefined;
      try {
        await this.load(goal);
      } catch (error) {
        this.loaded = undefined;
        if (error instanceof Ended)
          this.next ??= goal; // the same values will be at the desk again
        else this.fail(error);
      }
    }
    this.working = undefined;
  }

  private async load({ wanted, withRecords }: Goal): Promise<void> {
    const { from, to, step } = wanted;
    const points = Math.max(Math.ceil((to - from) / step), 16);
    this.loaded = { wanted, withRecords };
    const [data, records] = await Promise.all([
      this.session.view(from, to, points),
      withRecords ? this.session.records(from, to) : { records: [] },
    ]);
    const shown = new Map(records.records.map((record) => [record.index, record.shown]));
    this.take({ view: new View(data), shown });
  }
}
