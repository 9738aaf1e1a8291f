// Where scripts are kept: the folder of the server, or without one the browser's storage.
import { readScript, saveScript } from './api/server.ts';
import type { Start } from './api/types.ts';
import { Refusal } from './refusal.ts';

/** Another text than the expected one has the name. */
export class Taken extends Error {
  constructor(readonly text: string) {
    super('there is another script of this name');
  }
}

export interface Shelf {
  readonly title: string;
  names(): string[];
  read(name: string): Promise<string>;
  /** Writes over a script of the name only if that has the text `before`; else throws Taken. */
  save(name: string, text: string, before: string | undefined): Promise<void>;
}

export const shelfFor = ({ folder, files }: Start): Shelf =>
  folder === null ? new BrowserShelf() : new FolderShelf(files.scripts.map(({ name }) => name));

class FolderShelf implements Shelf {
  readonly title = 'Folder';

  constructor(private readonly known: readonly string[]) {}

  names(): string[] {
    return [...this.known];
  }

  async read(name: string): Promise<string> {
    return (await readScript(name)).text;
  }

  async save(name: string, text: string, before: string | undefined): Promise<void> {
    try {
      await saveScript(name, text, before);
    } catch (error) {
      const there = error instanceof Refusal ? error.answer.text : undefined;
      throw typeof there === 'string' ? new Taken(there) : error;
    }
  }
}

const key = 'quor-studio-scripts';

/** Scripts by name. Tabs share it, so it is read anew each time. */
export class BrowserShelf implements Shelf {
  readonly title = 'This browser';

  constructor(private readonly storage: Pick<Storage, 'getItem' | 'setItem'> = localStorage) {}

  names(): string[] {
    return Object.keys(this.all).sort();
  }

  async read(name: string): Promise<string> {
    const text = this.all[name];
    if (text === undefined) throw new Error('there is no script of this name');
    return text;
  }

  async save(name: string, text: string, before: string | undefined): Promise<void> {
    const { all } = this;
    const there = Object.hasOwn(all, name) ? all[name] : undefined;
    if (there !== undefined && there !== before) throw new Taken(there);
    this.storage.setItem(key, JSON.stringify({ ...all, [name]: text }));
  }

  private get all(): Record<string, string> {
    try {
      const value: unknown = JSON.parse(this.storage.getItem(key) ?? '{}');
      const texts = Object.entries(value as object).filter(([, text]) => typeof text === 'string');
      return Object.fromEntries(texts) as Record<string, string>;
    } catch {
      return {};
    }
  }
}
