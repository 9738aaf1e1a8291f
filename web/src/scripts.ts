// The scripts that are open: each with its name, a history of its own, and what of it is saved.
import type { EditorState } from '@codemirror/state';
import type { Kept } from './draft.ts';
import type { Editor } from './editor/editor.ts';

/** A script as it can be read again. */
export interface Source {
  /** Its kind, a file of the folder or another, and which one of them. */
  id: string;
  name: string;
  text: string;
}

/** A script that is open, as the menu shows it. */
export interface Opened {
  id: string;
  name: string;
  isUnsaved: boolean;
}

interface Script {
  id: string;
  name: string;
  saved: string;
  /** As it was left; of the current one the editor has it. */
  document: EditorState;
}

export const folderId = (name: string): string => `folder ${name}`;
export const isOfFolder = (id: string): boolean => id.startsWith(folderId(''));
export const otherId = (name: string): string => `other ${name}`;
export const isOther = (id: string): boolean => id.startsWith(otherId(''));

export const plain = (text: string): string => text.replace(/\r\n?/g, '\n');

export class Scripts {
  private readonly all: Script[] = [];
  private current: Script | undefined;

  constructor(private readonly editor: Editor) {}

  get currentId(): string {
    return this.current?.id ?? '';
  }

  /** The name by which the current one is a file of the folder. */
  get fileName(): string {
    return this.current && isOfFolder(this.current.id) ? this.current.name : '';
  }

  /** What is kept of the current one. */
  get savedText(): string {
    return this.current?.saved ?? '';
  }

  get opened(): Opened[] {
    return this.all.map((script) => {
      const { id, name } = script;
      return { id, name, isUnsaved: this.isUnsaved(script) };
    });
  }

  get areUnsaved(): boolean {
    return this.all.some((script) => this.isUnsaved(script));
  }

  /** Names of those that are files of the folder. */
  get fileNames(): string[] {
    return this.all.filter(({ id }) => isOfFolder(id)).map(({ name }) => name);
  }

  /** What a page that is loaded again needs. */
  get kept(): Kept[] {
    return this.all.map((script) => {
      const { id, name, saved } = script;
      return { id, name, saved, text: this.textOf(script) };
    });
  }

  /** Shows a script that is open with changes, or can't be read anew; false for all that can. */
  reopen(id: string): boolean {
    const script = this.find(id);
    if (!script || !(isOther(id) || this.isUnsaved(script))) return false;
    this.show(script);
    return true;
  }

  /** Shows a script that is open, as it is. */
  showAsItIs(id: string): boolean {
    const script = this.find(id);
    if (script) this.show(script);
    return script !== undefined;
  }

  /** Closes a script with what isn't saved of it, and shows its neighbour in place of the current
   * one. */
  close(id: string): void {
    const at = this.all.findIndex((script) => script.id === id);
    if (at < 0) return;
    const [closed] = this.all.splice(at, 1);
    if (closed !== this.current) return;
    this.current = undefined;
    const next = this.all[Math.min(at, this.all.length - 1)];
    if (next) this.show(next);
    else this.openOther('script', '');
  }

  /** Shows a script that was read, or the changes that it has here. */
  open({ id, name, text }: Source): void {
    if (this.reopen(id)) return;
    const saved = plain(text);
    const before = this.find(id);
    if (before?.saved === saved) return this.show(before);
    const script = { id, name, saved, document: this.editor.makeDocument(saved) };
    if (!before) return this.show(this.add(script));
    if (before === this.current) this.current = undefined;
    this.all[this.all.indexOf(before)] = script;
    this.show(script);
  }

  /** Shows a script that can't be read again, say one of a link. */
  openOther(name: string, text: string): void {
    this.open({ ...this.freePlace(name), text });
  }

  /** Takes what was written before the page was loaded, without showing it: to undo it once leads
   * back to what is saved. Gives its id. */
  restore({ id, name, saved, text }: Kept): string {
    const before = this.find(id);
    if (before && this.textOf(before) === text) return id;
    const place = before ? this.freePlace(name) : { id, name };
    return this.add({ ...place, saved, document: this.editor.makeDocument(text, saved) }).id;
  }

  /** The current one is a file of the folder from now on. */
  saved(name: string, text: string): void {
    const id = folderId(name);
    const before = this.find(id);
    if (!this.current) return;
    if (before && before !== this.current) this.giveWay(before);
    Object.assign(this.current, { id, name, saved: text });
  }

  /** The current one has been changed where it is kept, and that is written on. */
  takeOther(text: string): void {
    if (!this.current) return;
    this.current.saved = plain(text);
    this.editor.write(this.current.saved);
  }

  /** Another script has been saved under the name of one that is open. */
  private giveWay(script: Script): void {
    if (this.isUnsaved(script)) Object.assign(script, this.freePlace(script.name));
    else this.all.splice(this.all.indexOf(script), 1);
  }

  private freePlace(name: string): { id: string; name: string } {
    for (let i = 1; ; ++i) {
      const free = i === 1 ? name : `${name} (${i})`;
      if (!this.find(otherId(free))) return { id: otherId(free), name: free };
    }
  }

  private find(id: string): Script | undefined {
    return this.all.find((script) => script.id === id);
  }

  private add(script: Script): Script {
    this.all.push(script);
    return script;
  }

  private show(script: Script): void {
    if (this.current) this.current.document = this.editor.document;
    this.current = script;
    this.editor.open(script.document);
  }

  private textOf(script: Script): string {
    return script === this.current ? this.editor.text : script.document.doc.toString();
  }

  private isUnsaved(script: Script): boolean {
    return this.textOf(script) !== script.saved;
  }
}
