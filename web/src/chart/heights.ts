// How high the panes are, as their borders are dragged: kept for charts of as many panes.

/** Of a pane, in pixels. */
const least = 40;

const isShares = (value: unknown, count: number): value is number[] =>
  Array.isArray(value) &&
  value.length === count &&
  value.every((share) => typeof share === 'number' && share > 0);

const most = 20;

/** What was chosen, by the number of panes. */
export function keptHeights(store: Pick<Storage, 'getItem'>): Record<string, number[]> {
  const counts = Array.from({ length: most }, (_, i) => i + 1);
  const found = counts.map((count) => [count, keptFor(store, count)] as const);
  return Object.fromEntries(found.filter(([, shares]) => shares)) as Record<string, number[]>;
}

export function keepHeights(
  store: Pick<Storage, 'setItem' | 'removeItem'>,
  heights: Readonly<Record<string, number[]>>,
): void {
  for (let count = 1; count <= most; ++count) store.removeItem(keyOf(count));
  for (const shares of Object.values(heights))
    store.setItem(keyOf(shares.length), JSON.stringify(shares));
}

function keptFor(store: Pick<Storage, 'getItem'>, count: number): number[] | undefined {
  try {
    const value: unknown = JSON.parse(store.getItem(keyOf(count)) ?? 'null');
    return isShares(value, count) ? value : undefined;
  } catch {
    return undefined;
  }
}

export class Heights {
  private shares: number[] = [];

  constructor(private readonly store: Pick<Storage, 'getItem' | 'setItem' | 'removeItem'>) {}

  /** Takes up what was chosen for so many panes, or else what each wants. */
  take(wanted: readonly number[]): void {
    this.shares = keptFor(this.store, wanted.length) ?? [...wanted];
  }

  /** In pixels, all together `height`, the last one with the time axis below it. */
  pixels(height: number, timeAxis: number): number[] {
    const sum = this.shares.reduce((all, share) => all + share, 0);
    const own = this.shares.map((share) => Math.round((share / sum) * (height - timeAxis)));
    const upper = own.slice(0, -1).reduce((all, one) => all + one, 0);
    return own.map((one, i) => Math.max(i === own.length - 1 ? height - upper : one, least));
  }

  /** Moves the border below a pane down by so many pixels of `height`. */
  move(index: number, by: number, height: number): void {
    const sum = this.shares.reduce((all, share) => all + share, 0);
    const [above, below] = [this.shares[index], this.shares[index + 1]];
    const smallest = Math.min((least / height) * sum, above, below);
    const moved = Math.min(Math.max((by / height) * sum, smallest - above), below - smallest);
    this.shares[index] = above + moved;
    this.shares[index + 1] = below - moved;
    this.store.setItem(keyOf(this.shares.length), JSON.stringify(this.shares));
  }

  /** As the chart chooses. */
  reset(wanted: readonly number[]): void {
    this.store.removeItem(keyOf(wanted.length));
    this.shares = [...wanted];
  }

  /** Of both panes at a border the upper one's part, in percent. */
  percentAbove(index: number): number {
    const [above, below] = [this.shares[index], this.shares[index + 1]];
    return Math.round((100 * above) / (above + below));
  }
}

const keyOf = (count: number): string => `quor-studio-heights-${count}`;
