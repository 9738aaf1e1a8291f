// The part of the time axis in sight, in rows, and how zooming and panning change it.
import type { Sight } from './frame.ts';

/** Bars that a chart shows at first. */
export const usualBars = 250;

const fewestBars = 8;
/** Share of the sight that stays empty beyond the newest bar. */
const roomBehind = 0.04;

const spanOf = ({ from, to }: Sight): number => to - from;

/** The nearest sight that shows bars, and not more empty room than there may be. */
export function keptIn(sight: Sight, rows: number): Sight {
  const most = rows / (1 - roomBehind) + 1;
  const span = Math.min(
    Math.max(spanOf(sight), Math.min(fewestBars, most)),
    Math.max(most, fewestBars),
  );
  const last = rows + roomBehind * span;
  const from = Math.min(Math.max(sight.from, Math.min(0, last - span)), Math.max(last - span, 0));
  return { from, to: from + span };
}

/** The newest so many bars. */
export function newest(count: number, rows: number): Sight {
  const span = Math.min(count, rows) / (1 - roomBehind);
  return keptIn({ from: rows - span * (1 - roomBehind), to: rows + roomBehind * span }, rows);
}

/** A factor below 1 shows fewer bars; the place `fixed` stays where it is. */
export function zoomed(sight: Sight, factor: number, fixed: number, rows: number): Sight {
  const span = spanOf(keptIn({ from: 0, to: spanOf(sight) * factor }, rows));
  const share = (fixed - sight.from) / spanOf(sight);
  return keptIn({ from: fixed - share * span, to: fixed + (1 - share) * span }, rows);
}

export function panned(sight: Sight, by: number, rows: number): Sight {
  return keptIn({ from: sight.from + by, to: sight.to + by }, rows);
}

/** The sight moved by as little as it takes to show a row. */
export function showing(sight: Sight, row: number, rows: number): Sight {
  if (row >= sight.from && row + 1 <= sight.to) return sight;
  return panned(sight, row + 0.5 - (sight.from + sight.to) / 2, rows);
}

/** Rows to ask the server for: slots of `step` rows, no more in sight than pixels, with as much on
 * each side to pan into. */
export interface Wanted {
  from: number;
  to: number;
  step: number;
}

/** A power of two or half as much again, so that small changes of the sight keep it. */
function stepFor(rowsPerPixel: number): number {
  if (rowsPerPixel <= 1) return 1;
  const power = 2 ** Math.floor(Math.log2(rowsPerPixel));
  return rowsPerPixel <= power
    ? power
    : rowsPerPixel <= 1.5 * power && power > 1
      ? 1.5 * power
      : 2 * power;
}

export function wantedFor(sight: Sight, pixels: number, rows: number): Wanted {
  const step = stepFor(spanOf(sight) / Math.max(pixels, 1));
  const margin = Math.max(spanOf(sight), 32);
  const from = Math.max(Math.floor((sight.from - margin) / step) * step, 0);
  const to = Math.min(Math.ceil((sight.to + margin) / step) * step, rows);
  return { from, to: Math.max(to, Math.min(from + 1, rows)), step };
}

/** Whether what is loaded shows the sight as well as what is wanted would. */
export function serves(loaded: Wanted, sight: Sight, wanted: Wanted, rows: number): boolean {
  return (
    loaded.step === wanted.step &&
    loaded.from <= Math.max(Math.floor(sight.from), 0) &&
    loaded.to >= Math.min(Math.ceil(sight.to), rows)
  );
}
