// What the desk says once: words and periods, and how charts are laid out and coloured.

export type ThemeName = 'light' | 'dark';

export type Palette = Readonly<
  Record<
    | 'ground'
    | 'grid'
    | 'mark'
    | 'label'
    | 'ink'
    | 'rise'
    | 'fall'
    | 'buy'
    | 'sell'
    | 'close_out'
    | 'notice',
    string
  >
>;

export interface Period {
  code: number;
  name: string;
}

/** How charts are laid out and drawn: host/panes/measures.h, which says what each is. Lengths in
 * pixels. */
export interface Measures {
  /** Between the marks of the time axis, at least. */
  timeMarkRoom: number;
  /** Between ticks: as much as one likes, and as little as there may be. */
  tickRoom: number;
  leastTickRoom: number;
  /** Ticks that are sought for at closer distances than one likes. */
  enoughTicks: number;
  backgroundAlpha: number;
  regionAlpha: number;
  volumeAlpha: number;
  leadAlpha: number;
  lastPriceAlpha: number;
  backPictureAlpha: number;
  /** By the words of line styles. */
  dashes: Readonly<Record<string, readonly number[]>>;
  levelDashes: readonly number[];
  goldenShares: readonly (readonly [share: number, name: string])[];
  lineEase: number;
  broadestLine: number;
  narrowSlot: number;
  broadestNarrowLine: number;
  ringLine: number;
  barShare: number;
  broadestBar: number;
  textSpace: number;
  farText: number;
  farthestText: number;
  halfTag: number;
  tagRadius: number;
}

/** What the page knows of scripts and bars. */
export interface Language {
  /** Of the language, in capitals. */
  words: string[];
  periods: Period[];
  theme: Record<ThemeName, Palette>;
  measures: Measures;
  limits: { script: number };
}
