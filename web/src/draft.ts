// What is being written survives that the page is loaded again, in this tab.
import { isShared, type Shared } from './link.ts';

const key = 'quor-studio-draft';

export function keepDraft(draft: Shared): void {
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
