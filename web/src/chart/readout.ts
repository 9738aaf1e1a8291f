// What the chart tells of a bar in words: its caption, the legends of its panes, a sentence for those who
// don't see it.
import { element, setText } from '../dom.ts';
import type { Sight } from './frame.ts';
import type { LegendEntry } from './legend.ts';
import { groupedText } from './numbers.ts';
import type { ChartPane } from './pane.ts';
import type { Sheet } from './sheet.ts';

const priceFields = [
  ['O', 7],
  ['H', 8],
  ['L', 9],
  ['C', 11],
] as const;

/** How the chart stands. */
export interface ReadoutState {
  sheet: Sheet | undefined;
  panes: readonly ChartPane[];
  sight: Sight;
  rows: number;
  /** The row of the crosshair. */
  row: number | undefined;
}

type Values = ReadonlyMap<number, number>;

export class Readout {
  readonly caption = element('div', { class: 'caption' });
  readonly spoken = element('p', { class: 'spoken', 'aria-live': 'polite' });
  /** Of the bars. */
  title = '';
  private exact: { row: number; values: Values } | undefined;
  private isToBeTold = false;

  constructor(
    private readonly state: () => ReadoutState,
    /** Values of columns at a row of which several share a slot. */
    private readonly values: (row: number) => Promise<Values | undefined>,
  ) {}

  /** Of which values are told: the row of the crosshair, or the newest one in sight. */
  get row(): number {
    const { row, sheet, sight, rows } = this.state();
    const isThere = row !== undefined && sheet?.view.holds(row);
    return isThere ? row : Math.min(Math.ceil(sight.to), rows) - 1;
  }

  /** Other values are there. */
  forget(): void {
    this.exact = undefined;
  }

  show(): void {
    const { sheet, panes } = this.state();
    if (!sheet) return;
    for (const pane of panes) pane.legend.show(this.entriesOf(pane), sheet.theme);
    setText(this.caption, [this.title, this.priceText(sheet)].filter(Boolean).join('   '));
  }

  entriesOf(pane: ChartPane): LegendEntry[] {
    return pane.entriesAt(this.valueOf(this.row));
  }

  /** Asks for the values at the crosshair, where the slot there has several rows. */
  async askForValues(): Promise<void> {
    const { row, sheet } = this.state();
    if (row === undefined || !sheet || sheet.view.step === 1 || this.exact?.row === row) return;
    const values = await this.values(row).catch(() => undefined);
    if (!values || this.state().row !== row) return;
    this.exact = { row, values };
    this.show();
  }

  /** Says what the crosshair shows, as soon as that is there; nothing while it is away. */
  tell(): void {
    this.isToBeTold = this.state().row !== undefined;
    this.tellIfWanted();
  }

  tellIfWanted(): void {
    const { row, sheet } = this.state();
    if (!this.isToBeTold || row === undefined || !sheet?.view.holds(row)) return;
    this.isToBeTold = false;
    setText(this.spoken, this.sentence(sheet));
  }

  private valueOf(row: number): (id: number) => number {
    const { sheet } = this.state();
    const exact = this.exact?.row === row ? this.exact.values : undefined;
    return (id) => exact?.get(id) ?? sheet?.view.valueAt(id, row) ?? NaN;
  }

  private priceText(sheet: Sheet): string {
    const { row } = this;
    const valueOf = this.valueOf(row);
    const prices = priceFields
      .filter(([, field]) => sheet.view.has(field) && Number.isFinite(valueOf(field)))
      .map(([sign, field]) => `${sign} ${groupedText(valueOf(field), sheet.decimals)}`);
    const change = sheet.changeText(row);
    return [sheet.timeText(row), ...prices, change].filter(Boolean).join('  ');
  }

  private sentence(sheet: Sheet): string {
    const values = this.state()
      .panes.flatMap((pane) => this.entriesOf(pane))
      .map(({ title, text }) => `${title} ${text}`);
    return [this.priceText(sheet), ...values].join(', ');
  }
}
