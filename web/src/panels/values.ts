// All values at the crosshair in a table, those that aren't drawn, too, and why there is none.
import { element, setText } from '../dom.ts';
import type { Session } from '../engine/session.ts';
import type { Drawn, ValuesAnswer } from '../engine/types.ts';
import { numberText } from './sliders.ts';

interface Row {
  name: string;
  kind: 'drawn' | 'between' | 'field';
  value: HTMLElement;
  why?: HTMLButtonElement;
}

const valuePlace = () => element('span', { class: 'value' });

const shown = (value: number | null | undefined): string =>
  value === null || value === undefined ? 'null' : numberText(value);

export class Values {
  private readonly head = element('span', { class: 'hint', id: 'values-place' });
  private readonly release = element(
    'button',
    { type: 'button', id: 'values-follow', hidden: true },
    'Follow the crosshair',
  );
  private readonly list = element('ul', {
    class: 'value-list',
    tabindex: 0,
    'aria-label': 'Values at the bar',
  });
  private readonly reason = element('ol', { class: 'reason' });
  private lines: Row[] = [];
  private fields: Row[] = [];
  private names = '';
  private place = '';
  /** What is wanted, and what is seen. */
  private row: number | undefined;
  private seen: number | undefined;
  private isHeld = false;
  private isBusy = false;
  private isOpen = false;

  constructor(
    root: HTMLElement,
    private readonly session: Session,
    /** A row is held, or none any more. */
    private readonly marked: (row: number | undefined) => void,
    private readonly fail: (error: unknown) => void,
  ) {
    const said = element(
      'div',
      { role: 'status', class: 'said', tabindex: 0, 'aria-label': 'Why it is null' },
      this.reason,
    );
    root.append(
      element('div', { class: 'bar' }, this.head, this.release),
      element('div', { class: 'sides' }, this.list, said),
    );
    this.release.addEventListener('click', () => this.hold(undefined));
  }

  /** Other values are there, of `rows` bars. */
  take({ lines, rows }: Drawn): void {
    const names = JSON.stringify(lines);
    if (names !== this.names) this.makeLines(lines);
    this.names = names;
    if (this.row === undefined || this.row >= rows) this.hold(undefined);
    this.row = Math.min(this.row ?? rows - 1, rows - 1);
    this.refresh();
  }

  /** The crosshair is at a row. */
  point(row: number): void {
    if (this.isHeld || row === this.row) return;
    this.row = row;
    this.refresh();
  }

  /** Bars are played: the newest is seen, unless one points at another. */
  follow(newest: number | undefined): void {
    if (!this.isHeld && newest !== undefined) this.row = newest;
    this.refresh();
  }

  /** From here on the values are those of a row; without one those at the crosshair. */
  hold(row: number | undefined): void {
    if (row !== undefined && !this.isOpen) return;
    this.isHeld = row !== undefined;
    this.release.hidden = !this.isHeld;
    this.marked(row);
    this.tellPlace();
    if (row === undefined) return;
    this.row = row;
    this.refresh();
  }

  setOpen(isOpen: boolean): void {
    this.isOpen = isOpen;
    this.refresh();
  }

  private tellPlace(): void {
    setText(this.head, this.isHeld ? `${this.place}, held` : this.place);
  }

  private refresh(): void {
    if (this.isOpen && !this.isBusy) void this.load();
  }

  /** One request at a time, and after it the newest row that was wanted. */
  private async load(): Promise<void> {
    this.isBusy = true;
    try {
      for (let row = this.row; row !== undefined && row >= 0;) {
        const names = this.names;
        this.show(await this.session.values(row));
        if (row === this.row && names === this.names) break;
        row = this.row;
      }
    } catch {
      // Other bars are on their way, and their values with them.
    } finally {
      this.isBusy = false;
    }
  }

  private show({ row, text, fields, names, lines }: ValuesAnswer): void {
    this.place = `${text}, row ${row}`;
    this.tellPlace();
    if (row !== this.seen) this.reason.replaceChildren();
    this.seen = row;
    if (lines.length !== this.lines.length) return; // a newer script is on its way
    lines.forEach((value, i) => {
      setText(this.lines[i].value, shown(value));
      this.lines[i].why!.hidden = value !== null;
    });
    const ids = Object.keys(fields);
    if (ids.map((id) => names[id]).join() !== this.fields.map(({ name }) => name).join())
      this.makeFields(ids.map((id) => names[id]));
    ids.forEach((id, i) => setText(this.fields[i].value, shown(fields[id])));
  }

  private makeLines(lines: Drawn['lines']): void {
    this.reason.replaceChildren();
    this.lines = lines.map(({ name, drawn }, i) => {
      const why = element(
        'button',
        { type: 'button', class: 'quiet', 'aria-label': `Why is ${name} null?`, hidden: true },
        'Why?',
      );
      why.addEventListener('click', () => void this.ask(i));
      return { name, kind: drawn ? 'drawn' : 'between', why, value: valuePlace() };
    });
    this.layOut();
  }

  private makeFields(names: readonly string[]): void {
    this.fields = names.map((name) => ({ name, kind: 'field', value: valuePlace() }));
    this.layOut();
  }

  private layOut(): void {
    this.list.replaceChildren(
      ...[...this.lines, ...this.fields].map(({ name, kind, value, why }) =>
        element('li', { class: kind }, element('span', { class: 'name' }, name), value, why),
      ),
    );
  }

  private async ask(line: number): Promise<void> {
    if (this.seen === undefined) return;
    try {
      const { row, sentences } = await this.session.why(line, this.seen);
      if (row !== this.seen) return;
      this.reason.replaceChildren(...sentences.map((sentence) => element('li', {}, sentence)));
    } catch (error) {
      this.fail(error);
    }
  }
}
