// The form of a call while its arguments are written, with the one that is written standing out.
import { type EditorState, type Extension, StateEffect, StateField } from '@codemirror/state';
import {
  type EditorView,
  keymap,
  showTooltip,
  type Tooltip,
  ViewPlugin,
  type ViewUpdate,
} from '@codemirror/view';
import type { Adviser } from '../engine/adviser.ts';
import type { CallHint } from '../engine/text_types.ts';
import { element } from '../dom.ts';

interface Shown extends Tooltip {
  hint: CallHint;
}

const show = StateEffect.define<CallHint | null>();

/** One that is the same is left where it is. */
function shownOf(hint: CallHint | null, before: Shown | null): Shown | null {
  if (!hint) return null;
  const { text, from, at } = hint;
  const isSame = before?.hint.text === text && before.hint.from === from && before.pos === at;
  const create = () => ({ dom: elementOf(hint) });
  return isSame ? before : { hint, pos: at, above: true, create };
}

const shown = StateField.define<Shown | null>({
  create: () => null,
  update(before, { effects, changes, docChanged }) {
    for (const effect of effects) if (effect.is(show)) return shownOf(effect.value, before);
    const moves = before && docChanged && changes.mapPos(before.pos) !== before.pos;
    return moves ? { ...before, pos: changes.mapPos(before.pos) } : before;
  },
  provide: (field) => showTooltip.from(field),
});

const isOpen = (state: EditorState): boolean => state.field(shown) !== null;

function elementOf({ text, from, to, about, summary }: CallHint): HTMLElement {
  return element(
    'div',
    { class: 'help' },
    element(
      'pre',
      {},
      element('span', {}, text.slice(0, from)),
      element('strong', {}, text.slice(from, to)),
      element('span', {}, text.slice(to)),
    ),
    element('p', {}, about ? `${text.slice(from, to)}: ${about}` : summary),
  );
}

/** An opening parenthesis or a comma was typed, or a call was completed. */
function beginsArgument({ transactions }: ViewUpdate): boolean {
  return transactions.some((one) => {
    let text = '';
    one.changes.iterChanges((_from, _to, _start, _end, inserted) => (text += inserted.toString()));
    const isTyped = one.isUserEvent('input.type') || one.isUserEvent('input.complete');
    return isTyped && /[(,]/.test(text);
  });
}

function follower(adviser: Adviser) {
  return ViewPlugin.define((view: EditorView) => {
    const ask = async () => {
      const { state } = view;
      const at = state.selection.main.head;
      const hint = await adviser.hint(state.doc.toString(), at);
      if (view.state.doc !== state.doc || view.state.selection.main.head !== at) return;
      if (hint || isOpen(view.state)) view.dispatch({ effects: show.of(hint) });
    };
    return {
      update(update: ViewUpdate) {
        const goesOn = isOpen(update.state) && (update.docChanged || update.selectionSet);
        if (goesOn || beginsArgument(update)) void ask();
      },
    };
  });
}

function close(view: EditorView): boolean {
  if (!isOpen(view.state)) return false;
  view.dispatch({ effects: show.of(null) });
  return true;
}

export function callHint(adviser: Adviser): Extension {
  return [shown, follower(adviser), keymap.of([{ key: 'Escape', run: close }])];
}
