// Layouts by name: how the page is arranged, kept in the browser. What is kept there is read with
// care: others may have written it, or an older page.

export interface Layout {
  /** Shares of the panes, by how many there are. */
  heights: Record<string, number[]>;
  scale: string;
  /** The tab below the chart that is open; none where all are closed. */
  tab?: string;
  /** Of the script beside the chart, in pixels; as the page chooses without. */
  side?: number;
  /** The security over the prices. */
  overlay?: string;
  /** The period of the second chart, empty where the bars say it. */
  second?: string;
}

export interface NamedLayout extends Layout {
  name: string;
}

export const usualLayout: Layout = { heights: {}, scale: 'linear', tab: 'securities' };

/** As many as there are digits for their keys. */
export const mostLayouts = 8;
export const longestName = 40;

type Store = Pick<Storage, 'getItem' | 'setItem'>;

const key = 'quor-studio-layouts';
const nowKey = 'quor-studio-layout';

export class Layouts {
  constructor(
    private readonly store: Store = localStorage,
    /** Of the tab, so that a page that is loaded again is as it was. */
    private readonly ofTab: Store = sessionStorage,
  ) {}

  /** Read anew each time: tabs share it. */
  get all(): NamedLayout[] {
    const value = read(this.store, key);
    return Array.isArray(value) ? value.filter((one) => isNamed(one)).slice(0, mostLayouts) : [];
  }

  /** In place of one of the same name. */
  keep(layout: NamedLayout): void {
    const { all } = this;
    const at = all.findIndex(({ name }) => name === layout.name);
    if (at < 0 && all.length === mostLayouts)
      throw new Error(`There is room for ${mostLayouts} layouts: remove one first`);
    if (at < 0) all.push(layout);
    else all[at] = layout;
    this.store.setItem(key, JSON.stringify(all));
  }

  remove(name: string): void {
    this.store.setItem(key, JSON.stringify(this.all.filter((one) => one.name !== name)));
  }

  /** How this tab was arranged, by the name that was chosen there if any. */
  get now(): NamedLayout | undefined {
    const value = read(this.ofTab, nowKey);
    return isNamed(value, 0) ? value : undefined;
  }

  set now(layout: NamedLayout) {
    try {
      this.ofTab.setItem(nowKey, JSON.stringify(layout));
    } catch {
      // There is no room: the page begins as usual.
    }
  }
}

function read(store: Store, name: string): unknown {
  try {
    return JSON.parse(store.getItem(name) ?? 'null');
  } catch {
    return undefined;
  }
}

const isText = (value: unknown, most = 200): value is string =>
  typeof value === 'string' && value.length <= most;
const isPositive = (value: unknown): boolean =>
  typeof value === 'number' && Number.isFinite(value) && value > 0;

function isNamed(value: unknown, least = 1): value is NamedLayout {
  if (typeof value !== 'object' || value === null) return false;
  const { name, heights, scale, tab, side, overlay, second } = value as Record<string, unknown>;
  const isOptional = (one: unknown) => one === undefined || isText(one);
  return (
    isText(name, longestName) &&
    name.length >= least &&
    isText(scale) &&
    isHeights(heights) &&
    (side === undefined || isPositive(side)) &&
    [tab, overlay, second].every(isOptional)
  );
}

const isHeights = (value: unknown): boolean =>
  typeof value === 'object' &&
  value !== null &&
  Object.entries(value).every(
    ([count, shares]) =>
      Array.isArray(shares) && String(shares.length) === count && shares.every(isPositive),
  );
