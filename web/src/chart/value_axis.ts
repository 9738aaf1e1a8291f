// The value axis of a pane: its ticks, and tags for the newest close and for levels.
import { inkOn, withAlpha } from './color.ts';
import type { Frame } from './frame.ts';
import { type ShapeRecord, textOf } from './records.ts';
import type { Scale, Tick, Values } from './scale.ts';
import type { Sheet } from './sheet.ts';

export const valueAxisWidth = 66;

/** A value that has a label on the axis. */
export interface Tag {
  value: number;
  text: string;
  color: string;
  isFilled: boolean;
}

/** The texts of ticks, none where a tag stands. The ends of the axis are places of the scale. */
export function tickTexts(
  ticks: readonly Tick[],
  scale: Scale,
  { low, high }: Values,
  height: number,
  tags: readonly Tag[],
  halfTag: number,
): string[] {
  const places = tags.map(({ value }) => scale.place(value));
  const nearTag = (place: number) =>
    places.some((tag) => Math.abs(tag - place) * height < (2 * halfTag - 1) * (high - low));
  return ticks.map(({ value, text }) => (nearTag(scale.place(value)) ? '' : text));
}

export function closeTag(
  { theme, decimals, newestClose, closeBefore }: Sheet,
  scale: Scale,
): Tag[] {
  if (!Number.isFinite(newestClose)) return [];
  const color = newestClose < closeBefore ? theme.palette.fall : theme.palette.rise;
  return [{ value: newestClose, text: scale.text(newestClose, decimals), color, isFilled: true }];
}

export function levelTags(
  levels: ReadonlyMap<ShapeRecord, number>,
  { theme }: Sheet,
  scale: Scale,
  digits: number,
): Tag[] {
  return [...levels].map(([record, value]) => ({
    value,
    text: scale.text(value, Number.isInteger(value) ? 0 : digits),
    color: theme.text(textOf(record, 'LineColor')),
    isFilled: false,
  }));
}

/** Where a tag has its middle: all of it is in the pane. */
export function tagY(frame: Frame, value: number): number {
  const { box, measures } = frame;
  const [highest, lowest] = [box.top + measures.halfTag, box.bottom - measures.halfTag];
  return Math.min(Math.max(frame.y(value), highest), lowest);
}

export function paintTag(frame: Frame, { value, text, color, isFilled }: Tag): void {
  const { ctx, box } = frame;
  const { halfTag, tagRadius, lastPriceAlpha } = frame.measures;
  const y = tagY(frame, value);
  const { width } = frame.measure(text, 11, isFilled);
  if (isFilled) {
    const line = Math.floor(frame.y(value)) + 0.5;
    const ends = [
      { x: box.left, y: line },
      { x: box.right, y: line },
    ];
    frame.line(ends, { color: withAlpha(color, lastPriceAlpha), width: 1, dashes: [1, 3] });
    ctx.beginPath();
    const most = valueAxisWidth - 2;
    ctx.roundRect(box.right + 1, y - halfTag, Math.min(width + 10, most), 2 * halfTag, tagRadius);
    ctx.fillStyle = color;
    ctx.fill();
  }
  ctx.textAlign = 'left';
  ctx.textBaseline = 'middle';
  ctx.fillStyle = isFilled ? inkOn(color) : color;
  ctx.fillText(text, box.right + 6, y + 0.5);
}
