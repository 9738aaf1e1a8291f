// The panes that the page makes of a script's chart, without a page.
import { Frame } from '../../src/chart/frame.ts';
import { entriesOf } from '../../src/chart/legend.ts';
import { paint } from '../../src/chart/paint.ts';
import type { Box } from '../../src/chart/placement.ts';
import { endsFor, rangeInSight } from '../../src/chart/range.ts';
import type { ShapeRecord } from '../../src/chart/records.ts';
import { scaleOf } from '../../src/chart/scale.ts';
import { Sheet } from '../../src/chart/sheet.ts';
import { Theme } from '../../src/chart/theme.ts';
import { paintTimeGrid, paintTimeTexts } from '../../src/chart/time_axis.ts';
import { closeTag, levelTags, tagY, tickTexts } from '../../src/chart/value_axis.ts';
import type { Language, ThemeName } from '../../src/engine/language_types.ts';
import type { BarsAnswer, Drawn, Shown } from '../../src/engine/types.ts';
import type { Desk } from '../unit/support.ts';
import type { Ink } from './ink.ts';
import { Paper } from './paper.ts';

/** A text of the value axis, and how far it is from the pane's upper edge. */
export interface AxisText {
  text: string;
  y: number;
}

export interface PagePane {
  ink: Ink[];
  axis: AxisText[];
  legend: string[];
}

/** A script's chart over all bars of a desk, `rowWidth` pixels for each. */
export class PageChart {
  readonly drawn: Drawn;
  private readonly sheet: Sheet;

  constructor(desk: Desk, language: Language, bars: BarsAnswer, script: string, theme: ThemeName) {
    const answer = desk.script(script);
    if (!answer.sound) throw new Error(`${script}: ${answer.findings[0]?.sentence}`);
    this.drawn = answer as Drawn;
    const shown = new Map<number, readonly Shown[]>(
      desk.records(0, bars.rows).records.map((record) => [record.index, record.shown]),
    );
    const colours = new Theme(theme, language.theme[theme], this.drawn.colours);
    const { decimals, intraday } = bars;
    const { measures } = language;
    this.sheet = new Sheet(this.drawn, desk.view(), shown, colours, decimals, intraday, measures);
  }

  pane(index: number, box: Box, rowWidth: number): PagePane {
    const spec = this.drawn.panes[index];
    const records = spec.records.map((one) => this.drawn.records[one]);
    const levels = new Map<ShapeRecord, number>(
      spec.levels.map(({ record, value }) => [this.drawn.records[record], value]),
    );
    const { sheet } = this;
    const { view, theme, measures } = sheet;
    const sight = { from: 0, to: (box.right - box.left) / rowWidth };
    const seen = records.filter((record) => !levels.has(record));
    const range = rangeInSight(seen, [...levels.values()], view, 0, view.rows);
    const scale = scaleOf('linear', range.high, NaN);
    const ends = endsFor(range, scale, seen);
    const paper = new Paper(box.left, box.top);
    const shownOf = (record: ShapeRecord) => sheet.shownOf(record);
    const frame = new Frame(paper.context, theme, view, measures, box, sight, ends, scale, shownOf);
    paint(frame, records, levels);
    const ticks = scale.ticks(ends, box.bottom - box.top, spec.digits === 0, measures);
    const tags = levelTags(levels, sheet, scale, spec.digits);
    if (index === 0) tags.push(...closeTag(sheet, scale));
    const height = box.bottom - box.top;
    const texts = tickTexts(ticks, scale, ends, height, tags, measures.halfTag);
    const axis = [
      ...ticks.map(({ value }, i) => ({ text: texts[i], y: frame.y(value) })),
      ...tags.map(({ value, text }) => ({ text, y: tagY(frame, value) })),
    ];
    return {
      ink: paper.ink,
      axis: axis.map(({ text, y }) => ({ text, y: y - box.top })),
      legend: entriesOf(records, spec.digits, (id) => view.valueAt(id, view.rows - 1)).map(
        ({ title, text }) => `${title} ${text}`,
      ),
    };
  }

  /** The upright lines of a pane's grid, and the texts below it. */
  time(box: Box, rowWidth: number): { grid: Ink[]; texts: Ink[] } {
    const width = box.right - box.left;
    const sight = { from: 0, to: width / rowWidth };
    const { theme, view, measures } = this.sheet;
    const marks = this.sheet.timeMarks(sight, width);
    const drawn = (paintMarks: typeof paintTimeGrid) => {
      const paper = new Paper(box.left, box.top);
      const ends = { low: 0, high: 1 };
      const scale = scaleOf('linear', 1, 1);
      paintMarks(
        new Frame(paper.context, theme, view, measures, box, sight, ends, scale, () => []),
        marks,
      );
      return paper.ink;
    };
    return {
      grid: drawn(paintTimeGrid),
      texts: drawn(paintTimeTexts).filter(({ kind }) => kind === 'text'),
    };
  }

  /** As the captions tell of the newest bar. */
  get newestTexts(): string[] {
    const { sheet } = this;
    const row = sheet.view.rows - 1;
    return [sheet.timeText(row), sheet.changeText(row)];
  }
}
