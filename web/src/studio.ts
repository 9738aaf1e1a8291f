// The page as a whole: its editor, its panels, and what each of them sets in motion.
import { Session } from './api/client.ts';
import type { BarsAnswer, Drawn, Parameter, ScriptAnswer, Slider, Start } from './api/types.ts';
import { byId, saveFile, setText } from './dom.ts';
import { Editor } from './editor/editor.ts';
import { Looks } from './looks.ts';
import { Events } from './panels/events.ts';
import { Findings } from './panels/findings.ts';
import { bindHeader } from './panels/header.ts';
import { tell, tellError } from './panels/message.ts';
import { PeriodMenu } from './panels/period.ts';
import { Play } from './panels/play.ts';
import { Scan } from './panels/scan.ts';
import { Securities } from './panels/securities.ts';
import { numberText, Sliders } from './panels/sliders.ts';
import { Tabs } from './panels/tabs.ts';
import { Pipeline } from './pipeline.ts';
import { type Setting, Writing } from './writing.ts';

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

export class Studio {
  private readonly session = new Session();
  private readonly editor: Editor;
  private readonly pipeline: Pipeline;
  private readonly looks: Looks;
  private readonly findings: Findings;
  private readonly sliders: Sliders;
  private readonly securities: Securities;
  private readonly events: Events;
  private readonly play: Play;
  private readonly tabs: Tabs;
  private readonly writing: Writing;
  private readonly times = byId('times', HTMLElement);
  private readonly period: PeriodMenu;
  private parameters = new Map<string, number>();
  private source: Source | undefined;
  /** The one that was asked for last. */
  private wanted: Source | undefined;
  private bars: BarsAnswer | undefined;
  private isReady = false;
  private renewal: Promise<void> | undefined;
  private areEventsOld = true;

  constructor(private readonly start: Start) {
    const fail = (error: unknown) => void this.fail(error);
    this.editor = new Editor(byId('editor', HTMLElement), start.words, () => this.followScript());
    this.writing = new Writing(this.editor, start, {
      setting: () => this.setting,
      linked: ({ parameters }) => (this.parameters = new Map(Object.entries(parameters))),
      fail,
    });
    this.looks = new Looks(byId('theme', HTMLButtonElement), () => this.applyTheme());
    this.pipeline = new Pipeline(this.session, start.theme, this.looks.name, {
      take: () => ({ script: this.editor.take(), parameters: this.parameterList }),
      answered: (answer) => this.show(answer),
      fail: (error) => this.fail(error),
    });
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
      (row) => this.pipeline.chart.showRow(row),
      (count) => this.tabs.setCount('events', count),
    );
    new Scan(this.tabs.panel('scan'), this.session, {
      script: () => ({ script: this.editor.text, parameters: this.parameterList }),
      open: (security) => void this.open({ security }),
      fail,
    });
    this.play = this.makePlay(fail);
    this.editor.setDark(this.looks.name === 'dark');
    this.period = new PeriodMenu(byId('period', HTMLSelectElement), start.periods, () => {
      if (this.wanted) void this.open(this.wanted);
    });
    this.bindButtons(fail);
    this.bindWindow();
  }

  /** Shows the script that a link, this tab, or the command line has, over the first security. */
  async begin(): Promise<void> {
    await this.session.open();
    const given = await this.writing.begin();
    this.parameters = new Map(Object.entries(given?.parameters ?? {}));
    this.isReady = true;
    const known = this.start.securities.map(({ name }) => name);
    const security = known.find((name) => name === given?.security) ?? known[0];
    if (security !== undefined) return this.open({ security });
    tell('Drop a CSV with bars onto the page');
    return this.recalculate();
  }

  private get parameterList(): Parameter[] {
    return [...this.parameters].map(([name, value]) => ({ name, value }));
  }

  private get setting(): Setting {
    const security = this.source && 'security' in this.source ? this.source.security : undefined;
    return { parameters: Object.fromEntries(this.parameters), security };
  }

  /** Another text stands in the editor. */
  private followScript(): void {
    this.writing.follow();
    this.recalculate();
  }

  private recalculate(): void {
    if (!this.isReady) return;
    if (this.editor.text.length > this.start.limits.script) {
      return tellError(`A script may be ${this.start.limits.script / 1024} KiB long`);
    }
    this.pipeline.want();
  }

  /** The answer to the text that was taken last. */
  private show(answer: ScriptAnswer): void {
    tell('');
    this.editor.showFindings(answer.findings);
    this.findings.show(answer.findings, answer.sound);
    this.takeSliders(answer.sliders);
    const drawn = this.pipeline.newest;
    if (!answer.records || !drawn) return;
    setText(this.times, answer.sound ? timesText(answer.times) : '');
    this.tellMissing(drawn);
    if (this.play.isOn) return;
    this.areEventsOld = true;
    this.tabs.setCount('events', drawn.events);
    this.refreshEvents();
  }

  private tellMissing({ missing, references }: Drawn): void {
    const texts = missing.map(({ text }) => text);
    if (references.length > 0) texts.push(`null here: ${references.join(', ')}`);
    if (texts.length > 0) tell(texts.join('; '));
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
    this.writing.keep();
    this.recalculate();
  }

  private applyTheme(): void {
    this.editor.setDark(this.looks.name === 'dark');
    this.pipeline.setTheme(this.looks.name);
  }

  /** Of several that are asked for one after the other the last one counts. */
  private async open(source: Source): Promise<void> {
    this.wanted = source;
    tell('');
    try {
      await this.session.inTurn(async () => {
        if (source !== this.wanted) return;
        const bars = await this.read(source);
        this.source = source;
        this.takeBars(bars);
      });
    } catch (error) {
      const isRenewed = await this.fail(error);
      if (!isRenewed && source === this.wanted) this.wanted = this.source;
    }
  }

  private read(source: Source): Promise<BarsAnswer> {
    const period = this.period.chosen;
    return 'file' in source
      ? this.session.readCsv(source.file, source.file.name, period)
      : this.session.readSecurity(source.security, period);
  }

  private takeBars(bars: BarsAnswer): void {
    this.bars = bars;
    this.play.reset();
    this.period.show(bars.period);
    this.securities.setCurrent(
      this.source && 'security' in this.source ? this.source.security : '',
    );
    document.title = `${bars.name} – quor studio`;
    this.pipeline.takeBars(bars);
    this.writing.keep();
  }

  private refreshEvents(): void {
    const count = this.pipeline.newest?.events;
    if (!this.areEventsOld || count === undefined || this.play.isOn) return;
    if (!this.tabs.isOpen('events')) return;
    this.areEventsOld = false;
    this.session
      .events(Math.max(count - newestEvents, 0), newestEvents)
      .then(({ revision, events, count }) => {
        if (revision === this.pipeline.newest?.revision) this.events.showAll(events, count);
      })
      .catch((error: unknown) => void this.fail(error));
  }

  private makePlay(fail: (error: unknown) => void): Play {
    return new Play(byId('play', HTMLElement), this.session, {
      firstRow: () => {
        const rows = this.bars?.rows ?? 0;
        return rows < 2
          ? undefined
          : Math.max(this.pipeline.chart.pointedRow ?? rows - barsToPlay, 1);
      },
      begun: (answer) => {
        this.events.clear('While bars are played');
        this.tabs.show('events');
        void this.pipeline.takeStep(answer);
      },
      stepped: async (answer) => {
        for (const { row, events, final } of answer.steps) {
          this.events.add(events);
          if (final) this.events.closeBar(row);
        }
        await this.pipeline.takeStep(answer);
      },
      ended: (answer) => {
        this.pipeline.take(answer);
        this.show(answer);
      },
      fail,
    });
  }

  private bindButtons(fail: (error: unknown) => void): void {
    bindHeader(
      {
        zoom: (factor) => this.pipeline.chart.zoom(factor),
        showAll: () => this.pipeline.chart.showAll(),
        copyLink: () => this.copyLink(),
        savePicture: async () =>
          saveFile(`${this.fileName}.png`, await this.pipeline.chart.picture()),
        saveCsv: async () => saveFile(`${this.fileName}.csv`, await this.session.csv()),
        openFile: (file) => void this.open({ file }),
        script: () => ({ name: this.writing.fileName, text: this.editor.text }),
        saved: (name, text) => {
          this.writing.saved(name, text);
          tell(`Saved as ${name}`);
        },
        fail,
      },
      this.start.can_save,
    );
  }

  private bindWindow(): void {
    window.addEventListener('pagehide', () => this.session.close());
    window.addEventListener('pageshow', ({ persisted }) => {
      if (persisted) void this.renew(); // its session is gone
    });
  }

  private get fileName(): string {
    return (this.bars?.name ?? 'chart').replace(/[^\p{L}\p{N}._-]+/gu, '_');
  }

  private async copyLink(): Promise<void> {
    await this.writing.showLink();
    try {
      await navigator.clipboard.writeText(location.href);
      tell('The link is in the clipboard');
    } catch {
      tell('The link is in the address bar');
    }
  }

  /** Says why, or begins anew where the server has freed the session: then true. */
  private async fail(error: unknown): Promise<boolean> {
    const isGone = await this.session.isGone(error);
    if (isGone) await this.renew();
    else tellError(error);
    return isGone;
  }

  private renew(): Promise<void> {
    this.renewal ??= this.renewNow().finally(() => (this.renewal = undefined));
    return this.renewal;
  }

  private async renewNow(): Promise<void> {
    try {
      await this.session.open();
    } catch (error) {
      return tellError(error);
    }
    this.play.reset();
    if (this.wanted) void this.open(this.wanted);
    else this.pipeline.want();
  }
}

function timesText({ compile, calculate }: ScriptAnswer['times']): string {
  return `compiled in ${compile.toFixed(1)} ms, calculated in ${calculate.toFixed(1)} ms`;
}
