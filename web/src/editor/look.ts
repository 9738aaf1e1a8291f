// How the editor looks: by the page's variables, which reach into its shadow root.
import { EditorView } from '@codemirror/view';

const plate = {
  backgroundColor: 'var(--raised)',
  color: 'var(--ink)',
  border: '1px solid var(--line)',
  borderRadius: '6px',
  boxShadow: 'var(--shadow)',
};

const wave = (color: 'error' | 'warning') => ({
  backgroundImage: 'none',
  textDecoration: `underline wavy var(--${color}) 1.5px`,
  textUnderlineOffset: '3px',
  textDecorationSkipInk: 'none',
});

export const editorLook = EditorView.theme({
  '&': {
    height: '100%',
    fontSize: '13.5px',
    color: 'var(--ink)',
    backgroundColor: 'var(--ground)',
  },
  '&.cm-focused': { outline: 'none' },
  '.cm-scroller': { fontFamily: 'var(--code-font)', lineHeight: '1.55' },
  '.cm-content': { padding: '10px 0', caretColor: 'var(--accent)' },
  '.cm-line': { padding: '0 12px 0 6px' },
  '.cm-gutters': { backgroundColor: 'var(--ground)', color: 'var(--faint)', border: 'none' },
  '.cm-activeLine, .cm-activeLineGutter': { backgroundColor: 'var(--hover)' },
  '.cm-cursor': { borderLeftColor: 'var(--accent)', borderLeftWidth: '2px' },
  '&.cm-focused > .cm-scroller > .cm-selectionLayer .cm-selectionBackground, .cm-selectionBackground':
    {
      backgroundColor: 'var(--selection)',
    },
  '&.cm-focused .cm-matchingBracket': { backgroundColor: 'var(--selection)', outline: 'none' },
  '.cm-selectionMatch': { backgroundColor: 'var(--selection)' },
  '.cm-tooltip': { ...plate, fontSize: '12.5px', maxWidth: '440px' },
  '.cm-tooltip-autocomplete > ul': { fontFamily: 'var(--code-font)', maxHeight: '15em' },
  '.cm-tooltip-autocomplete > ul > li': { padding: '2px 8px' },
  '.cm-tooltip.cm-tooltip-autocomplete > ul > li[aria-selected]': {
    backgroundColor: 'var(--accent)',
    color: 'var(--on-accent)',
  },
  '.cm-completionDetail': { fontStyle: 'normal', opacity: '0.75', marginLeft: '1em' },
  'li[aria-selected] > .cm-completionDetail': { opacity: '1' },
  '.call > .cm-completionDetail': { marginLeft: '0' },
  '.cm-tooltip.cm-completionInfo': {
    ...plate,
    overflow: 'auto',
    width: '320px',
    maxHeight: '260px',
    padding: '0',
  },
  '.help': { padding: '8px 12px', lineHeight: '1.45' },
  '.help > *': { margin: '0 0 5px', whiteSpace: 'pre-line' },
  '.help > :last-child': { marginBottom: '0' },
  '.help > pre': { fontFamily: 'var(--code-font)', whiteSpace: 'pre-wrap', color: 'var(--label)' },
  '.help > pre:first-child': { fontWeight: '600', color: 'var(--code-function)' },
  '.help > pre:first-child:has(strong)': { fontWeight: '400' },
  '.help > ul': { paddingLeft: '16px', color: 'var(--label)' },
  '.help > .value': { fontWeight: '600', fontVariantNumeric: 'tabular-nums' },
  '.swatch': {
    display: 'inline-block',
    appearance: 'none',
    width: '10px',
    height: '10px',
    margin: '0 4px 0 1px',
    padding: '0',
    border: '1px solid var(--faint)',
    borderRadius: '2px',
    verticalAlign: 'baseline',
  },
  'input.swatch': { cursor: 'pointer', overflow: 'hidden' },
  '.swatch::-webkit-color-swatch-wrapper': { padding: '0' },
  '.swatch::-webkit-color-swatch': { border: 'none' },
  '.cm-lintRange-error': wave('error'),
  '.cm-lintRange-warning': wave('warning'),
  '.cm-diagnostic': { padding: '6px 12px', border: 'none' },
  '.cm-diagnostic-error': { boxShadow: 'inset 3px 0 var(--error)' },
  '.cm-diagnostic-warning': { boxShadow: 'inset 3px 0 var(--warning)' },
  '.cm-diagnosticAction': {
    font: 'inherit',
    color: 'var(--on-accent)',
    backgroundColor: 'var(--accent)',
    borderRadius: '4px',
    padding: '1px 8px',
  },
  '.cm-panels': {
    backgroundColor: 'var(--raised)',
    color: 'var(--ink)',
    borderColor: 'var(--line)',
  },
  '.cm-textfield': {
    backgroundColor: 'var(--ground)',
    border: '1px solid var(--line)',
    borderRadius: '4px',
  },
  '.cm-button': {
    background: 'var(--hover)',
    border: '1px solid var(--line)',
    borderRadius: '4px',
    color: 'inherit',
  },
});
