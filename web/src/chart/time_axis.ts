// The time axis: upright lines of the grid in every pane, and texts below the last one.
import type { Frame } from './frame.ts';
import type { PlacedMark } from './sheet.ts';

const textSize = 11;

/** Where a month or a year begins, the line is stronger. */
export function paintTimeGrid(frame: Frame, marks: readonly PlacedMark[]): void {
  const { top, bottom } = frame.box;
  const { grid, mark } = frame.theme.palette;
  for (const { place, isStrong } of marks) {
    const x = Math.floor(frame.x(place)) + 0.5;
    const ends = [
      { x, y: top },
      { x, y: bottom },
    ];
    frame.line(ends, { color: isStrong ? mark : grid, width: 1, dashes: [] });
  }
}

export function paintTimeTexts(frame: Frame, marks: readonly PlacedMark[]): void {
  const { ink, label, mark } = frame.theme.palette;
  const { bottom } = frame.box;
  for (const { place, text, isStrong, isYear } of marks) {
    const x = frame.x(place);
    const ends = [
      { x: Math.floor(x) + 0.5, y: bottom },
      { x: Math.floor(x) + 0.5, y: bottom + 4 },
    ];
    frame.line(ends, { color: mark, width: 1, dashes: [] });
    const { width } = frame.measure(text, textSize, isYear);
    const middle = { x: Math.max(x, width / 2 + 2), y: bottom + 6 + textSize };
    frame.write(text, middle, isStrong ? ink : label, false);
  }
}
