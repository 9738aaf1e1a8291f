// A second chart of the script, by another period. It has an engine of its own, so that the first one
// doesn't wait for it, and shows what the first one shows once that is calculated.
import { Crosshair } from './crosshair.ts';
import type { ScaleName } from './chart/scale.ts';
import { byId, element, setText } from './dom.ts';
import { Ended } from './engine/line.ts';
import type { Session, Told } from './engine/session.ts';
import type { Language, ThemeName } from './engine/language_types.ts';
import { PeriodMenu } from './panels/period.ts';
import { Pipeline } from './pipeline.ts';

export interface SecondEvents {
  /** The crosshair is at the bar of a key, or away; on demand that is to be seen. */
  pointed: (key: number | undefined, isBrought: boolean) => void;
  /** Bars are played, which the second chart would know beforehand. */
  isPlaying: () => boolean;
}

interface Engine {
  session: Session;
  pipeline: Pipeline;
  crosshair: Crosshair;
  /** What its desk was told of. */
  told: Partial<Told>;
}

/** Shows bars alone, as the first chart does while no script is sound. */
const noScript = { script: '', parameters: [] };

/** There is room for two charts. */
const isWide = matchMedia('(width >= 860px)');

export class Second {
  private readonly root = byId('second', HTMLElement);
  private readonly note = byId('second-note', HTMLElement);
  private readonly button = byId('second-open', HTMLButtonElement);
  private readonly period: PeriodMenu;
  private isWanted = false;
  private engine: Engine | undefined;
  private isFollowing = false;
  private isOld = false;
  private scale: ScaleName = 'linear';

  constructor(
    private readonly first: Session,
    private readonly makeSession: () => Session,
    private readonly language: Language,
    private theme: ThemeName,
    private readonly events: SecondEvents,
  ) {
    const menu = byId('second-period', HTMLSelectElement);
    this.period = new PeriodMenu(menu, language.periods, () => this.refresh());
    this.button.addEventListener('click', () =>
      this.show(this.isWanted ? undefined : this.usualPeriod),
    );
    byId('second-close', HTMLButtonElement).addEventListener('click', () => {
      this.show(undefined);
      this.button.focus();
    });
    isWide.addEventListener('change', () => this.refresh());
  }

  /** The period that is shown, empty where the bars say it; none without a second chart. */
  get shown(): string | undefined {
    return this.isWanted ? (this.period.chosen ?? '') : undefined;
  }

  show(period: string | undefined): void {
    this.isWanted = period !== undefined;
    if (period !== undefined) this.period.choose(period);
    this.button.setAttribute('aria-pressed', String(this.isWanted));
    this.refresh();
  }

  setTheme(theme: ThemeName): void {
    this.theme = theme;
    this.engine?.pipeline.setTheme(theme);
  }

  setScale(scale: ScaleName): void {
    this.scale = scale;
    this.engine?.pipeline.chart.setScale(scale);
  }

  /** The crosshair of the first chart is at the bar of a key, or away. */
  point(key: number | undefined, isBrought: boolean): void {
    this.engine?.crosshair.point(key, isBrought);
  }

  /** The first chart shows something else, or bars are played, or no more. */
  refresh(): void {
    const isSeen = this.isWanted && isWide.matches && !this.events.isPlaying();
    this.root.hidden = !isSeen;
    if (!isSeen) return this.close();
    this.engine ??= this.open();
    this.isOld = true;
    if (!this.isFollowing) void this.follow();
  }

  /** Of bars within the day the day, of others the next longer one. */
  private get usualPeriod(): string {
    const { periods } = this.language;
    const own = periods.findIndex(({ name }) => name === this.first.seen?.period.name);
    const day = periods.findIndex(({ name }) => name === 'day');
    return periods[Math.min(Math.max(own + 1, day), periods.length - 1)].name;
  }

  private open(): Engine {
    const root = element('div', {
      class: 'chart',
      tabindex: 0,
      role: 'application',
      'aria-roledescription': 'chart',
      'aria-label': 'Second chart, with the keys of the first one',
    });
    this.root.append(root);
    const session = this.makeSession();
    const fail = (error: unknown) => this.fail(session, error);
    const pipeline = new Pipeline(session, this.language, this.theme, root, {
      take: () => this.first.told.task ?? noScript,
      answered: ({ sound }) =>
        setText(this.note, sound ? '' : 'The script has no values over these bars'),
      pointed: (row, isBrought) =>
        this.events.pointed(row === undefined ? undefined : pipeline.chart.keyOf(row), isBrought),
      clicked: (row) => this.events.pointed(pipeline.chart.keyOf(row), true),
      fail,
    });
    pipeline.chart.setScale(this.scale);
    return { session, pipeline, crosshair: new Crosshair(session, () => pipeline.chart), told: {} };
  }

  private close(): void {
    this.engine?.session.close();
    this.engine?.pipeline.close();
    this.engine = undefined;
    setText(this.note, '');
  }

  /** One after the other, and at last the newest. */
  private async follow(): Promise<void> {
    this.isFollowing = true;
    while (this.isOld && this.engine) {
      this.isOld = false;
      const { engine } = this;
      await this.tell(engine).catch((error: unknown) => this.fail(engine.session, error));
    }
    this.isFollowing = false;
  }

  /** Tells the desk what is new at that of the first chart. */
  private async tell({ session, pipeline, told: before }: Engine): Promise<void> {
    const { bars, task, subject, takesForming, overlay, others } = this.first.told;
    if (subject !== before.subject) pipeline.take(await session.subject(subject));
    if (takesForming !== before.takesForming) pipeline.take(await session.forming(takesForming));
    for (const other of others) {
      if (!before.others?.includes(other)) pipeline.take(await session.takeOther(other));
    }
    if (overlay !== before.overlay) {
      const laid = await session.takeOverlay(overlay);
      pipeline.setOverlay(laid ? { title: overlay!.name, column: laid.column } : undefined);
    }
    const period = this.period.chosen;
    if (bars && (bars !== before.bars || period !== before.period)) {
      const seen = await session.followBars({ ...bars, period });
      this.period.show(seen.period);
      pipeline.takeBars(seen, true);
    }
    if (task && task !== before.task) pipeline.want();
    Object.assign(before, { bars, task, subject, takesForming, overlay, others, period });
  }

  private fail(session: Session, error: unknown): void {
    if (error instanceof Ended || session !== this.engine?.session) return;
    setText(this.note, error instanceof Error ? error.message : String(error));
  }
}
