// The findings of the script as a list, each leading to its place.
import type { Finding } from '../engine/text_types.ts';
import type { ScriptAnswer } from '../engine/types.ts';
import { element, setText } from '../dom.ts';
import { sentenceOf } from '../editor/editor.ts';
import type { Mend } from '../editor/mending.ts';

const most = 50;

export class Findings {
  private readonly list = element('ul', { class: 'finding-list' });
  private readonly head = element('p', { class: 'finding-head', role: 'status' });

  private readonly times = element('span', { class: 'hint', id: 'times' });

  constructor(
    root: HTMLElement,
    private readonly goTo: (finding: Finding) => void,
  ) {
    root.append(element('div', { class: 'bar finding-bar' }, this.head, this.times), this.list);
  }

  /** How long it took; nothing for what has no values. */
  showTimes(times: ScriptAnswer['times'] | undefined): void {
    setText(this.times, times ? timesText(times) : '');
  }

  show(findings: readonly Finding[], isSound: boolean): void {
    const errors = findings.filter(({ severity }) => severity === 'error').length;
    const warnings = findings.length - errors;
    const counts = [count(errors, 'error'), count(warnings, 'warning')].filter(Boolean).join(', ');
    setText(this.head, counts || (isSound ? 'The script compiles' : 'The script has an error'));
    this.head.className = `finding-head ${errors || !isSound ? 'error' : warnings ? 'warning' : 'sound'}`;
    if (findings.length === 0 && this.list.childElementCount === 0) return;
    this.list.replaceChildren(...findings.slice(0, most).map((finding) => this.itemOf(finding)));
  }

  /** Offers what mends them, of each. */
  showMends(mends: readonly (readonly Mend[])[]): void {
    [...this.list.children].forEach((item, i) => {
      for (const { title, apply } of mends[i] ?? []) {
        const button = element('button', { type: 'button', class: 'mend' }, title);
        button.addEventListener('click', apply);
        item.append(button);
      }
    });
  }

  private itemOf(finding: Finding): HTMLElement {
    const { line, column, severity } = finding;
    const place = line === null ? '' : `${line}:${column ?? 1}`;
    const button = element(
      'button',
      { type: 'button', class: `finding ${severity}` },
      element('span', { class: 'place' }, place),
      element('span', {}, sentenceOf(finding)),
    );
    button.addEventListener('click', () => this.goTo(finding));
    return element('li', {}, button);
  }
}

const timesText = ({ compile, calculate }: ScriptAnswer['times']): string =>
  `compiled in ${compile.toFixed(1)} ms, calculated in ${calculate.toFixed(1)} ms`;

function count(number: number, what: string): string {
  return number === 0 ? '' : `${number} ${what}${number === 1 ? '' : 's'}`;
}
