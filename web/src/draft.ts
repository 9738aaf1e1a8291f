// What is being written survives that the page is loaded again, in this tab. What wasn't saved when
// a tab was closed is offered by those that are opened later.
import { isNumbers } from './link.ts';

/** A script, and what of it is saved. */
export interface Kept {
  id: string;
  name: string;
  saved: string;
  text: string;
}

export interface Draft {
  /** The one that was being written and all that aren't saved. */
  scripts: Kept[];
  current: string;
  /** Values by the name of the parameter. */
  parameters: Record<string, number>;
  /** The security whose bars were shown. */
  security?: string;
  /** The link in the address bar, of which the scripts have been made. */
  link: string;
}

const draftKey = 'quor-studio-draft';
const leftKey = 'quor-studio-left';

let timer: ReturnType<typeof setTimeout> | undefined;

/** Soon, so that one who types doesn't wait for it. */
export function keepDraft(draftOf: () => Draft): void {
  clearTimeout(timer);
  timer = setTimeout(() => write(sessionStorage, draftKey, draftOf()), 200);
}

/** The page goes away, whether it is to be loaded again or not. */
export function leaveDraft(draft: Draft): void {
  clearTimeout(timer);
  write(sessionStorage, draftKey, draft);
  const unsaved = draft.scripts.filter(({ saved, text }) => saved !== text);
  if (unsaved.length > 0) write(localStorage, leftKey, [...without(left(), unsaved), ...unsaved]);
}

export function keptDraft(): Draft | undefined {
  const value = read(sessionStorage, draftKey);
  return isDraft(value) ? value : undefined;
}

/** Scripts that weren't saved when their tabs were closed. */
export function left(): Kept[] {
  const value = read(localStorage, leftKey);
  return isListOfKept(value) ? value : [];
}

/** Scripts that were left are in the hands of a tab again. */
export function takeUp(scripts: readonly Kept[]): void {
  write(localStorage, leftKey, without(left(), scripts));
}

function without(all: readonly Kept[], scripts: readonly Kept[]): Kept[] {
  const isSame = (one: Kept) => scripts.some(({ id, text }) => one.id === id && one.text === text);
  return all.filter((one) => !isSame(one));
}

function write(storage: Storage, key: string, value: unknown): void {
  try {
    storage.setItem(key, JSON.stringify(value));
  } catch {
    // There is no room for it: no draft rather than an old one, and what others left stays.
    if (key === draftKey) storage.removeItem(key);
  }
}

function read(storage: Storage, key: string): unknown {
  try {
    return JSON.parse(storage.getItem(key) ?? 'null');
  } catch {
    return undefined;
  }
}

function isListOfKept(value: unknown): value is Kept[] {
  const isKept = (one: unknown) =>
    typeof one === 'object' &&
    one !== null &&
    ['id', 'name', 'saved', 'text'].every(
      (key) => typeof (one as Record<string, unknown>)[key] === 'string',
    );
  return Array.isArray(value) && value.every(isKept);
}

function isDraft(value: unknown): value is Draft {
  if (typeof value !== 'object' || value === null) return false;
  const { scripts, current, parameters, security, link } = value as Record<string, unknown>;
  return (
    isListOfKept(scripts) &&
    typeof current === 'string' &&
    isNumbers(parameters) &&
    ['string', 'undefined'].includes(typeof security) &&
    typeof link === 'string'
  );
}
