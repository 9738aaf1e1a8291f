// The value axis of a pane: its ticks, and tags for the newest close and for levels.
import type { Measures } from '../engine/types.ts';
import { inkOn, withAlpha } from './color.ts';
import type { Frame } from './frame.ts';
import { multiples, niceStep, shortText, tickText } from './numbers.ts';
import { type ShapeRecord, textOf } from './records.ts';
import type { Sheet } from './sheet.ts';

export const valueAxisWidth = 66;

export interface Values {
  low: number;
  high: number;
}

/** A value that has a label on the axis. */
export interface Tag {
  value: number;
  text: string;
  color: string;
  isFilled: boolean;
}

const tagHeight = 16;

/** Whole numbers only for a pane of whole values. */
export function ticksOf(
  { low, high }: Values,
  height: number,
  isWhole: boolean,
  { tickRoom, leastTickRoom, enoughTicks }: Measures,
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

/** The texts of ticks, none where a tag stands or half of it would be cut off. */
export function tickTexts(
  values: readonly number[],
  step: number,
  { low, high }: Values,
  height: number,
  tags: readonly Tag[],
): string[] {
  const nearTag = (value: number) =>
    tags.some((tag) => Math.abs(tag.value - value) * height < (tagHeight - 1) * (high - low));
  const margin = ((high - low) / height) * 7;
  const isCut = (value: number) => value > high - margin || value < low + margin;
  const reach = Math.max(Math.abs(low), Math.abs(high));
  return values.map((value) =>
    nearTag(value) || isCut(value) ? '' : tickText(value, step, reach),
  );
}

export function closeTag({ theme, decimals, newestClose, closeBefore }: Sheet): Tag[] {
  if (!Number.isFinite(newestClose)) return [];
  const color = newestClose < closeBefore ? theme.palette.fall : theme.palette.rise;
  return [{ value: newestClose, text: shortText(newestClose, decimals), color, isFilled: true }];
}

export function levelTags(
  levels: ReadonlyMap<ShapeRecord, number>,
  { theme }: Sheet,
  digits: number,
): Tag[] {
  return [...levels].map(([record, value]) => ({
    value,
    text: shortText(value, Number.isInteger(value) ? 0 : digits),
    color: theme.text(textOf(record, 'LineColor')),
    isFilled: false,
  }));
}

export function paintTag(frame: Frame, { value, text, color, isFilled }: Tag): void {
  const { ctx, box } = frame;
  const y = frame.y(value);
  const { width } = frame.measure(text, 11, isFilled);
  if (isFilled) {
    const line = Math.round(y) + 0.5;
    const ends = [
      { x: box.left, y: line },
      { x: box.right, y: line },
    ];
    frame.line(ends, { color: withAlpha(color, 0.6), width: 1, dashes: [1, 3] });
    ctx.beginPath();
    const most = valueAxisWidth - 2;
    ctx.roundRect(box.right + 1, y - tagHeight / 2, Math.min(width + 10, most), tagHeight, 3);
    ctx.fillStyle = color;
    ctx.fill();
  }
  ctx.textAlign = 'left';
  ctx.textBaseline = 'middle';
  ctx.fillStyle = isFilled ? inkOn(color) : color;
  ctx.fillText(text, box.right + 6, y + 0.5);
}
