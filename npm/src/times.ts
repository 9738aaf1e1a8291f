// Times of bars as row keys: whole numbers written YYYYMMDDhhmmss, as the clock of a zone shows them.

import { roomFor } from './errors.js';

/** A moment, a text such as "2024-01-02 09:35", or a whole number written 20240102 or 20240102093500. */
export type Time = Date | string | number | bigint;
export type Times = ArrayLike<Time>;

const noClock = 1_000_000;
const firstDate = 10_000;
const lastDate = 99_991_231;

export function keysOf(times: Times, zone: Zone): Float64Array {
  const keys = roomFor(times.length);
  for (let i = 0; i < keys.length; ++i) {
    const time = times[i];
    const key = typeof time === 'number' && isKey(time) ? time : keyIn(time, zone);
    if (typeof key === 'string') throw new TypeError(`bar ${i} (the first is 0): ${key}`);
    keys[i] = key;
  }
  return keys;
}

const day = /^\d{4}-?\d\d-?\d\d$/;
const clockTime = /^\d?\d:\d\d(?::\d\d(?:[.,]\d+)?)?$/;

/** Of a day and a clock time that stand apart: the time that they make, or what is wrong. */
export function joinedTimes(days: Times, clocks: ArrayLike<unknown>): string[] {
  if (clocks.length !== days.length)
    throw new TypeError(`'time' has ${clocks.length} values for ${days.length} days of 'date'`);
  return Array.from({ length: days.length }, (_, i) => {
    const joined = joinedTime(days[i], clocks[i]);
    if (joined === undefined) throw new TypeError(`bar ${i} (the first is 0): ${apart}`);
    return joined;
  });
}

export const apart =
  "a 'date' with a 'time' beside it is a day such as \"2024-01-02\" or 20240102, and the 'time' a text such as \"09:35\"; name other arrays otherwise";

/** Nothing for what doesn't make a time. */
export function joinedTime(date: unknown, clock: unknown): string | undefined {
  const written = typeof date === 'number' ? String(date) : date;
  if (typeof written !== 'string' || typeof clock !== 'string') return undefined;
  const time = clock.trim();
  if (!day.test(written.trim()) || !clockTime.test(time)) return undefined;
  return `${written.trim()} ${time.indexOf(':') === 1 ? '0' : ''}${time}`;
}

/** The key, or what is wrong. */
export function keyIn(time: unknown, zone: Zone): number | string {
  if (typeof time === 'number') return keyOfNumber(time);
  if (typeof time === 'bigint') return keyOfNumber(Number(time));
  if (typeof time === 'string') return keyOfText(time, zone);
  if (time instanceof Date) return keyOfMoment(time.getTime(), zone);
  return 'has no time';
}

function keyOfNumber(number: number): number | string {
  const key = number >= firstDate && number <= lastDate ? number * noClock : number;
  if (isKey(key)) return key;
  return `numbers are times only if written as 20240102 or as 20240102093500, and ${number} isn't; of others make Dates`;
}

/** Whether a number is written YYYYMMDDhhmmss. */
function isKey(number: number): boolean {
  const date = Math.floor(number / noClock);
  const clock = number - date * noClock;
  if (!(date >= firstDate && date <= lastDate) || Math.floor(clock) !== clock) return false;
  // Whole numbers of 32 bits, by which long histories are read several times as fast.
  const day = date | 0;
  const time = clock | 0;
  return (
    time < 240000 &&
    time % 10000 < 6000 &&
    time % 100 < 60 &&
    isDate((day / 10000) | 0, ((day / 100) | 0) % 100, day % 100)
  );
}

function isDate(year: number, month: number, day: number): boolean {
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1) return false;
  return day <= 28 || day <= new Date(Date.UTC(2000 + (year % 400), month, 0)).getUTCDate();
}

const form =
  /^(\d{4})-?(\d\d)-?(\d\d)(?:[T ](\d\d):?(\d\d)(?::?(\d\d)(?:[.,]\d+)?)?)?(Z|[+-]\d\d:?\d\d)?$/;

function keyOfText(text: string, zone: Zone): number | string {
  const parts = form.exec(text.trim());
  if (parts === null) return `the time "${text.slice(0, 40)}" can't be read`;
  const [, year, month, day, hour = '00', minute = '00', second = '00', offset] = parts;
  const key = keyOfNumber(Number(`${year}${month}${day}${hour}${minute}${second}`));
  if (offset === undefined || typeof key === 'string') return key;
  const written = offset === 'Z' ? offset : `${offset.slice(0, 3)}:${offset.slice(-2)}`;
  return keyOfMoment(
    Date.parse(`${year}-${month}-${day}T${hour}:${minute}:${second}${written}`),
    zone,
  );
}

function keyOfMoment(moment: number, zone: Zone): number | string {
  if (Number.isNaN(moment)) return 'has no time';
  const clock = new Date(moment + zone.offset(moment));
  const year = clock.getUTCFullYear();
  if (year < 1 || year > 9999) return 'has a time beyond the years 1 to 9999';
  const date = year * 10000 + (clock.getUTCMonth() + 1) * 100 + clock.getUTCDate();
  const time = clock.getUTCHours() * 10000 + clock.getUTCMinutes() * 100 + clock.getUTCSeconds();
  return date * noClock + time;
}

/** What clocks of a zone show beside UTC. They change at full quarters of an hour only. */
export class Zone {
  readonly #format: Intl.DateTimeFormat | undefined;
  readonly #known = new Map<number, number>();

  constructor(name: unknown) {
    if (name === undefined || name === 'UTC') return;
    if (typeof name !== 'string') throw new TypeError('a time zone is a text');
    try {
      this.#format = formatIn(name);
    } catch {
      throw new TypeError(`no time zone is called '${name}'; 'Asia/Shanghai' is one`);
    }
  }

  /** In milliseconds. */
  offset(moment: number): number {
    if (this.#format === undefined) return 0;
    const quarter = Math.floor(moment / 900_000);
    let offset = this.#known.get(quarter);
    if (offset === undefined) {
      offset = this.#shown(quarter * 900_000) - quarter * 900_000;
      this.#known.set(quarter, offset);
    }
    return offset;
  }

  #shown(moment: number): number {
    const parts: Record<string, string> = {};
    for (const { type, value } of this.#format!.formatToParts(moment)) parts[type] = value;
    const number = (name: string) => Number(parts[name]);
    const shown = new Date(0);
    const year = parts['era'] === 'BC' ? 1 - number('year') : number('year');
    shown.setUTCFullYear(year, number('month') - 1, number('day'));
    shown.setUTCHours(number('hour'), number('minute'), number('second'));
    return shown.getTime();
  }
}

function formatIn(timeZone: string): Intl.DateTimeFormat {
  return new Intl.DateTimeFormat('en-US', {
    timeZone,
    hourCycle: 'h23',
    year: 'numeric',
    month: 'numeric',
    day: 'numeric',
    hour: 'numeric',
    minute: 'numeric',
    second: 'numeric',
    era: 'short',
  });
}
