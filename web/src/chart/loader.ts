// Loads what the chart shows: one request at a time, and after it the newest that was wanted.
import type { Session } from '../api/client.ts';
import type { Shown } from '../api/types.ts';
import type { Sight } from './frame.ts';
import { serves, type Wanted, wantedFor } from './sight.ts';
import { View, type ViewData } from './view.ts';

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

/** A view that was asked for before it was known of which calculation it will be. */
interface Guess {
  wanted: Wanted;
  view: Promise<ViewData | undefined>;
}

export class Loader {
  private loaded: Goal | undefined;
  private next: Goal | undefined;
  private working: Promise<void> | undefined;
  private guess: Guess | undefined;

  constructor(
    private readonly session: Session,
    private readonly take: (loaded: Loaded) => void,
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

  /** What was loaded or is to be is of no use any more. */
  forget(): void {
    this.loaded = this.next = this.guess = undefined;
  }

  /** Asks for a sight behind a script that has just been sent, without waiting for its answer. */
  askAhead(sight: Sight, pixels: number, rows: number): void {
    const wanted = wantedFor(sight, pixels, rows);
    this.guess = { wanted, view: this.view(wanted).catch(() => undefined) };
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

  private view({ from, to, step }: Wanted): Promise<ViewData> {
    return this.session.view(from, to, Math.max(Math.ceil((to - from) / step), 16));
  }

  /** The view that was asked for ahead, if it is the one that is wanted. */
  private async takeGuess({ wanted, revision }: Goal): Promise<ViewData | undefined> {
    const { guess } = this;
    this.guess = undefined;
    if (!guess || guess.wanted.from !== wanted.from || guess.wanted.to !== wanted.to)
      return undefined;
    const view = await guess.view;
    return view?.revision === revision ? view : undefined;
  }

  private async load(goal: Goal): Promise<void> {
    const { from, to } = goal.wanted;
    const [data, records] = await Promise.all([
      this.takeGuess(goal).then((view) => view ?? this.view(goal.wanted)),
      goal.withRecords ? this.session.records(from, to) : { revision: goal.revision, records: [] },
    ]);
    // Of another calculation, whose answer will bring a wish of its own.
    if (data.revision !== goal.revision || records.revision !== goal.revision) return;
    this.loaded = goal;
    const shown = new Map(records.records.map((record) => [record.index, record.shown]));
    this.take({ view: new View(data), shown });
  }
}
