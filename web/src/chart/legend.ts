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
  return own >= 0 && Number.isFinite(value) ? groupedText(value, Math.min(own, 6)) : shortText(value, digits);
}

export class Legend {
  readonly root = element('dl', { class: 'legend' });
  private readonly titled: ShapeRecord[];
  private readonly places: { title: HTMLElement; value: HTMLElement }[];

  constructor(records: readonly ShapeRecord[]) {
    this.titled = records.filter((record) => textOf(record, 'title') !== '');
    this.places = this.titled.map((record) => ({
      title: element('dt', {}, textOf(record, 'title')),
      value: element('dd'),
    }));
    this.root.append(...this.places.map(({ title, value }) => element('div', {}, title, value)));
  }

  /** In pixels; 0 without titles. */
  get height(): number {
    return this.titled.length > 0 ? this.root.offsetHeight + 2 : 0;
  }

  entries(_row: number, digits: number, valueOf: (id: number) => number): LegendEntry[] {
    return this.titled.map((record) => {
      const id = columnOf(record, 'Field1Id');
      const value = id === undefined ? NaN : valueOf(id);
      return { title: textOf(record, 'title'), text: valueText(value, record, digits), record };
    });
  }

  show(entries: readonly LegendEntry[], theme: Theme): void {
    entries.forEach(({ text, record }, i) => {
      const { title, value } = this.places[i];
      setText(value, text);
      title.style.color = value.style.color = theme.text(brushOf(record));
    });
  }
}
