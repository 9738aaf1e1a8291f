// The securities of the folder.
import { element } from '../dom.ts';

/** A list that is longer is narrowed down by its filter. */
const mostShown = 400;
/** A list that is shorter needs none. */
const fewForFilter = 12;

export class Securities {
  private readonly list = element('ul', { class: 'security-list', 'aria-label': 'Securities' });
  private readonly filter = element('input', {
    type: 'search',
    placeholder: 'Filter',
    'aria-label': 'Filter securities',
  });
  private readonly note = element('p', { class: 'hint' });
  private current = '';

  constructor(
    root: HTMLElement,
    private names: readonly string[],
    private readonly open: (name: string) => void,
  ) {
    root.append(this.filter, this.list, this.note);
    this.filter.addEventListener('input', () => this.fill());
    this.setNames(names);
  }

  setNames(names: readonly string[]): void {
    this.names = names;
    this.filter.hidden = names.length < fewForFilter;
    this.fill();
  }

  setCurrent(name: string): void {
    this.current = name;
    for (const button of this.list.querySelectorAll('button')) this.mark(button);
  }

  private fill(): void {
    const part = this.filter.value.toLowerCase();
    const found = this.names.filter((name) => name.toLowerCase().includes(part));
    this.list.replaceChildren(
      ...found.slice(0, mostShown).map((name) => {
        const button = element('button', { type: 'button' }, name);
        button.addEventListener('click', () => this.open(name));
        this.mark(button);
        return element('li', {}, button);
      }),
    );
    this.note.textContent =
      found.length > mostShown
        ? `${found.length - mostShown} more: narrow them down by the filter`
        : '';
  }

  private mark(button: HTMLButtonElement): void {
    const isCurrent = button.textContent === this.current;
    if (isCurrent) button.setAttribute('aria-current', 'true');
    else button.removeAttribute('aria-current');
  }
}
