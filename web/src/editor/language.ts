// The colours of the script language.
import {
  HighlightStyle,
  StreamLanguage,
  type StreamParser,
  syntaxHighlighting,
} from '@codemirror/language';
import type { Extension } from '@codemirror/state';
import { tags } from '@lezer/highlight';

type Ending = '}' | '*/' | "'" | '"';

interface State {
  /** What ends the comment or the text that is open. */
  open: Ending | undefined;
  /** Nothing of a statement has been read yet. */
  isFresh: boolean;
  /** Parentheses that are open, and whether a comma has begun the styles of the statement. */
  depth: number;
  inStyles: boolean;
}

const styleWord =
  /^(COLOR\w*|LINETHICK\d*|(?:DOT|DASH|POINTDOT)\w*|\w*STICK|CIRCLEDOT|CROSSDOT|NOTEXT|NODRAW|[HV]?ALIGN\d|FONTSIZE\d+|PRECIS\d|SOLIDLINE|SOUND|NOTICE|ICON)$/;
const wordPattern = /^[\p{L}_][\p{L}\p{N}_]*/u;

const begin = (): State => ({ open: undefined, isFresh: true, depth: 0, inStyles: false });

/** Reads on to the end of a comment or a text. */
function readOpen(stream: Parameters<StreamParser<State>['token']>[0], state: State): string {
  const ending = state.open!;
  const kind = ending === "'" || ending === '"' ? 'string' : 'comment';
  if (stream.skipTo(ending)) {
    stream.pos += ending.length;
    state.open = undefined;
  } else {
    stream.skipToEnd();
  }
  return kind;
}

const openings: readonly (readonly [start: string, ending: Ending])[] = [
  ['{', '}'],
  ['/*', '*/'],
  ["'", "'"],
  ['"', '"'],
];

function readWord(word: string, rest: string, state: State, known: ReadonlySet<string>): string {
  const upper = word.toUpperCase();
  const wasFresh = state.isFresh;
  state.isFresh = false;
  if (upper === 'CONST' && wasFresh) {
    state.isFresh = true;
    return 'keyword';
  }
  if (wasFresh && /^\s*:/.test(rest)) return 'definition';
  if (upper === 'AND' || upper === 'OR') return 'operatorKeyword';
  if (state.inStyles && state.depth === 0 && styleWord.test(upper)) return 'style';
  if (known.has(upper)) return /^\s*\(/.test(rest) ? 'function' : 'builtin';
  return 'variableName';
}

function readSign(sign: string, state: State): string {
  if (sign === ';') {
    Object.assign(state, begin());
    return 'punctuation';
  }
  if (sign === '(') ++state.depth;
  if (sign === ')') state.depth = Math.max(state.depth - 1, 0);
  if (sign === ',' && state.depth === 0) state.inStyles = true;
  state.isFresh = false;
  return '(),:'.includes(sign) ? 'punctuation' : 'operator';
}

function parserFor(known: ReadonlySet<string>): StreamParser<State> {
  return {
    startState: begin,
    copyState: (state) => ({ ...state }),
    token(stream, state) {
      if (state.open) return readOpen(stream, state);
      if (stream.eatSpace()) return null;
      if (stream.match('//')) {
        stream.skipToEnd();
        return 'comment';
      }
      for (const [start, ending] of openings) {
        if (!stream.match(start)) continue;
        state.open = ending;
        return readOpen(stream, state);
      }
      if (stream.match(/^\d+\.?\d*(e\d+)?|^\.\d+/i)) {
        state.isFresh = false;
        return 'number';
      }
      const word = stream.match(wordPattern);
      if (word && typeof word === 'object') {
        return readWord(word[0], stream.string.slice(stream.pos), state, known);
      }
      return readSign(stream.next() ?? '', state);
    },
    languageData: { commentTokens: { line: '//' }, closeBrackets: { brackets: ['(', "'"] } },
    tokenTable: {
      definition: tags.definition(tags.variableName),
      style: tags.attributeName,
      builtin: tags.standard(tags.variableName),
      function: tags.function(tags.variableName),
    },
  };
}

const highlighting = HighlightStyle.define([
  { tag: tags.comment, color: 'var(--code-comment)', fontStyle: 'italic' },
  { tag: tags.string, color: 'var(--code-text)' },
  { tag: tags.number, color: 'var(--code-number)' },
  { tag: [tags.keyword, tags.operatorKeyword], color: 'var(--code-keyword)', fontWeight: '600' },
  { tag: tags.function(tags.variableName), color: 'var(--code-function)' },
  { tag: tags.standard(tags.variableName), color: 'var(--code-field)' },
  { tag: tags.definition(tags.variableName), color: 'var(--ink)', fontWeight: '600' },
  { tag: tags.attributeName, color: 'var(--code-style)' },
  { tag: [tags.operator, tags.punctuation], color: 'var(--label)' },
]);

/** The language with the words that the library knows, in capitals. */
export function scriptLanguage(known: ReadonlySet<string>): Extension {
  return [StreamLanguage.define(parserFor(known)), syntaxHighlighting(highlighting)];
}
