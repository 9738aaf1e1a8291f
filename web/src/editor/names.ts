// From a name of the script to its declaration and its uses, and to another name.
import { EditorSelection, type Extension } from '@codemirror/state';
import { EditorView, keymap, showDialog } from '@codemirror/view';
import type { Adviser } from '../engine/adviser.ts';
import type { NameAnswer } from '../engine/text_types.ts';

export interface NamesEvents {
  tell: (text: string) => void;
  fail: (error: unknown) => void;
}

export function names(adviser: Adviser, events: NamesEvents): Extension {
  /** Does something with the name at a place, unless something else is written by then. */
  const withName = (view: EditorView, at: number, act: (name: NameAnswer) => void): boolean => {
    const { doc } = view.state;
    adviser
      .name(doc.toString(), at)
      .then((name) => {
        if (view.state.doc !== doc) return;
        if (name) act(name);
        else events.tell('There is no name of the script here');
      })
      .catch(events.fail);
    return true;
  };

  const goToDeclaration = (view: EditorView, at = view.state.selection.main.head) =>
    withName(view, at, ({ name, declared }) => {
      if (!declared) return events.tell(`${name} is a parameter, which the script doesn't declare`);
      view.dispatch({
        selection: { anchor: declared.from, head: declared.to },
        scrollIntoView: true,
      });
      view.focus();
    });

  /** Selects all of its places at once. */
  const selectUses = (view: EditorView) =>
    withName(view, view.state.selection.main.head, ({ from, places }) => {
      const main = places.findIndex((place) => place.from === from);
      const ranges = places.map(({ from, to }) => EditorSelection.range(from, to));
      view.dispatch({ selection: EditorSelection.create(ranges, Math.max(main, 0)) });
      events.tell(places.length === 1 ? '1 place' : `${places.length} places`);
    });

  const write = async (view: EditorView, { from }: NameAnswer, to: string) => {
    const { doc } = view.state;
    const places = await adviser.rename(doc.toString(), from, to);
    if (view.state.doc !== doc) return;
    view.dispatch({
      changes: places.map((place) => ({ ...place, insert: to })),
      userEvent: 'input.rename',
    });
  };

  const rename = (view: EditorView) =>
    withName(view, view.state.selection.main.head, (name) => {
      const written = view.state.sliceDoc(name.from, name.to);
      const { result } = showDialog(view, {
        label: `Rename ${name.name} to`,
        input: { name: 'name', type: 'text', value: written, spellcheck: 'false' },
        submitLabel: 'Rename',
        focus: true,
      });
      result
        .then(async (form) => {
          view.focus();
          const to = (form?.elements.namedItem('name') as HTMLInputElement | null)?.value.trim();
          if (to && to !== written) await write(view, name, to);
        })
        .catch(events.fail);
    });

  return [
    keymap.of([
      { key: 'F2', run: rename },
      { key: 'F12', run: (view) => goToDeclaration(view), shift: selectUses },
    ]),
    EditorView.clickAddsSelectionRange.of(({ altKey }) => altKey),
    EditorView.domEventHandlers({
      mousedown(event, view) {
        if (!(event.ctrlKey || event.metaKey) || event.button !== 0) return false;
        const at = view.posAtCoords(event);
        return at !== null && goToDeclaration(view, at);
      },
    }),
  ];
}
