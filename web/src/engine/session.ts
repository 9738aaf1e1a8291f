// What the page asks of its desk, and how the desk is laid out again after its worker was ended.
import type { ViewData } from '../chart/view.ts';
import { grownBy } from '../growth.ts';
import { Refusal } from '../refusal.ts';
import { Ended, Line, type WorkerLike } from './line.ts';
import type { Language } from './language_types.ts';
import type {
  BarsAnswer,
  EventsAnswer,
  OverlayAnswer,
  Parameter,
  PlayAnswer,
  RecordsAnswer,
  ScriptAnswer,
  StepAnswer,
  Subject,
  ValuesAnswer,
  WhyAnswer,
} from './types.ts';
import { readView } from './view_answer.ts';

/** In milliseconds: a call that takes less isn't worth another worker. */
const patience = 250;

/** Bars as text, and what to read it as. */
export interface BarsText {
  name: string;
  content: Blob;
  /** None where the bars shall say. */
  period?: string;
}

interface Task {
  script: string;
  parameters: Parameter[];
}

/** What a desk was told of: a new worker has to be told it again. */
export interface Told {
  bars: BarsText | undefined;
  /** The last one that is sound. */
  task: Task | undefined;
  subject: Subject;
  takesForming: boolean;
  overlay: BarsText | undefined;
  others: readonly BarsText[];
  /** Of the bars, as the user says. */
  period: string | undefined;
}

const decoder = new TextDecoder();

/** Answers come in the order of the calls, so the last one tells how things stand at the desk. */
export class Session {
  private readonly line: Line;
  private ready: Promise<unknown> = Promise.resolve();
  private isLayingOut = false;
  /** The call that a newer one ends. */
  private doomed: number | undefined;
  private answered: BarsAnswer | undefined;
  private bars: BarsText | undefined;
  private sound: Task | undefined;
  private knownSubject: Subject = {};
  private takesForming = false;
  private overlay: BarsText | undefined;
  private readonly others = new Map<string, BarsText>();

  constructor(
    compiled: WebAssembly.Module,
    makeWorker: () => WorkerLike,
    /** Calls are under way, or none are any more; they lay out the desk without being asked for. */
    busy: (isBusy: boolean, isLayingOut: boolean) => void,
    /** The bars are there again, all of them. */
    private readonly restored: (bars: BarsAnswer) => void,
  ) {
    this.line = new Line(compiled, makeWorker, (isBusy) => busy(isBusy, this.isLayingOut));
  }

  get told(): Told {
    const { bars, sound: task, knownSubject: subject, takesForming, overlay, others } = this;
    const all = [...others.values()];
    return { bars, task, subject, takesForming, overlay, others: all, period: bars?.period };
  }

  /** What the bars are. */
  get seen(): BarsAnswer | undefined {
    return this.answered;
  }

  /** A question would have to wait. */
  get isBusy(): boolean {
    return this.line.oldest !== undefined;
  }

  /** What is under way has been asked for in vain: it is ended, unless it is over soon. */
  supersede(): void {
    const { oldest } = this.line;
    if (oldest === undefined || oldest === this.doomed || this.isLayingOut) return;
    this.doomed = oldest;
    setTimeout(() => {
      if (this.line.oldest === oldest) this.end(new Ended(false));
    }, patience);
  }

  /** Ends what is calculated. What was seen before is at the desk again, but no play. */
  stop(): void {
    this.end(new Ended(true));
  }

  /** For good. */
  close(): void {
    this.line.close();
  }

  /** A call would be answered as soon as it is calculated. */
  async laidOut(): Promise<void> {
    await this.ready;
  }

  language(): Promise<Language> {
    return this.get({ call: 'library' });
  }

  async takeBars(bars: BarsText): Promise<BarsAnswer> {
    const answer = await this.post(bars);
    this.bars = bars;
    this.answered = answer;
    return answer;
  }

  /** Bars of a file that has changed: those that came into it, or else all of them. */
  async followBars(bars: BarsText): Promise<BarsAnswer> {
    const before = this.bars;
    const isSame = before?.name === bars.name && before.period === bars.period;
    const content = isSame ? await grownBy(before.content, bars.content) : undefined;
    if (!content) return this.takeBars(bars);
    await this.ready;
    try {
      const answer = await this.postNow<BarsAnswer>({ name: bars.name, content }, 'more');
      this.bars = bars;
      this.answered = answer;
      return answer;
    } catch (error) {
      const isOther = error instanceof Refusal && error.status === 409;
      if (isOther) return this.takeBars(bars);
      throw error;
    }
  }

  /** What is known of the security. Gives the script anew, as the one below; null without one. */
  async subject(subject: Subject): Promise<ScriptAnswer | null> {
    const answer = await this.get<ScriptAnswer | null>({ call: 'subject', ...subject });
    this.knownSubject = subject;
    return answer;
  }

  /** Whether scripts read longer periods as they form. Gives the script anew, too. */
  async forming(on: boolean): Promise<ScriptAnswer | null> {
    this.takesForming = on;
    return this.get<ScriptAnswer | null>({ call: 'forming', on });
  }

  /** Bars of another security, for scripts that read them. */
  async takeOther(other: BarsText): Promise<ScriptAnswer | null> {
    await this.ready;
    const answer = await this.postNow<ScriptAnswer | null>(other, 'other');
    this.others.set(other.name, other);
    return answer;
  }

  /** The close of another security over the bars; null without one. */
  async takeOverlay(overlay: BarsText | undefined): Promise<OverlayAnswer | null> {
    await this.ready;
    const answer = overlay
      ? await this.postNow<OverlayAnswer>(overlay, 'overlay')
      : await this.get<null>({ call: 'overlay' });
    this.overlay = overlay;
    return answer;
  }

  async script(script: string, parameters: Parameter[]): Promise<ScriptAnswer> {
    try {
      const answer = await this.get<ScriptAnswer>({ call: 'script', script, parameters });
      if (answer.sound) this.sound = { script, parameters };
      return answer;
    } catch (error) {
      // At the end of memory nobody knows what is left of the desk.
      if (error instanceof Refusal && error.status >= 500) this.end(new Ended(true));
      throw error;
    }
  }

  /** Rows from `from` up to `to`, in slots of the same number of rows so that there are `points`. */
  async view(from: number, to: number, points: number): Promise<ViewData> {
    return readView((await this.ask({ call: 'view', from, to, points })).buffer);
  }

  records(from: number, to: number): Promise<RecordsAnswer> {
    return this.get({ call: 'records', from, to });
  }

  values(row: number): Promise<ValuesAnswer> {
    return this.get({ call: 'values', row });
  }

  /** Why a line of the script has no value at a row. */
  why(line: number, row: number): Promise<WhyAnswer> {
    return this.get({ call: 'why', line, row });
  }

  /** The row of a key, or the last one before it. */
  async rowOf(key: number): Promise<number> {
    return (await this.get<{ row: number }>({ call: 'row', key })).row;
  }

  events(since: number, limit: number): Promise<EventsAnswer> {
    return this.get({ call: 'events', since, limit });
  }

  play(row: number, ticks: number): Promise<PlayAnswer> {
    return this.get({ call: 'play', row, ticks });
  }

  step(by: { ticks: number } | { bars: number }): Promise<StepAnswer> {
    return this.get({ call: 'step', ...by });
  }

  stopPlay(): Promise<ScriptAnswer> {
    return this.get({ call: 'stop' });
  }

  /** The lines as comma-separated values. */
  async csv(): Promise<Blob> {
    return new Blob([await this.ask({ call: 'csv' })], { type: 'text/csv' });
  }

  private end(reason: Ended): void {
    this.isLayingOut = true;
    this.line.cut(reason);
    this.ready = this.layOut();
  }

  private async layOut(): Promise<void> {
    try {
      await this.line.ask({ call: 'subject', ...this.knownSubject });
      await this.line.ask({ call: 'forming', on: this.takesForming });
      for (const other of this.others.values()) await this.postNow(other, 'other');
      if (this.overlay) await this.postNow(this.overlay, 'overlay');
      if (this.sound) await this.line.ask({ call: 'script', ...this.sound });
      if (this.bars) this.restored(await this.postNow<BarsAnswer>(this.bars, 'bars'));
    } catch {
      // It was ended, too, or the bars are gone.
    } finally {
      this.isLayingOut = false;
    }
  }

  private async post(bars: BarsText): Promise<BarsAnswer> {
    await this.ready;
    return this.postNow<BarsAnswer>(bars, 'bars');
  }

  private async postNow<T>({ name, period, content }: BarsText, call: string): Promise<T> {
    const body = new Uint8Array(await content.arrayBuffer()); // fails if the file has changed
    return answerOf<T>(await this.line.ask({ call, name, period }, body));
  }

  private async get<T>(call: object): Promise<T> {
    return answerOf<T>(await this.ask(call));
  }

  private async ask(call: object, body?: Uint8Array): Promise<Uint8Array<ArrayBuffer>> {
    await this.ready;
    return this.line.ask(call, body);
  }
}

const answerOf = <T>(bytes: Uint8Array): T => JSON.parse(decoder.decode(bytes)) as T;
