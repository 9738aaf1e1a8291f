// Draws the records of a pane, each by what its kind and style ask for.
import { type Frame, isBars } from './frame.ts';
import { drawBackground, drawCandles, drawRegion, drawSticks, drawVolume } from './paint_bars.ts';
import {
  drawFigure,
  drawPairs,
  drawPolyline,
  drawSlopes,
  drawUprightLines,
  drawLevel,
} from './paint_lines.ts';
import { drawNotice, drawPicture, drawSound, drawText, drawTrade } from './paint_marks.ts';
import { type ShapeRecord, textOf } from './records.ts';

type Draw = (frame: Frame, record: ShapeRecord) => void;

/** A kind, a part of its style, and how it is drawn; the first row that fits counts. The range of an
 * axis has no ink of its own. */
const rows: readonly (readonly [kind: string, style: string, draw: Draw])[] = [
  ['PolylineShape', 'Curve', drawFigure],
  ['PolylineShape', 'StraightLine', drawFigure],
  ['PolylineShape', '', drawPolyline],
  ['StraightLineShape', 'Vert', drawUprightLines],
  ['StraightLineShape', 'Slope', drawSlopes],
  ['StraightLineShape', '', drawPairs],
  ['BarShape', '', drawSticks],
  ['VolumeShape', '', drawVolume],
  ['CandleShape', '', drawCandles],
  ['TextShape', '', drawText],
  ['ImageShape', '', drawPicture],
  ['RectShape', '', drawBackground],
  ['PolygonShape', '', drawRegion],
  ['NoticeShape', '', drawNotice],
  ['FuturesTradeShape', '', drawTrade],
  ['SoundShape', '', drawSound],
];

export function drawOf(record: ShapeRecord): Draw | undefined {
  const style = textOf(record, 'Style');
  return rows.find(([kind, part]) => record.ShapeName === kind && style.includes(part))?.[2];
}

/** The records of a pane, in the order in which they lie over one another. */
export function paint(
  frame: Frame,
  records: readonly ShapeRecord[],
  levels: ReadonlyMap<ShapeRecord, number>,
): void {
  const visible = records.filter((record) => record.hidden !== true);
  for (const record of visible) if (isBars(record)) frame.keepClear(record);
  for (const record of visible) {
    const level = levels.get(record);
    if (level === undefined) drawOf(record)?.(frame, record);
    else drawLevel(frame, record, level);
  }
}
