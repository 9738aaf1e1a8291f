// Where the bars come from: a security of the folder, the sample, or a file of the user's; and bars of
// others that the script reads.
import { readBars, readSampleBars } from './api/server.ts';
import { Ended } from './engine/line.ts';
import type { BarsText, Session } from './engine/session.ts';
import type { BarsAnswer, Drawn, ScriptAnswer } from './engine/types.ts';

/** A security, or a file of the user's. */
export type Source = { security: string } | { file: File };

/** The bars that the page brings. */
const sample = 'index-daily';

export interface SourcesEvents {
  /** Of the bars, as the user says; none where they shall say. */
  period: () => string | undefined;
  /** Others are on their way. */
  begun: () => void;
  /** Bars are at the desk; those of a file that is followed go on where others were. */
  seen: (bars: BarsAnswer, isFollowed: boolean) => void;
  answered: (answer: ScriptAnswer) => void;
  /** Bars are played, so that no others may come. */
  isPlaying: () => boolean;
  fail: (error: unknown) => void;
}

export class Sources {
  private source: Source | undefined;
  /** The one that was asked for last. */
  private wanted: Source | undefined;
  /** Securities that a script asked for, whether they could be had or not. */
  private readonly sought = new Set<string>();
  /** They are files of a folder, over which a scan can go. */
  readonly hasFolder: boolean;
  private all: readonly string[];

  constructor(
    private readonly session: Session,
    names: readonly string[],
    private readonly events: SourcesEvents,
  ) {
    this.hasFolder = names.length > 0;
    this.all = this.hasFolder ? names : [sample];
  }

  /** Of the securities. */
  get names(): readonly string[] {
    return this.all;
  }

  setNames(names: readonly string[]): void {
    this.all = names;
  }

  /** The one whose bars are seen; none while they are a file's. */
  get security(): string | undefined {
    return this.source && 'security' in this.source ? this.source.security : undefined;
  }

  /** Of several that are asked for one after the other the last one counts. */
  async open(source: Source): Promise<void> {
    this.wanted = source;
    this.events.begun();
    try {
      const { name, content } = await this.read(source);
      if (source !== this.wanted) return;
      this.session.supersede();
      const period = this.events.period();
      const bars = await this.session.takeBars({ name, content, period });
      if (source !== this.wanted) return; // others are on their way to the desk
      this.source = source;
      this.events.seen(bars, false);
    } catch (error) {
      if (source !== this.wanted) return;
      if (error instanceof Ended && !error.isByUser) return this.open(source); // now with the newer script
      this.events.fail(error);
      this.wanted = this.source;
    }
  }

  /** The same bars once more, say by another period. */
  openAgain(): void {
    if (this.wanted) void this.open(this.wanted);
  }

  /** Gives the row of a key, unless something else is seen by then. */
  async openAt(security: string, key: number): Promise<number | undefined> {
    const source = { security };
    await this.open(source);
    return this.source === source ? this.session.rowOf(key) : undefined;
  }

  /** Other securities that the script reads come from the folder. */
  seekOthers({ references }: Drawn): void {
    if (!this.hasFolder) return;
    for (const { name, security, given } of references) {
      const known = this.all.find((one) => one.toUpperCase() === name);
      if (given || !security || known === undefined || this.sought.has(name)) continue;
      this.sought.add(name);
      this.takeOther(name, known).catch(this.events.fail);
    }
  }

  /** Files of bars have changed: of those that are seen or read by the script. */
  async follow(names: ReadonlySet<string>): Promise<void> {
    for (const name of names) {
      if (this.sought.has(name.toUpperCase())) await this.takeOther(name.toUpperCase(), name);
    }
    const { source } = this;
    if (!source || !('security' in source) || !names.has(source.security)) return;
    if (source !== this.wanted) return; // others are on their way
    if (this.events.isPlaying() || this.session.isBusy)
      throw new Error('there is no time for it now');
    const content = await readBars(source.security);
    const period = this.events.period();
    const bars = await followBars(this.session, { name: source.security, content, period });
    if (source === this.source && !this.events.isPlaying()) this.events.seen(bars, true);
  }

  private async takeOther(name: string, file: string): Promise<void> {
    const answer = await this.session.takeOther({ name, content: await readBars(file) });
    if (answer) this.events.answered(answer);
  }

  private async read(source: Source): Promise<{ name: string; content: Blob }> {
    if ('file' in source) return { name: source.file.name, content: source.file };
    const name = source.security;
    return { name, content: await (this.hasFolder ? readBars(name) : readSampleBars()) };
  }
}

/** A line that is half written is left for the next time. */
async function followBars(session: Session, bars: BarsText): Promise<BarsAnswer> {
  try {
    return await session.followBars(bars);
  } catch (error) {
    if (error instanceof Ended) throw error;
    const text = await bars.content.text();
    const whole = new Blob([text.slice(0, text.lastIndexOf('\n') + 1)]);
    return session.takeBars({ ...bars, content: whole });
  }
}
