// Notices and signals in a list; a click shows the bar.
import type { Fired } from '../engine/types.ts';
import { element, setText } from '../dom.ts';

const mostShown = 2000;

const keyOf = ({ row, statement, word }: Fired): string => `${row} ${statement} ${word}`;
const sideOf: Readonly<Record<string, string>> = {
  NOTICE: 'notice',
  BK: 'buy',
  BP: 'buy',
  BPK: 'buy',
  SK: 'sell',
  SP: 'sell',
  SPK: 'sell',
};

export class Events {
  private readonly list = element('ol', {
    class: 'event-list',
    'aria-label': 'Notices and signals',
  });
  private readonly head = element('p', { class: 'hint', role: 'status' });
  private readonly items = new Map<string, { root: HTMLElement; event: Fired }>();

  constructor(
    root: HTMLElement,
    private readonly showRow: (row: number) => void,
    private readonly counted: (count: number) => void,
  ) {
    root.append(this.head, this.list);
  }

  clear(text: string): void {
    this.items.clear();
    this.list.replaceChildren();
    this.tell(text, 0);
  }

  /** The newest events of all bars, of which there are `count`. */
  showAll(events: readonly Fired[], count: number): void {
    this.clear('');
    for (const event of events) this.put(event);
    const isCut = count > events.length;
    this.tell(
      count === 0
        ? 'No notices or signals'
        : isCut
          ? `The newest ${events.length} of ${count}`
          : '',
      count,
    );
  }

  /** An event of a bar that is forming gives way to the same one of a later tick. */
  add(events: readonly Fired[]): void {
    for (const event of events) this.put(event);
    this.tell('While bars are played', this.finalCount);
  }

  /** A bar is whole: a notice is told once and stands, a signal that holds no more is taken back. */
  closeBar(row: number): void {
    for (const { root, event } of [...this.items.values()]) {
      if (event.row !== row || event.final !== false) continue;
      if (event.word === 'NOTICE') this.put({ ...event, final: true });
      else setText(root.querySelector<HTMLElement>('.state')!, 'taken back');
    }
    this.tell('While bars are played', this.finalCount);
  }

  /** Of whole bars. */
  get finalCount(): number {
    return [...this.items.values()].filter(({ event }) => event.final !== false).length;
  }

  private tell(text: string, count: number): void {
    setText(this.head, text);
    this.head.hidden = text === '';
    this.counted(count);
  }

  private put(event: Fired): void {
    const key = keyOf(event);
    const before = this.items.get(key);
    const root = this.itemOf(event);
    this.items.set(key, { root, event });
    if (before) before.root.replaceWith(root);
    else this.list.prepend(root);
    if (this.list.childElementCount > mostShown) this.list.lastElementChild?.remove();
  }

  private itemOf({ row, text, word, name, quantity, final }: Fired): HTMLElement {
    const isForming = final === false;
    const button = element(
      'button',
      { type: 'button', class: isForming ? 'forming' : undefined },
      element('span', { class: 'time' }, text),
      element(
        'span',
        { class: `word ${sideOf[word] ?? 'close-out'}` },
        quantity === null ? word : `${word} ${quantity}`,
      ),
      element('span', { class: 'name' }, name),
      isForming ? element('span', { class: 'state hint' }, 'forming') : undefined,
    );
    button.addEventListener('click', () => this.showRow(row));
    return element('li', { 'data-final': String(!isForming) }, button);
  }
}
