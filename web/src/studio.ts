// The page as a whole: its editor, its panels, and what each of them sets in motion.
import { byId } from './dom.ts';
import { Drawer } from './drawer.ts';
import { Editor } from './editor/editor.ts';
import { Adviser } from './engine/adviser.ts';
import { Ended, type Line } from './engine/line.ts';
import type { Session } from './engine/session.ts';
import type { BarsAnswer, ScriptAnswer } from './engine/types.ts';
import { Crosshair } from './crosshair.ts';
import type { Setting } from './link.ts';
import { arrangement } from './arrangement.ts';
import { Layouts } from './layouts.ts';
import { makeWatch } from './following.ts';
import { LayoutMenu } from './panels/layout_menu.ts';
import { Looks } from './looks.ts';
import { tell, tellError } from './panels/message.ts';
import { Overlay } from './panels/overlay.ts';
import { PeriodMenu } from './panels/period.ts';
import type { Play } from './panels/play.ts';
import { SaveDialog } from './panels/save.ts';
import { bindScale } from './panels/scale.ts';
import { VersionDialog } from './panels/version_dialog.ts';
import { Parameters } from './parameters.ts';
import { Pipeline } from './pipeline.ts';
import { makePlay } from './playing.ts';
import type { Shelf } from './shelf.ts';
import { Second } from './second.ts';
import { Sources } from './sources.ts';
import type { Beginning } from './start.ts';
import { Telling } from './telling.ts';
import { bindTools } from './tools.ts';
import { Versions } from './versions.ts';
import { Watch } from './watch.ts';
import { Writing } from './writing.ts';

export class Studio {
  private readonly adviser: Adviser;
  private readonly editor: Editor;
  private readonly pipeline: Pipeline;
  private readonly looks: Looks;
  private readonly layoutMenu: LayoutMenu;
  private readonly second: Second;
  private readonly overlay: Overlay;
  private readonly crosshair: Crosshair;
  private readonly telling: Telling;
  private readonly parameters: Parameters;
  private readonly sources: Sources;
  private readonly play: Play;
  private readonly drawer: Drawer;
  private readonly writing: Writing;
  private readonly period: PeriodMenu;
  private bars: BarsAnswer | undefined;
  private isReady = false;
  private readonly limits: { script: number };
  private readonly watch: Watch | undefined;
  /** Says why; what the user or a newer script has ended needs no saying. */
  private readonly fail = (error: unknown): void => {
    if (!(error instanceof Ended)) tellError(error);
  };

  constructor(
    private readonly session: Session,
    { start, language, samples, shelf, drafts }: Beginning,
    /** Engines beside that of the session: one that is asked about the language, and a desk. */
    make: { line: () => Line; session: () => Session },
  ) {
    const { fail } = this;
    this.limits = language.limits;
    this.sources = new Sources(
      session,
      start.files.securities.map(({ name }) => name),
      {
        period: () => this.period.chosen,
        begun: () => tell(''),
        seen: (bars, isFollowed) => this.takeBars(bars, isFollowed),
        answered: (answer) => this.takeAnswer(answer),
        isPlaying: () => this.play.isOn,
        fail,
      },
    );
    this.adviser = new Adviser(make.line, () => ({
      parameters: this.parameters.list,
      period: this.bars?.period.code,
    }));
    this.editor = new Editor(byId('editor', HTMLElement), language.words, this.adviser, {
      changed: () => this.followScript(),
      valueOf: (name) => this.pipeline.valueOf(name),
      tell,
      fail,
    });
    this.parameters = new Parameters(this.editor, () => {
      this.writing.keep();
      this.recalculate();
    });
    const versions = new Versions(start.folder ?? '');
    this.writing = new Writing(this.editor, start, samples, shelf, drafts, versions, {
      setting: () => this.setting,
      linked: (setting) => this.takeSetting(setting),
      fail,
    });
    this.looks = new Looks(byId('theme', HTMLButtonElement), () => this.applyTheme());
    this.crosshair = new Crosshair(session, () => this.pipeline.chart);
    this.second = new Second(session, make.session, language, this.looks.name, {
      pointed: (key, isBrought) => this.crosshair.point(key, isBrought),
      isPlaying: () => this.play.isOn,
    });
    this.pipeline = new Pipeline(session, language, this.looks.name, byId('chart', HTMLElement), {
      take: () => ({ script: this.editor.take(), parameters: this.parameters.list }),
      answered: (answer) => this.show(answer),
      pointed: (row, isBrought) => this.followPointer(row, isBrought),
      clicked: (row) => {
        this.drawer.values.hold(row);
        this.followPointer(row, true);
      },
      fail,
    });
    this.drawer = this.makeDrawer();
    const { editor, parameters, pipeline } = this;
    const { tabs, values, data, events } = this.drawer;
    const isPlaying = () => this.play.isOn;
    this.telling = new Telling({
      ...{ session, editor, parameters, pipeline, tabs, values, data, events },
      ...{ isPlaying, fail },
    });
    this.play = makePlay({
      ...{ session, pipeline, events, values, tabs, fail },
      rows: () => this.bars?.rows ?? 0,
      begun: () => this.second.refresh(),
      ended: (answer) => this.takeAnswer(answer),
    });
    this.editor.setDark(this.looks.name === 'dark');
    this.period = new PeriodMenu(byId('period', HTMLSelectElement), language.periods, () =>
      this.sources.openAgain(),
    );
    this.overlay = new Overlay(session, this.sources.hasFolder ? this.sources.names : [], {
      laid: (laid) => {
        this.pipeline.setOverlay(laid);
        this.second.refresh();
      },
      fail,
    });
    const scale = bindScale((name) => {
      this.pipeline.chart.setScale(name);
      this.second.setScale(name);
    });
    this.layoutMenu = new LayoutMenu(
      new Layouts(),
      arrangement({
        tabs,
        scale,
        overlay: this.overlay,
        chart: pipeline.chart,
        second: this.second,
        fail,
      }),
    );
    const versionDialog = new VersionDialog({
      script: () => this.writing.script,
      versions: (name) => versions.of(name),
      take: (text) => this.writing.takeVersion(text),
    });
    bindTools({
      ...{ session, editor, pipeline, fail },
      ...{ writing: this.writing, sources: this.sources },
      name: () => this.bars?.name ?? 'chart',
      saveDialog: this.makeSaveDialog(shelf),
      versionDialog,
    });
    const { writing, sources, overlay } = this;
    const { securities } = this.drawer;
    if (start.folder !== null || sources.hasFolder)
      this.watch = makeWatch(start.files, { writing, sources, securities, overlay });
  }

  /** Shows the script that a link, this tab, or the command line has, over the first security. */
  async begin(): Promise<void> {
    const given = await this.writing.begin();
    this.takeSetting(given ?? { parameters: {} });
    this.isReady = true;
    const { names } = this.sources;
    const security = names.find((name) => name === given?.security) ?? names[0];
    await this.sources.open({ security });
    this.layoutMenu.begin();
    if (this.watch) void this.watch.begin(document);
  }

  /** The engine was stopped, and has all of the bars again. */
  takeRestored(bars: BarsAnswer): void {
    if (this.play.isOn) this.takeBars(bars);
  }

  private get setting(): Setting {
    const { security } = this.sources;
    return {
      parameters: this.parameters.record,
      security,
      forming: this.drawer.data.isForming || undefined,
    };
  }

  private takeSetting({ parameters, forming = false }: Setting): void {
    this.parameters.take(parameters);
    if (forming === this.drawer.data.isForming) return;
    this.drawer.data.setForming(forming);
    this.redo(() => this.session.forming(forming));
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
    const drawn = this.telling.show(answer);
    if (drawn) this.sources.seekOthers(drawn);
    this.second.refresh();
  }

  /** Something changes what the script gives. */
  private redo(work: () => Promise<ScriptAnswer | null>): void {
    work()
      .then((answer) => (answer ? this.takeAnswer(answer) : undefined))
      .catch(this.fail);
  }

  private takeAnswer(answer: ScriptAnswer): void {
    this.pipeline.take(answer);
    this.show(answer);
  }

  private applyTheme(): void {
    this.editor.setDark(this.looks.name === 'dark');
    this.pipeline.setTheme(this.looks.name);
    this.second.setTheme(this.looks.name);
  }

  private makeDrawer(): Drawer {
    const { chart } = this.pipeline;
    return new Drawer(this.session, this.sources, {
      turned: () => this.telling?.refreshEvents(),
      held: (row) => chart.setHeld(row),
      wanted: (row) => chart.showRow(row),
      redo: (work) => this.redo(work),
      forming: () => this.writing.keep(),
      scan: {
        script: () => ({ script: this.editor.text, parameters: this.parameters.list }),
        open: (security, key) => void this.openAt(security, key).catch(this.fail),
      },
      fail: this.fail,
    });
  }

  /** With the crosshair at the bar of a key. */
  private async openAt(security: string, key: number): Promise<void> {
    const row = await this.sources.openAt(security, key);
    if (row !== undefined) this.pipeline.chart.showRow(row);
  }

  private takeBars(bars: BarsAnswer, isFollowed = false): void {
    this.bars = bars;
    this.play.reset();
    this.period.show(bars.period);
    this.drawer.securities.setCurrent(this.sources.security ?? '');
    document.title = `${bars.name} – quor studio`;
    this.pipeline.takeBars(bars, isFollowed);
    this.second.refresh();
    this.writing.keep();
  }

  /** The crosshair of the first chart is at a row, or away. */
  private followPointer(row: number | undefined, isBrought: boolean): void {
    if (row !== undefined) this.drawer.values.point(row);
    const { chart } = this.pipeline;
    this.second.point(row === undefined ? undefined : chart.keyOf(row), isBrought);
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
}
