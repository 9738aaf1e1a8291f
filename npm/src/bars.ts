// From the bars of a caller to what the engine takes.

import { roomFor } from './errors.js';
import type { Column } from './module.js';
import {
  apart,
  joinedTime,
  joinedTimes,
  keyIn,
  keysOf,
  type Time,
  type Times,
  type Zone,
} from './times.js';

/** Numbers of a field, one per bar. Null, undefined and NaN are no value. */
export type Values = ArrayLike<number | bigint | boolean | null | undefined>;

/**
 * n bars in any order, as arrays: `time`, and the fields by the usual words in any case, such as `open`
 * or `Volume`, by their ids, or by the source of a reference ("600000|11"). The times may stand as days
 * in `date` and clock times in `time`.
 */
export type Bars = { readonly [field: string]: Times | Values };

const timeWords = ['datetime', 'timestamp', 'date', 'time'];

/** A field that a script reads; the first name is the one that messages show. */
export interface Need {
  readonly id: number;
  readonly names: readonly string[];
}

const plain = (name: string) => name.replace(/[ _]/g, '').toLowerCase();

export interface Taken {
  readonly keys: Float64Array;
  readonly columns: Column[];
}

export function take(bars: Bars, needs: readonly Need[], zone: Zone): Taken {
  if (typeof bars !== 'object' || bars === null)
    throw new TypeError('bars are an object of arrays');
  const names = namesIn(Object.keys(bars), needs);
  const times = arrayOf<Times>(bars, names.time);
  const fields = names.fields.map((name) => arrayOf<Values>(bars, name));
  fields.forEach(({ length }, i) => {
    if (length === times.length) return;
    throw new TypeError(`'${names.fields[i]}' has ${length} values for ${times.length} bars`);
  });
  const clocks = names.clock === undefined ? undefined : arrayOf<Times>(bars, names.clock);
  const keys = keysOf(clocks === undefined ? times : joinedTimes(times, clocks), zone);
  const columns = fields.map((values, i) => ({
    id: needs[i]!.id,
    values: numbersOf(values, names.fields[i]!),
  }));
  return { keys, columns };
}

/** A bar that comes in: its time, and all fields that the script reads. */
export interface Bar {
  readonly time: Time;
  readonly [field: string]: Time | number | null;
}

/** Reads bars that come one by one, mostly with the same names. */
export class BarReader {
  readonly #needs: readonly Need[];
  readonly #zone: Zone;
  readonly #numbers: Float64Array;
  #given: readonly string[] = [];
  #names: Names | undefined;

  constructor(needs: readonly Need[], zone: Zone) {
    this.#needs = needs;
    this.#zone = zone;
    this.#numbers = new Float64Array(1 + needs.length);
  }

  /** The key, and the values of what is needed; good until the next bar. */
  read(bar: Bar): Float64Array {
    if (typeof bar !== 'object' || bar === null) throw new TypeError('a bar is an object');
    const { time, clock, fields } = this.#namesOf(Object.keys(bar));
    const moment = clock === undefined ? bar[time] : joinedTime(bar[time], bar[clock]);
    if (moment === undefined && clock !== undefined) throw new TypeError(`the bar: ${apart}`);
    const key = keyIn(moment, this.#zone);
    if (typeof key === 'string') throw new TypeError(`the bar: ${key}`);
    this.#numbers[0] = key;
    for (let i = 0; i < fields.length; ++i) {
      const name = fields[i]!;
      const number = numberOf(bar[name]);
      if (number === undefined) {
        throw new TypeError(`'${name}' is a ${typeof bar[name]}, and no number`);
      }
      this.#numbers[1 + i] = number;
    }
    return this.#numbers;
  }

  #namesOf(given: readonly string[]): Names {
    const isKnown =
      given.length === this.#given.length && given.every((name, i) => name === this.#given[i]);
    if (this.#names !== undefined && isKnown) return this.#names;
    this.#names = namesIn(given, this.#needs);
    this.#given = given;
    return this.#names;
  }
}

/** What holds the times, and each need in their order. */
interface Names {
  readonly time: string;
  /** What holds the clock times, if `time` holds days. */
  readonly clock: string | undefined;
  readonly fields: readonly string[];
}

function namesIn(given: readonly string[], needs: readonly Need[]): Names {
  const byName = new Map<string, string[]>();
  for (const name of given) {
    const found = byName.get(plain(name));
    if (found === undefined) byName.set(plain(name), [name]);
    else found.push(name);
  }
  const time = timeNameIn(byName);
  const [clock] = plain(time) === 'date' ? (byName.get('time') ?? []) : [];
  return { time, clock, fields: needs.map((need) => nameOf(need, byName)) };
}

function timeNameIn(byName: ReadonlyMap<string, string[]>): string {
  for (const word of timeWords) {
    const [name] = byName.get(word) ?? [];
    if (name !== undefined) return name;
  }
  throw new TypeError(`nothing holds the times; looked for ${timeWords.join(', ')}`);
}

function nameOf(need: Need, byName: ReadonlyMap<string, string[]>): string {
  const found = need.names.flatMap((name) => byName.get(name) ?? []);
  const [name, other] = found;
  const what = need.names[0];
  if (name === undefined) {
    throw new TypeError(`the script reads '${what}', and nothing in the bars is called so`);
  }
  if (other !== undefined)
    throw new TypeError(`two arrays are '${what}': '${name}' and '${other}'`);
  return name;
}

function arrayOf<Kind extends ArrayLike<unknown>>(bars: Bars, name: string): Kind {
  const array: unknown = bars[name];
  if (!Array.isArray(array) && (!ArrayBuffer.isView(array) || array instanceof DataView)) {
    throw new TypeError(`'${name}' is no array`);
  }
  if (ArrayBuffer.isView(array) && isDetached(array.buffer)) {
    throw new TypeError(`the buffer of '${name}' is detached: it was moved to someone else`);
  }
  return array as unknown as Kind;
}

function isDetached(buffer: ArrayBufferLike): boolean {
  try {
    new Uint8Array(buffer);
    return false;
  } catch {
    return true;
  }
}

function numbersOf(values: Values, name: string): Float64Array {
  if (values instanceof Float64Array) return values;
  const numbers = roomFor(values.length);
  for (let i = 0; i < numbers.length; ++i) {
    const number = numberOf(values[i]);
    if (number === undefined) {
      throw new TypeError(`'${name}' holds a ${typeof values[i]} in bar ${i}, and no number`);
    }
    numbers[i] = number;
  }
  return numbers;
}

/** Nothing for what is neither a number nor no value. */
function numberOf(value: unknown): number | undefined {
  if (typeof value === 'number') return value;
  if (value === null || value === undefined) return NaN;
  if (typeof value === 'bigint' || typeof value === 'boolean') return Number(value);
  return undefined;
}
