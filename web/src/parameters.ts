// The numbers of a script that are moved beside it: its parameters, and its constants, which stand in
// the text.
import { byId } from './dom.ts';
import type { Editor } from './editor/editor.ts';
import type { Parameter, Slider } from './engine/types.ts';
import { numberText, Sliders } from './panels/sliders.ts';

export class Parameters {
  private values = new Map<string, number>();
  private readonly sliders: Sliders;

  constructor(
    private readonly editor: Editor,
    /** A parameter has another value. */
    private readonly changed: () => void,
  ) {
    this.sliders = new Sliders(byId('sliders', HTMLElement), {
      move: (slider, value) => this.move(slider, value),
      add: (name, value) => this.set(name, value),
      remove: (name) => this.set(name, undefined),
    });
  }

  get list(): Parameter[] {
    return [...this.values].map(([name, value]) => ({ name, value }));
  }

  /** Values by the name of the parameter. */
  get record(): Record<string, number> {
    return Object.fromEntries(this.values);
  }

  /** Others, in place of all of them. */
  take(record: Record<string, number>): void {
    this.values = new Map(Object.entries(record));
  }

  show(sliders: readonly Slider[]): void {
    const places = sliders.flatMap(({ kind, name, from, to }) =>
      kind === 'const' && from !== null && to !== null ? [[name, { from, to }] as const] : [],
    );
    this.editor.keepPlaces(new Map(places));
    this.sliders.show(sliders);
  }

  private move({ kind, name }: Slider, value: number): void {
    if (kind === 'const') this.editor.writeAt(name, numberText(value));
    else this.set(name, value);
  }

  private set(name: string, value: number | undefined): void {
    if (value === undefined) this.values.delete(name);
    else this.values.set(name, value);
    this.changed();
  }
}
