// What mends a finding, as the editor can do it.
import type { Diagnostic } from '@codemirror/lint';
import { forEachDiagnostic } from '@codemirror/lint';
import { type Extension } from '@codemirror/state';
import { type EditorView, keymap } from '@codemirror/view';
import type { Fix } from '../engine/text_types.ts';

export interface Mend {
  title: string;
  apply: () => void;
}

/** Mends of a text whose places are places of what stands in the editor now. They do nothing once
 * another text stands there: then other findings are on their way. */
export function mendsOf(view: EditorView, fixes: readonly Fix[]): Mend[] {
  const { doc } = view.state;
  return fixes.map(({ title, from, to, text }) => ({
    title,
    apply: () => {
      if (view.state.doc !== doc) return;
      view.dispatch({ changes: { from, to, insert: text }, userEvent: 'input.fix' });
      view.focus();
    },
  }));
}

/** The first mend of what is underlined at the cursor. */
function mendHere(view: EditorView): boolean {
  const at = view.state.selection.main.head;
  const found: Diagnostic[] = [];
  forEachDiagnostic(view.state, (one, from, to) => {
    if (from <= at && at <= to && one.actions?.length) found.push(one);
  });
  found[0]?.actions?.[0].apply(view, at, at);
  return found.length > 0;
}

export const mendKey: Extension = keymap.of([{ key: 'Mod-.', run: mendHere }]);
