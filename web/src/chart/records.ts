// Drawing records as the server describes them: keys with texts and numbers.

export type ShapeRecord = Readonly<Record<string, unknown>>;

export function textOf(record: ShapeRecord, key: string): string {
  const value = record[key];
  return typeof value === 'string' ? value : '';
}

export function numberOf(record: ShapeRecord, key: string, absent = 0): number {
  const value = record[key];
  return typeof value === 'number' && Number.isFinite(value) ? value : absent;
}

export function flagOf(record: ShapeRecord, key: string): boolean {
  return numberOf(record, key) === 1;
}

/** The id of a column that the record points to. */
export function columnOf(record: ShapeRecord, key: string): number | undefined {
  const id = numberOf(record, key, -1);
  return id < 0 ? undefined : id;
}

export function isKind(record: ShapeRecord, kind: string): boolean {
  return record.ShapeName === kind;
}

/** A line through few anchors, or levels at them. */
export function isFigure(record: ShapeRecord): boolean {
  return isKind(record, 'PolylineShape') && /Curve|StraightLine/.test(textOf(record, 'Style'));
}

/** Whether a record stands at single bars with values of their own, so that the columns in sight
 * don't say all of it. */
export function standsAtBars(record: ShapeRecord): boolean {
  if (isKind(record, 'StraightLineShape')) return !textOf(record, 'Style').startsWith('Vert');
  if (isKind(record, 'RectShape')) return flagOf(record, 'IsLastCandle');
  return isKind(record, 'TextShape') || isKind(record, 'ImageShape') || isFigure(record);
}

/** The colour of the title: a record has one of these keys; sticks of two colours have a title of
 * neither. */
export function brushOf(record: ShapeRecord): string {
  const upper = textOf(record, 'UpperShadowColor');
  if (upper !== textOf(record, 'LowerShadowColor')) return 'Theme.Label';
  return textOf(record, 'LineColor') + textOf(record, 'TextColor') + upper;
}
