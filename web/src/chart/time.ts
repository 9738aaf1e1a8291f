// Row keys as dates and times, and the marks of the time axis.

/** YYYYMMDDhhmmss as a number, of which a double keeps every digit. */
export type Key = number;

export interface TimeMark {
  /** Of the keys that were given. */
  index: number;
  text: string;
  /** Where a month or a year begins, and with bars of a day where a day does. */
  isStrong: boolean;
  isYear: boolean;
}

interface Moment {
  year: number;
  month: number;
  day: number;
  /** Of the day. */
  minute: number;
}

const months = ['Jan', 'Feb', 'Mar', 'Apr', 'May', 'Jun', 'Jul', 'Aug', 'Sep', 'Oct', 'Nov', 'Dec'];

function momentOf(key: Key): Moment {
  const part = (size: number, modulus: number) => Math.floor(key / size) % modulus;
  return {
    year: Math.floor(key / 1e10),
    month: part(1e8, 100),
    day: part(1e6, 100),
    minute: part(1e4, 100) * 60 + part(100, 100),
  };
}

const monthNumber = ({ year, month }: Moment) => year * 12 + month - 1;
const dayNumber = ({ year, month, day }: Moment) =>
  Math.floor(Date.UTC(year, month - 1, day) / 864e5);
const minuteNumber = (at: Moment) => dayNumber(at) * 1440 + at.minute;

type Name = 'year' | 'month' | 'day' | 'time';

/** Spans of time whose first bar is marked, and the number that tells one span from the next. */
const spans: { name: Name; number: (at: Moment) => number }[] = [
  ...[100, 10, 5, 1].map((years) => ({
    name: 'year' as const,
    number: (at: Moment) => Math.floor(at.year / years),
  })),
  ...[6, 3, 1].map((count) => ({
    name: 'month' as const,
    number: (at: Moment) => Math.floor(monthNumber(at) / count),
  })),
  { name: 'day', number: (at) => Math.floor((dayNumber(at) + 3) / 7) },
  { name: 'day', number: dayNumber },
  ...[360, 120, 60, 30, 15, 5, 1].map((minutes) => ({
    name: 'time' as const,
    number: (at: Moment) => Math.floor(minuteNumber(at) / minutes),
  })),
];

const twoDigits = (number: number) => String(number).padStart(2, '0');
const monthText = ({ month }: Moment) => months[Math.min(Math.max(month, 1), 12) - 1];

function textOf(at: Moment, name: Name, intraday: boolean): string {
  if (name === 'year') return String(at.year);
  if (name === 'time')
    return `${twoDigits(Math.floor(at.minute / 60))}:${twoDigits(at.minute % 60)}`;
  if (intraday) return `${monthText(at)} ${at.day}`;
  return name === 'month' ? monthText(at) : String(at.day);
}

export function isIntraday(keys: ArrayLike<Key>): boolean {
  for (let i = 0; i < keys.length; ++i) if (keys[i] % 1e6 !== 0) return true;
  return false;
}

/** Marks at the beginnings of the greatest spans that have room, `room` being the least distance. */
export function timeMarks(keys: ArrayLike<Key>, room: number): TimeMark[] {
  if (keys.length === 0) return [];
  const intraday = isIntraday(keys);
  const moments = Array.from(keys, momentOf);
  const most = moments.length / room + 1;
  const marks: TimeMark[] = [];
  const mark = (index: number, name: Name) => {
    const isYear = name === 'year';
    const isStrong = isYear || name === 'month' || (intraday && name === 'day');
    marks.push({ index, text: textOf(moments[index], name, intraday), isStrong, isYear });
  };
  for (const { name, number } of spans) {
    const begins: number[] = [];
    for (let i = 1; i < moments.length; ++i) {
      if (number(moments[i]) !== number(moments[i - 1])) begins.push(i);
    }
    if (begins.length > most) break;
    for (const index of begins) {
      if (marks.every((other) => Math.abs(other.index - index) >= room)) mark(index, name);
    }
  }
  if (marks.length === 0) mark(0, 'day');
  return marks.sort((one, other) => one.index - other.index);
}

/** "2024-01-08" or, within a day, "2024-01-08 09:35", with seconds if there are any. */
export function keyText(key: Key, intraday: boolean): string {
  if (!Number.isFinite(key)) return '';
  const digits = String(key).padStart(14, '0');
  const date = `${digits.slice(0, 4)}-${digits.slice(4, 6)}-${digits.slice(6, 8)}`;
  if (!intraday) return date;
  const seconds = digits.slice(12, 14);
  return `${date} ${digits.slice(8, 10)}:${digits.slice(10, 12)}${seconds === '00' ? '' : `:${seconds}`}`;
}
