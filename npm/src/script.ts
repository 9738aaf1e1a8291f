import { BarReader, take, type Bar, type Bars, type Need } from './bars.js';
import type { Finding } from './errors.js';
import type { Address, Module } from './module.js';
import { Zone } from './times.js';

export interface Settings {
  /** The script's parameters by name, in any case. */
  readonly parameters?: Readonly<Record<string, number>>;
  /** The period code of the bars: 0x4000 one day, 0x3005 five minutes. */
  readonly period?: number;
  /** What the words that ask for them read. */
  readonly code?: string;
  readonly market?: string;
  /** The zone of the market, such as "UTC+08:00". */
  readonly timeZone?: string;
  /** The trading calendar, as JSON or as what JSON says. */
  readonly calendar?: string | object;
  /** Constants of the market. */
  readonly minPrice?: number;
  readonly unit?: number;
  readonly shareCountPerUnit?: number;
  readonly isTrading?: boolean;
}

export interface RunOptions {
  /** The zone whose clock scripts see where times are Dates or texts with a zone; UTC by default. */
  readonly timeZone?: string;
}

/** How a line is drawn. */
export interface Look {
  readonly shape: string;
  readonly style: string;
  readonly colour: string;
  /** -1 leaves it to who draws. */
  readonly width: number;
  readonly dash: string;
}

/** A named line of a script. */
export interface Line {
  readonly name: string;
  /** Counted from 0. */
  readonly statement: number;
  /** Null if it isn't drawn. */
  readonly look: Look | null;
}

/** What a script needs, by the engine's column ids. */
export interface Report {
  readonly lookBack: number;
  readonly fields: readonly number[];
  readonly references: readonly { readonly source: string; readonly column: number }[];
  readonly needsMarketConstants: boolean;
  readonly needsCalendar: boolean;
  readonly hasNotices: boolean;
  readonly words: readonly string[];
}

/** A notice or a trade signal. */
export interface ScriptEvent {
  /** Of its bar, YYYYMMDDhhmmss. */
  readonly key: number;
  /** Where its bar stands among all, the oldest being 0. */
  readonly row: number;
  readonly word: 'NOTICE' | 'BK' | 'BP' | 'SK' | 'SP' | 'BPK' | 'SPK' | 'CLOSEOUT';
  readonly name: string;
  /** Null if the script gives none. */
  readonly quantity: number | null;
  readonly statement: number;
}

/** A drawing record, as the engine's host guide has them. */
export type Shape = Readonly<Record<string, string | number | null>>;

/** The lines by name, a value for each bar; NaN is null. */
export type Lines = Readonly<Record<string, Float64Array>>;

interface Description {
  readonly report: Report;
  readonly needs: readonly Need[];
  readonly lines: readonly Line[];
}

/** The engine wants the moment of a notice under this id, and bars have none. */
const noticeTime = 199;
const rowKey = 1;

const dispose: typeof Symbol.dispose = Symbol.dispose ?? Symbol.for('Symbol.dispose');

const forgotten = new FinalizationRegistry<() => void>((release) => release());

/** One handle of the module, given back once. */
class Holder {
  readonly #module: Module;
  #handle: Address;

  constructor(module: Module, handle: Address) {
    this.#module = module;
    this.#handle = handle;
  }

  get handle(): Address {
    if (this.#handle === 0) throw new TypeError('this was given back by free()');
    return this.#handle;
  }

  free(): void {
    const handle = this.#handle;
    this.#handle = 0;
    if (handle !== 0) this.#module.free(handle);
  }
}

function compiled(module: Module, settings: object): { holder: Holder; description: Description } {
  const { handle, description } = module.compile(settings);
  return {
    holder: new Holder(module, handle),
    description: JSON.parse(description) as Description,
  };
}

const inSmall = ({ id, names }: Need): Need => ({
  id,
  names: names.map((name) => name.toLowerCase()),
});

/** A compiled script. Made by `Engine.compile`. */
export class Script {
  readonly #module: Module;
  readonly #settings: object;
  readonly #holder: Holder;
  readonly #needs: readonly Need[];

  /** The text of the script. */
  readonly source: string;
  /** The named lines, in the order of the script. */
  readonly lines: readonly Line[];
  readonly report: Report;

  /** @internal */
  constructor(module: Module, source: string, settings: object) {
    const { holder, description } = compiled(module, settings);
    this.#module = module;
    this.#settings = settings;
    this.#holder = holder;
    this.source = source;
    this.lines = description.lines;
    this.report = description.report;
    this.#needs = [
      ...description.needs.filter(({ id }) => id !== rowKey && id !== noticeTime).map(inSmall),
      ...this.report.references.map(({ source, column }) => ({
        id: column,
        names: [source.toLowerCase()],
      })),
    ];
    forgotten.register(this, () => holder.free(), this);
  }

  /** The arrays that bars must have beside their times, by the names that messages use. */
  get fields(): string[] {
    return this.#needs.map((need) => need.names[0]!);
  }

  /** How many bars the script looks back. */
  get lookBack(): number {
    return this.report.lookBack;
  }

  /** Advice: what is allowed and yet can't be meant. */
  get findings(): Finding[] {
    return JSON.parse(this.#module.findings(this.#holder.handle)) as Finding[];
  }

  /** What the script draws. */
  get shapes(): Shape[] {
    return JSON.parse(this.#module.shapes(this.#holder.handle)) as Shape[];
  }

  /** Notices and signals of the last run, oldest first. */
  get events(): ScriptEvent[] {
    return JSON.parse(this.#module.events(this.#holder.handle)) as ScriptEvent[];
  }

  /**
   * Calculates all lines over all bars. The arrays of the result are the caller's, in the order of the
   * bars. Of bars with one time the last counts, and all of them get its values.
   */
  run(bars: Bars, options: RunOptions = {}): Lines {
    const handle = this.#holder.handle;
    const { keys, columns } = take(bars, this.#needs, zoneOf(options));
    this.#module.run(handle, keys, columns, true);
    const rows = this.#module.rows(handle, keys.length);
    const cells = (line: number) => {
      const values = this.#module.line(handle, line);
      return rows === undefined ? values : Float64Array.from(rows, (row) => values[row]!);
    };
    return byName(this.lines, cells);
  }

  /** Follows bars as they come in, from `bars` on, which raise no events. */
  live(bars?: Bars, options: RunOptions = {}): Live {
    const { holder } = compiled(this.#module, this.#settings);
    return new Live(this.#module, holder, this.lines, this.#needs, bars, options);
  }

  /** Gives the memory back; nothing else can be called afterwards. */
  free(): void {
    forgotten.unregister(this);
    this.#holder.free();
  }

  [dispose](): void {
    this.free();
  }
}

/** A script over bars that come in one by one. Made by `Script.live`. */
export class Live {
  readonly #module: Module;
  readonly #holder: Holder;
  readonly #lines: readonly Line[];
  readonly #reader: BarReader;
  readonly #place: Address;
  readonly #last: Float64Array;

  /** @internal */
  constructor(
    module: Module,
    holder: Holder,
    lines: readonly Line[],
    needs: readonly Need[],
    bars: Bars | undefined,
    options: RunOptions,
  ) {
    this.#module = module;
    this.#holder = holder;
    this.#lines = lines;
    this.#last = new Float64Array(lines.length);
    forgotten.register(this, () => holder.free(), this);
    try {
      const zone = zoneOf(options);
      this.#reader = new BarReader(needs, zone);
      this.#place = module.makePlace(
        holder.handle,
        needs.map((need) => need.id),
      );
      if (bars === undefined) return;
      const { keys, columns } = take(bars, needs, zone);
      module.run(holder.handle, keys, columns, false);
    } catch (fault) {
      this.free();
      throw fault;
    }
  }

  /** The number of bars. */
  get length(): number {
    return this.#module.rowCount(this.#holder.handle);
  }

  /** Appends the bar of a time, or replaces it, and calculates from it on. Gives the last values. */
  update(bar: Bar): Record<string, number> {
    const handle = this.#holder.handle;
    this.#module.update(handle, this.#place, this.#reader.read(bar), this.#last);
    const last: Record<string, number> = {};
    for (let i = 0; i < this.#lines.length; ++i) last[this.#lines[i]!.name] = this.#last[i]!;
    return last;
  }

  /** Each line's value at the last bar; NaN is null. Empty without bars. */
  get last(): Record<string, number> {
    const count = this.length;
    if (count === 0) return {};
    const values = this.values(1);
    return Object.fromEntries(this.#lines.map(({ name }) => [name, values[name]![0]!]));
  }

  /** The lines over the last `count` bars, or over all, oldest bar first. */
  values(count = Infinity): Lines {
    const handle = this.#holder.handle;
    const first = Math.max(0, this.length - countOf(count));
    return byName(this.#lines, (line) => this.#module.line(handle, line, first));
  }

  /** The times of the last `count` bars, or of all, as YYYYMMDDhhmmss. */
  keys(count = Infinity): Float64Array {
    const handle = this.#holder.handle;
    const length = this.length;
    const first = Math.max(0, length - countOf(count));
    return Float64Array.from({ length: length - first }, (_, i) =>
      this.#module.key(handle, first + i),
    );
  }

  /** Notices and signals of the last update. */
  get events(): ScriptEvent[] {
    return JSON.parse(this.#module.events(this.#holder.handle)) as ScriptEvent[];
  }

  /** Gives the memory back; nothing else can be called afterwards. */
  free(): void {
    forgotten.unregister(this);
    this.#holder.free();
  }

  [dispose](): void {
    this.free();
  }
}

function zoneOf(options: RunOptions): Zone {
  if (typeof options !== 'object' || options === null) throw new TypeError('options are an object');
  return new Zone(options.timeZone);
}

function countOf(bars: unknown): number {
  if (bars === Infinity || (Number.isInteger(bars) && Number(bars) >= 0)) return Number(bars);
  throw new TypeError('a count of bars is a whole number, 0 or more');
}

function byName(lines: readonly Line[], cells: (line: number) => Float64Array): Lines {
  const named: Record<string, Float64Array> = Object.create(null);
  lines.forEach(({ name }, i) => (named[name] = cells(i)));
  return named;
}
