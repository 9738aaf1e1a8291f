// What is drawn, as a list that can be read and compared: of a pane of the page, and of a panel of
// `quor chart`. Coordinates in pixels from the pane's upper left corner.

export type Place = readonly [x: number, y: number];

export interface Ink {
  /** line, area, box, tag, disc, ring, fade or text. */
  kind: string;
  /** Colour, width, dashes, letters: what must be the same. */
  look: string;
  /** Points of a line or an area, corners of a box, the middle of all else. */
  points: readonly Place[];
}

const rounded = (number: number): string => String(Math.round(number * 10) / 10 + 0);

export const inkText = ({ kind, look, points }: Ink): string =>
  [kind, look, ...points.map((point) => point.map(rounded).join(','))].join(' ');

/** "#rrggbb" with an alpha, if there is one. */
export function colorText(color: string, opacity = 1): string {
  const own = color.length > 7 ? parseInt(color.slice(7), 16) / 255 : 1;
  const alpha = Math.round(own * opacity * 100) / 100;
  return color.slice(0, 7) + (alpha < 1 ? `*${alpha}` : '');
}

export function lineLook(color: string, width: number, dashes: readonly number[]): string {
  const dashed = dashes.length > 0 ? ` ${dashes.join('-')}` : '';
  return `${color} ${rounded(width)}${dashed}`;
}

export const textLook = (text: string, color: string, size: number, isBold: boolean): string =>
  `${JSON.stringify(text)} ${color} ${rounded(size)}${isBold ? ' bold' : ''}`;

/** A frame of one pixel lies inside its box; so does a box that is drawn as an area. */
export function asBox(points: readonly Place[]): readonly Place[] | undefined {
  if (points.length !== 4) return undefined;
  const [a, b, c, d] = points;
  const isUpright = a[1] === b[1] && b[0] === c[0] && c[1] === d[1] && d[0] === a[0];
  return isUpright ? [a, c] : undefined;
}
