// In front of each colour of the script a patch of it, by which another one can be picked.
import { type ChangeDesc, type Extension, RangeSet } from '@codemirror/state';
import {
  Decoration,
  type DecorationSet,
  EditorView,
  ViewPlugin,
  type ViewUpdate,
  WidgetType,
} from '@codemirror/view';
import type { Adviser } from '../engine/adviser.ts';
import type { Colour } from '../engine/text_types.ts';
import { element } from '../dom.ts';
import { colourText } from './completion.ts';

/** In milliseconds: while one types the patches that are there go along. */
const patience = 60;

class Swatch extends WidgetType {
  constructor(
    private readonly code: number,
    private readonly pick: (swatch: HTMLElement, code: number) => void,
  ) {
    super();
  }

  override eq(other: Swatch): boolean {
    return other.code === this.code;
  }

  toDOM(): HTMLElement {
    const text = colourText(this.code);
    const input = element('input', {
      type: 'color',
      class: 'swatch',
      value: text,
      title: 'Pick another colour',
      'aria-label': `Colour ${text}`,
      tabindex: -1,
    });
    input.addEventListener('change', () => this.pick(input, parseInt(input.value.slice(1), 16)));
    return input;
  }

  override ignoreEvent(): boolean {
    return true;
  }
}

class Swatches {
  decorations: DecorationSet = RangeSet.empty;
  private colours: readonly Colour[] = [];
  private timer: ReturnType<typeof setTimeout> | undefined;

  constructor(
    private readonly view: EditorView,
    private readonly adviser: Adviser,
    private readonly fail: (error: unknown) => void,
  ) {
    this.wait(0);
  }

  update({ docChanged, changes }: ViewUpdate): void {
    if (!docChanged) return;
    this.follow(changes);
    this.wait(patience);
  }

  destroy(): void {
    clearTimeout(this.timer);
  }

  private follow(changes: ChangeDesc): void {
    this.decorations = this.decorations.map(changes);
    this.colours = this.colours.map(({ from, to, code }) => ({
      from: changes.mapPos(from, 1),
      to: changes.mapPos(to, -1),
      code,
    }));
  }

  private wait(time: number): void {
    clearTimeout(this.timer);
    this.timer = setTimeout(() => void this.seek().catch(this.fail), time);
  }

  private async seek(): Promise<void> {
    const { doc } = this.view.state;
    const colours = await this.adviser.colours(doc.toString());
    if (this.view.state.doc !== doc) return;
    this.colours = colours;
    const pick = (swatch: HTMLElement, code: number) =>
      void this.write(this.view.posAtDOM(swatch), code).catch(this.fail);
    this.decorations = Decoration.set(
      colours.map(({ from, code }) =>
        Decoration.widget({ widget: new Swatch(code, pick), side: 1 }).range(from),
      ),
    );
    this.view.dispatch({}); // has it drawn
  }

  /** In the way in which the colour before was written: by RGB, or by a word. */
  private async write(at: number, code: number): Promise<void> {
    const texts = await this.adviser.colourTexts(code);
    const place = this.colours.find(({ from }) => from === at);
    if (!place) return;
    const { from, to } = place;
    const isCall = /^rgb/i.test(this.view.state.sliceDoc(from, to));
    const insert = (isCall ? texts.at(-1) : texts[0]) ?? '';
    this.view.dispatch({ changes: { from, to, insert }, userEvent: 'input.colour' });
  }
}

export function swatches(adviser: Adviser, fail: (error: unknown) => void): Extension {
  return ViewPlugin.define((view) => new Swatches(view, adviser, fail), {
    decorations: (plugin) => plugin.decorations,
  });
}
