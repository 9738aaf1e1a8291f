// Saves the script in the folder, never over another one without asking.
import { Refusal, saveScript } from '../api/client.ts';
import { byId, setText } from '../dom.ts';

const ending = '.quor';

export class SaveDialog {
  private readonly dialog = byId('save-dialog', HTMLDialogElement);
  private readonly name = byId('save-name', HTMLInputElement);
  private readonly note = byId('save-note', HTMLElement);
  private readonly button = byId('save-do', HTMLButtonElement);
  /** The name whose script may be written over, as the user has been told. */
  private confirmed = '';

  constructor(
    private readonly textOf: () => string,
    private readonly saved: (name: string, text: string) => void,
  ) {
    byId('save-cancel', HTMLButtonElement).addEventListener('click', () => this.dialog.close());
    this.button.addEventListener('click', () => void this.save());
    this.name.addEventListener('input', () => this.ask(''));
    this.name.addEventListener('keydown', (event) => {
      if (event.key === 'Enter') void this.save();
    });
  }

  open(name: string): void {
    this.name.value = name || `script${ending}`;
    this.ask('');
    this.dialog.showModal();
    this.name.select();
  }

  private ask(confirmed: string): void {
    this.confirmed = confirmed;
    setText(this.button, confirmed ? 'Overwrite' : 'Save');
    setText(this.note, confirmed ? `There is ${confirmed} already` : '');
  }

  private async save(): Promise<void> {
    const typed = this.name.value.trim();
    const name = typed.endsWith(ending) ? typed : typed + ending;
    try {
      const text = this.textOf();
      this.saved((await saveScript(name, text, this.confirmed === name)).name, text);
      this.dialog.close();
    } catch (error) {
      const isThere = error instanceof Refusal && error.status === 409 && this.confirmed !== name;
      if (isThere) this.ask(name);
      else setText(this.note, error instanceof Error ? error.message : String(error));
    }
  }
}
