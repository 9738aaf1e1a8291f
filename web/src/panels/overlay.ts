// Another security over the prices, one of those in the folder, and its file as that changes.
import { readBars } from '../api/server.ts';
import { byId, element } from '../dom.ts';
import type { Session } from '../engine/session.ts';
import { tell } from './message.ts';

export interface OverlayEvents {
  /** A column of the desk is to be drawn by a title, or none any more. */
  laid: (overlay: { title: string; column: number } | undefined) => void;
  fail: (error: unknown) => void;
}

export class Overlay {
  private readonly menu = byId('overlay', HTMLSelectElement);
  private names: readonly string[] = [];
  private chosen = '';

  constructor(
    private readonly session: Session,
    names: readonly string[],
    private readonly events: OverlayEvents,
  ) {
    this.setNames(names);
    this.menu.addEventListener('change', () => void this.choose());
  }

  /** Empty without one. */
  get name(): string {
    return this.chosen;
  }

  set name(name: string) {
    if (name === this.chosen || !['', ...this.names].includes(name)) return;
    this.menu.value = name;
    void this.choose();
  }

  /** Of the securities that can be chosen. */
  setNames(names: readonly string[]): void {
    this.names = names;
    this.menu.hidden = names.length < 2;
    const all = new Set([...names, this.chosen].filter(Boolean));
    const options = [...all].map((name) => element('option', { value: name }, name));
    this.menu.replaceChildren(this.menu.options[0], ...options);
    this.menu.value = this.chosen;
  }

  /** Files of bars have changed. */
  async follow(names: ReadonlySet<string>): Promise<void> {
    if (names.has(this.chosen)) await this.layOver(this.chosen);
  }

  private async choose(): Promise<void> {
    const before = this.chosen;
    this.chosen = this.menu.value;
    try {
      const bars = await this.layOver(this.chosen);
      tell(bars === 0 ? `${this.chosen} has no bars at these dates` : '');
    } catch (error) {
      this.events.fail(error);
      this.menu.value = this.chosen = before;
    }
  }

  /** Gives the bars for which it has a value. */
  private async layOver(name: string): Promise<number | undefined> {
    const laid = await this.session.takeOverlay(
      name ? { name, content: await readBars(name) } : undefined,
    );
    this.events.laid(laid ? { title: name, column: laid.column } : undefined);
    return laid?.bars;
  }
}
