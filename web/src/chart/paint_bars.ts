// What stands at bars: candles, sticks and columns, volume, areas and backgrounds.
import type { Frame, Point } from './frame.ts';
import { flagOf, numberOf, type ShapeRecord, textOf } from './records.ts';

const openField = 7;
const closeField = 11;

function candleBrush(record: ShapeRecord, open: number, close: number): string {
  if (flagOf(record, 'IsColorKLine')) return textOf(record, 'FilledColor');
  if (close === open) return textOf(record, 'EqualShadowColor');
  return textOf(record, close > open ? 'UpperShadowColor' : 'LowerShadowColor');
}

export function drawCandles(frame: Frame, record: ShapeRecord): void {
  const { view, theme, barWidth } = frame;
  const [opens, highs, lows, closes] = ['OpenField', 'HighField', 'LowField', 'CloseField'].map(
    (key) => view.column(record, key),
  );
  const shows = view.marks(record);
  const isAmerican = textOf(record, 'Style') === 'American';
  for (let slot = frame.begin; slot < frame.end; ++slot) {
    const open = opens.first[slot];
    const close = closes.second[slot];
    if (!shows(slot) || Number.isNaN(open + close)) continue;
    const high = Math.max(
      open,
      close,
      ...[highs.first[slot], highs.second[slot]].filter(Number.isFinite),
    );
    const low = Math.min(
      open,
      close,
      ...[lows.first[slot], lows.second[slot]].filter(Number.isFinite),
    );
    const color = theme.line(candleBrush(record, open, close));
    const body = frame.barBox(frame.slotX(slot), barWidth, frame.y(open), frame.y(close));
    const middle = body.left + (barWidth - 1) / 2;
    frame.fill(frame.barBox(frame.slotX(slot), 1, frame.y(high), frame.y(low)), color);
    if (isAmerican) {
      const tick = (left: number, right: number, y: number) =>
        frame.fill({ left, right, top: Math.round(y), bottom: Math.round(y) + 1 }, color);
      tick(body.left, middle, frame.y(open));
      tick(middle, body.right, frame.y(close));
      continue;
    }
    const isHollow = flagOf(record, 'IsColorKLine') ? flagOf(record, 'IsFilled') : close > open;
    frame.fill(body, isHollow && barWidth > 2 ? theme.palette.ground : color);
    if (isHollow && barWidth > 2) frame.outline(body, color);
  }
}

/** `IsFilled` asks for the outline only, except from sticks of two colours, which always have it.
 * Columns stand on 0, slim and full ones for the first mark, wide outlines for the second. */
export function drawSticks(frame: Frame, record: ShapeRecord): void {
  const { view, theme, barWidth } = frame;
  const upper = theme.line(textOf(record, 'UpperShadowColor'));
  const lower = theme.line(textOf(record, 'LowerShadowColor'));
  const byMark = flagOf(record, 'IsVolStick');
  const bySign = flagOf(record, 'IsColorStick');
  const isColumns = textOf(record, 'Style') === 'DoubleRect';
  const slim = 2 * Math.floor(barWidth / 4) + 1;
  let width = numberOf(record, 'LineWidth', -1);
  if (bySign) width = Math.max(width, slim);
  if (width <= 0) width = isColumns ? slim : barWidth;
  width = Math.min(width, Math.max(barWidth, 1));
  const isHollow = flagOf(record, 'IsFilled') && !byMark && !bySign && width > 2;
  const zero = frame.y(0);
  const first = view.column(record, 'Field1Id');
  const second = view.column(record, 'Field2Id');
  const each = (
    shows: (slot: number) => boolean,
    draw: (slot: number, from: number, to: number) => void,
  ) => {
    for (let slot = frame.begin; slot < frame.end; ++slot) {
      if (!shows(slot) && !byMark) continue;
      const ends = isColumns ? [zero] : [frame.y(second.first[slot]), frame.y(second.second[slot])];
      const ys = [frame.y(first.first[slot]), frame.y(first.second[slot]), ...ends];
      if (!ys.some(Number.isNaN)) draw(slot, Math.min(...ys), Math.max(...ys));
    }
  };
  const marks = view.marks(record);
  each(marks, (slot, from, to) => {
    const isUp = byMark ? marks(slot) : from < zero - 1e-9;
    const box = frame.barBox(frame.slotX(slot), width, from, to);
    if (isHollow) frame.outline(box, isUp ? upper : lower);
    else frame.fill(box, isUp ? upper : lower);
  });
  if (!isColumns) return;
  each(view.marks(record, 'Field2VisibleId'), (slot, from, to) => {
    frame.outline(frame.barBox(frame.slotX(slot), barWidth, from, to), lower);
  });
}

export function drawVolume(frame: Frame, record: ShapeRecord): void {
  const { view, theme } = frame;
  const { volumeAlpha } = frame.measures;
  const rise = theme.area(textOf(record, 'UpperShadowColor'), volumeAlpha);
  const fall = theme.area(textOf(record, 'LowerShadowColor'), volumeAlpha);
  const volume = view.column(record, 'Field1Id');
  const { second: close } = view.track(closeField);
  const { first: open } = view.track(view.has(openField) ? openField : closeField);
  const zero = frame.y(0);
  for (let slot = frame.begin; slot < frame.end; ++slot) {
    const value = Math.max(volume.first[slot], volume.second[slot]);
    if (!(value > 0)) continue;
    const box = frame.barBox(frame.slotX(slot), frame.barWidth, frame.y(value), zero);
    frame.fill(box, close[slot] < open[slot] ? fall : rise);
  }
}

/** Behind marked bars; from edge to edge for a record that looks at the last bar only. */
export function drawBackground(frame: Frame, record: ShapeRecord): void {
  const { view, ctx, box } = frame;
  const { backgroundAlpha } = frame.measures;
  const color = frame.theme.area(textOf(record, 'FilledColor'), backgroundAlpha);
  const key = textOf(record, 'GradientColor');
  const end = key ? frame.theme.area(key, backgroundAlpha) : color;
  const draw = (left: number, right: number) => {
    const across = flagOf(record, 'GradientDirection');
    const gradient = across
      ? ctx.createLinearGradient(left, 0, right, 0)
      : ctx.createLinearGradient(0, box.top, 0, box.bottom);
    gradient.addColorStop(0, color);
    gradient.addColorStop(1, end);
    ctx.fillStyle = gradient;
    ctx.fillRect(left, box.top, right - left, box.bottom - box.top);
  };
  if (flagOf(record, 'IsLastCandle')) {
    if (frame.allShown(record).length > 0) draw(box.left, box.right);
    return;
  }
  const shows = view.marks(record);
  let left: number | undefined; // of marked slots side by side
  for (let slot = frame.begin; slot <= frame.end; ++slot) {
    const edge = Math.round(frame.x(view.from + slot * view.step));
    const isMarked = slot < frame.end && shows(slot);
    if (isMarked) left ??= edge;
    else if (left !== undefined) {
      draw(left, edge);
      left = undefined;
    }
  }
}

/** The area between two lines. */
export function drawRegion(frame: Frame, record: ShapeRecord): void {
  const { view } = frame;
  const color = frame.theme.area(textOf(record, 'FilledColor'), frame.measures.regionAlpha);
  const shows = view.marks(record);
  const first = view.column(record, 'Field1Id');
  const second = view.column(record, 'Field2Id');
  let upper: Point[] = [];
  let lower: Point[] = [];
  for (
    let slot = Math.max(frame.begin - 1, 0);
    slot <= Math.min(frame.end + 1, view.count);
    ++slot
  ) {
    const values = [first.first[slot], first.second[slot], second.first[slot], second.second[slot]];
    const x = frame.slotX(slot);
    if (slot < view.count && shows(slot) && !values.some(Number.isNaN)) {
      upper.push({ x, y: frame.y(Math.max(...values)) });
      lower.push({ x, y: frame.y(Math.min(...values)) });
      continue;
    }
    if (upper.length > 0) frame.area([...upper, ...lower.reverse()], color);
    upper = [];
    lower = [];
  }
  if (upper.length > 0) frame.area([...upper, ...lower.reverse()], color);
}
