// How the prices go up their axis, as chosen last.
import type { ScaleName } from '../chart/scale.ts';
import { byId } from '../dom.ts';

const key = 'quor-studio-scale';

/** Gives what reads and sets it. */
export function bindScale(choose: (name: ScaleName) => void): {
  get: () => string;
  set: (name: string) => void;
} {
  const menu = byId('scale', HTMLSelectElement);
  const act = () => choose(menu.value as ScaleName);
  const keep = () => {
    localStorage.setItem(key, menu.value);
    act();
  };
  const select = (name: string) => {
    menu.value = name;
    if (menu.selectedIndex < 0) menu.selectedIndex = 0;
  };
  select(localStorage.getItem(key) ?? '');
  menu.addEventListener('change', keep);
  act();
  return {
    get: () => menu.value,
    set: (name) => {
      select(name);
      keep();
    },
  };
}
