// What is calculated is loaded, what is loaded is drawn.
import type { Language, ThemeName } from './engine/language_types.ts';
import type { BarsAnswer, Drawn, Parameter, ScriptAnswer } from './engine/types.ts';
import { Calculation } from './calculation.ts';
import { Chart } from './chart/chart.ts';
import { type Loaded, Loader } from './chart/loader.ts';
import { type ShapeRecord, standsAtBars } from './chart/records.ts';
import { Sheet } from './chart/sheet.ts';
import { Theme } from './chart/theme.ts';
import type { Session } from './engine/session.ts';

/** Digits of a value that is told alone. */
const mostDigits = 9;

export interface PipelineEvents {
  /** What to calculate. */
  take: () => { script: string; parameters: Parameter[] };
  answered: (answer: ScriptAnswer) => void;
  pointed: (row: number | undefined, isBrought: boolean) => void;
  clicked: (row: number) => void;
  fail: (error: unknown) => void;
}

/** The same bars, and others behind them or in place of the last one. */
const hasGrown = (before: BarsAnswer, now: BarsAnswer): boolean =>
  now.name === before.name &&
  now.first === before.first &&
  now.rows >= before.rows &&
  now.period.code === before.period.code;

export class Pipeline {
  readonly chart: Chart;
  private readonly loader: Loader;
  private readonly calculation: Calculation;
  private bars: BarsAnswer | undefined;
  private drawn: Drawn | undefined;
  private overlay: ShapeRecord | undefined;

  constructor(
    private readonly session: Session,
    private readonly language: Language,
    private themeName: ThemeName,
    private readonly root: HTMLElement,
    private readonly events: PipelineEvents,
  ) {
    this.chart = new Chart(this.root, {
      sight: () => this.load(),
      drawn: () => this.root.dispatchEvent(new CustomEvent('drawn')),
      values: (row) => this.valuesAt(row),
      pointed: events.pointed,
      clicked: events.clicked,
    });
    this.loader = new Loader(session, (loaded) => this.draw(loaded), events.fail);
    this.calculation = new Calculation(
      session,
      events.take,
      (answer) => {
        this.take(answer);
        events.answered(answer);
      },
      events.fail,
    );
  }

  /** What is to be drawn of the newest script that is sound. */
  get newest(): Drawn | undefined {
    return this.drawn;
  }

  /** For good. */
  close(): void {
    this.chart.close();
    this.root.remove();
  }

  want(): void {
    this.calculation.want();
  }

  /** What was drawn of other bars is of no use for these. Of a file that is followed and has grown it
   * is, and what is seen of it stays. */
  takeBars(bars: BarsAnswer, isFollowed: boolean): void {
    const isGrown = isFollowed && this.bars !== undefined && hasGrown(this.bars, bars);
    this.bars = bars;
    if (!isGrown) {
      this.drawn = undefined;
      this.chart.setBars(`${bars.name}  ${bars.period.name}`, bars.rows);
    }
    if (!bars.script) return this.want();
    this.take(bars.script);
    return this.events.answered(bars.script);
  }

  take(answer: ScriptAnswer | null): void {
    if (answer?.records) this.takeDrawn(answer as Drawn);
  }

  /** Another step of play; resolves when it is drawn. */
  async takeStep({ rows }: { rows: number }): Promise<void> {
    if (this.drawn) this.takeDrawn({ ...this.drawn, rows });
    await this.loader.finished();
  }

  /** Draws a column of the desk over the prices, or none, by a title. */
  setOverlay(overlay: { title: string; column: number } | undefined): void {
    this.overlay = overlay && {
      ShapeName: 'PolylineShape',
      title: overlay.title,
      Field1Id: overlay.column,
      LineColor: 'Theme.Label',
    };
    if (this.drawn) this.takeDrawn({ ...this.drawn });
  }

  setTheme(name: ThemeName): void {
    this.themeName = name;
    if (this.drawn) this.chart.setTheme(this.themeOf(this.drawn));
  }

  private takeDrawn(drawn: Drawn): void {
    this.drawn = drawn;
    this.loader.forget();
    this.chart.setRows(drawn.rows);
    this.load();
  }

  private load(): void {
    if (!this.drawn || !this.bars) return;
    const { sight, pixels } = this.chart.need;
    const { rows, records } = this.drawn;
    this.loader.want(sight, pixels, rows, records.some(standsAtBars));
  }

  private draw({ view, shown }: Loaded): void {
    if (!this.drawn || !this.bars) return;
    const { decimals, intraday } = this.bars;
    const { measures } = this.language;
    const theme = this.themeOf(this.drawn);
    this.chart.show(
      new Sheet(this.drawn, view, shown, theme, decimals, intraday, measures, this.overlay),
    );
  }

  private themeOf({ colours }: Drawn): Theme {
    return new Theme(this.themeName, this.language.theme[this.themeName], colours);
  }

  /** What a line is at the bar whose values the legends tell, unless the desk is busy; nothing for
   * what has no values. */
  async valueOf(name: string): Promise<string | undefined> {
    const { chart, drawn, session } = this;
    const column = drawn?.lines.findIndex((line) => line.name.toUpperCase() === name) ?? -1;
    if (column < 0 || session.isBusy) return undefined;
    const told = await session.values(chart.toldRow).catch(() => undefined);
    if (!told) return undefined;
    const { lines, text } = told;
    const value = lines[column];
    return `${value === null ? 'null' : Number(value.toPrecision(mostDigits))} at ${text}`;
  }

  private async valuesAt(row: number): Promise<ReadonlyMap<number, number> | undefined> {
    const { fields, lines } = await this.session.values(row);
    if (!this.drawn) return undefined;
    const values = new Map(Object.entries(fields).map(([id, value]) => [Number(id), value ?? NaN]));
    this.drawn.lines.forEach(({ column }, i) => values.set(column, lines[i] ?? NaN));
    return values;
  }
}
