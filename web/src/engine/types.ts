// What the desk answers about bars, scripts and play.
import type { ShapeRecord } from '../chart/records.ts';
import type { ThemeName } from './language_types.ts';
import type { Finding } from './text_types.ts';

export interface Parameter {
  name: string;
  value: number;
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
