// The little Markdown in which the language's help comes: paragraphs, lists, and code in fences.
import { element } from '../dom.ts';

export type Block =
  | { kind: 'code'; text: string }
  | { kind: 'text'; text: string }
  | { kind: 'list'; items: string[] };

const plain = (text: string): string =>
  text.replace(/\\([*_<[`\\])/g, '$1').replace(/ {2}\n/g, '\n');

export function blocksOf(markdown: string): Block[] {
  const blocks: Block[] = [];
  const parts = /```\w*\n([\s\S]*?)\n```|((?:(?!\n\n|```)[\s\S])+)/g;
  for (const [, code, other] of markdown.matchAll(parts)) {
    const text = other?.trim();
    if (code !== undefined) blocks.push({ kind: 'code', text: code });
    else if (text?.startsWith('- '))
      blocks.push({ kind: 'list', items: text.slice(2).split('\n- ').map(plain) });
    else if (text) blocks.push({ kind: 'text', text: plain(text) });
  }
  return blocks;
}

function elementOf(block: Block): HTMLElement {
  if (block.kind === 'code') return element('pre', {}, block.text);
  if (block.kind === 'text') return element('p', {}, block.text);
  return element('ul', {}, ...block.items.map((item) => element('li', {}, item)));
}

export function helpOf(markdown: string, ...more: (HTMLElement | undefined)[]): HTMLElement {
  return element('div', { class: 'help' }, ...blocksOf(markdown).map(elementOf), ...more);
}
