// How the values of a pane go up its axis: evenly, by their logarithms, or told as percent of the
// first close in sight.
import type { Measures } from '../engine/language_types.ts';
import { multiples, niceStep, shortText, tickText } from './numbers.ts';

type TickMeasures = Pick<Measures, 'tickRoom' | 'leastTickRoom' | 'enoughTicks'>;

export type ScaleName = 'linear' | 'log' | 'percent';

/** The ends of an axis. */
export interface Values {
  low: number;
  high: number;
}

export interface Tick {
  value: number;
  text: string;
}

export interface Scale {
  /** Has no place for 0 and what lies below. */
  isLogged: boolean;
  /** A measure of values that grows evenly on the axis. */
  place(value: number): number;
  value(place: number): number;
  /** Whole numbers only for a pane of whole values. */
  ticks(values: Values, height: number, isWhole: boolean, measures: TickMeasures): Tick[];
  text(value: number, digits: number): string;
}

function evenSteps(
  { low, high }: Values,
  height: number,
  isWhole: boolean,
  { tickRoom, leastTickRoom, enoughTicks }: TickMeasures,
): { step: number; values: number[] } {
  const most = Math.max(1, height / leastTickRoom);
  let count = Math.max(1, height / tickRoom);
  for (;;) {
    const step = Math.max(niceStep(high - low, count), isWhole ? 1 : 0);
    const values = multiples(step, low, high);
    count *= 1.5;
    if (values.length >= enoughTicks || count >= most) return { step, values };
  }
}

const reachOf = ({ low, high }: Values): number => Math.max(Math.abs(low), Math.abs(high));

const linear: Scale = {
  isLogged: false,
  place: (value) => value,
  value: (place) => place,
  ticks: (values, height, isWhole, measures) => {
    const { step, values: found } = evenSteps(values, height, isWhole, measures);
    return found.map((value) => ({ value, text: tickText(value, step, reachOf(values)) }));
  },
  text: shortText,
};

/** Below any pane: a logarithm of what has none. */
const leastLogged = 1e-300;
/** Up to a span of so many times its low end an axis of logarithms has even steps. */
const nearlyEven = 1.5;

const logarithmic: Scale = {
  isLogged: true,
  place: (value) => Math.log(Math.max(value, leastLogged)),
  value: (place) => Math.exp(place),
  ticks: (values, height, isWhole, measures) =>
    values.high < nearlyEven * values.low
      ? linear.ticks(values, height, isWhole, measures)
      : loggedTicks(values, height, isWhole, 2 * measures.leastTickRoom),
  text: shortText,
};

/** Powers of ten first, then the multiples of ever finer steps, each where it has room. */
function loggedTicks(values: Values, height: number, isWhole: boolean, room: number): Tick[] {
  const { low, high } = values;
  const pixels = height / Math.log(high / low);
  const ticks: Tick[] = [];
  const add = (value: number, step: number) => {
    const isNear = (other: Tick) => Math.abs(Math.log(value / other.value)) * pixels < room;
    if (!ticks.some(isNear)) ticks.push({ value, text: tickText(value, step, reachOf(values)) });
  };
  const finest = isWhole ? Math.max(low / 50, 1) : low / 50;
  const highest = 10 ** Math.floor(Math.log10(high));
  for (let power = highest; power >= low; power /= 10) add(power, power);
  for (let power = highest; power >= finest; power /= 10) {
    for (const step of [power, power / 2, power / 5].filter((step) => step >= finest))
      for (const value of multiples(step, low, high)) add(value, step);
  }
  return ticks.sort((one, other) => one.value - other.value);
}

function percentOf(base: number): Scale {
  const share = (value: number) => 100 * (value / base - 1);
  const signed = (text: string) => `${/^-|^[0.]*$/.test(text) ? '' : '+'}${text}%`;
  return {
    ...linear,
    ticks: ({ low, high }, height, _isWhole, measures) => {
      const shares = { low: share(low), high: share(high) };
      const { step, values } = evenSteps(shares, height, false, measures);
      return values.map((value) => ({
        value: base * (1 + value / 100),
        text: signed(tickText(value, step, reachOf(shares))),
      }));
    },
    text: (value) => signed(share(value).toFixed(Math.abs(share(value)) < 100 ? 2 : 0)),
  };
}

/** For values that are drawn so many times as high as they are. */
export const multiplied = (scale: Scale, factor: number): Scale => ({
  ...scale,
  place: (value) => scale.place(factor * value),
});

/** An axis can't show what was chosen where nothing in sight is above 0: it is even, then. */
export function scaleOf(name: ScaleName, highest: number, base: number): Scale {
  if (name === 'log' && highest > 0) return logarithmic;
  if (name === 'percent' && base > 0) return percentOf(base);
  return linear;
}
