// Tabs below the chart; the one that is open closes at a second click.
import { element, setText } from '../dom.ts';

export interface Tab {
  id: string;
  title: string;
}

export class Tabs {
  private readonly tabs = new Map<
    string,
    { tab: HTMLButtonElement; panel: HTMLElement; title: string }
  >();
  private open: string | undefined;

  constructor(
    private readonly drawer: HTMLElement,
    list: HTMLElement,
    tabs: readonly Tab[],
    private readonly shown: (id: string) => void,
  ) {
    for (const { id, title } of tabs) {
      const tab = element(
        'button',
        { type: 'button', role: 'tab', id: `tab-${id}`, 'aria-controls': `panel-${id}` },
        title,
      );
      const panel = element('div', {
        role: 'tabpanel',
        id: `panel-${id}`,
        'aria-labelledby': `tab-${id}`,
      });
      this.tabs.set(id, { tab, panel, title });
      list.append(tab);
      drawer.append(panel);
      tab.addEventListener('click', () => this.show(this.open === id ? undefined : id));
    }
    list.addEventListener('keydown', (event) => this.followKey(event));
    this.show(tabs[0]?.id);
  }

  isOpen(id: string): boolean {
    return this.open === id;
  }

  /** The one that is open. */
  get shownId(): string | undefined {
    return this.open;
  }

  has(id: string): boolean {
    return this.tabs.has(id);
  }

  panel(id: string): HTMLElement {
    return this.tabs.get(id)!.panel;
  }

  show(open: string | undefined): void {
    this.open = open;
    this.drawer.classList.toggle('closed', open === undefined);
    for (const [id, { tab, panel }] of this.tabs) {
      tab.setAttribute('aria-selected', String(id === open));
      tab.tabIndex = id === (open ?? [...this.tabs.keys()][0]) ? 0 : -1;
      panel.hidden = id !== open;
    }
    if (open !== undefined) this.shown(open);
  }

  setCount(id: string, count: number): void {
    const { tab, title } = this.tabs.get(id)!;
    setText(tab, count > 0 ? `${title} (${count})` : title);
  }

  private followKey(event: KeyboardEvent): void {
    const by = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (!by) return;
    const ids = [...this.tabs.keys()];
    const at = ids.findIndex((id) => this.tabs.get(id)!.tab === document.activeElement);
    const next = ids[(at + by + ids.length) % ids.length];
    this.show(next);
    this.tabs.get(next)!.tab.focus();
  }
}
