// What is dragged up and down at a pane: its value axis, and the border below it.
import { element } from '../dom.ts';

/** Follows a drag by pixels, and a double click. The chart below hears of neither. */
function followDrag(grip: HTMLElement, drag: (pixels: number) => void, reset: () => void): void {
  let last: number | undefined;
  grip.addEventListener('pointerdown', (event) => {
    event.stopPropagation();
    if (event.button !== 0) return;
    last = event.clientY;
    grip.setPointerCapture(event.pointerId);
  });
  grip.addEventListener('pointermove', (event) => {
    if (last === undefined) return;
    event.stopPropagation();
    const by = event.clientY - last;
    last = event.clientY;
    if (by !== 0) drag(by);
  });
  for (const end of ['pointerup', 'pointercancel'] as const)
    grip.addEventListener(end, () => (last = undefined));
  grip.addEventListener('click', (event) => event.stopPropagation());
  grip.addEventListener('dblclick', (event) => {
    event.stopPropagation();
    reset();
  });
}

/** Over the value axis: drags stretch the values; undefined gives them their usual height. */
export function axisGrip(stretch: (factor: number | undefined) => void): HTMLElement {
  const grip = element('div', {
    class: 'axis-grip',
    title: 'Drag to stretch, double click to reset',
  });
  followDrag(
    grip,
    (pixels) => stretch(Math.exp(-pixels / 150)),
    () => stretch(undefined),
  );
  return grip;
}

export interface BorderEvents {
  move: (pixels: number) => void;
  reset: () => void;
}

/** Below a pane; arrow keys move it, too. */
export function borderGrip({ move, reset }: BorderEvents): HTMLElement {
  const grip = element('div', {
    class: 'border-grip',
    role: 'separator',
    tabindex: 0,
    'aria-orientation': 'horizontal',
    'aria-label': 'Border of the panes',
    title: 'Drag to resize, double click to reset',
  });
  followDrag(grip, move, reset);
  grip.addEventListener('keydown', (event) => {
    const by = { ArrowUp: -10, ArrowDown: 10 }[event.key];
    if (!by) return;
    event.preventDefault();
    event.stopPropagation();
    move(by);
  });
  return grip;
}
