// Says that the engine calculates, where that takes long, and lets the user stop it.
import { byId } from '../dom.ts';
import { tell } from './message.ts';

export interface Stoppable {
  stop(): void;
}

/** In milliseconds: what is over sooner isn't told of. */
const patience = 200;

export class Busy {
  private readonly root = byId('busy', HTMLElement);
  private readonly chart = byId('chart', HTMLElement);
  /** Engines that calculate, and whether by a wish of the user. */
  private readonly working = new Map<Stoppable, boolean>();
  private timer: ReturnType<typeof setTimeout> | undefined;

  constructor() {
    byId('stop', HTMLButtonElement).addEventListener('click', () => {
      for (const engine of [...this.working.keys()]) engine.stop();
      tell('Stopped');
    });
  }

  set(engine: Stoppable, isBusy: boolean, isLayingOut: boolean): void {
    if (isBusy) this.working.set(engine, !isLayingOut);
    else this.working.delete(engine);
    clearTimeout(this.timer);
    this.chart.setAttribute('aria-busy', String(this.working.size > 0));
    if ([...this.working.values()].some(Boolean))
      this.timer = setTimeout(() => (this.root.hidden = false), patience);
    else this.root.hidden = true;
  }
}
