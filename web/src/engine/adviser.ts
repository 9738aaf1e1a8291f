// What the editor asks about the language. It has a worker of its own with the same module, which
// answers while the desk's calculates.
import { Refusal } from '../refusal.ts';
import { Ended, type Line } from './line.ts';
import type {
  CallHint,
  Colour,
  CompletionsAnswer,
  Finding,
  Fix,
  Formatted,
  HoverAnswer,
  NameAnswer,
  Place,
} from './text_types.ts';
import type { Parameter } from './types.ts';

/** What a script means depends on it, too. */
export interface Setting {
  parameters: Parameter[];
  /** Of the bars, a code. */
  period?: number;
}

const decoder = new TextDecoder();

export class Adviser {
  private line: Line | undefined;

  constructor(
    /** Called for the first question. */
    private readonly begin: () => Line,
    private readonly setting: () => Setting,
  ) {}

  complete(script: string, at: number): Promise<CompletionsAnswer | null> {
    return this.tryTo({ call: 'complete', script, at });
  }

  hover(script: string, at: number): Promise<HoverAnswer | null> {
    return this.tryTo({ call: 'hover', script, at });
  }

  hint(script: string, at: number): Promise<CallHint | null> {
    return this.tryTo({ call: 'hint', script, at });
  }

  /** The help of a word of the language, as Markdown. */
  async help(word: string): Promise<string | undefined> {
    return (await this.tryTo<{ markdown: string }>({ call: 'help', word }))?.markdown;
  }

  name(script: string, at: number): Promise<NameAnswer | null> {
    return this.tryTo({ call: 'name', script, at });
  }

  /** The places of the name there, if it can become another one; else a Refusal says why not. */
  rename(script: string, at: number, to: string): Promise<Place[]> {
    return this.ask({ call: 'rename', script, at, to });
  }

  format(script: string): Promise<Formatted> {
    return this.ask({ call: 'format', script });
  }

  async colours(script: string): Promise<Colour[]> {
    return (await this.tryTo<Colour[]>({ call: 'colours', script })) ?? [];
  }

  /** How a colour can be written: by its word if it has one, by digits, by RGB. */
  colourTexts(code: number): Promise<string[]> {
    return this.ask({ call: 'colour', code });
  }

  /** For each finding what mends it. */
  async fixes(script: string, findings: readonly Finding[]): Promise<Fix[][]> {
    return (await this.tryTo<Fix[][]>({ call: 'fixes', script, findings })) ?? [];
  }

  /** What is refused, such as half a character or a script that is too long, has no answer. */
  private async tryTo<T>(call: object): Promise<T | null> {
    try {
      return await this.ask<T>(call);
    } catch (error) {
      if (error instanceof Refusal || error instanceof Ended) return null;
      throw error;
    }
  }

  private async ask<T>(call: object): Promise<T> {
    this.line ??= this.begin();
    try {
      const answer = await this.line.ask({ ...this.setting(), ...call });
      return JSON.parse(decoder.decode(answer)) as T;
    } catch (error) {
      const hasFailed = error instanceof Refusal && (error.status === 0 || error.status >= 500);
      if (hasFailed) this.line.cut(new Ended(false)); // the next question has a new worker
      throw error;
    }
  }
}
