// Saves the script: at once where it has a name, and never over another text without showing both.
import { byId, element, setText } from '../dom.ts';
import { type Shelf, Taken } from '../shelf.ts';

const ending = '.quor';

export interface Writable {
  /** By which it is kept; empty for none. */
  name: string;
  text: string;
  /** What is kept under the name, as far as it is known here. */
  saved: string;
}

export interface SaveEvents {
  script: () => Writable;
  saved: (name: string, text: string) => void;
  /** The kept text is to be written on. */
  takeOther: (text: string) => void;
}

export class SaveDialog {
  private readonly dialog = byId('save-dialog', HTMLDialogElement);
  private readonly name = byId('save-name', HTMLInputElement);
  private readonly note = byId('save-note', HTMLElement);
  private readonly both = byId('save-both', HTMLElement);
  private readonly button = byId('save-do', HTMLButtonElement);
  private readonly takeButton = byId('save-take', HTMLButtonElement);
  /** Another text of a name, that the user has been shown. */
  private other: { name: string; text: string } | undefined;

  constructor(
    private readonly shelf: Shelf,
    private readonly events: SaveEvents,
  ) {
    byId('save-cancel', HTMLButtonElement).addEventListener('click', () => this.dialog.close());
    this.button.addEventListener('click', () => void this.save());
    this.takeButton.addEventListener('click', () => this.take());
    this.name.addEventListener('input', () => this.show(undefined));
    this.name.addEventListener('keydown', (event) => {
      if (event.key === 'Enter') void this.save();
    });
  }

  /** Asks for a name. */
  open(): void {
    this.name.value = this.events.script().name || `script${ending}`;
    this.show(undefined);
    this.dialog.showModal();
    this.name.select();
  }

  /** Asks only where there is something to ask. */
  async saveNow(): Promise<void> {
    if (this.dialog.open) return;
    if (!this.events.script().name) return this.open();
    this.name.value = this.events.script().name;
    await this.save();
  }

  private async save(): Promise<void> {
    const typed = this.name.value.trim();
    const name = typed.endsWith(ending) ? typed : typed + ending;
    const script = this.events.script();
    const known = name === script.name ? script.saved : undefined;
    const before = this.other?.name === name ? this.other.text : known;
    try {
      await this.shelf.save(name, script.text, before);
      this.events.saved(name, script.text);
      this.dialog.close();
    } catch (error) {
      this.show(error instanceof Taken ? { name, text: error.text } : undefined);
      if (!(error instanceof Taken)) setText(this.note, (error as Error).message);
      if (!this.dialog.open) this.dialog.showModal();
    }
  }

  private take(): void {
    if (this.other) this.events.takeOther(this.other.text);
    this.dialog.close();
  }

  private show(other: { name: string; text: string } | undefined): void {
    this.other = other;
    const { name, text } = this.events.script();
    const isOwn = other?.name === name;
    setText(this.button, other ? 'Overwrite' : 'Save');
    const note = isOwn ? `${name} has been changed elsewhere` : `There is ${other?.name} already`;
    setText(this.note, other ? note : '');
    this.takeButton.hidden = !isOwn;
    this.both.hidden = !other;
    this.both.replaceChildren(
      ...(other ? [column('Kept', other.text, text), column('Yours', text, other.text)] : []),
    );
  }
}

/** A text in which lines stand out that the other one hasn't. */
function column(title: string, text: string, other: string): HTMLElement {
  const known = new Set(other.split('\n'));
  const lines = text
    .split('\n')
    .map((line) => element(known.has(line) || line === '' ? 'span' : 'mark', {}, `${line}\n`));
  return element(
    'section',
    { 'aria-label': title },
    element('h3', {}, title),
    element('pre', { tabindex: 0 }, ...lines),
  );
}
