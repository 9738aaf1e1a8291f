// The colours of the chart, on a light ground or a dark one.
import type { Palette, ThemeName } from '../engine/language_types.ts';
import type { Colours } from '../engine/types.ts';
import { withAlpha } from './color.ts';

const unknown = '#808080';

/** The palette of a ground, and the colours of a script's records made readable on it. */
export class Theme {
  constructor(
    readonly name: ThemeName,
    readonly palette: Palette,
    private readonly colours: Colours,
  ) {}

  line(key: string): string {
    return this.find(key, 'line');
  }

  text(key: string): string {
    return this.find(key, 'text');
  }

  area(key: string, alpha: number): string {
    return withAlpha(this.find(key, 'area'), alpha);
  }

  private find(key: string, use: 'line' | 'text' | 'area'): string {
    return Object.hasOwn(this.colours, key) ? this.colours[key][this.name][use] : unknown;
  }
}
