// Sliders for the parameters and for the CONST numbers of the script.
import type { Slider } from '../engine/types.ts';
import { element, setText } from '../dom.ts';

export interface SliderEvents {
  /** A number was moved: of a constant, or of a parameter. */
  move: (slider: Slider, value: number) => void;
  remove: (name: string) => void;
  add: (name: string, value: number) => void;
}

interface Row {
  root: HTMLElement;
  range: HTMLInputElement;
  number: HTMLInputElement;
  slider: Slider;
}

const keyOf = ({ kind, name }: Slider): string => `${kind} ${name}`;
/** Six decimals is what a script keeps. */
export const numberText = (value: number): string => String(Number(value.toFixed(6)));

export class Sliders {
  private readonly list = element('div', { class: 'slider-list' });
  private readonly empty = element(
    'p',
    { class: 'hint' },
    'CONST numbers of the script and parameters stand here as sliders.',
  );
  private rows = new Map<string, Row>();

  constructor(
    root: HTMLElement,
    private readonly events: SliderEvents,
  ) {
    root.append(this.list, this.empty, this.makeAdder());
  }

  /** Rows that stay keep their elements, one of which may be moving. */
  show(sliders: readonly Slider[]): void {
    const rows = new Map<string, Row>();
    for (const slider of sliders) {
      const key = keyOf(slider);
      if (rows.has(key)) continue;
      const row = this.rows.get(key) ?? this.makeRow(slider);
      this.refresh(row, slider);
      rows.set(key, row);
    }
    for (const [key, row] of this.rows) if (!rows.has(key)) row.root.remove();
    const roots = [...rows.values()].map(({ root }) => root);
    const isSame =
      roots.length === this.list.children.length &&
      roots.every((root, i) => this.list.children[i] === root);
    if (!isSame) this.list.replaceChildren(...roots);
    this.rows = rows;
    this.empty.hidden = roots.length > 0;
  }

  private refresh(row: Row, slider: Slider): void {
    row.slider = slider;
    row.root.classList.toggle('idle', slider.idle === true);
    row.root.title = slider.idle ? 'The script does not read this parameter' : '';
    const isMoving = row.range.matches(':active');
    if (!isMoving) {
      row.range.min = String(Math.min(slider.low, slider.value));
      row.range.max = String(Math.max(slider.high, slider.value));
      row.range.step = String(slider.step);
      row.range.value = String(slider.value);
    }
    if (!row.number.matches(':focus')) row.number.value = numberText(slider.value);
  }

  private makeRow(slider: Slider): Row {
    const label = element('span', { class: 'slider-name' });
    setText(label, slider.name);
    const range = element('input', { type: 'range', 'aria-label': slider.name });
    const number = element('input', {
      type: 'number',
      step: 'any',
      'aria-label': `${slider.name} as a number`,
    });
    const root = element('div', { class: 'slider' }, label, range, number);
    const row = { root, range, number, slider };
    range.addEventListener('input', () => {
      number.value = numberText(range.valueAsNumber);
      this.events.move(row.slider, range.valueAsNumber);
    });
    number.addEventListener('input', () => {
      if (!Number.isFinite(number.valueAsNumber)) return;
      this.events.move(row.slider, number.valueAsNumber);
    });
    if (slider.kind === 'parameter') {
      const remove = element(
        'button',
        { type: 'button', class: 'quiet', 'aria-label': `Remove ${slider.name}` },
        '×',
      );
      remove.addEventListener('click', () => this.events.remove(slider.name));
      root.append(remove);
    }
    return row;
  }

  private makeAdder(): HTMLElement {
    const name = element('input', {
      type: 'text',
      placeholder: 'name',
      'aria-label': 'Name of a parameter',
      maxlength: 40,
    });
    const value = element('input', {
      type: 'number',
      step: 'any',
      value: '10',
      'aria-label': 'Value of the parameter',
    });
    const add = element('button', { type: 'button' }, 'Add parameter');
    const act = () => {
      const wanted = name.value.trim().toUpperCase();
      if (!wanted || !Number.isFinite(value.valueAsNumber)) return name.focus();
      this.events.add(wanted, value.valueAsNumber);
      name.value = '';
    };
    add.addEventListener('click', act);
    for (const input of [name, value]) {
      input.addEventListener('keydown', (event) => {
        if (event.key === 'Enter') act();
      });
    }
    return element('div', { class: 'adder' }, name, value, add);
  }
}
