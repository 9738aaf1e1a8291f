// Wheel, drag and pinch over the chart.

export interface Gestures {
  /** By so many pixels to the right. */
  pan: (pixels: number) => void;
  /** A factor below 1 shows less; `left` is in pixels from the left edge. */
  zoom: (factor: number, left: number) => void;
  reset: () => void;
  /** Without moving, in pixels from the left edge. */
  click: (left: number) => void;
}

/** A wheel may count in lines or pages. */
const unitOf: readonly number[] = [1, 33, 400];

/** As far as a hand moves that means to click, in pixels. */
const steady = 3;

function followWheel(root: HTMLElement, gestures: Gestures): void {
  root.addEventListener(
    'wheel',
    (event) => {
      event.preventDefault();
      const unit = unitOf[event.deltaMode] ?? 1;
      const across = (event.shiftKey ? event.deltaX || event.deltaY : event.deltaX) * unit;
      const down = event.shiftKey ? 0 : event.deltaY * unit;
      if (Math.abs(across) > Math.abs(down)) gestures.pan(-across);
      else if (down !== 0) {
        const factor = Math.exp(Math.min(Math.max(down, -300), 300) * 0.0015);
        gestures.zoom(factor, event.clientX - root.getBoundingClientRect().left);
      }
    },
    { passive: false },
  );
}

export function followGestures(root: HTMLElement, gestures: Gestures): void {
  const pointers = new Map<number, number>();
  let [begun, hasMoved] = [0, false];
  followWheel(root, gestures);
  root.addEventListener('dblclick', () => gestures.reset());
  root.addEventListener('pointerdown', (event) => {
    if (event.button !== 0) return;
    [begun, hasMoved] = [event.clientX, false];
    pointers.set(event.pointerId, event.clientX);
    root.setPointerCapture(event.pointerId);
    root.classList.add('dragging');
  });
  root.addEventListener('pointermove', (event) => {
    const before = pointers.get(event.pointerId);
    if (before === undefined) return;
    hasMoved ||= Math.abs(event.clientX - begun) > steady;
    const other = [...pointers].find(([id]) => id !== event.pointerId)?.[1];
    pointers.set(event.pointerId, event.clientX);
    if (other === undefined) {
      if (event.clientX !== before) gestures.pan(event.clientX - before);
      return;
    }
    const [was, is] = [Math.abs(before - other), Math.abs(event.clientX - other)];
    if (was > 8 && is > 8) gestures.zoom(was / is, other - root.getBoundingClientRect().left);
  });
  root.addEventListener('click', (event) => {
    if (!hasMoved) gestures.click(event.clientX - root.getBoundingClientRect().left);
  });
  const release = (event: PointerEvent) => {
    pointers.delete(event.pointerId);
    if (pointers.size === 0) root.classList.remove('dragging');
  };
  root.addEventListener('pointerup', release);
  root.addEventListener('pointercancel', release);
}
