// The menu of scripts: of the folder, the samples and the cookbook, and others that are open.
import type { Sample } from '../api/types.ts';
import type { Kept } from '../draft.ts';
import { element, setText } from '../dom.ts';
import { folderId, isOfFolder, type Opened, type Source } from '../scripts.ts';
import type { Shelf } from '../shelf.ts';

const titles: Readonly<Record<string, string>> = { samples: 'Samples', cookbook: 'Cookbook' };

/** In front of the name of a script that has changes. */
const unsavedSign = '• ';

export class Library {
  private readonly samples: readonly Source[];
  /** Ids of scripts that can be read. */
  private readonly known: Set<string>;
  private readonly head = element('option', { value: '' }, 'Open a script…');
  private readonly own = element('optgroup');
  /** Open ones that stand nowhere else. */
  private readonly others = element('optgroup', { label: 'Others' });
  private readonly leftGroup = element('optgroup', { label: 'Left unsaved', hidden: true });
  private left: readonly Kept[] = [];

  constructor(
    private readonly menu: HTMLSelectElement,
    samples: readonly Sample[],
    private readonly shelf: Shelf,
    choose: (id: string) => void,
  ) {
    this.own.label = shelf.title;
    this.samples = samples.map(({ name, text }, i) => ({ id: `sample ${i}`, name, text }));
    this.known = new Set(this.samples.map(({ id }) => id));
    menu.append(this.head, this.others, this.leftGroup, this.own);
    for (const name of shelf.names()) this.add(name);
    for (const group of new Set(samples.map((sample) => sample.group))) {
      const ofGroup = this.samples.filter((_, i) => samples[i].group === group);
      const options = ofGroup.map(({ id, name }) => optionOf(id, name));
      menu.append(element('optgroup', { label: titles[group] ?? group }, ...options));
    }
    menu.addEventListener('change', () => {
      const { value } = menu;
      menu.value = '';
      choose(value);
    });
  }

  /** A sample to begin with. */
  get first(): Source | undefined {
    return this.samples.find(({ name }) => name === 'macd') ?? this.samples[0];
  }

  /** A script of the folder. */
  add(name: string): void {
    const id = folderId(name);
    if (!this.known.has(id)) this.own.append(optionOf(id, name));
    this.known.add(id);
  }

  /** Offers scripts that weren't saved when their tabs were closed. */
  showLeft(left: readonly Kept[]): void {
    this.left = left;
    const options = left.map(({ name }, i) => optionOf(leftId(i), name));
    this.leftGroup.replaceChildren(...options);
    this.leftGroup.hidden = left.length === 0;
  }

  /** One that was left, which is offered no more. */
  takeLeft(id: string): Kept | undefined {
    const taken = this.left.find((_, i) => leftId(i) === id);
    if (taken) this.showLeft(this.left.filter((one) => one !== taken));
    return taken;
  }

  async read(id: string): Promise<Source | undefined> {
    const sample = this.samples.find((one) => one.id === id);
    if (sample || !isOfFolder(id)) return sample;
    const name = id.slice(folderId('').length);
    return { id, name, text: await this.shelf.read(name) };
  }

  /** Says which script is written, and which ones have changes. */
  show(opened: readonly Opened[], currentId: string): void {
    this.showOthers(opened.filter(({ id }) => !this.known.has(id)));
    this.own.hidden = this.own.childElementCount === 0;
    const changed = new Set(opened.flatMap(({ id, isUnsaved }) => (isUnsaved ? [id] : [])));
    const textOf = (id: string, name: string) => (changed.has(id) ? unsavedSign : '') + name;
    for (const option of this.menu.options) {
      const { name } = option.dataset;
      if (name !== undefined) setText(option, textOf(option.value, name));
    }
    const current = opened.find(({ id }) => id === currentId);
    if (current) setText(this.head, textOf(current.id, current.name));
    this.menu.title = changed.has(currentId) ? 'Not saved' : '';
  }

  private showOthers(others: readonly Opened[]): void {
    const keyOf = (ids: readonly string[]) => ids.join('\n');
    const shown = [...this.others.querySelectorAll('option')].map(({ value }) => value);
    if (keyOf(others.map(({ id }) => id)) !== keyOf(shown))
      this.others.replaceChildren(...others.map(({ id, name }) => optionOf(id, name)));
    this.others.hidden = others.length === 0;
  }
}

const leftId = (i: number): string => `left ${i}`;

function optionOf(id: string, name: string): HTMLOptionElement {
  return element('option', { value: id, 'data-name': name }, name);
}
