// Loads what the chart shows: one request at a time, and after it the newest that was wanted.
import type { Session } from '../api/client.ts';
import type { Shown } from '../api/types.ts';
import type { Sight } from './frame.ts';
import { serves, type Wanted, wantedFor } from './sight.ts';
import { View } from './view.ts';

export interface Loaded {
  view: View;
  shown: ReadonlyMap<number, readonly Shown[]>;
}

interface Goal {
  wanted: Wanted;
  /** Of the calculation: an older one isn't worth drawing. */
  revision: number;
  /** Whether bars at which records show are asked for, too. */
  withRecords: boolean;
}

export class Loader {
  private loaded: Goal | undefined;
  private next: Goal | undefined;
  private working: Promise<void> | undefined;

  constructor(
    private readonly session: Session,
    private readonly take: (loaded: Loaded, revision: number) => void,
    private readonly fail: (error: unknown) => void,
  ) {}

  /** Sees to it that a sight can be drawn. */
  want(
    sight: Sight,
    pixels: number,
    rows: number,
    { revision, withRecords }: { revision: number; withRecords: boolean },
  ): void {
    const wanted = wantedFor(sight, pixels, rows);
    const isThere =
      this.loaded?.revision === revision && serves(this.loaded.wanted, sight, wanted, rows);
    if (isThere || rows === 0) return;
    this.next = { wanted, revision, withRecords };
    this.working ??= this.work();
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
        this.fail(error);
      }
    }
    this.working = undefined;
  }

  private async load(goal: Goal): Promise<void> {
    const { from, to, step } = goal.wanted;
    const points = Math.max(Math.ceil((to - from) / step), 16);
    const [data, records] = await Promise.all([
      this.session.view(from, to, points),
      goal.withRecords ? this.session.records(from, to) : { revision: goal.revision, records: [] },
    ]);
    // Of another calculation, whose answer will bring a wish of its own.
    if (data.revision !== goal.revision || records.revision !== goal.revision) return;
    this.loaded = goal;
    const shown = new Map(records.records.map((record) => [record.index, record.shown]));
    this.take({ view: new View(data), shown }, data.revision);
  }
}
