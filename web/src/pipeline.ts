// What is calculated is loaded, what is loaded is drawn.
import type { Session } from './api/client.ts';
import type {
  BarsAnswer,
  Drawn,
  Palette,
  Parameter,
  ScriptAnswer,
  ThemeName,
} from './api/types.ts';
import { Calculation } from './calculation.ts';
import { Chart } from './chart/chart.ts';
import { type Loaded, Loader } from './chart/loader.ts';
import { standsAtBars } from './chart/records.ts';
import { Sheet } from './chart/sheet.ts';
import { Theme } from './chart/theme.ts';
import { byId } from './dom.ts';

export interface PipelineEvents {
  /** What to calculate. */
  take: () => { script: string; parameters: Parameter[] };
  answered: (answer: ScriptAnswer) => void;
  fail: (error: unknown) => Promise<void>;
}

const scriptOfNothing = ''; // draws the bars alone

export class Pipeline {
  readonly chart: Chart;
  private readonly root = byId('chart', HTMLElement);
  private readonly loader: Loader;
  private readonly calculation: Calculation;
  private bars: BarsAnswer | undefined;
  private drawn: Drawn | undefined;
  private revision = 0;

  constructor(
    private readonly session: Session,
    private readonly palettes: Readonly<Record<ThemeName, Palette>>,
    private themeName: ThemeName,
    private readonly events: PipelineEvents,
  ) {
    this.chart = new Chart(this.root, {
      sight: () => this.load(),
      drawn: () => this.root.dispatchEvent(new CustomEvent('drawn')),
      values: (row) => this.valuesAt(row),
    });
    this.loader = new Loader(session, (loaded) => this.draw(loaded), events.fail);
    this.calculation = new Calculation(
      session,
      events.take,
      () => this.loadAhead(),
      (answer) => {
        this.take(answer);
        events.answered(answer);
      },
      events.fail,
    );
  }

  /** The newest script that is sound. */
  get newest(): Drawn | undefined {
    return this.drawn;
  }

  want(): void {
    this.calculation.want();
  }

  takeBars(bars: BarsAnswer): void {
    this.bars = bars;
    this.revision = bars.revision;
    this.chart.setBars(`${bars.name}  ${bars.period.name}`, bars.rows);
    if (!bars.script) return this.want();
    this.take(bars.script);
    return this.events.answered(bars.script);
  }

  take(answer: ScriptAnswer): void {
    this.revision = answer.revision;
    if (answer.sound && answer.records) this.takeDrawn(answer as Drawn);
    else if (!this.drawn) void this.drawNothing();
  }

  /** Another step of play; resolves when it is drawn. */
  async takeStep({ revision, rows }: { revision: number; rows: number }): Promise<void> {
    this.revision = revision;
    if (this.drawn) this.takeDrawn({ ...this.drawn, rows });
    await this.loader.finished();
  }

  setTheme(name: ThemeName): void {
    this.themeName = name;
    if (this.drawn) this.chart.setTheme(this.themeOf(this.drawn));
  }

  private takeDrawn(drawn: Drawn): void {
    this.drawn = drawn;
    this.chart.setRows(drawn.rows);
    this.load();
  }

  /** The bars alone, as long as no script has been sound. */
  private async drawNothing(): Promise<void> {
    const answer = await this.session.script(scriptOfNothing, []).catch(() => undefined);
    if (answer && !this.drawn) this.take(answer);
  }

  private load(): void {
    if (!this.drawn || !this.bars) return;
    const { sight, pixels } = this.chart.need;
    const { rows, records } = this.drawn;
    const withRecords = records.some(standsAtBars);
    this.loader.want(sight, pixels, rows, { revision: this.revision, withRecords });
  }

  /** What is in sight will be wanted of the script that is on its way, too. */
  private loadAhead(): void {
    if (!this.drawn || !this.bars) return;
    const { sight, pixels } = this.chart.need;
    this.loader.askAhead(sight, pixels, this.drawn.rows);
  }

  private draw({ view, shown }: Loaded): void {
    if (!this.drawn || !this.bars) return;
    const { decimals, intraday } = this.bars;
    const theme = this.themeOf(this.drawn);
    this.chart.show(new Sheet(this.drawn, view, shown, theme, decimals, intraday));
  }

  private themeOf({ colours }: Drawn): Theme {
    return new Theme(this.themeName, this.palettes[this.themeName], colours);
  }

  private async valuesAt(row: number): Promise<ReadonlyMap<number, number>> {
    const { fields, lines } = await this.session.values(row);
    const values = new Map(Object.entries(fields).map(([id, value]) => [Number(id), value ?? NaN]));
    this.drawn?.lines.forEach(({ column }, i) => values.set(column, lines[i] ?? NaN));
    return values;
  }
}
