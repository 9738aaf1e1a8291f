// What the script asks for beside the bars: what is there, what is missing, and a form for it.
import { element } from '../dom.ts';
import type { Drawn, Subject } from '../engine/types.ts';

export interface DataEvents {
  changed: (subject: Subject) => void;
  /** Of longer periods the bar under way is shown, or the last finished one. */
  forming: (on: boolean) => void;
  /** Bars of another security, from a file. */
  take: (name: string, file: File) => void;
}

const texts = [
  ['code', 'Code'],
  ['market', 'Market'],
] as const;
const numbers = [
  ['minPrice', 'MINPRICE'],
  ['unit', 'UNIT'],
  ['shareCountPerUnit', 'SHARECOUNTPERUNIT'],
] as const;

export class Data {
  private readonly needs = element('ul', {
    class: 'need-list',
    'aria-label': 'What the script needs',
  });
  private readonly form = element('form', { class: 'bar' });
  private readonly calendar = element('textarea', {
    rows: 2,
    placeholder: 'Trading calendar, JSON',
    'aria-label': 'Trading calendar',
    spellcheck: 'false',
  });
  private readonly forming = element('input', { type: 'checkbox', id: 'forming' });
  private readonly inputs = new Map<keyof Subject, HTMLInputElement>();

  constructor(
    root: HTMLElement,
    private readonly events: DataEvents,
  ) {
    for (const [key, title] of texts) this.addInput(key, title, 'text');
    for (const [key, title] of numbers) this.addInput(key, title, 'number');
    this.form.append(this.calendar, element('button', { type: 'submit' }, 'Use'));
    this.form.addEventListener('submit', (event) => {
      event.preventDefault();
      this.events.changed(this.subject);
    });
    this.forming.addEventListener('change', () => this.events.forming(this.forming.checked));
    root.append(this.needs, this.formingLabel, this.form);
  }

  get isForming(): boolean {
    return this.forming.checked;
  }

  setForming(on: boolean): void {
    this.forming.checked = on;
  }

  private get formingLabel(): HTMLElement {
    return element(
      'label',
      {
        title:
          'Each bar shows the longer one that it lies in, as far as that has come, whose end it can’t know yet; by default the last finished one',
      },
      this.forming,
      'Of a longer period the bar under way',
    );
  }

  show({ references, needs, missing }: Drawn): void {
    const { calendar } = this.subject;
    const items = [
      ...references.map((reference) => this.referenceItem(reference)),
      ...missing.map(({ text }) => itemOf(text, false, 'not among the bars')),
      ...(needs.calendar ? [itemBelow('Trading calendar', Boolean(calendar), 'it')] : []),
      ...(needs.constants ? [itemBelow('Constants of the market', this.hasNumbers, 'them')] : []),
    ];
    this.needs.replaceChildren(
      ...(items.length > 0
        ? items
        : [element('li', { class: 'hint' }, 'The bars are all it needs')]),
    );
  }

  private get hasNumbers(): boolean {
    return numbers.some(([key]) => this.subject[key] !== undefined);
  }

  private get subject(): Subject {
    const text = (key: keyof Subject) => this.inputs.get(key)!.value.trim() || undefined;
    const number = (key: keyof Subject) => {
      const { valueAsNumber } = this.inputs.get(key)!;
      return Number.isFinite(valueAsNumber) ? valueAsNumber : undefined;
    };
    return {
      code: text('code'),
      market: text('market'),
      minPrice: number('minPrice'),
      unit: number('unit'),
      shareCountPerUnit: number('shareCountPerUnit'),
      calendar: this.calendar.value.trim() || undefined,
    };
  }

  private addInput(key: keyof Subject, title: string, type: string): void {
    const input = element('input', { type, step: 'any', min: 0, maxlength: 40 });
    this.inputs.set(key, input);
    this.form.append(element('label', {}, title, input));
  }

  private referenceItem({ name, text, security, given }: Drawn['references'][number]): HTMLElement {
    if (!security) {
      const shown = this.forming.checked ? 'the one under way' : 'the last finished one';
      return itemOf(text, given, given ? shown : 'no longer than the bars');
    }
    if (given) return itemOf(text, true);
    const file = element('input', {
      type: 'file',
      accept: '.csv,text/csv',
      'aria-label': `Bars of ${name}`,
    });
    file.addEventListener('change', () => {
      if (file.files?.[0]) this.events.take(name, file.files[0]);
    });
    const item = itemOf(text, false, `no ${name.toLowerCase()}.csv is known: choose one`);
    item.append(file);
    return item;
  }
}

function itemOf(text: string, isThere: boolean, note?: string): HTMLElement {
  return element(
    'li',
    { class: isThere ? 'there' : 'missing' },
    element('span', { class: 'mark' }, isThere ? '✓' : '–'),
    ` ${text}`,
    note === undefined ? undefined : `: ${note}`,
  );
}

function itemBelow(text: string, isThere: boolean, which: 'it' | 'them'): HTMLElement {
  return itemOf(text, isThere, isThere ? undefined : `give ${which} below`);
}
