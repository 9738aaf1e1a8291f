// What the script was like: two versions compared, and one of them written on.
import { byId, element, setText } from '../dom.ts';
import type { Version } from '../versions.ts';
import { Comparison } from './comparison.ts';
import type { Writable } from './save.ts';

export interface VersionEvents {
  script: () => Writable;
  versions: (name: string) => Version[];
  /** The text is to be written on. */
  take: (text: string) => void;
}

interface Choice {
  title: string;
  text: string;
}

const timeText = (at: number): string =>
  new Date(at).toLocaleString(undefined, { dateStyle: 'medium', timeStyle: 'medium' });

export class VersionDialog {
  private readonly dialog = byId('version-dialog', HTMLDialogElement);
  private readonly note = byId('version-note', HTMLElement);
  private readonly body = byId('version-body', HTMLElement);
  private readonly before = byId('version-before', HTMLSelectElement);
  private readonly after = byId('version-after', HTMLSelectElement);
  private readonly takeButton = byId('version-take', HTMLButtonElement);
  private readonly comparison = new Comparison(byId('version-both', HTMLElement));
  private choices: Choice[] = [];

  constructor(private readonly events: VersionEvents) {
    byId('version-close', HTMLButtonElement).addEventListener('click', () => this.dialog.close());
    for (const menu of [this.before, this.after])
      menu.addEventListener('change', () => this.compare());
    this.takeButton.addEventListener('click', () => {
      this.events.take(this.choices[Number(this.before.value)].text);
      this.dialog.close();
    });
    this.dialog.addEventListener('close', () => this.comparison.hide());
  }

  open(): void {
    const { name, text } = this.events.script();
    const versions = name ? this.events.versions(name) : [];
    this.choices = [
      { title: 'As it is written now', text },
      ...versions.map((version) => ({ title: timeText(version.at), text: version.text })),
    ];
    for (const menu of [this.before, this.after]) {
      menu.replaceChildren(
        ...this.choices.map(({ title }, i) => element('option', { value: i }, title)),
      );
    }
    const other = versions.findIndex((version) => version.text !== text);
    this.before.value = String(other + 1);
    this.after.value = '0';
    this.body.hidden = this.takeButton.hidden = versions.length === 0;
    const none = name
      ? `There are no versions of ${name} yet: each time it is saved one is kept in this browser`
      : 'Versions are kept of scripts that are saved';
    setText(this.note, versions.length === 0 ? none : `${name}, as it was saved or opened here`);
    this.dialog.showModal();
    this.compare();
  }

  private compare(): void {
    const [before, after] = [this.before, this.after].map(
      ({ value }) => this.choices[Number(value)],
    );
    this.takeButton.disabled = before.text === this.events.script().text;
    this.comparison.show(before, after);
  }
}
