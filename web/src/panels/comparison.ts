// Two texts side by side, with what is different in them.
import { MergeView } from '@codemirror/merge';
import { EditorState } from '@codemirror/state';
import { EditorView, lineNumbers } from '@codemirror/view';
import { editorLook } from '../editor/look.ts';

export interface Titled {
  title: string;
  text: string;
}

export class Comparison {
  private view: MergeView | undefined;
  private readonly root: ShadowRoot;

  /** In a shadow root, for the reason of the editor's. */
  constructor(host: HTMLElement) {
    this.root = host.attachShadow({ mode: 'open' });
  }

  show(before: Titled, after: Titled): void {
    this.hide();
    const { root } = this;
    const side = ({ title, text }: Titled) => ({
      doc: text,
      extensions: [
        lineNumbers(),
        EditorView.lineWrapping,
        EditorState.readOnly.of(true),
        EditorView.contentAttributes.of({ 'aria-label': title }),
        editorLook,
      ],
    });
    this.view = new MergeView({
      a: side(before),
      b: side(after),
      parent: root as unknown as HTMLElement,
      root,
      gutter: false,
      collapseUnchanged: { margin: 3, minSize: 6 },
    });
  }

  hide(): void {
    this.view?.destroy();
    this.view = undefined;
  }
}
