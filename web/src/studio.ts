// The page as a whole: its editor, its panels, and what each of them sets in motion.
import { readBars, readFiles, readSampleBars } from './api/server.ts';
import type { Files } from './api/types.ts';
import { byId, saveFile, setText } from './dom.ts';
import { Editor } from './editor/editor.ts';
import { Adviser } from './engine/adviser.ts';
import { Ended, type Line } from './engine/line.ts';
import { Session } from './engine/session.ts';
import type {
  BarsAnswer,
  Drawn,
  Finding,
  Parameter,
  ScriptAnswer,
  Slider,
} from './engine/types.ts';
import { fromPicture, intoPicture } from './link.ts';
import { Looks } from './looks.ts';
import { Alarms } from './panels/alarms.ts';
import { Data } from './panels/data.ts';
import { Events } from './panels/events.ts';
import { Findings } from './panels/findings.ts';
import { bindHeader } from './panels/header.ts';
import { tell, tellError } from './panels/message.ts';
import { bindOverlay } from './panels/overlay.ts';
import { PeriodMenu } from './panels/period.ts';
import { Play } from './panels/play.ts';
import { SaveDialog } from './panels/save.ts';
import { Scan } from './panels/scan.ts';
import { bindScale } from './panels/scale.ts';
import { Securities } from './panels/securities.ts';
import { numberText, Sliders } from './panels/sliders.ts';
import { Tabs } from './panels/tabs.ts';
import { Values } from './panels/values.ts';
import { VersionDialog } from './panels/version_dialog.ts';
import { Pipeline } from './pipeline.ts';
import type { Shelf } from './shelf.ts';
import type { Beginning } from './start.ts';
import { Versions } from './versions.ts';
import { Watch } from './watch.ts';
import { type Setting, Writing } from './writing.ts';

/** Where the bars come from: a security, or a file of the user's. */
type Source = { security: string } | { file: File };

/** The bars that the page brings. */
const sample = 'index-daily';

const tabs = [
  { id: 'securities', title: 'Securities' },
  { id: 'events', title: 'Events' },
  { id: 'values', title: 'Values' },
  { id: 'data', title: 'Data' },
  { id: 'scan', title: 'Scan' },
];
const newestEvents = 1000;
/** Bars that are left for play where no bar is pointed at. */
const barsToPlay = 200;

export class Studio {
  private readonly adviser: Adviser;
  private readonly editor: Editor;
  private readonly pipeline: Pipeline;
  private readonly looks: Looks;
  private readonly findings: Findings;
  private readonly sliders: Sliders;
  private readonly securities: Securities;
  private readonly events: Events;
  private readonly values: Values;
  private readonly data: Data;
  /** Securities that a script asked for, whether they could be had or not. */
  private readonly sought = new Set<string>();
  private readonly play: Play;
  private readonly alarms: Alarms;
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
  private readonly limits: { script: number };
  /** Of the securities. */
  private names: readonly string[];
  /** They are files of a folder, over which a scan can go. */
  private readonly hasFolder: boolean;
  private areEventsOld = true;
  private readonly watch: Watch | undefined;

  constructor(
    private readonly session: Session,
    { start, language, samples, shelf, drafts }: Beginning,
    /** To a worker beside that of the session. */
    makeLine: () => Line,
  ) {
    const fail = (error: unknown) => this.fail(error);
    this.limits = language.limits;
    const names = start.files.securities.map(({ name }) => name);
    this.names = names.length > 0 ? names : [sample];
    this.hasFolder = names.length > 0;
    this.adviser = new Adviser(makeLine, () => ({
      parameters: this.parameterList,
      period: this.bars?.period.code,
    }));
    this.editor = new Editor(byId('editor', HTMLElement), language.words, this.adviser, {
      changed: () => this.followScript(),
      valueOf: (name) => this.pipeline.valueOf(name),
      tell,
      fail,
    });
    const versions = new Versions(start.folder ?? '');
    this.writing = new Writing(this.editor, start, samples, shelf, drafts, versions, {
      setting: () => this.setting,
      linked: ({ parameters }) => (this.parameters = new Map(Object.entries(parameters))),
      fail,
    });
    this.looks = new Looks(byId('theme', HTMLButtonElement), () => this.applyTheme());
    this.pipeline = new Pipeline(session, language, this.looks.name, {
      take: () => ({ script: this.editor.take(), parameters: this.parameterList }),
      answered: (answer) => this.show(answer),
      pointed: (row) => this.values.point(row),
      clicked: (row) => this.values.hold(row),
      fail,
    });
    this.findings = new Findings(byId('findings', HTMLElement), (finding) =>
      this.editor.goTo(finding),
    );
    this.sliders = new Sliders(byId('sliders', HTMLElement), {
      move: (slider, value) => this.moveSlider(slider, value),
      add: (name, value) => this.setParameter(name, value),
      remove: (name) => this.setParameter(name, undefined),
    });
    this.tabs = new Tabs(byId('drawer', HTMLElement), byId('tabs', HTMLElement), this.tabList, () =>
      this.followTabs(),
    );
    this.values = new Values(this.tabs.panel('values'), session, fail);
    this.securities = new Securities(
      this.tabs.panel('securities'),
      this.names,
      (name) => void this.open({ security: name }),
    );
    this.events = new Events(
      this.tabs.panel('events'),
      (row) => this.pipeline.chart.showRow(row),
      (count) => this.tabs.setCount('events', count),
    );
    this.data = new Data(this.tabs.panel('data'), {
      changed: (subject) => this.redo(() => this.session.subject(subject)),
      take: (name, content) => this.redo(() => this.session.takeOther({ name, content })),
    });
    if (this.hasFolder) {
      new Scan(this.tabs.panel('scan'), {
        script: () => ({ script: this.editor.text, parameters: this.parameterList }),
        open: (security, key) => void this.openAt(security, key).catch(fail),
        fail,
      });
    }
    this.play = this.makePlay(fail);
    this.alarms = new Alarms(byId('play', HTMLElement));
    this.editor.setDark(this.looks.name === 'dark');
    this.period = new PeriodMenu(byId('period', HTMLSelectElement), language.periods, () => {
      if (this.wanted) void this.open(this.wanted);
    });
    bindOverlay(this.hasFolder ? this.names : [], (name) => this.layOver(name));
    bindScale((name) => this.pipeline.chart.setScale(name));
    const versionDialog = new VersionDialog({
      script: () => this.writing.script,
      versions: (name) => versions.of(name),
      take: (text) => this.writing.takeVersion(text),
    });
    this.bindButtons(fail, this.makeSaveDialog(shelf), versionDialog);
    if (start.folder !== null || this.hasFolder) this.watch = this.makeWatch(start.files);
  }

  /** Shows the script that a link, this tab, or the command line has, over the first security. */
  async begin(): Promise<void> {
    const given = await this.writing.begin();
    this.parameters = new Map(Object.entries(given?.parameters ?? {}));
    this.isReady = true;
    const security = this.names.find((name) => name === given?.security) ?? this.names[0];
    await this.open({ security });
    if (this.watch) void this.watch.begin(document);
  }

  /** The engine was stopped, and has all of the bars again. */
  takeRestored(bars: BarsAnswer): void {
    if (this.play.isOn) this.takeBars(bars);
  }

  private get tabList() {
    return tabs.filter(({ id }) => id !== 'scan' || this.hasFolder);
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
    if (this.editor.text.length > this.limits.script) {
      return tellError(`A script may be ${this.limits.script / 1024} KiB long`);
    }
    this.pipeline.want();
  }

  /** The answer to the text that was taken last. */
  private show(answer: ScriptAnswer): void {
    tell('');
    this.editor.showFindings(answer.findings);
    this.findings.show(answer.findings, answer.sound);
    this.showMends(answer.findings).catch((error: unknown) => this.fail(error));
    this.takeSliders(answer.sliders);
    const drawn = this.pipeline.newest;
    if (!answer.records || !drawn) return;
    setText(this.times, answer.sound ? timesText(answer.times) : '');
    this.times.title = this.times.textContent;
    this.tellMissing(drawn);
    this.data.show(drawn);
    this.values.take(drawn);
    this.seekOthers(drawn);
    if (this.play.isOn) return;
    this.areEventsOld = true;
    this.tabs.setCount('events', drawn.events);
    this.refreshEvents();
  }

  private async showMends(findings: readonly Finding[]): Promise<void> {
    if (findings.length === 0) return;
    const mends = await this.editor.seekMends(findings);
    if (!mends) return;
    this.editor.showFindings(findings, mends);
    this.findings.showMends(mends);
  }

  private tellMissing({ missing, references }: Drawn): void {
    const texts = missing.map(({ text }) => text);
    const absent = references.filter(({ given }) => !given).map(({ text }) => text);
    if (absent.length > 0) texts.push(`null here: ${absent.join(', ')}`);
    if (texts.length > 0) tell(texts.join('; '));
  }

  /** Other securities that the script reads come from the folder. */
  private seekOthers({ references }: Drawn): void {
    if (!this.hasFolder) return;
    for (const { name, security, given } of references) {
      const known = this.names.find((one) => one.toUpperCase() === name);
      if (given || !security || known === undefined || this.sought.has(name)) continue;
      this.sought.add(name);
      this.redo(async () => this.session.takeOther({ name, content: await readBars(known) }));
    }
  }

  /** Something changes what the script gives. */
  private redo(work: () => Promise<ScriptAnswer | null>): void {
    work()
      .then((answer) => this.takeAnswer(answer))
      .catch((error: unknown) => this.fail(error));
  }

  private takeAnswer(answer: ScriptAnswer | null): void {
    if (!answer) return;
    this.pipeline.take(answer);
    this.show(answer);
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
      const { name, content } = await this.read(source);
      if (source !== this.wanted) return;
      this.session.supersede();
      const bars = await this.session.takeBars({ name, content, period: this.period.chosen });
      if (source !== this.wanted) return; // others are on their way to the desk
      this.source = source;
      this.takeBars(bars);
    } catch (error) {
      if (source !== this.wanted) return;
      if (error instanceof Ended && !error.isByUser) return this.open(source); // now with the newer script
      this.fail(error);
      this.wanted = this.source;
    }
  }

  private async layOver(title: string | undefined): Promise<void> {
    try {
      const overlay =
        title === undefined ? undefined : { name: title, content: await readBars(title) };
      const laid = await this.session.takeOverlay(overlay);
      this.pipeline.setOverlay(laid ? { title: title!, column: laid.column } : undefined);
      tell(laid?.bars === 0 ? `${title} has no bars at these dates` : '');
    } catch (error) {
      this.fail(error);
      throw error;
    }
  }

  /** With the crosshair at the bar of a key. */
  private async openAt(security: string, key: number): Promise<void> {
    const source = { security };
    await this.open(source);
    if (this.source === source) this.pipeline.chart.showRow(await this.session.rowOf(key));
  }

  /** Has the script and the parameters of a picture that was saved here. */
  private async takePicture(file: File): Promise<void> {
    const shared = fromPicture(new Uint8Array(await file.arrayBuffer()));
    if (!shared) throw new Error('this picture holds no script');
    this.writing.takeShared(file.name.replace(/\.png$/i, ''), shared);
    tell(`Script and parameters of ${file.name}`);
  }

  private makeWatch(files: Files): Watch {
    return new Watch(files, readFiles, {
      listed: ({ scripts, securities }) => {
        this.writing.list(scripts.map(({ name }) => name));
        if (!this.hasFolder) return;
        this.names = securities.map(({ name }) => name);
        this.securities.setNames(this.names);
      },
      securities: (names) => this.followBars(names),
      scripts: (names) => this.writing.takeChanges(names),
    });
  }

  /** Files of bars have changed: of those that are seen or read by the script. */
  private async followBars(names: ReadonlySet<string>): Promise<void> {
    for (const name of names) {
      if (!this.sought.has(name.toUpperCase())) continue;
      const content = await readBars(name);
      this.takeAnswer(await this.session.takeOther({ name: name.toUpperCase(), content }));
    }
    const { source } = this;
    if (!source || !('security' in source) || !names.has(source.security)) return;
    if (source !== this.wanted) return; // others are on their way
    if (this.play.isOn || this.session.isBusy) throw new Error('there is no time for it now');
    const bars = await this.takeContent(await readBars(source.security), source.security);
    if (source === this.source && !this.play.isOn) this.takeBars(bars, true);
  }

  /** A line that is half written is left for the next time. */
  private async takeContent(content: Blob, name: string): Promise<BarsAnswer> {
    const period = this.period.chosen;
    try {
      return await this.session.followBars({ name, content, period });
    } catch (error) {
      if (error instanceof Ended) throw error;
      const text = await content.text();
      const whole = new Blob([text.slice(0, text.lastIndexOf('\n') + 1)]);
      return this.session.takeBars({ name, content: whole, period });
    }
  }

  private async read(source: Source): Promise<{ name: string; content: Blob }> {
    if ('file' in source) return { name: source.file.name, content: source.file };
    const name = source.security;
    return { name, content: await (this.hasFolder ? readBars(name) : readSampleBars()) };
  }

  private takeBars(bars: BarsAnswer, isFollowed = false): void {
    this.bars = bars;
    this.play.reset();
    this.period.show(bars.period);
    this.securities.setCurrent(
      this.source && 'security' in this.source ? this.source.security : '',
    );
    document.title = `${bars.name} – quor studio`;
    this.pipeline.takeBars(bars, isFollowed);
    this.writing.keep();
  }

  private followTabs(): void {
    // The tabs tell of the first one while they are made.
    this.values?.setOpen(this.tabs.isOpen('values'));
    this.refreshEvents();
  }

  private refreshEvents(): void {
    const count = this.pipeline.newest?.events;
    if (!this.areEventsOld || count === undefined || this.play.isOn) return;
    if (!this.tabs.isOpen('events')) return;
    this.areEventsOld = false;
    this.session
      .events(Math.max(count - newestEvents, 0), newestEvents)
      .then(({ events, count }) => this.events.showAll(events, count))
      .catch((error: unknown) => this.fail(error));
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
        this.alarms.forget();
        if (!this.tabs.isOpen('values')) this.tabs.show('events');
        void this.pipeline.takeStep(answer);
      },
      stepped: async (answer) => {
        for (const { row, events, final } of answer.steps) {
          this.events.add(events);
          if (final) this.events.closeBar(row);
        }
        this.alarms.take(answer.steps);
        await this.pipeline.takeStep(answer);
        const { pointedRow } = this.pipeline.chart;
        this.values.follow(pointedRow === undefined ? answer.rows - 1 : undefined);
      },
      ended: (answer) => {
        this.pipeline.take(answer);
        this.show(answer);
      },
      fail,
    });
  }

  private makeSaveDialog(shelf: Shelf): SaveDialog {
    return new SaveDialog(shelf, {
      script: () => this.writing.script,
      saved: (name, text) => {
        this.writing.saved(name, text);
        tell(`Saved as ${name}`);
      },
      takeOther: (text) => this.writing.takeOther(text),
    });
  }

  private bindButtons(
    fail: (error: unknown) => void,
    dialog: SaveDialog,
    versions: VersionDialog,
  ): void {
    bindHeader(
      {
        zoom: (factor) => this.pipeline.chart.zoom(factor),
        showAll: () => this.pipeline.chart.showAll(),
        format: () => this.editor.format(),
        showVersions: () => versions.open(),
        copyLink: () => this.copyLink(),
        savePicture: async () => {
          const picture = await this.pipeline.chart.picture();
          saveFile(`${this.fileName}.png`, await intoPicture(picture, this.writing.shared));
        },
        saveCsv: async () => saveFile(`${this.fileName}.csv`, await this.session.csv()),
        openFile: (file) => {
          if (file.type === 'image/png') this.takePicture(file).catch(fail);
          else void this.open({ file });
        },
        fail,
      },
      dialog,
    );
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

  /** Says why; what the user or a newer script has ended needs no saying. */
  private fail(error: unknown): void {
    if (!(error instanceof Ended)) tellError(error);
  }
}

function timesText({ compile, calculate }: ScriptAnswer['times']): string {
  return `compiled in ${compile.toFixed(1)} ms, calculated in ${calculate.toFixed(1)} ms`;
}
