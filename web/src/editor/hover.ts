// What stands under the pointer.
import type { Extension } from '@codemirror/state';
import { hoverTooltip } from '@codemirror/view';
import type { Adviser } from '../engine/adviser.ts';
import { element } from '../dom.ts';
import { helpOf } from './markdown.ts';

/** The value of a line where the chart tells values, as a sentence. */
export type ValueOf = (name: string) => Promise<string | undefined>;

export function hover(adviser: Adviser, valueOf: ValueOf): Extension {
  return hoverTooltip(async ({ state }, position) => {
    const found = await adviser.hover(state.doc.toString(), position);
    if (!found) return null;
    const value = found.name === null ? undefined : await valueOf(found.name);
    const told = value === undefined ? undefined : element('p', { class: 'value' }, value);
    const create = () => ({ dom: helpOf(found.markdown, told) });
    return { pos: found.from, end: found.to, above: true, create };
  });
}
