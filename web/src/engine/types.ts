// What the desk answers.
import type { ShapeRecord } from '../chart/records.ts';

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

export interface Parameter {
  name: string;
  value: number;
}

export interface Finding {
  severity: 'error' | 'warning';
  from: number | null;
  to: number | null;
  line: number | null;
  column: number | null;
  sentence: string;
  suggestion: string;
}

/** A stretch of a script. */
export interface Place {
  from: number;
  to: number;
}

/** What can be written at a place, over what stands there of it. */
export interface CompletionsAnswer extends Place {
  items: Offer[];
}

export interface Offer {
  label: string;
  kind:
    'function' | 'field' | 'line' | 'constant' | 'style' | 'colour' | 'text' | 'keyword' | 'form';
  /** What comes first has the least. */
  rank: number;
  detail: string;
  about: string;
  /** With places to fill in: ${1:X}. */
  insert: string;
  /** Of a colour: 0xRRGGBB. */
  code?: number;
}

export interface HoverAnswer extends Place {
  markdown: string;
  /** Of a line or a constant of the script, in capitals. */
  name: string | null;
}

/** The form of the call around a place, and where in it the argument stands that is written. */
export interface CallHint extends Place {
  text: string;
  about: string;
  summary: string;
  /** Where in the script the call begins. */
  at: number;
}

/** A name of the script, where it is declared, and all of its places. */
export interface NameAnswer extends Place {
  name: string;
  declared: Place | null;
  places: Place[];
}

export interface Formatted {
  text: string;
  /** Where the text stops making sense, so that it stays as it is. */
  unreadable: number | null;
}

export interface Colour extends Place {
  /** 0xRRGGBB. */
  code: number;
}

/** Writes a text over a place. */
export interface Fix extends Place {
  text: string;
  title: string;
}

export interface Slider {
  kind: 'const' | 'parameter';
  name: string;
  value: number;
  low: number;
  high: number;
  step: number;
  /** Where the number of a constant stands in the script. */
  from: number | null;
  to: number | null;
  /** The script doesn't read this parameter. */
  idle?: boolean;
}

export interface Line {
  name: string;
  column: number;
  drawn: boolean;
}

export interface Pane {
  records: number[];
  levels: { record: number; value: number }[];
  digits: number;
  weight: number;
}

export type Colours = Readonly<
  Record<string, Readonly<Record<ThemeName, Readonly<Record<'line' | 'text' | 'area', string>>>>>
>;

/** Data of another security or period that the script reads. */
export interface Reference {
  /** Of the security, in capitals. */
  name: string;
  text: string;
  /** Whether it is another security's. */
  security: boolean;
  given: boolean;
}

/** What is known of the security beside its bars. */
export interface Subject {
  code?: string;
  market?: string;
  minPrice?: number;
  unit?: number;
  shareCountPerUnit?: number;
  /** JSON. */
  calendar?: string;
}

/** What is to be drawn: of a script that compiles, or the bars alone. */
export interface Drawn {
  lines: Line[];
  records: ShapeRecord[];
  panes: Pane[];
  colours: Colours;
  missing: { field: number; text: string }[];
  references: Reference[];
  needs: { calendar: boolean; constants: boolean };
  events: number;
  rows: number;
}

/** A script with an error leaves what is drawn as it is, except over other bars. */
export interface ScriptAnswer extends Partial<Drawn> {
  sound: boolean;
  findings: Finding[];
  sliders: Slider[];
  times: { compile: number; calculate: number; total: number };
}

export interface BarsAnswer {
  name: string;
  rows: number;
  first: number;
  last: number;
  period: { code: number; name: string; guessed: boolean };
  intraday: boolean;
  fields: number[];
  decimals: number;
  script: ScriptAnswer | null;
}

/** A bar at which a record shows, and the values of the columns that it names. */
export interface Shown {
  row: number;
  values: Readonly<Record<string, number | null>>;
  first?: number;
  second?: number;
  third?: number;
}

export interface RecordsAnswer {
  records: { index: number; shown: Shown[]; cut: boolean }[];
}

export interface ValuesAnswer {
  row: number;
  /** The date, with the time of day where bars have one. */
  text: string;
  /** Of the bar, by their ids. */
  fields: Readonly<Record<string, number | null>>;
  /** Of the fields, by their ids. */
  names: Readonly<Record<string, string>>;
  lines: (number | null)[];
}

export interface OverlayAnswer {
  column: number;
  /** Those for which it has a value. */
  bars: number;
}

/** Why a line has no value at a bar, from the line down to what has none of its own. */
export interface WhyAnswer {
  row: number;
  sentences: string[];
}

/** A notice or a signal. */
export interface Fired {
  row: number;
  key: number;
  text: string;
  word: string;
  name: string;
  quantity: number | null;
  statement: number;
  /** Whether the bar is whole; only while bars are played. */
  final?: boolean;
}

export interface EventsAnswer {
  count: number;
  events: Fired[];
}

export interface PlayAnswer {
  row: number;
  rows: number;
  of: number;
}

export interface StepAnswer extends PlayAnswer {
  done: boolean;
  steps: {
    row: number;
    key: number;
    tick: number;
    final: boolean;
    events: Fired[];
    /** Files of sounds, "Alarm01.wav". */
    sounds: string[];
  }[];
}
