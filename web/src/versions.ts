// What scripts were like: of today every text that was kept, of earlier days the last one.

export interface Version {
  /** When it was kept, in milliseconds. */
  at: number;
  text: string;
}

const key = 'quor-studio-versions';
/** Of one script, and characters of all texts together. */
const mostOfOne = 40;
const mostText = 1_000_000;

type All = Record<string, Version[]>;

const dayOf = (at: number): string => new Date(at).toDateString();

/** The last one of each day, and all of the day of the newest. */
function thinned(versions: readonly Version[]): Version[] {
  const newest = versions.at(-1);
  const stays = ({ at }: Version, i: number) =>
    dayOf(at) === dayOf(newest!.at) ||
    i + 1 === versions.length ||
    dayOf(at) !== dayOf(versions[i + 1].at);
  return versions.filter(stays).slice(-mostOfOne);
}

/** Without the oldest ones of all, as long as there is too much text. */
function bounded(all: All): All {
  const oldest = Object.values(all)
    .flat()
    .sort((one, other) => one.at - other.at);
  let size = oldest.reduce((sum, { text }) => sum + text.length, 0);
  const gone = new Set<Version>();
  for (const version of oldest) {
    if (size <= mostText) break;
    gone.add(version);
    size -= version.text.length;
  }
  const left = Object.entries(all).map(([name, one]) => [name, one.filter((v) => !gone.has(v))]);
  return Object.fromEntries(left) as All;
}

export class Versions {
  constructor(
    /** Scripts of different folders may have one name. */
    private readonly folder: string,
    private readonly storage: Pick<Storage, 'getItem' | 'setItem'> = localStorage,
  ) {}

  /** Of a script, the newest first. */
  of(name: string): Version[] {
    return [...(this.all[this.keyOf(name)] ?? [])].reverse();
  }

  /** Keeps a text, unless it is that of before. */
  keep(name: string, text: string, at = Date.now()): void {
    const { all } = this;
    const before = all[this.keyOf(name)] ?? [];
    if (before.at(-1)?.text === text) return;
    all[this.keyOf(name)] = thinned([...before, { at, text }]);
    try {
      this.storage.setItem(key, JSON.stringify(bounded(all)));
    } catch {
      // There is no room, so that those of before have to do.
    }
  }

  private keyOf(name: string): string {
    return `${this.folder}/${name}`;
  }

  private get all(): All {
    try {
      const value: unknown = JSON.parse(this.storage.getItem(key) ?? '{}');
      const lists = Object.entries(value as object).filter(([, list]) => isVersions(list));
      return Object.fromEntries(lists) as All;
    } catch {
      return {};
    }
  }
}

const isVersions = (value: unknown): boolean =>
  Array.isArray(value) &&
  value.every((one) => typeof one?.at === 'number' && typeof one?.text === 'string');
