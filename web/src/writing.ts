// Which script is written, and that none is lost: they come from the menu, from a link, from this tab
// before it was loaded again, and from tabs that were closed.
import type { Sample, Start } from './api/types.ts';
import { byId } from './dom.ts';
import type { Draft, Drafts } from './draft.ts';
import type { Editor } from './editor/editor.ts';
import { fromFragment, type Setting, type Shared, toFragment } from './link.ts';
import { Library } from './panels/library.ts';
import { Offer } from './panels/offer.ts';
import type { Writable } from './panels/save.ts';
import { ScriptTabs } from './panels/script_tabs.ts';
import { folderId, otherId, plain, Scripts } from './scripts.ts';
import type { Shelf } from './shelf.ts';
import type { Versions } from './versions.ts';

export interface WritingEvents {
  /** As things stand. */
  setting: () => Setting;
  /** A link has come in. */
  linked: (setting: Setting) => void;
  fail: (error: unknown) => void;
}

/** Whether the page is loaded again or gone back to, not opened by its address or a link. */
const isComeBack = (): boolean =>
  performance
    .getEntriesByType('navigation')
    .some((entry) => (entry as PerformanceNavigationTiming).type !== 'navigate');

/** The script stands beside the chart. */
const isWide = matchMedia('(width >= 860px)');

export class Writing {
  private readonly scripts: Scripts;
  private readonly menu: Library;
  private readonly tabs: ScriptTabs;
  /** The one in the address bar that was read or made. */
  private link = '';
  private isReady = false;
  /** Texts that scripts of the folder have there by now, as far as they are to be offered. */
  private readonly newer = new Map<string, string>();
  private readonly offer = new Offer({
    take: () => this.takeOther(this.newer.get(this.scripts.fileName) ?? ''),
    keep: () => {
      this.newer.delete(this.scripts.fileName);
      this.showOffer();
    },
  });

  constructor(
    private readonly editor: Editor,
    private readonly start: Start,
    samples: readonly Sample[],
    private readonly shelf: Shelf,
    private readonly drafts: Drafts,
    private readonly versions: Versions,
    private readonly events: WritingEvents,
  ) {
    this.scripts = new Scripts(editor);
    this.menu = new Library(byId('library', HTMLSelectElement), samples, shelf, (id) => {
      this.open(id).catch(events.fail);
    });
    this.tabs = new ScriptTabs(byId('scripts', HTMLElement), {
      show: (id) => void this.openAgain(id),
      close: (id) => {
        this.scripts.close(id);
        this.follow();
      },
      add: () => {
        this.scripts.openOther('script', '');
        editor.focus();
      },
    });
    window.addEventListener('hashchange', () => void this.openLink());
    window.addEventListener('beforeunload', (event) => {
      if (this.scripts.areUnsaved) event.preventDefault();
    });
    window.addEventListener('pagehide', () => {
      if (this.isReady) this.drafts.keepNow(this.draft);
    });
  }

  /** Shows the script that a link, this tab, or the command line has. Gives what goes with it. */
  async begin(): Promise<Setting | undefined> {
    const draft = this.drafts.own;
    const goesOn = isComeBack() && location.hash === draft?.link;
    const shared = goesOn ? undefined : await this.readLink();
    this.link = location.hash;
    for (const script of draft?.scripts ?? []) this.scripts.restore(script);
    if (shared) this.scripts.openOther('link', shared.script);
    else if (draft) await this.openAgain(draft.current);
    if (!this.scripts.currentId) this.openFirst();
    this.goToScript();
    this.drafts.takeUp(this.scripts.kept);
    this.menu.showLeft(this.drafts.leftScripts);
    this.isReady = true;
    this.takeChanges(new Set(this.scripts.fileNames)).catch(this.events.fail);
    this.keep();
    return shared ?? draft;
  }

  /** The script as it stands, and as it is kept by its name. */
  get script(): Writable {
    const { fileName: name, savedText: saved } = this.scripts;
    return { name, text: this.editor.text, saved };
  }

  /** Another text of the script is kept by now, and that is written on. */
  takeOther(text: string): void {
    this.keepVersion(this.editor.text);
    this.scripts.takeOther(text);
    this.keepVersion(plain(text));
    this.follow();
    this.editor.focus();
  }

  /** An earlier text is written on; it isn't saved thereby. */
  takeVersion(text: string): void {
    this.keepVersion(this.editor.text);
    this.editor.write(text);
    this.editor.focus();
  }

  private keepVersion(text: string): void {
    const { fileName } = this.scripts;
    if (fileName) this.versions.keep(fileName, text);
  }

  /** Scripts that are there, new ones among them. */
  list(names: readonly string[]): void {
    for (const name of names) this.menu.add(name);
    this.follow();
  }

  /** Offers what scripts have become that were changed elsewhere. */
  async takeChanges(names: ReadonlySet<string>): Promise<void> {
    for (const name of this.scripts.fileNames) {
      const isKept = names.has(name) && this.shelf.names().includes(name);
      if (isKept) this.newer.set(name, plain(await this.shelf.read(name)));
    }
    this.showOffer();
  }

  private showOffer(): void {
    const { fileName, savedText } = this.scripts;
    const text = this.newer.get(fileName);
    this.offer.show(text === undefined || text === savedText ? undefined : fileName);
  }

  /** Another text is written. */
  follow(): void {
    const { opened, currentId } = this.scripts;
    this.menu.show(opened, currentId);
    this.tabs.show(opened, currentId);
    this.showOffer();
    this.keep();
  }

  /** Has all of it outlive the page. */
  keep(): void {
    if (this.isReady) this.drafts.keep(() => this.draft);
  }

  /** The text stands in the folder by this name. */
  saved(name: string, text: string): void {
    this.scripts.saved(name, text);
    this.newer.delete(name);
    this.keepVersion(text);
    this.menu.add(name);
    this.follow();
  }

  /** Has the address bar show a link to what is seen. */
  async showLink(): Promise<void> {
    this.link = await toFragment(this.shared);
    history.replaceState(null, '', this.link);
    this.keep();
  }

  private get draft(): Draft {
    const { kept: scripts, currentId: current } = this.scripts;
    return { scripts, current, ...this.events.setting(), link: this.link };
  }

  /** Where the script stands below the chart, that stays in sight. */
  private goToScript(): void {
    if (isWide.matches) this.editor.focus();
  }

  private async open(id: string): Promise<void> {
    const one = this.menu.takeLeft(id);
    if (one) {
      this.drafts.takeUp([one]);
      this.scripts.showAsItIs(this.scripts.restore(one));
    } else if (!this.scripts.reopen(id)) {
      const script = await this.menu.read(id);
      if (script) {
        this.newer.delete(script.name);
        this.scripts.open(script);
      }
      this.keepVersion(this.scripts.savedText);
    }
    this.goToScript();
  }

  /** The script of a draft, which may be gone from the folder by now. */
  private async openAgain(id: string): Promise<void> {
    await this.open(id).catch(() => this.scripts.showAsItIs(id));
  }

  private openFirst(): void {
    const { script } = this.start;
    const { first } = this.menu;
    if (script) {
      const idOf = this.shelf.names().includes(script.name) ? folderId : otherId;
      this.scripts.open({ id: idOf(script.name), ...script });
      this.keepVersion(this.scripts.savedText);
    } else if (first) {
      this.scripts.open(first);
    } else {
      this.scripts.openOther('script', '');
    }
  }

  private readLink(): Promise<Shared | undefined> {
    this.link = location.hash;
    return fromFragment(this.link);
  }

  private async openLink(): Promise<void> {
    const shared = await this.readLink();
    if (shared) this.takeShared('link', shared);
  }

  /** Opens what somebody has handed on. */
  takeShared(name: string, shared: Shared): void {
    this.events.linked(shared);
    this.scripts.openOther(name, shared.script);
    this.goToScript();
  }

  /** What a link or a picture hands on. */
  get shared(): Shared {
    return { script: this.editor.text, ...this.events.setting() };
  }
}
