// Light or dark: as the system has it until the user chooses.
import type { ThemeName } from './engine/language_types.ts';
import { setText } from './dom.ts';

const key = 'quor-studio-theme';

function kept(): ThemeName | undefined {
  const name = localStorage.getItem(key);
  return name === 'light' || name === 'dark' ? name : undefined;
}

export class Looks {
  private readonly system = matchMedia('(prefers-color-scheme: dark)');
  private chosen = kept();

  constructor(
    private readonly button: HTMLButtonElement,
    private readonly changed: () => void,
  ) {
    button.addEventListener('click', () => {
      this.chosen = this.name === 'dark' ? 'light' : 'dark';
      localStorage.setItem(key, this.chosen);
      this.apply();
    });
    this.system.addEventListener('change', () => this.apply());
    this.show();
  }

  get name(): ThemeName {
    return this.chosen ?? (this.system.matches ? 'dark' : 'light');
  }

  private apply(): void {
    this.show();
    this.changed();
  }

  private show(): void {
    document.documentElement.dataset.theme = this.name;
    setText(this.button, this.name === 'dark' ? '☀' : '☾');
    this.button.title = this.name === 'dark' ? 'Light' : 'Dark';
  }
}
