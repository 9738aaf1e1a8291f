// The period of the bars: as they say, or as the user says.
import type { Period } from '../engine/language_types.ts';
import type { BarsAnswer } from '../engine/types.ts';
import { element } from '../dom.ts';

export class PeriodMenu {
  private readonly guess = element('option', { value: '' }, 'Period as the bars say');

  constructor(
    private readonly menu: HTMLSelectElement,
    periods: readonly Period[],
    changed: () => void,
  ) {
    menu.append(this.guess);
    menu.append(...periods.map(({ name }) => element('option', { value: name }, name)));
    menu.addEventListener('change', changed);
  }

  /** None where the bars shall say. */
  get chosen(): string | undefined {
    return this.menu.value || undefined;
  }

  /** An empty name has the bars say it; what is none is passed over. */
  choose(name: string): void {
    if ([...this.menu.options].some(({ value }) => value === name)) this.menu.value = name;
  }

  show({ name, guessed }: BarsAnswer['period']): void {
    this.guess.text = guessed ? `Period: ${name}, as the bars say` : 'Period as the bars say';
  }
}
