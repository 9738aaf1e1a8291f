// From the bars of a caller to what the engine takes.

import type { Column } from './module.js';
import { keysOf, type Times } from './times.js';

/** Numbers of a field, one per bar. Null, undefined and NaN are no value. */
export type Values = ArrayLike<number | bigint | boolean | null | undefined>;

/**
 * n bars in any order, as arrays: `time`, and the fields by the usual words in any case, such as `open`
 * or `Volume`, by their ids, or by the source of a reference ("600000|11").
 */
export type Bars = { readonly [field: string]: Times | Values };

/** The usual names of the fields, without blanks and underscores and in small letters. */
const fieldWords: ReadonlyMap<number, readonly string[]> = new Map([
  [7, ['open', 'o']],
  [8, ['high', 'h']],
  [9, ['low', 'l']],
  [11, ['close', 'c']],
  [13, ['volume', 'vol', 'v']],
  [19, ['amount', 'turnover']],
  [65, ['openinterest', 'opi', 'oi']],
  [72, ['settle', 'settlement']],
  [2656718, ['avprice', 'averageprice', 'vwap']],
]);

const timeWords = ['datetime', 'timestamp', 'date', 'time'];

/** A field that a script reads; the first name is the one that messages show. */
export interface Need {
  readonly id: number;
  readonly names: readonly string[];
}

export function needOf(id: number): Need {
  return { id, names: [...(fieldWords.get(id) ?? []), String(id)] };
}

const plain = (name: string) => name.replace(/[ _]/g, '').toLowerCase();

export interface Taken {
  readonly keys: Float64Array;
  readonly columns: Column[];
}

export function take(bars: Bars, needs: readonly Need[], timeZone: string | undefined): Taken {
  if (typeof bars !== 'object' || bars === null)
    throw new TypeError('bars are an object of arrays');
  const byName = new Map<string, string[]>();
  for (const name of Object.keys(bars)) {
    const found = byName.get(plain(name));
    if (found === undefined) byName.set(plain(name), [name]);
    else found.push(name);
  }
  const times = arrayOf<Times>(bars, timeNameIn(byName));
  const keys = keysOf(times, timeZone);
  const columns = needs.map((need) => {
    const name = nameOf(need, byName);
    const values = numbersOf(arrayOf<Values>(bars, name), name);
    if (values.length !== keys.length) {
      throw new TypeError(`'${name}' has ${values.length} values for ${keys.length} bars`);
    }
    return { id: need.id, values };
  });
  return { keys, columns };
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
  const numbers = new Float64Array(values.length);
  for (let i = 0; i < numbers.length; ++i) {
    const value: unknown = values[i];
    if (typeof value === 'number') numbers[i] = value;
    else if (value === null || value === undefined) numbers[i] = NaN;
    else if (typeof value === 'bigint' || typeof value === 'boolean') numbers[i] = Number(value);
    else throw new TypeError(`'${name}' holds a ${typeof value} in bar ${i}, and no number`);
  }
  return numbers;
}
