// Another security over the prices, one of those in the folder.
import { byId, element } from '../dom.ts';

/** `choose` is told a name, or none for no overlay. */
export function bindOverlay(
  names: readonly string[],
  choose: (name: string | undefined) => Promise<void>,
): void {
  const menu = byId('overlay', HTMLSelectElement);
  menu.hidden = names.length < 2;
  menu.append(...names.map((name) => element('option', { value: name }, name)));
  let chosen = '';
  menu.addEventListener('change', () => {
    const before = chosen;
    chosen = menu.value;
    choose(menu.value || undefined).catch(() => {
      menu.value = chosen = before;
    });
  });
}
