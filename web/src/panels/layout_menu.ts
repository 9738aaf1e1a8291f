// The menu of layouts, its keys, and the dialog that keeps and removes them.
import { byId, element, setText } from '../dom.ts';
import { type Layout, type Layouts, longestName, usualLayout } from '../layouts.ts';

export interface Arrangement {
  current: () => Layout;
  apply: (layout: Layout) => void;
  fail: (error: unknown) => void;
}

const edit = 'edit';
const nameOf = (value: string): string => value.replace(/^= /, '');
const valueOf = (name: string): string => `= ${name}`;

export class LayoutMenu {
  private readonly menu = byId('layout', HTMLSelectElement);
  private readonly dialog = byId('layout-dialog', HTMLDialogElement);
  private readonly name = byId('layout-name', HTMLInputElement);
  private readonly list = byId('layout-list', HTMLElement);
  private readonly note = byId('layout-note', HTMLElement);
  private chosen = '';

  constructor(
    private readonly layouts: Layouts,
    private readonly page: Arrangement,
  ) {
    this.name.maxLength = longestName;
    this.menu.addEventListener('change', () => this.choose(this.menu.value));
    this.menu.addEventListener('pointerdown', () => this.fill());
    byId('layout-close', HTMLButtonElement).addEventListener('click', () => this.dialog.close());
    byId('layout-form', HTMLFormElement).addEventListener('submit', (event) => {
      event.preventDefault();
      this.keep();
    });
    window.addEventListener('keydown', (event) => this.followKey(event));
    window.addEventListener('pagehide', () => {
      layouts.now = { name: this.chosen, ...page.current() };
    });
    this.fill();
  }

  /** As this tab was before it was loaded again. */
  begin(): void {
    const { now } = this.layouts;
    if (!now) return;
    this.chosen = now.name;
    this.page.apply(now);
    this.fill();
  }

  private choose(value: string): void {
    this.fill();
    if (value === edit) return this.open();
    const name = nameOf(value);
    const layout = name ? this.layouts.all.find((one) => one.name === name) : usualLayout;
    if (!layout) return undefined;
    this.chosen = name;
    this.page.apply(layout);
    return this.fill();
  }

  /** Shift-Alt-1 is the usual one. */
  private followKey(event: KeyboardEvent): void {
    const digit = /^Digit([1-9])$/.exec(event.code)?.[1];
    if (!digit || !event.shiftKey || !event.altKey || event.ctrlKey || event.metaKey) return;
    const value = ['', ...this.layouts.all.map(({ name }) => name)][Number(digit) - 1];
    if (value === undefined) return;
    event.preventDefault();
    this.choose(valueOf(value));
  }

  private fill(): void {
    const { all } = this.layouts;
    if (!all.some(({ name }) => name === this.chosen)) this.chosen = '';
    const option = (value: string, text: string) => element('option', { value }, text);
    this.menu.replaceChildren(
      option(valueOf(''), 'Usual layout'),
      ...all.map(({ name }) => option(valueOf(name), name)),
      option(edit, 'Keep or remove…'),
    );
    this.menu.value = valueOf(this.chosen);
  }

  private open(): void {
    this.name.value = this.chosen;
    this.showList('');
    this.dialog.showModal();
  }

  private keep(): void {
    const name = this.name.value.trim();
    if (!name) return setText(this.note, 'A layout needs a name');
    try {
      this.layouts.keep({ name, ...this.page.current() });
      this.chosen = name;
      this.fill();
      this.dialog.close();
    } catch (error) {
      setText(this.note, (error as Error).message);
    }
    return undefined;
  }

  private showList(note: string): void {
    setText(this.note, note);
    this.list.replaceChildren(
      ...this.layouts.all.map(({ name }, i) => {
        const remove = element('button', { type: 'button', 'aria-label': `Remove ${name}` }, '×');
        remove.addEventListener('click', () => {
          this.layouts.remove(name);
          this.fill();
          this.showList(`${name} is removed`);
          this.name.focus();
        });
        const keys = element('span', { class: 'hint' }, `Shift-Alt-${i + 2}`);
        return element('li', {}, element('span', { class: 'name' }, name), keys, remove);
      }),
    );
  }
}
