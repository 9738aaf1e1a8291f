// The menu of scripts: of the folder, the samples and the cookbook.
import { readScript } from '../api/client.ts';
import type { Sample, Start } from '../api/types.ts';
import { element } from '../dom.ts';

const titles: Readonly<Record<string, string>> = { samples: 'Samples', cookbook: 'Cookbook' };

export class Library {
  private readonly samples: readonly Sample[];
  private readonly own = element('optgroup', { label: 'Folder' });

  constructor(
    private readonly menu: HTMLSelectElement,
    start: Start,
    private readonly open: (name: string, text: string) => void,
    private readonly fail: (error: unknown) => void,
  ) {
    this.samples = start.samples;
    menu.append(element('option', { value: '' }, 'Open a script…'), this.own);
    for (const name of start.scripts) this.add(name);
    this.own.hidden = start.scripts.length === 0;
    for (const group of new Set(start.samples.map((sample) => sample.group))) {
      const options = start.samples.flatMap((sample, i) =>
        sample.group === group ? [element('option', { value: `sample ${i}` }, sample.name)] : [],
      );
      menu.append(element('optgroup', { label: titles[group] ?? group }, ...options));
    }
    menu.addEventListener('change', () => void this.choose());
  }

  /** A script of the folder. */
  add(name: string): void {
    const isThere = [...this.own.children].some((option) => option.textContent === name);
    if (!isThere) this.own.append(element('option', { value: `folder ${name}` }, name));
    this.own.hidden = false;
  }

  private async choose(): Promise<void> {
    const { value } = this.menu;
    const [kind, name] = [value.slice(0, value.indexOf(' ')), value.slice(value.indexOf(' ') + 1)];
    this.menu.value = '';
    try {
      if (kind === 'sample') {
        const sample = this.samples[Number(name)];
        this.open('', sample.text);
      } else if (kind === 'folder') {
        this.open(name, (await readScript(name)).text);
      }
    } catch (error) {
      this.fail(error);
    }
  }
}
