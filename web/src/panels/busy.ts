// Says that the engine calculates, where that takes long, and lets the user stop it.
import { byId } from '../dom.ts';

/** In milliseconds: what is over sooner isn't told of. */
const patience = 200;

export class Busy {
  private readonly root = byId('busy', HTMLElement);
  private readonly chart = byId('chart', HTMLElement);
  private timer: ReturnType<typeof setTimeout> | undefined;

  constructor(stop: () => void) {
    byId('stop', HTMLButtonElement).addEventListener('click', stop);
  }

  set(isBusy: boolean, isLayingOut: boolean): void {
    clearTimeout(this.timer);
    this.chart.setAttribute('aria-busy', String(isBusy));
    if (isBusy && !isLayingOut) this.timer = setTimeout(() => (this.root.hidden = false), patience);
    else this.root.hidden = true;
  }
}
