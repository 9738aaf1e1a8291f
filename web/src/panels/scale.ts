// How the prices go up their axis, as chosen last.
import type { ScaleName } from '../chart/scale.ts';
import { byId } from '../dom.ts';

const key = 'quor-studio-scale';

export function bindScale(choose: (name: ScaleName) => void): void {
  const menu = byId('scale', HTMLSelectElement);
  menu.value = localStorage.getItem(key) ?? '';
  if (menu.selectedIndex < 0) menu.selectedIndex = 0;
  const act = () => choose(menu.value as ScaleName);
  menu.addEventListener('change', () => {
    localStorage.setItem(key, menu.value);
    act();
  });
  act();
}
