// The scripts that are open, side by side above the editor.
import { element } from '../dom.ts';
import type { Opened } from '../scripts.ts';

export interface ScriptTabsEvents {
  show: (id: string) => void;
  /** One without changes, or that the user has agreed to lose. */
  close: (id: string) => void;
  /** A new one. */
  add: () => void;
}

export class ScriptTabs {
  private readonly list = element('div', { role: 'tablist', 'aria-label': 'Open scripts' });
  private shown = '';

  constructor(
    root: HTMLElement,
    private readonly events: ScriptTabsEvents,
  ) {
    const add = element(
      'button',
      { type: 'button', class: 'quiet', 'aria-label': 'New script' },
      '+',
    );
    add.addEventListener('click', events.add);
    root.append(this.list, add);
    this.list.addEventListener('keydown', (event) => this.followKey(event));
  }

  show(opened: readonly Opened[], currentId: string): void {
    const state = JSON.stringify([opened, currentId]);
    if (state === this.shown) return;
    this.shown = state;
    const hadFocus = this.list.contains(document.activeElement);
    this.list.replaceChildren(...opened.map((script) => this.tabOf(script, currentId)));
    const current = this.list.querySelector<HTMLElement>('[aria-selected="true"]');
    if (current) this.bringIntoSight(current);
    if (hadFocus) current?.focus();
  }

  private tabOf({ id, name, isUnsaved }: Opened, currentId: string): HTMLElement {
    const isCurrent = id === currentId;
    const tab = element(
      'button',
      {
        type: 'button',
        role: 'tab',
        'aria-selected': String(isCurrent),
        'aria-controls': 'editor',
        'aria-keyshortcuts': 'Delete',
        tabindex: isCurrent ? 0 : -1,
        title: isUnsaved ? 'Not saved' : undefined,
      },
      (isUnsaved ? '• ' : '') + name,
    );
    tab.addEventListener('click', () => this.events.show(id));
    tab.addEventListener('keydown', ({ key }) => {
      if (key === 'Delete') this.close(id, name, isUnsaved);
    });
    // For the mouse: a list of tabs holds nothing else for who hears it.
    const close = element(
      'button',
      {
        type: 'button',
        class: 'quiet',
        tabindex: -1,
        'aria-hidden': 'true',
        'aria-label': `Close ${name}`,
      },
      '×',
    );
    close.addEventListener('click', () => this.close(id, name, isUnsaved));
    return element('span', { role: 'presentation', class: isCurrent ? 'current' : '' }, tab, close);
  }

  private close(id: string, name: string, isUnsaved: boolean): void {
    if (!isUnsaved || confirm(`${name} has changes that are not saved. Close it all the same?`))
      this.events.close(id);
  }

  /** Scrolls the tabs alone: the page stays where it is. */
  private bringIntoSight(tab: HTMLElement): void {
    const [own, all] = [tab, this.list].map((one) => one.getBoundingClientRect());
    this.list.scrollLeft += Math.min(own.left - all.left, 0) + Math.max(own.right - all.right, 0);
  }

  private followKey({ key }: KeyboardEvent): void {
    const by = { ArrowLeft: -1, ArrowRight: 1 }[key];
    const tabs = [...this.list.querySelectorAll<HTMLElement>('[role="tab"]')];
    const at = tabs.indexOf(document.activeElement as HTMLElement);
    if (by && at >= 0) tabs[(at + by + tabs.length) % tabs.length].click();
  }
}
