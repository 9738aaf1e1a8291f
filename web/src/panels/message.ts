// The one line of the page that says what went wrong, or what was done.
import { byId, setText } from '../dom.ts';

const line = byId('message', HTMLElement);

export function tell(text: string): void {
  line.classList.remove('error');
  setText(line, text);
}

export function tellError(error: unknown): void {
  line.classList.add('error');
  setText(line, error instanceof Error ? error.message : String(error));
}
