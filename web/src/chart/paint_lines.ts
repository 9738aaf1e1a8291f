// Lines: through the values of all bars, between marked bars, and the analytical figures.
import type { Shown } from '../engine/types.ts';
import type { Frame, Point, Stroke } from './frame.ts';
import { columnOf, flagOf, numberOf, type ShapeRecord, textOf } from './records.ts';

/** A line of one value lies from edge to edge, as a level to measure other lines by. */
export function drawLevel(frame: Frame, record: ShapeRecord, value: number): void {
  const { left, right } = frame.box;
  const y = Math.round(frame.y(value)) + 0.5;
  const stroke = frame.strokeOf(record);
  const { levelDashes, lineEase } = frame.measures;
  const dashes = stroke.dashes.length ? stroke.dashes : levelDashes;
  frame.line(
    [
      { x: left, y },
      { x: right, y },
    ],
    { ...stroke, width: stroke.width - lineEase, dashes },
  );
}

export function drawPolyline(frame: Frame, record: ShapeRecord): void {
  const { view } = frame;
  const stroke = frame.strokeOf(record);
  const other = frame.theme.line(textOf(record, 'ConditionColor'));
  const hasBothColours = textOf(record, 'Style') === 'ColorPolyline';
  const isContinuous = flagOf(record, 'IsContinuousLine');
  const { first, second } = view.column(record, 'Field1Id');
  const shows = view.marks(record);
  let color = stroke.color;
  let run: Point[] = [];
  // A slot on each side, so that the line reaches the edges.
  for (
    let slot = Math.max(frame.begin - 1, 0);
    slot < Math.min(frame.end + 1, view.count);
    ++slot
  ) {
    const isShown = shows(slot);
    if (Number.isNaN(second[slot]) || !(isShown || hasBothColours)) {
      if (isContinuous) continue;
      frame.line(run, { ...stroke, color });
      run = [];
      continue;
    }
    const wanted = isShown || !hasBothColours ? stroke.color : other;
    if (wanted !== color && run.length > 0) {
      if (run.length > 1) frame.line(run, { ...stroke, color });
      run = run.slice(-1);
    }
    color = wanted;
    const x = frame.slotX(slot);
    if (view.step > 1) run.push({ x, y: frame.y(first[slot]) });
    run.push({ x, y: frame.y(second[slot]) });
  }
  frame.line(run, { ...stroke, color });
}

/** The line through two points, as far as it is in sight; on beyond the right one with bit 1 of the
 * expansion, beyond the left one with bit 2. */
function segment(frame: Frame, one: Point, other: Point, expansion: number, stroke: Stroke): void {
  const [from, to] = one.x <= other.x ? [one, other] : [other, one];
  const slope = (to.y - from.y) / (to.x - from.x);
  if (!Number.isFinite(slope)) {
    frame.line([from, to], stroke);
    return;
  }
  const y = (x: number) => from.y + slope * (x - from.x);
  const { box } = frame;
  let left = Math.max(expansion & 2 ? box.left : from.x, box.left);
  let right = Math.min(expansion & 1 ? box.right : to.x, box.right);
  if (slope !== 0) {
    const ends = [box.top, box.bottom].map((edge) => from.x + (edge - from.y) / slope);
    left = Math.max(left, Math.min(...ends));
    right = Math.min(right, Math.max(...ends));
  }
  if (left >= right) return;
  frame.line(
    [
      { x: left, y: y(left) },
      { x: right, y: y(right) },
    ],
    stroke,
  );
}

export function drawUprightLines(frame: Frame, record: ShapeRecord): void {
  const { top, bottom } = frame.box;
  const stroke = frame.strokeOf(record);
  for (const slot of frame.slotsThatHold(record, 'Field1VisibleId')) {
    const x = Math.round(frame.slotX(slot)) + 0.5;
    frame.line(
      [
        { x, y: top },
        { x, y: bottom },
      ],
      stroke,
    );
  }
}

export function drawSlopes(frame: Frame, record: ShapeRecord): void {
  const stroke = frame.strokeOf(record);
  const expansion = numberOf(record, 'IsExpand');
  for (const { row, values } of frame.allShown(record)) {
    const price = values.Field1Id ?? NaN;
    const length = values.HorizontalOffset1FieldId ?? NaN;
    if (Number.isNaN(price + length)) continue;
    const start = { x: frame.rowX(row), y: frame.y(price) };
    const rise = frame.y(length * numberOf(record, 'Slope')) - frame.y(0);
    segment(
      frame,
      start,
      { x: start.x + length * frame.rowWidth, y: start.y + rise },
      expansion,
      stroke,
    );
  }
}

/** From bars with the first mark to the next one with the second. A record with a single mark has
 * both ends at the bar, and so has one whose offsets set the ends of a bar with both marks apart;
 * without offsets such a bar ends one line and begins the next. */
export function drawPairs(frame: Frame, record: ShapeRecord): void {
  const stroke = frame.strokeOf(record);
  const expansion = numberOf(record, 'IsExpand');
  const hasSecondMark = columnOf(record, 'Field2VisibleId') !== undefined;
  const endPoint = ({ row, values }: Shown, value: string, offset: string): Point => ({
    x: frame.rowX(row + (values[offset] ?? 0)),
    y: frame.y(values[value] ?? NaN),
  });
  let open: Point | undefined;
  for (const shown of frame.allShown(record)) {
    const start = endPoint(shown, 'Field1Id', 'HorizontalOffset1FieldId');
    const end = endPoint(shown, 'Field2Id', 'HorizontalOffset2FieldId');
    const begins = shown.first !== 0 && Number.isFinite(start.y);
    const ends = hasSecondMark
      ? shown.second === 1 && Number.isFinite(end.y)
      : begins && Number.isFinite(end.y);
    const isWhole = begins && ends && (!hasSecondMark || start.x !== end.x);
    if (isWhole) segment(frame, start, end, expansion, stroke);
    else if (ends && open) segment(frame, open, end, expansion, stroke);
    if (ends) open = undefined;
    if (begins) open = start;
  }
}

/** The newest point that a mark of an anchor shows, in sight or not. */
function anchorOf(frame: Frame, record: ShapeRecord, number: 1 | 2 | 3): Point | undefined {
  const key = ([undefined, 'first', 'second', 'third'] as const)[number]!;
  if (columnOf(record, `Field${number}Id`) === undefined) return undefined;
  const points = frame.allShown(record);
  for (let i = points.length - 1; i >= 0; --i) {
    const value = points[i].values[`Field${number}Id`];
    if ((points[i][key] ?? 1) === 1 && typeof value === 'number') {
      return { x: frame.rowX(points[i].row), y: frame.y(value) };
    }
  }
  return undefined;
}

/** A plain form over the newest anchors. The ratio stretches the swing from the first anchor to the
 * second: the height of an angle line at the second anchor, of the levels, of the wave that is set
 * off from the third. */
export function drawFigure(frame: Frame, record: ShapeRecord): void {
  const style = textOf(record, 'Style');
  const stroke = frame.strokeOf(record);
  const { top, right, bottom } = frame.box;
  const level = (left: number, y: number, name: string) => {
    if (y < top || y > bottom) return;
    frame.line(
      [
        { x: left, y },
        { x: right, y },
      ],
      stroke,
    );
    if (!name) return;
    const { width } = frame.measure(name, 10);
    const color = frame.theme.text(textOf(record, 'LineColor'));
    frame.write(name, { x: right - 3 - width / 2, y: y - 2 }, color);
  };
  const first = anchorOf(frame, record, 1);
  if (first && style.startsWith('Horizontal')) level(first.x, first.y, '');
  const second = anchorOf(frame, record, 2);
  if (!first || !second) return;
  const swing = (second.y - first.y) * numberOf(record, 'Ratio', 1);
  if (style.startsWith('Golden')) {
    const left = Math.min(first.x, second.x);
    for (const [share, name] of frame.measures.goldenShares)
      level(left, first.y + swing * share, name);
  } else if (style.startsWith('Wave')) {
    const third = anchorOf(frame, record, 3);
    if (!third) return;
    const length = Math.abs(second.x - first.x);
    frame.line([first, second, third, { x: third.x + length, y: third.y + swing }], stroke);
  } else {
    segment(frame, first, { x: second.x, y: first.y + swing }, 1, stroke);
  }
}
