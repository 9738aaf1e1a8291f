// What is being written survives: that the page is loaded again, that its tab is closed, and a crash.
// Each tab keeps a draft of its own; what isn't saved in those of tabs that are no more is offered.
import { isSetting, type Setting } from './link.ts';

/** A script, and what of it is saved. */
export interface Kept {
  id: string;
  name: string;
  saved: string;
  text: string;
}

export interface Draft extends Setting {
  /** Those that are open, in their order. */
  scripts: Kept[];
  current: string;
  /** The link in the address bar, of which the scripts have been made. */
  link: string;
}

const tabKey = 'quor-studio-tab';
const draftKey = 'quor-studio-draft ';

type Store = Pick<Storage, 'getItem' | 'setItem' | 'removeItem' | 'key' | 'length'>;

/** Which tabs there are: each one holds a lock as long as it lives. */
export interface Tabs {
  /** Whether the id was free, and is this tab's from now on. */
  take: (id: string) => Promise<boolean>;
  living: () => Promise<ReadonlySet<string>>;
}

export class Drafts {
  private timer: ReturnType<typeof setTimeout> | undefined;

  private constructor(
    private readonly id: string,
    private readonly store: Store,
    /** That of this tab before it was loaded again. */
    readonly own: Draft | undefined,
    private left: Kept[],
  ) {}

  static async open(
    session: Pick<Storage, 'getItem' | 'setItem'> = sessionStorage,
    store: Store = localStorage,
    tabs: Tabs = lockedTabs,
  ): Promise<Drafts> {
    const before = session.getItem(tabKey) ?? '';
    const own = before ? read(store, before) : undefined;
    // A tab that was made from another one has its id.
    const id = before && (await tabs.take(before)) ? before : newId();
    if (id !== before) await tabs.take(id);
    session.setItem(tabKey, id);
    return new Drafts(id, store, own, await leftOf(store, await tabs.living()));
  }

  /** Scripts with changes, of tabs that are no more. */
  get leftScripts(): readonly Kept[] {
    return this.left;
  }

  /** Soon, so that one who types doesn't wait for it. */
  keep(draftOf: () => Draft): void {
    clearTimeout(this.timer);
    this.timer = setTimeout(() => this.keepNow(draftOf()), 200);
  }

  keepNow(draft: Draft): void {
    clearTimeout(this.timer);
    try {
      this.store.setItem(draftKey + this.id, JSON.stringify(draft));
    } catch {
      this.store.removeItem(draftKey + this.id); // no room: no draft rather than an old one
    }
  }

  /** Scripts that were left are in the hands of this tab. */
  takeUp(scripts: readonly Kept[]): void {
    const isSame = (one: Kept) =>
      scripts.some(({ id, text }) => one.id === id && one.text === text);
    this.left = this.left.filter((one) => !isSame(one));
    for (const id of idsIn(this.store)) {
      const draft = id === this.id ? undefined : read(this.store, id);
      if (!draft?.scripts.some(isSame)) continue;
      const rest = draft.scripts.filter((one) => !isSame(one));
      this.store.setItem(draftKey + id, JSON.stringify({ ...draft, scripts: rest }));
    }
  }
}

const newId = (): string => String(crypto.getRandomValues(new Uint32Array(2)).join('-'));

/** Drafts of tabs that are no more, of which only what isn't saved is kept. */
async function leftOf(store: Store, living: ReadonlySet<string>): Promise<Kept[]> {
  return idsIn(store)
    .filter((id) => !living.has(id))
    .flatMap((id) => {
      const unsaved = read(store, id)?.scripts.filter(({ saved, text }) => saved !== text) ?? [];
      if (unsaved.length === 0) store.removeItem(draftKey + id);
      return unsaved;
    });
}

function idsIn(store: Store): string[] {
  const keys = Array.from({ length: store.length }, (_, i) => store.key(i) ?? '');
  return keys
    .filter((key) => key.startsWith(draftKey))
    .map((key) => key.slice(draftKey.length))
    .sort();
}

function read(store: Store, id: string): Draft | undefined {
  try {
    const value: unknown = JSON.parse(store.getItem(draftKey + id) ?? 'null');
    return isDraft(value) ? value : undefined;
  } catch {
    return undefined;
  }
}

function isListOfKept(value: unknown): value is Kept[] {
  const isKept = (one: unknown) =>
    typeof one === 'object' &&
    one !== null &&
    ['id', 'name', 'saved', 'text'].every(
      (key) => typeof (one as Record<string, unknown>)[key] === 'string',
    );
  return Array.isArray(value) && value.every(isKept);
}

function isDraft(value: unknown): value is Draft {
  if (typeof value !== 'object' || value === null) return false;
  const { scripts, current, link } = value as Record<string, unknown>;
  return (
    isListOfKept(scripts) &&
    typeof current === 'string' &&
    typeof link === 'string' &&
    isSetting(value)
  );
}

/** Locks go with their tab, however it ends. Where a browser has none, every tab seems to live. */
const lockedTabs: Tabs = {
  take: (id) =>
    new Promise((resolve) => {
      if (!navigator.locks) return resolve(true);
      void navigator.locks.request(draftKey + id, { ifAvailable: true }, (lock) => {
        resolve(lock !== null);
        return lock === null ? undefined : new Promise<void>(() => {}); // for as long as it lives
      });
      return undefined;
    }),
  living: async () => {
    if (!navigator.locks) return new Set(idsIn(localStorage));
    const { held = [] } = await navigator.locks.query();
    return new Set(held.map(({ name = '' }) => name.slice(draftKey.length)));
  },
};
