// What is being written survives that the page is loaded again, in this tab.
import { isShared, type Shared } from './link.ts';

const key = 'quor-studio-draft';

let timer: ReturnType<typeof setTimeout> | undefined;

/** Soon, so that one who types doesn't wait for it. */
export function keepDraft(draftOf: () => Shared): void {
  clearTimeout(timer);
  timer = setTimeout(() => write(draftOf()), 200);
}

function write(draft: Shared): void {
  try {
    sessionStorage.setItem(key, JSON.stringify(draft));
  } catch {
    sessionStorage.removeItem(key); // there is no room for it: none rather than an old one
  }
}

export function keptDraft(): Shared | undefined {
  try {
    const value: unknown = JSON.parse(sessionStorage.getItem(key) ?? 'null');
    return isShared(value) ? value : undefined;
  } catch {
    return undefined;
  }
}
