// How the page is arranged, read as a layout and set by one.
import type { Chart } from './chart/chart.ts';
import { keepHeights, keptHeights } from './chart/heights.ts';
import { byId } from './dom.ts';
import type { Layout } from './layouts.ts';
import type { Arrangement } from './panels/layout_menu.ts';
import type { Overlay } from './panels/overlay.ts';
import type { Tabs } from './panels/tabs.ts';
import type { Second } from './second.ts';

interface Choice {
  get: () => string;
  set: (name: string) => void;
}

export interface ArrangedParts {
  tabs: Tabs;
  overlay: Pick<Overlay, 'name'>;
  scale: Choice;
  chart: Chart;
  second: Second;
  fail: (error: unknown) => void;
}

export function arrangement(parts: ArrangedParts): Arrangement {
  const { tabs, overlay, scale, chart, second, fail } = parts;
  const side = byId('left', HTMLElement);
  const current = (): Layout => ({
    heights: keptHeights(localStorage),
    scale: scale.get(),
    tab: tabs.shownId,
    side: Number.parseFloat(side.style.width) || undefined,
    overlay: overlay.name || undefined,
    second: second.shown,
  });
  const apply = (layout: Layout) => {
    keepHeights(localStorage, layout.heights);
    chart.takeHeights();
    scale.set(layout.scale);
    if (layout.tab === undefined || tabs.has(layout.tab)) tabs.show(layout.tab);
    side.style.width = layout.side === undefined ? '' : `${layout.side}px`;
    overlay.name = layout.overlay ?? '';
    second.show(layout.second);
  };
  return { current, apply, fail };
}
