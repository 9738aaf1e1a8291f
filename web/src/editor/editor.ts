// The editor of the script that is written, whose text the page holds nowhere else.
import { closeBrackets, closeBracketsKeymap, completionKeymap } from '@codemirror/autocomplete';
import { defaultKeymap, history, historyKeymap, isolateHistory } from '@codemirror/commands';
import { bracketMatching } from '@codemirror/language';
import { type Diagnostic, lintKeymap, setDiagnostics } from '@codemirror/lint';
import { diff } from '@codemirror/merge';
import { highlightSelectionMatches, searchKeymap } from '@codemirror/search';
import { ChangeSet, Compartment, EditorState, type Extension } from '@codemirror/state';
import {
  drawSelection,
  EditorView,
  highlightActiveLine,
  highlightActiveLineGutter,
  keymap,
  lineNumbers,
} from '@codemirror/view';
import type { Adviser } from '../engine/adviser.ts';
import type { Finding, Place } from '../engine/text_types.ts';
import { element } from '../dom.ts';
import { completion } from './completion.ts';
import { callHint } from './hint.ts';
import { hover, type ValueOf } from './hover.ts';
import { scriptLanguage } from './language.ts';
import { editorLook } from './look.ts';
import { type Mend, mendKey, mendsOf } from './mending.ts';
import { names } from './names.ts';
import { swatches } from './swatches.ts';

/** Text written over a selection: left to itself, the browser wraps it into an element with a style,
 * which the page's security policy refuses with a message. */
const overSelection = EditorView.domEventHandlers({
  beforeinput(event, view) {
    const { main } = view.state.selection;
    if (event.inputType !== 'insertText' || !event.data || main.empty) return false;
    event.preventDefault();
    const text = event.data;
    const insert = () =>
      view.state.update(view.state.replaceSelection(text), { userEvent: 'input.type' });
    const handlers = view.state.facet(EditorView.inputHandler);
    if (!handlers.some((handle) => handle(view, main.from, main.to, text, insert))) {
      view.dispatch(insert());
    }
    return true;
  },
});

export interface EditorEvents {
  changed: () => void;
  valueOf: ValueOf;
  tell: (text: string) => void;
  fail: (error: unknown) => void;
}

export class Editor {
  private readonly view: EditorView;
  private readonly extensions: Extension;
  private readonly darkness = new Compartment();
  private isDark = false;
  /** What changed since a text was taken to be calculated: places in answers are places in that. */
  private sinceTaken = ChangeSet.empty(0);
  private taken = '';
  /** Something is underlined. */
  private areFindings = false;
  /** Places in the text as it is, by name. */
  private readonly places = new Map<string, Place>();

  /** The editor lives in a shadow root: there its styles are no inline styles of the page. */
  constructor(
    host: HTMLElement,
    words: readonly string[],
    private readonly adviser: Adviser,
    private readonly events: EditorEvents,
  ) {
    const root = host.attachShadow({ mode: 'open' });
    const parent = element('div');
    parent.style.height = '100%';
    root.append(parent);
    this.extensions = [
      lineNumbers(),
      EditorView.lineWrapping,
      highlightActiveLine(),
      highlightActiveLineGutter(),
      history(),
      drawSelection(),
      bracketMatching(),
      closeBrackets(),
      highlightSelectionMatches(),
      EditorState.allowMultipleSelections.of(true),
      EditorState.lineSeparator.of('\n'),
      EditorView.contentAttributes.of({
        'aria-label': 'Script',
        spellcheck: 'false',
        autocapitalize: 'off',
      }),
      // Tab leaves the editor, as everywhere on the page.
      keymap.of([
        ...closeBracketsKeymap,
        ...completionKeymap,
        ...defaultKeymap,
        ...searchKeymap,
        ...historyKeymap,
        ...lintKeymap,
        { key: 'Shift-Alt-f', run: () => (void this.format(), true) },
      ]),
      overSelection,
      scriptLanguage(new Set(words)),
      completion(adviser),
      callHint(adviser),
      hover(adviser, events.valueOf),
      names(adviser, events),
      swatches(adviser, events.fail),
      mendKey,
      editorLook,
      this.darkness.of([]),
      EditorView.updateListener.of((update) => {
        if (update.docChanged) this.follow(update.changes);
      }),
    ];
    this.view = new EditorView({ parent, root, state: this.makeDocument('') });
  }

  get text(): string {
    return this.view.state.doc.toString();
  }

  /** The text to calculate; from now on places of answers are places in it. */
  take(): string {
    this.taken = this.text;
    this.sinceTaken = ChangeSet.empty(this.taken.length);
    return this.taken;
  }

  /** A text with a history of its own, in which it was `before` at first. */
  makeDocument(text: string, before = text): EditorState {
    const state = EditorState.create({ doc: before, extensions: this.extensions });
    if (text === before) return state;
    return state.update({ changes: { from: 0, to: state.doc.length, insert: text } }).state;
  }

  /** The text that is written, with its history. */
  get document(): EditorState {
    return this.view.state;
  }

  open(document: EditorState): void {
    const { length } = this.view.state.doc;
    this.view.setState(document);
    this.setDark(this.isDark);
    this.areFindings = true; // it may have old ones
    this.follow(ChangeSet.of({ from: 0, to: length, insert: document.doc }, length));
  }

  /** Has another text in place of the one that is written, which to undo it leads back to. What is
   * the same in both stays, and the cursor with it. */
  write(text: string): void {
    const changes = diff(this.text, text).map(({ fromA, toA, fromB, toB }) => ({
      from: fromA,
      to: toA,
      insert: text.slice(fromB, toB),
    }));
    this.view.dispatch({ changes, annotations: isolateHistory.of('full') });
  }

  /** Lays out the text, in which one writes on. */
  async format(): Promise<void> {
    const { doc } = this.view.state;
    try {
      const { text, unreadable } = await this.adviser.format(doc.toString());
      if (this.view.state.doc !== doc) return;
      this.focus();
      if (unreadable === null) return text === this.text ? undefined : this.write(text);
      this.select(unreadable, unreadable);
      this.events.tell('From here on the script makes no sense, so it stays as it is');
    } catch (error) {
      this.events.fail(error);
    }
  }

  focus(): void {
    this.view.focus();
  }

  setDark(isDark: boolean): void {
    this.isDark = isDark;
    this.view.dispatch({ effects: this.darkness.reconfigure(EditorView.darkTheme.of(isDark)) });
  }

  /** Underlines findings of the text that was taken last, and offers what mends them. */
  showFindings(findings: readonly Finding[], mends: readonly (readonly Mend[])[] = []): void {
    const diagnostics = findings.flatMap((finding, i): Diagnostic[] => {
      const place = this.placeOf(finding);
      if (!place) return [];
      const message = sentenceOf(finding);
      const severity = finding.severity === 'error' ? 'error' : 'warning';
      const actions = (mends[i] ?? []).map(({ title, apply }) => ({ name: title, apply }));
      return [{ ...place, severity, message, actions }];
    });
    const { areFindings } = this;
    this.areFindings = diagnostics.length > 0;
    // A sound script after a sound one changes nothing, and is what one who types waits for.
    if (!areFindings && !this.areFindings) return;
    this.view.dispatch(setDiagnostics(this.view.state, diagnostics));
  }

  /** What mends findings of the text that was taken last, of each; none once others are sought or
   * another text is written. */
  async seekMends(findings: readonly Finding[]): Promise<Mend[][] | undefined> {
    const { taken } = this;
    const fixes = await this.adviser.fixes(taken, findings);
    const isNewest = taken === this.taken && taken === this.text;
    return isNewest ? fixes.map((one) => mendsOf(this.view, one)) : undefined;
  }

  /** Puts the cursor at a finding of the text that was taken last. */
  goTo(finding: Finding): void {
    const place = this.placeOf(finding);
    if (place) this.select(place.from, place.to);
    this.focus();
  }

  /** Follows places of the text that was taken last through all changes from there on. */
  keepPlaces(places: ReadonlyMap<string, Place>): void {
    this.places.clear();
    for (const [name, { from, to }] of places) this.places.set(name, this.mapped(from, to, -1));
  }

  /** Writes over a place that is kept. */
  writeAt(name: string, text: string): void {
    const place = this.places.get(name);
    if (!place) return;
    this.view.dispatch({ changes: { ...place, insert: text } });
  }

  private select(from: number, to: number): void {
    this.view.dispatch({ selection: { anchor: from, head: to }, scrollIntoView: true });
  }

  private follow(changes: ChangeSet): void {
    this.sinceTaken = this.sinceTaken.compose(changes);
    for (const [name, { from, to }] of this.places) {
      this.places.set(name, { from: changes.mapPos(from, -1), to: changes.mapPos(to, 1) });
    }
    this.events.changed();
  }

  /** A place of the text that was taken in the text as it is; side -1 takes in what was written at
   * its edges, 1 doesn't. */
  private mapped(from: number, to: number, side: 1 | -1): Place {
    const most = this.sinceTaken.length;
    const start = this.sinceTaken.mapPos(Math.min(from, most), side);
    const end = this.sinceTaken.mapPos(Math.min(to, most), -side);
    return { from: start, to: Math.max(start, end) };
  }

  /** At least one sign long, so that there is something to underline. */
  private placeOf({ from, to }: Finding): Place | undefined {
    if (from === null || to === null) return undefined;
    const place = this.mapped(from, to, 1);
    if (place.to > place.from) return place;
    const { length } = this.view.state.doc;
    return place.from < length
      ? { from: place.from, to: place.from + 1 }
      : { from: Math.max(length - 1, 0), to: length };
  }
}

export function sentenceOf({ sentence, suggestion }: Finding): string {
  return suggestion ? `${sentence} – ${suggestion}` : sentence;
}
