// The scripts that tests play with: the samples, and those with and without mistakes of the tests.
import { readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';

const root = '../..';

export interface Mistake {
  script: string;
  /** Where it is told, lines and columns from 1. */
  places: { line: number; column: number }[];
}

export function samples(): { name: string; script: string }[] {
  const names = readdirSync(join(root, 'samples'), { recursive: true, encoding: 'utf8' });
  return names
    .filter((name) => name.endsWith('.quor'))
    .sort()
    .map((name) => ({ name, script: readFileSync(join(root, 'samples', name), 'utf8') }));
}

/** Blocks of a file of cases that are a script and what is told of it, without settings. */
function blocks(name: string): { lines: string[]; told: string[] }[] {
  const groups = readFileSync(join(root, 'tests/advice', name), 'utf8')
    .split(/^== .*$/m)
    .slice(1);
  return groups.flatMap((group) => {
    const parts = group.split(/\n\n+/);
    // Settings below the name of a group are for all of it.
    if (parts[0]?.includes('@')) return [];
    return parts
      .map((part) => part.split('\n').filter((line) => line !== '' && !line.startsWith('#')))
      .filter((lines) => lines.length > 0 && !lines.some((line) => /^@|\\/.test(line)))
      .map((lines) => ({
        lines: lines.filter((line) => !line.startsWith('> ')),
        told: lines.filter((line) => line.startsWith('> ')).map((line) => line.slice(2)),
      }));
  });
}

export function soundScripts(): string[] {
  return blocks('sound.txt').map(({ lines }) => lines.join('\n') + '\n');
}

export function mistakes(): Mistake[] {
  return blocks('mistakes.txt').map(({ lines, told }) => ({
    script: lines.join('\n'),
    places: told.map((text) => {
      const [, line, column] = /^(\d+):(\d+)/.exec(text) ?? [];
      return { line: Number(line), column: Number(column) };
    }),
  }));
}
