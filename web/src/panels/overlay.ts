// Another security over the prices, one of those in the folder.
import { byId, element } from '../dom.ts';

/** `choose` is told a name, or none for no overlay. Gives what reads and sets it. */
export function bindOverlay(
  names: readonly string[],
  choose: (name: string | undefined) => Promise<void>,
): { get: () => string; set: (name: string) => void } {
  const menu = byId('overlay', HTMLSelectElement);
  menu.hidden = names.length < 2;
  menu.append(...names.map((name) => element('option', { value: name }, name)));
  let chosen = '';
  const act = () => {
    const before = chosen;
    chosen = menu.value;
    choose(menu.value || undefined).catch(() => {
      menu.value = chosen = before;
    });
  };
  menu.addEventListener('change', act);
  return {
    get: () => chosen,
    set: (name) => {
      if (name === chosen || !['', ...names].includes(name)) return;
      menu.value = name;
      act();
    },
  };
}
