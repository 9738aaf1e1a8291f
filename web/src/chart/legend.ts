// Titles of a pane's records with their values at the crosshair, or at the newest bar.
import { element, setText } from '../dom.ts';
import { groupedText, shortText } from './numbers.ts';
import { brushOf, columnOf, numberOf, type ShapeRecord, textOf } from './records.ts';
import type { Theme } from './theme.ts';

export interface LegendEntry {
  title: string;
  text: string;
  record: ShapeRecord;
}

function valueText(value: number, record: ShapeRecord, digits: number): string {
  const own = numberOf(record, 'Digit', -1);
  return own >= 0 && Number.isFinite(value)
    ? groupedText(value, Math.min(own, 6))
    : shortText(value, digits);
}

const hasTitle = (record: ShapeRecord): boolean => textOf(record, 'title') !== '';

/** Of the records that have a title. */
export function entriesOf(
  records: readonly ShapeRecord[],
  digits: number,
  valueOf: (id: number) => number,
): LegendEntry[] {
  return records.filter(hasTitle).map((record) => {
    const id = columnOf(record, 'Field1Id');
    const value = id === undefined ? NaN : valueOf(id);
    return { title: textOf(record, 'title'), text: valueText(value, record, digits), record };
  });
}

export class Legend {
  readonly root = element('dl', { class: 'legend' });
  private titled: ShapeRecord[] = [];
  private places: { title: HTMLElement; value: HTMLElement }[] = [];

  take(records: readonly ShapeRecord[]): void {
    this.titled = records.filter(hasTitle);
    if (this.places.length !== this.titled.length) this.makePlaces(this.titled.length);
    this.titled.forEach((record, i) => setText(this.places[i].title, textOf(record, 'title')));
  }

  /** In pixels; 0 without titles. */
  get height(): number {
    return this.titled.length > 0 ? this.root.offsetHeight + 2 : 0;
  }

  entries(digits: number, valueOf: (id: number) => number): LegendEntry[] {
    return entriesOf(this.titled, digits, valueOf);
  }

  show(entries: readonly LegendEntry[], theme: Theme): void {
    entries.forEach(({ text, record }, i) => {
      const { title, value } = this.places[i];
      setText(value, text);
      title.style.color = value.style.color = theme.text(brushOf(record));
    });
  }

  private makePlaces(count: number): void {
    this.places = Array.from({ length: count }, () => ({
      title: element('dt'),
      value: element('dd'),
    }));
    this.root.replaceChildren(
      ...this.places.map(({ title, value }) => element('div', {}, title, value)),
    );
  }
}
