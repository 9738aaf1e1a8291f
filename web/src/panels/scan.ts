// Scan: the script over the folder's securities, as a table that fills while it runs.
import { ScanRun } from '../api/server.ts';
import type { ScanAnswer } from '../api/types.ts';
import { shortText } from '../chart/numbers.ts';
import { element, setText } from '../dom.ts';
import type { Parameter } from '../engine/types.ts';

type Row = ScanAnswer['rows'][number];

export interface ScanEvents {
  script: () => { script: string; parameters: Parameter[] };
  /** At the bar of a key. */
  open: (security: string, key: number) => void;
  fail: (error: unknown) => void;
}

const pollEvery = 120;

const valueText = (value: number | null): string => shortText(value ?? NaN, 2);
const textsOf = ({ security, text, values }: Row): string[] =>
  [security, text, ...values.map(valueText)].map((one) => one.toLowerCase());

export class Scan {
  private readonly where = element('input', {
    type: 'text',
    id: 'scan-where',
    placeholder: 'condition, e.g. DIF>0',
    'aria-label': 'Condition of the newest bar',
    maxlength: 500,
  });
  private readonly start = element(
    'button',
    { type: 'button', class: 'primary', id: 'scan-start' },
    'Scan',
  );
  private readonly cancel = element(
    'button',
    { type: 'button', id: 'scan-cancel', disabled: true },
    'Cancel',
  );
  private readonly progress = element('progress', {
    max: 1,
    value: 0,
    'aria-label': 'Files scanned',
  });
  private readonly state = element('span', { class: 'hint', role: 'status', id: 'scan-state' });
  private readonly filter = element('input', {
    type: 'search',
    id: 'scan-filter',
    placeholder: 'filter what was found',
    'aria-label': 'Filter what was found',
    maxlength: 100,
  });
  private readonly table = element('table', { class: 'scan-table' });
  private readonly failures = element('ul', { class: 'failure-list' });
  private rows: Row[] = [];
  private lines: string[] = [];
  private order: { column: number; isDown: boolean } | undefined;
  /** The one that is seen: answers of an earlier one are dropped. */
  private run: ScanRun | undefined;

  constructor(
    root: HTMLElement,
    private readonly events: ScanEvents,
  ) {
    const bar = element(
      'div',
      { class: 'bar' },
      this.where,
      this.start,
      this.cancel,
      this.progress,
      this.state,
      this.filter,
    );
    root.append(bar, element('div', { class: 'scroll' }, this.table, this.failures));
    this.filter.addEventListener('input', () => this.fillBody());
    window.addEventListener('pagehide', () => this.close());
    this.start.addEventListener('click', () => void this.begin());
    this.cancel.addEventListener('click', () => void this.stop());
    this.where.addEventListener('keydown', (event) => {
      if (event.key === 'Enter') void this.begin();
    });
  }

  private async begin(): Promise<void> {
    const { script, parameters } = this.events.script();
    this.close();
    this.rows = [];
    this.order = undefined;
    this.failures.replaceChildren();
    try {
      const run = await ScanRun.begin(script, parameters, this.where.value.trim());
      this.close(); // another one that was begun meanwhile
      this.run = run;
      this.lines = run.start.lines;
      this.progress.max = Math.max(run.start.files, 1);
      this.fillTable();
      this.cancel.disabled = false;
      await this.follow(run);
      if (run === this.run) this.cancel.disabled = true;
    } catch (error) {
      this.cancel.disabled = true;
      setText(this.state, '');
      this.events.fail(error);
    }
  }

  private async follow(run: ScanRun): Promise<void> {
    for (let since = 0; run === this.run;) {
      const answer = await run.progress(since);
      if (run !== this.run) return;
      since = answer.next;
      this.take(answer);
      if (!answer.running) return;
      await new Promise((resolve) => setTimeout(resolve, pollEvery));
    }
  }

  private close(): void {
    this.run?.close();
    this.run = undefined;
  }

  private async stop(): Promise<void> {
    try {
      await this.run?.cancel();
    } catch (error) {
      this.events.fail(error);
    }
  }

  private take({ running, cancelled, done, files, rows, failures }: ScanAnswer): void {
    this.rows.push(...rows);
    if (this.order) this.sort();
    else this.table.tBodies[0]?.append(...this.elementsOf(rows));
    for (const { security, reason } of failures)
      this.failures.append(element('li', {}, `${security}: ${reason}`));
    this.progress.value = done;
    const word = cancelled ? 'cancelled' : running ? 'running' : 'done';
    setText(this.state, `${word}, ${done} of ${files} files, ${this.rows.length} found`);
  }

  private fillTable(): void {
    const titles = ['Security', 'Bar', ...this.lines];
    const head = titles.map((title, column) => {
      const button = element('button', { type: 'button', class: 'quiet' }, title);
      button.addEventListener('click', () => this.sortBy(column));
      return element('th', { scope: 'col', class: column > 1 ? 'number' : undefined }, button);
    });
    this.table.replaceChildren(element('thead', {}, element('tr', {}, ...head)), element('tbody'));
    this.fillBody();
  }

  private fillBody(): void {
    this.table.tBodies[0]?.replaceChildren(...this.elementsOf(this.rows));
  }

  /** Of the rows in which the text of the filter stands. */
  private elementsOf(rows: readonly Row[]): HTMLTableRowElement[] {
    const wanted = this.filter.value.trim().toLowerCase();
    return rows
      .filter((row) => textsOf(row).some((text) => text.includes(wanted)))
      .map((row) => this.rowOf(row));
  }

  private rowOf(row: Row): HTMLTableRowElement {
    const open = element('button', { type: 'button', class: 'quiet' }, row.security);
    const cells = row.values.map((value) => element('td', { class: 'number' }, valueText(value)));
    const made = element(
      'tr',
      {},
      element('th', { scope: 'row' }, open),
      element('td', {}, row.text),
      ...cells,
    );
    made.addEventListener('click', () => this.events.open(row.security, row.key));
    return made;
  }

  private sortBy(column: number): void {
    this.order = {
      column,
      isDown: this.order?.column === column ? !this.order.isDown : column > 1,
    };
    this.sort();
  }

  private sort(): void {
    const { column, isDown } = this.order!;
    const valueOf = (row: Row) =>
      column === 0 ? row.security : column === 1 ? row.key : (row.values[column - 2] ?? -Infinity);
    const direction = isDown ? -1 : 1;
    this.rows.sort((one, other) => {
      const [a, b] = [valueOf(one), valueOf(other)];
      return a < b ? -direction : a > b ? direction : 0;
    });
    this.fillBody();
    [...(this.table.tHead?.rows[0]?.cells ?? [])].forEach((cell, i) => {
      cell.setAttribute('aria-sort', i !== column ? 'none' : isDown ? 'descending' : 'ascending');
    });
  }
}
