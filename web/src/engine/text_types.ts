// What is answered about the text of a script.

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
