// What stands beside bars: texts, numbers and signs, pictures, notices, sounds and trade signals.
import { inkOn, withAlpha } from './color.ts';
import type { Frame, Point } from './frame.ts';
import { type Box, boxAround, meets, moved } from './placement.ts';
import { columnOf, flagOf, numberOf, type ShapeRecord, textOf } from './records.ts';

function lead(frame: Frame, from: Point, to: Box, color: string): void {
  const end = Math.min(Math.max(from.y, to.top), to.bottom);
  const { farText, leadAlpha } = frame.measures;
  if (Math.abs(end - from.y) < farText) return;
  const x = Math.min(Math.max(from.x, to.left + 2), to.right - 2);
  frame.line([from, { x, y: end }], { color: withAlpha(color, leadAlpha), width: 1, dashes: [] });
}

interface Label {
  text: string;
  size: number;
  color: string;
  bold?: boolean;
  framed?: boolean;
}

/** Writes a text near a point of a row, beside the bar and other texts; nowhere if there is no
 * room. The anchor is the share of the text that lies before the point. */
function label(
  frame: Frame,
  row: number,
  point: Point,
  anchor: [number, number],
  what: Label,
): void {
  const { textSpace, farthestText } = frame.measures;
  const margin = what.framed ? 4 : 1;
  const { width, above, below } = frame.measure(what.text, what.size, what.bold);
  const height = above + below + 2 * margin;
  let wanted = boxAround(point.x, point.y, width + 2 * margin, height, anchor);
  let upwards = anchor[1] > 0.5;
  let tip = point;
  const bar = frame.barAtRow(row);
  if (bar) {
    if (anchor[1] === 0.5) upwards = point.y <= (bar.top + bar.bottom) / 2;
    const around = { ...bar, top: bar.top - textSpace, bottom: bar.bottom + textSpace };
    if (meets(around, wanted)) {
      wanted = moved(wanted, 0, (upwards ? around.top - height : around.bottom) - wanted.top);
      tip = { x: point.x, y: upwards ? bar.top : bar.bottom };
    }
  }
  wanted = moved(
    wanted,
    Math.round(wanted.left) - wanted.left,
    Math.round(wanted.top) - wanted.top,
  );
  const leeway = { ahead: farthestText, behind: farthestText, sideways: true };
  const place = frame.placement.place(wanted, upwards, leeway);
  if (!place) return;
  lead(frame, tip, place, what.color);
  if (what.framed) frame.outline(place, what.color);
  const middle = (place.left + place.right) / 2;
  frame.write(what.text, { x: middle, y: place.bottom - margin - below }, what.color);
}

const fontSize = (record: ShapeRecord) =>
  Math.min(Math.max(numberOf(record, 'FontSize', 14), 8), 30);

/** The dots of a line: neither moved nor left out. */
function drawDots(frame: Frame, record: ShapeRecord, isFilled: boolean): void {
  const { ctx } = frame;
  const radius = Math.min(Math.max(frame.slotWidth * 0.4, 1), fontSize(record) * 0.28);
  ctx.strokeStyle = ctx.fillStyle = frame.theme.line(textOf(record, 'TextColor'));
  ctx.lineWidth = frame.measures.ringLine;
  for (const { row, values } of frame.shown(record)) {
    const y = frame.y(values.Field1Id ?? NaN);
    if (Number.isNaN(y)) continue;
    ctx.beginPath();
    ctx.arc(frame.rowX(row), y, radius, 0, 2 * Math.PI);
    if (isFilled) ctx.fill();
    else ctx.stroke();
  }
}

export function drawText(frame: Frame, record: ShapeRecord): void {
  const isCentred =
    numberOf(record, 'HorizontalAlign') === 1 && numberOf(record, 'VerticalAlign') === 1;
  const sign = textOf(record, 'Text');
  if (isCentred && (sign === '●' || sign === 'O')) return drawDots(frame, record, sign !== 'O');
  const share = (key: string) => Math.min(Math.max(numberOf(record, key, 1) / 2, 0), 1);
  const anchor: [number, number] = [share('HorizontalAlign'), share('VerticalAlign')];
  const color = frame.theme.text(textOf(record, 'TextColor'));
  const digits = Math.min(Math.max(numberOf(record, 'Digit'), 0), 6);
  const hasNumber = columnOf(record, 'NumberFieldId') !== undefined;
  const bold = [...sign].length === 1;
  for (const { row, values } of frame.shown(record)) {
    const price = values.Field1Id;
    const number = values.NumberFieldId;
    if (typeof price !== 'number' || (hasNumber && typeof number !== 'number')) continue;
    const text = hasNumber ? (number as number).toFixed(digits) : sign;
    const x = frame.rowX(row) + numberOf(record, 'HorizontalOffset');
    const y = frame.y(price) - numberOf(record, 'VerticalOffset');
    label(frame, row, { x, y }, anchor, { text, size: fontSize(record), color, bold });
  }
  return undefined;
}

/** A picture's name in a frame, since the pictures are the client's. One that looks at the last bar
 * only lies behind all others. */
export function drawPicture(frame: Frame, record: ShapeRecord): void {
  const name = textOf(record, 'Field1Text');
  const { box, theme } = frame;
  const { backPictureAlpha } = frame.measures;
  if (flagOf(record, 'IsLastCandle')) {
    if (frame.allShown(record).length === 0) return;
    const size = 40;
    frame.measure(name, size, true);
    const foot = { x: (box.left + box.right) / 2, y: box.bottom - 12 - size / 4 };
    frame.write(name, foot, withAlpha(theme.palette.label, backPictureAlpha), false);
    return;
  }
  const what = { text: name, size: 10, color: theme.palette.label, framed: true };
  for (const { row, values } of frame.shown(record)) {
    const price = values.Field1Id;
    if (typeof price === 'number')
      label(frame, row, { x: frame.rowX(row), y: frame.y(price) }, [0.5, 0.5], what);
  }
}

/** A small triangle at the foot of the pane. */
export function drawNotice(frame: Frame, record: ShapeRecord): void {
  const y = frame.box.bottom - 2;
  const half = Math.min(Math.max(frame.slotWidth * 0.6, 1.5), 4.5);
  for (const slot of frame.slotsThatHold(record, 'Field1Id')) {
    const x = frame.slotX(slot);
    frame.area(
      [
        { x, y: y - 2 * half },
        { x: x - half, y },
        { x: x + half, y },
      ],
      frame.theme.palette.notice,
    );
  }
}

/** A note at the head of the pane. */
export function drawSound(frame: Frame, record: ShapeRecord): void {
  const color = frame.theme.palette.notice;
  for (const slot of frame.slotsThatHold(record, 'Field1VisibleId')) {
    const x = frame.slotX(slot);
    const y = frame.box.top + 11;
    frame.line(
      [
        { x: x + 1.5, y },
        { x: x + 1.5, y: y - 8 },
        { x: x + 4.5, y: y - 6 },
      ],
      { color, width: 1.2, dashes: [] },
    );
    frame.disc({ x: x - 0.5, y }, 2, color);
  }
}

export function drawTrade(frame: Frame, record: ShapeRecord): void {
  const word = textOf(record, 'word');
  const side = textOf(record, 'side');
  const count = numberOf(record, 'trade_count');
  const text = count > 0 ? `${word} ${count}` : word;
  const { buy, sell, close_out: closeOut } = frame.theme.palette;
  const color = side === 'buy' ? buy : side === 'sell' ? sell : closeOut;
  for (const slot of frame.slotsThatHold(record, 'Field1Id')) {
    const bar = frame.barAt(slot);
    if (bar) drawSign(frame, frame.slotX(slot), bar, { text, color, side });
  }
}

/** The sign stands at the bar, buying points up from below it, selling down from above it, closing
 * all is a square above; the word beyond it. */
function drawSign(
  frame: Frame,
  x: number,
  bar: Box,
  sign: { text: string; color: string; side: string },
): void {
  const { textSpace, tagRadius } = frame.measures;
  const half = 5;
  const height = 9;
  const pointsUp = sign.side === 'buy';
  const top = pointsUp ? bar.bottom + textSpace : bar.top - textSpace - height;
  const wanted = { left: x - half, top, right: x + half, bottom: top + height };
  const isDense = frame.slotWidth < 3;
  const place =
    frame.placement.place(wanted, !pointsUp, { ahead: isDense ? 18 : 40 }) ??
    (isDense ? undefined : frame.placement.place(wanted, !pointsUp, { ahead: 40, sideways: true }));
  if (!place) return;
  const middle = (place.left + place.right) / 2;
  const foot = pointsUp ? place.bottom : place.top;
  const peak = pointsUp ? place.top : place.bottom;
  if (sign.side === 'none') {
    frame.fill(
      { left: middle - 4, top: place.top, right: middle + 4, bottom: place.bottom - 1 },
      sign.color,
    );
  } else {
    const corners = [
      { x: middle, y: peak },
      { x: place.left - 0.5, y: foot },
      { x: place.right + 0.5, y: foot },
    ];
    frame.area(corners, sign.color);
  }
  const { width } = frame.measure(sign.text, 10, true);
  const word = boxAround(middle, foot + (pointsUp ? 1 : -1), width + 7, 13, [
    0.5,
    pointsUp ? 0 : 1,
  ]);
  const tag = frame.placement.place(word, !pointsUp, { ahead: 24, sideways: true });
  if (!tag) return;
  frame.ctx.beginPath();
  frame.ctx.roundRect(tag.left, tag.top, tag.right - tag.left, tag.bottom - tag.top, tagRadius);
  frame.ctx.fillStyle = sign.color;
  frame.ctx.fill();
  const base = { x: (tag.left + tag.right) / 2, y: tag.bottom - 3 };
  frame.write(sign.text, base, inkOn(sign.color), false);
}
