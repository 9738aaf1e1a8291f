// Colours can be told apart, by eyes that lack the cones for red or for green, too.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { Language } from '../../src/engine/language_types.ts';
import type { Drawn } from '../../src/engine/types.ts';
import { Desk, sampleBars } from './support.ts';

type Triple = readonly [number, number, number];

const usual: readonly Triple[] = [
  [1, 0, 0],
  [0, 1, 0],
  [0, 0, 1],
];
/** What such eyes make of light, by Machado, Oliveira and Fernandes. */
const eyes: Readonly<Record<string, readonly Triple[]>> = {
  usual,
  'without red': [
    [0.152286, 1.052583, -0.204868],
    [0.114503, 0.786281, 0.099216],
    [-0.003882, -0.048116, 1.051998],
  ],
  'without green': [
    [0.367322, 0.860646, -0.227968],
    [0.280085, 0.672501, 0.047413],
    [-0.01182, 0.04294, 0.968881],
  ],
};

/** CIE Lab of light from the three primaries. */
function labOf(light: Triple): Triple {
  const toXyz: readonly Triple[] = [
    [0.4339, 0.3763, 0.1899],
    [0.2126, 0.7152, 0.0722],
    [0.0178, 0.1095, 0.8728],
  ];
  const [x, y, z] = toXyz.map((row) => {
    const part = row.reduce((sum, share, i) => sum + share * light[i], 0);
    return part > 0.008856 ? Math.cbrt(part) : 7.787 * part + 16 / 116;
  });
  return [116 * y - 16, 500 * (x - y), 200 * (y - z)];
}

function seen(color: string, by: readonly Triple[]): Triple {
  const code = parseInt(color.slice(1), 16);
  const light = [16, 8, 0].map((shift) => {
    const share = ((code >> shift) & 255) / 255;
    return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
  });
  const mixed = by.map((row) => row.reduce((sum, share, i) => sum + share * light[i], 0));
  return labOf(mixed.map((part) => Math.min(Math.max(part, 0), 1)) as unknown as Triple);
}

const distance = (one: Triple, other: Triple): number =>
  Math.hypot(...one.map((part, i) => part - other[i]));

const desk = await Desk.make(sampleBars);

const colours = (script: string): Drawn['colours'] => (desk.script(script) as Drawn).colours;

function assertApart(pairs: readonly (readonly [string, string])[], least: number, what: string) {
  for (const [name, by] of Object.entries(eyes)) {
    for (const [one, other] of pairs) {
      const found = distance(seen(one, by), seen(other, by));
      assert.ok(found >= least, `${what}, ${name}: ${one} and ${other} are ${found} apart`);
    }
  }
}

for (const theme of ['light', 'dark'] as const) {
  test(`lines of automatic colours, ${theme}`, () => {
    const script = Array.from({ length: 10 }, (_, i) => `L${i}:C+${i};`).join('');
    const lines = Object.entries(colours(script))
      .filter(([key]) => key.startsWith('Brush.') && key !== 'Brush.Gray9')
      .map(([, of]) => of[theme].line);
    assert.equal(new Set(lines).size, 10);
    const pairs = lines.flatMap((one, i) =>
      lines.slice(i + 1).map((other) => [one, other] as const),
    );
    assertApart(pairs, 16, 'lines');
  });

  test(`what rises and what falls, ${theme}`, () => {
    const { rise, fall } = desk.json<Language>({ call: 'library' }).theme[theme];
    assertApart([[rise, fall]], 16, 'candles');
    const found = colours('D:C-O,COLORSTICK;');
    const [up, down] = ['Brush.Red6', 'Brush.Green6'].map((key) => found[key][theme].line);
    assertApart([[up, down]], 13, 'sticks');
  });
}
