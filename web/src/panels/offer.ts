// Says that the script has been changed elsewhere, and lets the user have that.
import { byId, element, setText } from '../dom.ts';

export interface OfferEvents {
  take: () => void;
  keep: () => void;
}

export class Offer {
  private readonly root = byId('offer', HTMLElement);
  private readonly text = element('span', { role: 'status' });

  constructor({ take, keep }: OfferEvents) {
    const button = (title: string, act: () => void) => {
      const made = element('button', { type: 'button' }, title);
      made.addEventListener('click', act);
      return made;
    };
    this.root.append(this.text, button('Take it', take), button('Keep mine', keep));
  }

  /** For a script; none takes the offer back. */
  show(name: string | undefined): void {
    this.root.hidden = name === undefined;
    setText(this.text, name === undefined ? '' : `${name} has been changed elsewhere`);
  }
}
