// The keys of a chart that has the focus.

export interface KeyActions {
  /** The crosshair, by so many slots. */
  step: (slots: number) => void;
  /** A factor below 1 shows fewer bars. */
  zoom: (factor: number) => void;
  /** The prices, up and down. */
  stretch: (factor: number) => void;
  /** By a share of the sight. */
  pan: (share: number) => void;
  first: () => void;
  newest: () => void;
  showAll: () => void;
  leave: () => void;
}

const factor = 1.25;

export function followKeys(root: HTMLElement, actions: KeyActions): void {
  const step = (slots: number) => (isShift: boolean) => actions.step(slots * (isShift ? 10 : 1));
  const size = (by: number) => (isShift: boolean) =>
    isShift ? actions.stretch(by) : actions.zoom(1 / by);
  const zoom = (by: number) => () => actions.zoom(by);
  const acts: Readonly<Record<string, (isShift: boolean) => void>> = {
    ArrowLeft: step(-1),
    ArrowRight: step(1),
    ArrowUp: size(factor),
    ArrowDown: size(1 / factor),
    '+': zoom(1 / factor),
    '=': zoom(1 / factor),
    '-': zoom(factor),
    PageUp: () => actions.pan(-0.8),
    PageDown: () => actions.pan(0.8),
    Home: actions.first,
    End: actions.newest,
    '0': actions.showAll,
    Escape: actions.leave,
  };
  root.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || !Object.hasOwn(acts, event.key)) return;
    event.preventDefault();
    acts[event.key](event.shiftKey);
  });
}
