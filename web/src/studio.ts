// The page as a whole: what is written is calculated, what is calculated is loaded, what is loaded
// is drawn.
import { Refusal, Session } from './api/client.ts';
import type { BarsAnswer, Drawn, Parameter, ScriptAnswer, Slider, Start } from './api/types.ts';
import { Calculation } from './calculation.ts';
import { Chart } from './chart/chart.ts';
import { type Loaded, Loader } from './chart/loader.ts';
import { Sheet } from './chart/sheet.ts';
import { Theme } from './chart/theme.ts';
import { byId, element, saveFile, setText } from './dom.ts';
import { keepDraft, keptDraft } from './draft.ts';
import { Editor } from './editor/editor.ts';
import { fromFragment, type Shared, toFragment } from './link.ts';
import { Looks } from './looks.ts';
import { takeFiles } from './panels/drop.ts';
import { Events } from './panels/events.ts';
import { Findings } from './panels/findings.ts';
import { Library } from './panels/library.ts';
import { Play } from './panels/play.ts';
import { SaveDialog } from './panels/save.ts';
import { Scan } from './panels/scan.ts';
import { Securities } from './panels/securities.ts';
import { numberText, Sliders } from './panels/sliders.ts';
import { Tabs } from './panels/tabs.ts';

/** Where the bars come from: a security of the folder, or a file of the user's. */
type Source = { security: string } | { file: File };

const tabs = [
  { id: 'securities', title: 'Securities' },
  { id: 'events', title: 'Events' },
  { id: 'scan', title: 'Scan' },
];
const newestEvents = 1000;
/** Bars that are left for play where no bar is pointed at. */
const barsToPlay = 200;
const scriptOfNothing = ''; // draws the bars alone

export class Studio {
  private readonly session = new Session();
  private readonly chart: Chart;
  private readonly editor: Editor;
  private readonly loader: Loader;
  private readonly calculation: Calculation;
  private readonly looks: Looks;
  private readonly findings: Findings;
  private readonly sliders: Sliders;
  private readonly securities: Securities;
  private readonly events: Events;
  private readonly play: Play;
  private readonly tabs: Tabs;
  private readonly library: Library;
  private readonly message = byId('message', HTMLElement);
  private readonly times = byId('times', HTMLElement);
  private readonly period = byId('period', HTMLSelectElement);
  private parameters = new Map<string, number>();
  private source: Source | undefined;
  private bars: BarsAnswer | undefined;
  private drawn: Drawn | undefined;
  private revision = 0;
  private scriptName = '';
  private areEventsOld = true;

  constructor(private readonly start: Start) {
    const fail = (error: unknown) => void this.fail(error);
    this.editor = new Editor(byId('editor', HTMLElement), start.words, () => this.recalculate());
    this.chart = new Chart(byId('chart', HTMLElement), {
      sight: () => this.load(),
      drawn: () => this.chartIsDrawn(),
      values: (row) => this.valuesAt(row),
    });
    this.loader = new Loader(this.session, (loaded) => this.draw(loaded), fail);
    this.calculation = new Calculation(
      this.session,
      () => ({ script: this.editor.take(), parameters: this.parameterList }),
      (answer) => this.take(answer),
      (error) => this.fail(error),
    );
    this.findings = new Findings(byId('findings', HTMLElement), (finding) =>
      this.editor.goTo(finding),
    );
    this.sliders = new Sliders(byId('sliders', HTMLElement), {
      move: (slider, value) => this.moveSlider(slider, value),
      add: (name, value) => this.setParameter(name, value),
      remove: (name) => this.setParameter(name, undefined),
    });
    this.tabs = new Tabs(byId('drawer', HTMLElement), byId('tabs', HTMLElement), tabs, () =>
      this.refreshEvents(),
    );
    this.securities = new Securities(
      this.tabs.panel('securities'),
      start.securities,
      (name) => void this.open({ security: name }),
    );
    this.events = new Events(
      this.tabs.panel('events'),
      (row) => this.chart.showRow(row),
      (count) => this.tabs.setCount('events', count),
    );
    new Scan(this.tabs.panel('scan'), this.session, {
      script: () => ({ script: this.editor.text, parameters: this.parameterList }),
      open: (security) => void this.open({ security }),
      fail,
    });
    this.play = this.makePlay(fail);
    this.library = new Library(
      byId('library', HTMLSelectElement),
      start,
      (name, text) => this.openScript(name, text),
      fail,
    );
    this.looks = new Looks(byId('theme', HTMLButtonElement), () => this.applyTheme());
    this.editor.setDark(this.looks.name === 'dark');
    this.bindButtons();
  }

  /** Shows the script that a link, this tab, or the command line has, over the first security. */
  async begin(): Promise<void> {
    await this.session.open();
    window.addEventListener('pagehide', () => this.session.close());
    window.addEventListener('pageshow', ({ persisted }) => {
      if (persisted) location.reload(); // its session is gone
    });
    window.addEventListener('hashchange', () => void this.openLink());
    const first =
      this.start.script ??
      this.start.samples.find(({ name }) => name === 'macd') ??
      this.start.samples[0];
    const shared = (await fromFragment(location.hash)) ?? keptDraft();
    this.scriptName = shared ? '' : (this.start.script?.name ?? '');
    this.parameters = new Map(Object.entries(shared?.parameters ?? {}));
    const known = this.start.securities.map(({ name }) => name);
    const security = known.find((name) => name === shared?.security) ?? known[0];
    if (security !== undefined) await this.open({ security });
    else this.tell('Drop a CSV with bars onto the page');
    this.editor.replaceAll(shared?.script ?? first?.text ?? '');
    this.recalculate();
    this.editor.focus();
  }

  private get parameterList(): Parameter[] {
    return [...this.parameters].map(([name, value]) => ({ name, value }));
  }

  private get shared(): Shared {
    const security = this.source && 'security' in this.source ? this.source.security : undefined;
    return { script: this.editor.text, parameters: Object.fromEntries(this.parameters), security };
  }

  private recalculate(): void {
    if (this.editor.text.length > this.start.limits.script) {
      return this.tell(`A script may be ${this.start.limits.script / 1024} KiB long`, true);
    }
    keepDraft(this.shared);
    this.calculation.want();
  }

  /** The answer to the text that was taken last. */
  private take(answer: ScriptAnswer): void {
    this.revision = answer.revision;
    this.tell('');
    this.editor.showFindings(answer.findings);
    this.findings.show(answer.findings, answer.sound);
    this.takeSliders(answer.sliders);
    if (!answer.sound || !answer.records) {
      if (!this.drawn) void this.drawNothing();
      return;
    }
    this.drawn = answer as Drawn;
    const { compile, calculate } = answer.times;
    setText(
      this.times,
      `compiled in ${compile.toFixed(1)} ms, calculated in ${calculate.toFixed(1)} ms`,
    );
    this.tellMissing(this.drawn);
    this.chart.setRows(this.drawn.rows);
    this.load();
    if (this.play.isOn) return;
    this.areEventsOld = true;
    this.tabs.setCount('events', this.drawn.events);
    this.refreshEvents();
  }

  /** The bars alone, as long as no script has been sound. */
  private async drawNothing(): Promise<void> {
    const answer = await this.session.script(scriptOfNothing, []).catch(() => undefined);
    if (!answer?.records || this.drawn) return;
    this.drawn = answer as Drawn;
    this.revision = answer.revision;
    this.load();
  }

  private tellMissing({ missing, references }: Drawn): void {
    const texts = missing.map(({ text }) => text);
    if (references.length > 0) texts.push(`null here: ${references.join(', ')}`);
    if (texts.length > 0) this.tell(texts.join('; '));
  }

  private takeSliders(sliders: readonly Slider[]): void {
    const places = sliders.flatMap(({ kind, name, from, to }) =>
      kind === 'const' && from !== null && to !== null ? [[name, { from, to }] as const] : [],
    );
    this.editor.keepPlaces(new Map(places));
    this.sliders.show(sliders);
  }

  private moveSlider({ kind, name }: Slider, value: number): void {
    if (kind === 'const') this.editor.writeAt(name, numberText(value));
    else this.setParameter(name, value);
  }

  private setParameter(name: string, value: number | undefined): void {
    if (value === undefined) this.parameters.delete(name);
    else this.parameters.set(name, value);
    this.recalculate();
  }

  private load(): void {
    if (!this.drawn || !this.bars) return;
    const { sight, pixels } = this.chart.need;
    this.loader.want(sight, pixels, this.drawn.rows, this.revision);
  }

  private draw({ view, shown }: Loaded): void {
    if (!this.drawn || !this.bars) return;
    const theme = this.themeOf(this.drawn);
    this.chart.show(
      new Sheet(this.drawn, view, shown, theme, this.bars.decimals, this.bars.intraday),
    );
  }

  private chartIsDrawn(): void {
    const detail = { revision: this.revision };
    byId('chart', HTMLElement).dispatchEvent(new CustomEvent('drawn', { detail }));
  }

  private themeOf(drawn: Drawn): Theme {
    return new Theme(this.looks.name, this.start.theme[this.looks.name], drawn.colours);
  }

  private applyTheme(): void {
    this.editor.setDark(this.looks.name === 'dark');
    if (this.drawn) this.chart.setTheme(this.themeOf(this.drawn));
  }

  private async valuesAt(row: number): Promise<ReadonlyMap<number, number>> {
    const { fields, lines } = await this.session.values(row);
    const values = new Map(Object.entries(fields).map(([id, value]) => [Number(id), value ?? NaN]));
    this.drawn?.lines.forEach(({ column }, i) => values.set(column, lines[i] ?? NaN));
    return values;
  }

  private async open(source: Source): Promise<void> {
    const period = this.period.value || undefined;
    try {
      const bars = await ('file' in source
        ? this.session.readCsv(source.file, source.file.name, period)
        : this.session.readSecurity(source.security, period));
      this.source = source;
      this.takeBars(bars);
    } catch (error) {
      await this.fail(error);
    }
  }

  private takeBars(bars: BarsAnswer): void {
    this.bars = bars;
    this.revision = bars.revision;
    this.play.reset();
    const { name, guessed } = bars.period;
    this.period.options[0].text = guessed
      ? `Period: ${name}, as the bars say`
      : 'Period as the bars say';
    this.securities.setCurrent(
      this.source && 'security' in this.source ? this.source.security : '',
    );
    document.title = `${bars.name} – quor studio`;
    this.chart.setBars(`${bars.name}  ${name}`, bars.rows);
    if (bars.script) this.take(bars.script);
    else this.calculation.want();
    keepDraft(this.shared);
  }

  private openScript(name: string, text: string): void {
    this.scriptName = name;
    this.editor.replaceAll(text);
    this.editor.focus();
  }

  private async openLink(): Promise<void> {
    const shared = await fromFragment(location.hash);
    if (!shared) return;
    this.parameters = new Map(Object.entries(shared.parameters));
    this.openScript('', shared.script);
    this.recalculate();
  }

  private refreshEvents(): void {
    if (!this.areEventsOld || !this.drawn || this.play.isOn || !this.tabs.isOpen('events')) return;
    this.areEventsOld = false;
    const { events: count } = this.drawn;
    this.session
      .events(Math.max(count - newestEvents, 0), newestEvents)
      .then((answer) => this.events.showAll(answer.events, answer.count))
      .catch((error: unknown) => void this.fail(error));
  }

  private makePlay(fail: (error: unknown) => void): Play {
    return new Play(byId('play', HTMLElement), this.session, {
      firstRow: () => {
        const rows = this.bars?.rows ?? 0;
        return rows < 2 ? undefined : Math.max(this.chart.pointedRow ?? rows - barsToPlay, 1);
      },
      begun: ({ revision, rows }) => {
        this.events.clear('While bars are played');
        this.tabs.show('events');
        this.playHasCome(revision, rows);
      },
      stepped: async ({ revision, rows, steps }) => {
        for (const { events } of steps) this.events.add(events);
        this.playHasCome(revision, rows);
        await this.loader.finished();
      },
      ended: (answer) => this.take(answer),
      fail,
    });
  }

  private playHasCome(revision: number, rows: number): void {
    this.revision = revision;
    if (this.drawn) this.drawn.rows = rows;
    this.chart.setRows(rows);
    this.load();
  }

  private bindButtons(): void {
    const click = (id: string, act: () => unknown) =>
      byId(id, HTMLButtonElement).addEventListener('click', () => {
        Promise.resolve(act()).catch((error: unknown) => this.fail(error));
      });
    click('zoom-in', () => this.chart.zoom(1 / 1.5));
    click('zoom-out', () => this.chart.zoom(1.5));
    click('zoom-all', () => this.chart.showAll());
    click('copy-link', () => this.copyLink());
    click('export-png', async () => saveFile(`${this.fileName}.png`, await this.chart.picture()));
    click('export-csv', async () => saveFile(`${this.fileName}.csv`, await this.session.csv()));
    const dialog = new SaveDialog(
      () => this.editor.text,
      (name) => {
        this.scriptName = name;
        this.library.add(name);
        this.tell(`Saved as ${name}`);
      },
    );
    const save = byId('save', HTMLButtonElement);
    save.disabled = !this.start.can_save;
    save.title = this.start.can_save ? '' : 'quor studio was started without a folder';
    click('save', () => dialog.open(this.scriptName));
    window.addEventListener('keydown', (event) => {
      if (!(event.ctrlKey || event.metaKey) || event.key !== 's') return;
      event.preventDefault();
      if (this.start.can_save) dialog.open(this.scriptName);
    });
    takeFiles(
      byId('drop', HTMLElement),
      byId('open-csv', HTMLButtonElement),
      byId('csv-file', HTMLInputElement),
      (file) => void this.open({ file }),
    );
    this.period.append(
      element('option', { value: '' }, 'Period as the bars say'),
      ...this.start.periods.map(({ name }) => element('option', { value: name }, name)),
    );
    this.period.addEventListener('change', () => this.source && void this.open(this.source));
  }

  private get fileName(): string {
    return (this.bars?.name ?? 'chart').replace(/[^\p{L}\p{N}._-]+/gu, '_');
  }

  private async copyLink(): Promise<void> {
    history.replaceState(null, '', await toFragment(this.shared));
    try {
      await navigator.clipboard.writeText(location.href);
      this.tell('The link is in the clipboard');
    } catch {
      this.tell('The link is in the address bar');
    }
  }

  private tell(text: string, isError = false): void {
    setText(this.message, text);
    this.message.classList.toggle('error', isError);
  }

  /** Says why, and begins anew where the server has freed the session. */
  private async fail(error: unknown): Promise<void> {
    const isFreed = error instanceof Refusal && error.isSessionGone;
    if (!isFreed) return this.tell(error instanceof Error ? error.message : String(error), true);
    try {
      await this.session.open();
      this.play.reset();
      if (this.source) await this.open(this.source);
    } catch (again) {
      this.tell(again instanceof Error ? again.message : String(again), true);
    }
  }
}
