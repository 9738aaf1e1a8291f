// Reads the pictures of `quor chart`: its panels, what is drawn in each, and the texts around them.
import type { Box } from '../../src/chart/placement.ts';
import { asBox, colorText, type Ink, lineLook, type Place, textLook } from './ink.ts';
import { lettersWidth } from './paper.ts';

export interface Panel {
  box: Box;
  ink: Ink[];
  /** Texts and tags between this panel and the next one: its value axis and its legend. */
  around: Ink[];
}

export interface Picture {
  /** What is drawn before all panels: title, grids, time axis. */
  head: Ink[];
  panels: Panel[];
}

type Attributes = Readonly<Record<string, string>>;

const unescaped = (text: string) =>
  text.replace(/&lt;/g, '<').replace(/&gt;/g, '>').replace(/&amp;/g, '&');

const listOf = (points: string): Place[] =>
  points.split(' ').map((point) => point.split(',').map(Number) as unknown as Place);

const numbers = (attributes: Attributes, ...keys: string[]) =>
  keys.map((key) => Number(attributes[key]));

const paintOf = (attributes: Attributes, key: string) =>
  colorText(attributes[key], Number(attributes[`${key.replace('-color', '')}-opacity`] ?? 1));

function strokeLook(attributes: Attributes): string {
  const dashes = attributes['stroke-dasharray']?.split(' ').map(Number) ?? [];
  const width = Number(attributes['stroke-width'] ?? 1);
  return lineLook(paintOf(attributes, 'stroke'), width, dashes);
}

function boxOf(attributes: Attributes): Place[] {
  const [x, y, width, height] = numbers(attributes, 'x', 'y', 'width', 'height');
  return [
    [x, y],
    [x + width, y + height],
  ];
}

function textInk(attributes: Attributes, text: string): Ink {
  const [x, y, size] = numbers(attributes, 'x', 'y', 'font-size');
  const share = { middle: 0, end: -0.5 }[attributes['text-anchor']] ?? 0.5;
  const isBold = attributes['font-weight'] === 'bold';
  const middle = share === 0 ? x : x + share * lettersWidth(text, size, isBold);
  const look = textLook(text, paintOf(attributes, 'fill'), size, isBold);
  return { kind: 'text', look, points: [[middle, y]] };
}

function polygonInk(attributes: Attributes): Ink {
  const points = listOf(attributes.points);
  const box = asBox(points);
  const look = paintOf(attributes, 'fill');
  return box ? { kind: 'box', look, points: box } : { kind: 'area', look, points };
}

function circleInk(attributes: Attributes): Ink {
  const [x, y, radius] = numbers(attributes, 'cx', 'cy', 'r');
  const isRing = attributes.fill === 'none';
  return {
    kind: `${isRing ? 'ring' : 'disc'} ${radius.toFixed(1)}`,
    look: isRing ? strokeLook(attributes) : paintOf(attributes, 'fill'),
    points: [[x, y]],
  };
}

const moved = (ink: Ink, { left, top }: Box): Ink => ({
  ...ink,
  points: ink.points.map(([x, y]) => [x - left, y - top]),
});

/** In the order in which it is drawn. Takes what `quor chart` writes, not any SVG. */
export function readPicture(svg: string): Picture {
  const picture: Picture = { head: [], panels: [] };
  let [isInClip, isInPanel] = [false, false];
  let fade: string[] = [];
  const add = (ink: Ink) => {
    const panel = picture.panels.at(-1);
    if (isInPanel) panel!.ink.push(moved(ink, panel!.box));
    else (panel?.around ?? picture.head).push(ink);
  };
  for (const [, end, name, list, text] of svg.matchAll(/<(\/?)(\w+)([^>]*)>([^<]*)/g)) {
    const attributes: Attributes = Object.fromEntries(
      [...list.matchAll(/([\w:-]+)="([^"]*)"/g)].map(([, key, value]) => [key, value]),
    );
    if (name === 'clipPath') isInClip = end === '';
    else if (name === 'g') isInPanel = end === '';
    else if (end) continue;
    else if (name === 'rect' && isInClip) {
      const [[left, top], [right, bottom]] = boxOf(attributes);
      picture.panels.push({ box: { left, top, right, bottom }, ink: [], around: [] });
    } else if (name === 'linearGradient') fade = [attributes.x2 === '1' ? 'across' : 'down'];
    else if (name === 'stop') fade.splice(-1, 0, paintOf(attributes, 'stop-color'));
    else if (name === 'rect' && attributes.fill.startsWith('url'))
      add({ kind: 'fade', look: fade.join(' '), points: boxOf(attributes) });
    else if (name === 'rect')
      add({ kind: 'tag', look: paintOf(attributes, 'fill'), points: boxOf(attributes) });
    else if (name === 'polyline')
      add({ kind: 'line', look: strokeLook(attributes), points: listOf(attributes.points) });
    else if (name === 'polygon') add(polygonInk(attributes));
    else if (name === 'circle') add(circleInk(attributes));
    else if (name === 'text') add(textInk(attributes, unescaped(text)));
  }
  return picture;
}
