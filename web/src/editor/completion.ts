// What can be written next, as the language knows it.
import {
  autocompletion,
  type Completion,
  type CompletionContext,
  type CompletionResult,
  snippet,
} from '@codemirror/autocomplete';
import type { Extension } from '@codemirror/state';
import type { Adviser } from '../engine/adviser.ts';
import type { CompletionsAnswer, Offer } from '../engine/text_types.ts';
import { element } from '../dom.ts';
import { helpOf } from './markdown.ts';

interface Offered extends Completion {
  offer: Offer;
}

export const colourText = (code: number): string => `#${code.toString(16).padStart(6, '0')}`;

/** Signs behind which something is offered though nothing is written of it. */
const openers = /[,'"$(]$/;

/** A snippet of this editor, in which nothing but braces is marked. */
const templateOf = (insert: string): string => insert.replace(/\\([$\\])/g, '$1');

function completionOf(offer: Offer, adviser: Adviser): Offered {
  const { label, kind, detail, about, rank } = offer;
  const template = templateOf(offer.insert);
  return {
    offer,
    // Patterns have small letters, which else would come before all words for who types such.
    label: label.toUpperCase(),
    displayLabel: label,
    sortText: label.replace(/\d+/g, (number) => number.padStart(3, '0')), // ICO2 before ICO10
    detail: detail.startsWith(label) ? detail.slice(label.length) : detail,
    boost: -rank,
    info: async () => {
      const help = kind === 'function' ? await adviser.help(label) : about;
      return help ? helpOf(help) : null;
    },
    apply: template.includes('${') ? snippet(template) : template,
  };
}

/** Behind a comma all words of the language would be too many. */
function isAskedFor({ from, items }: CompletionsAnswer, context: CompletionContext): boolean {
  if (context.explicit || from < context.pos) return true;
  const before = context.state.sliceDoc(0, context.pos);
  return openers.test(before) && items.every(({ kind }) => kind !== 'function');
}

function swatch({ offer }: Completion & Partial<Offered>): Node | null {
  if (offer?.kind !== 'colour') return null;
  const made = element('span', { class: 'swatch' });
  if (offer.code !== undefined) made.style.backgroundColor = colourText(offer.code);
  return made;
}

export function completion(adviser: Adviser): Extension {
  const source = async (context: CompletionContext): Promise<CompletionResult | null> => {
    const answer = await adviser.complete(context.state.doc.toString(), context.pos);
    if (!answer || answer.items.length === 0 || !isAskedFor(answer, context)) return null;
    return {
      from: answer.from,
      options: answer.items.map((offer) => completionOf(offer, adviser)),
      validFor: /^[\p{L}\p{N}_]*$/u,
    };
  };
  return autocompletion({
    override: [source],
    icons: false,
    maxRenderedOptions: 250,
    optionClass: ({ detail }) => (detail?.startsWith('(') ? 'call' : ''),
    addToOptions: [{ render: swatch, position: 30 }],
  });
}
