/** Advice about a script. `line` and `column` count from 1, in characters; 0 without a place. */
export interface Finding {
  readonly severity: 'error' | 'warning';
  /** The engine's number of an error; 0 for a warning. */
  readonly code: number;
  readonly sentence: string;
  /** What to write instead, or an empty text. */
  readonly suggestion: string;
  readonly line: number;
  readonly column: number;
  readonly length: number;
}

/** A script doesn't compile, or its calculation fails. */
export class ScriptError extends Error {
  override readonly name = 'ScriptError';
  /** The engine's number of the error. */
  readonly code: number;
  /** What is wrong, in one sentence. */
  readonly sentence: string;
  /** What to write instead, or an empty text. */
  readonly suggestion: string;
  /** The place in the script, counted from 1; 0 if the error has none. */
  readonly line: number;
  readonly column: number;
  /** All errors of the script, of which the one above is the first. */
  readonly errors: readonly Finding[];

  constructor(finding: Finding, ...others: Finding[]) {
    super([finding, ...others].map(textOf).join('\n'));
    this.errors = [finding, ...others];
    this.code = finding.code;
    this.sentence = finding.sentence;
    this.suggestion = finding.suggestion;
    this.line = finding.line;
    this.column = finding.column;
  }
}

/** The engine has run into its end, mostly that of memory. What it held is gone; load another one. */
export class EngineStopped extends Error {
  override readonly name = 'EngineStopped';

  constructor(cause: unknown) {
    super('the engine has stopped and holds nothing any more; load() gives a new one', { cause });
  }
}

/** The bars or the script want more memory than there is. What was there before still stands. */
export class OutOfMemory extends Error {
  override readonly name = 'OutOfMemory';

  constructor() {
    super('there is no memory left for this');
  }
}

/** Numbers all 0, for the caller to fill in. */
export function roomFor(count: number): Float64Array {
  try {
    return new Float64Array(count);
  } catch {
    throw new OutOfMemory();
  }
}

function textOf(finding: Finding): string {
  const place = finding.line > 0 ? `${finding.line}:${finding.column}: ` : '';
  const suggestion = finding.suggestion === '' ? '' : `; ${finding.suggestion}`;
  return `${place}${finding.severity}: ${finding.sentence} (code ${finding.code})${suggestion}`;
}
