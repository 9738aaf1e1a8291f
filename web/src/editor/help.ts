// Help on words: while they are completed, and under the pointer.
import {
  autocompletion,
  type Completion,
  type CompletionContext,
  type CompletionResult,
  snippet,
} from '@codemirror/autocomplete';
import type { Extension } from '@codemirror/state';
import { hoverTooltip } from '@codemirror/view';
import type { Word } from '../engine/types.ts';
import { element } from '../dom.ts';

const wordAt = /[\p{L}_][\p{L}\p{N}_]*/gu;
const definition = /(?:^|;)\s*(?:CONST\s+)?([\p{L}_][\p{L}\p{N}_]*)\s*:/giu;

function paragraph(kind: string, text: string): HTMLElement | undefined {
  return text ? element('p', { class: kind }, text) : undefined;
}

/** Form, summary, arguments and example of a word. */
export function helpOn(word: Word): HTMLElement {
  return element(
    'div',
    { class: 'word-help' },
    paragraph('form', word.form),
    paragraph('summary', word.summary),
    paragraph('arguments', word.arguments),
    paragraph('nulls', word.nulls),
    paragraph('example', word.example),
  );
}

/** The form of a call with its arguments to be filled in one after the other; else the word. */
function templateOf({ word, form }: Word): string {
  const call = /^(\w+)\(([^()]*)\)$/.exec(form.split(/\s/)[0]);
  if (!call || call[1] !== word) return word;
  const fields = call[2]
    .split(',')
    .filter((argument) => /^[\w' .]+$/.test(argument) && !argument.includes('...'));
  return fields.length > 0
    ? `${word}(${fields.map((field) => `\${${field}}`).join(',')})`
    : `${word}(\${})`;
}

function completionOf(word: Word): Completion {
  const template = templateOf(word);
  return {
    label: word.word,
    detail: word.form.startsWith(word.word) ? word.form.slice(word.word.length) : word.form,
    type: template === word.word ? 'field' : 'function',
    info: () => helpOn(word),
    apply: template === word.word ? word.word : snippet(template),
  };
}

/** The names that a script defines. */
function namesOf(script: string, except: ReadonlySet<string>): Completion[] {
  const names = new Set([...script.matchAll(definition)].map((found) => found[1].toUpperCase()));
  return [...names]
    .filter((name) => !except.has(name))
    .map((label) => ({ label, type: 'name', boost: 1 }));
}

/** The word that reaches up to a place, unless it stands in a comment or a text. */
function source(words: readonly Word[]): (context: CompletionContext) => CompletionResult | null {
  const options = words.map(completionOf);
  const known = new Set(words.map(({ word }) => word));
  return (context) => {
    const before = context.matchBefore(/[\p{L}_][\p{L}\p{N}_]*/u);
    if (!before && !context.explicit) return null;
    const from = before?.from ?? context.pos;
    const names = namesOf(context.state.doc.sliceString(0, from), known);
    return { from, options: [...names, ...options], validFor: /^[\p{L}\p{N}_]*$/u };
  };
}

export function wordHelp(words: readonly Word[]): Extension {
  const byName = new Map(words.map((word) => [word.word, word]));
  const tooltip = hoverTooltip((view, position) => {
    const line = view.state.doc.lineAt(position);
    for (const found of line.text.matchAll(wordAt)) {
      const from = line.from + found.index;
      const end = from + found[0].length;
      const word = byName.get(found[0].toUpperCase());
      if (position < from || position > end || !word) continue;
      return { pos: from, end, above: true, create: () => ({ dom: helpOn(word) }) };
    }
    return null;
  });
  return [
    autocompletion({ override: [source(words)], icons: false, maxRenderedOptions: 250 }),
    tooltip,
  ];
}
