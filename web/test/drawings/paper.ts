// A canvas that keeps what is drawn on it as a list.
import { colorText, type Ink, lineLook, type Place, textLook } from './ink.ts';

interface Fade {
  stops: string[];
  isAcross: boolean;
}

/** How wide `quor chart` takes letters, in parts of their size: those that the cases
 * write, which must find their places. */
const wideLetters: Readonly<Record<string, number>> = {
  ...{ ' ': 0.318, '.': 0.318, '-': 0.361, '%': 0.95 },
  ...{ B: 0.686, C: 0.698, E: 0.632, K: 0.656, L: 0.557, O: 0.787, P: 0.603, S: 0.635 },
  ...{ T: 0.611, U: 0.732, d: 0.635, e: 0.615, h: 0.634, o: 0.612, p: 0.635, t: 0.392, u: 0.634 },
};
const digitWidth = 0.636;
const signWidth = 0.75;
const usualWidth = 0.6;

export function lettersWidth(text: string, size: number, isBold: boolean): number {
  const widths = [...text].map((letter) => {
    if (/\d/.test(letter)) return digitWidth;
    if (/\p{Emoji_Presentation}/u.test(letter)) return 1;
    return wideLetters[letter] ?? (letter > '~' ? signWidth : usualWidth);
  });
  const width = widths.reduce((sum, one) => sum + one, 0) * size * (isBold ? 1.12 : 1);
  return Math.ceil(width - 1e-9);
}

/** What the painters use of a canvas. */
export class Paper {
  readonly ink: Ink[] = [];
  strokeStyle = '#000000';
  fillStyle: string | Fade = '#000000';
  lineWidth = 1;
  font = '';
  textAlign = '';
  textBaseline = '';
  lineJoin = '';
  lineCap = '';
  private dashes: readonly number[] = [];
  private path: Place[] = [];
  private round: Omit<Ink, 'look'> | undefined;

  constructor(
    private readonly left: number,
    private readonly top: number,
  ) {}

  get context(): CanvasRenderingContext2D {
    return this as unknown as CanvasRenderingContext2D;
  }

  setLineDash(dashes: readonly number[]): void {
    this.dashes = dashes;
  }

  beginPath(): void {
    this.path = [];
    this.round = undefined;
  }

  closePath(): void {}

  lineTo(x: number, y: number): void {
    this.path.push(this.placed(x, y));
  }

  arc(x: number, y: number, radius: number): void {
    this.round = { kind: `disc ${radius.toFixed(1)}`, points: [this.placed(x, y)] };
  }

  roundRect(left: number, top: number, width: number, height: number): void {
    const points = [this.placed(left, top), this.placed(left + width, top + height)];
    this.round = { kind: 'tag', points };
  }

  stroke(): void {
    const look = lineLook(this.strokeStyle, this.lineWidth, this.dashes);
    if (this.round)
      this.ink.push({ ...this.round, kind: this.round.kind.replace('disc', 'ring'), look });
    else this.ink.push({ kind: 'line', look: this.strokeLook(), points: this.path });
  }

  fill(): void {
    const look = colorText(String(this.fillStyle));
    if (this.round) this.ink.push({ ...this.round, look });
    else this.ink.push({ kind: 'area', look, points: this.path });
  }

  fillRect(left: number, top: number, width: number, height: number): void {
    const points = [this.placed(left, top), this.placed(left + width, top + height)];
    const { fillStyle: style } = this;
    if (typeof style === 'string') this.ink.push({ kind: 'box', look: colorText(style), points });
    else {
      const look = `${style.stops.join(' ')} ${style.isAcross ? 'across' : 'down'}`;
      this.ink.push({ kind: 'fade', look, points });
    }
  }

  strokeRect(left: number, top: number, width: number, height: number): void {
    const [right, bottom] = [left + width, top + height];
    const corners = [
      [left, top],
      [right, top],
      [right, bottom],
      [left, bottom],
      [left, top],
    ];
    const points = corners.map(([x, y]) => this.placed(x, y));
    this.ink.push({ kind: 'line', look: this.strokeLook(), points });
  }

  createLinearGradient(fromX: number, _fromY: number, toX: number): CanvasGradient {
    const fade: Fade & { addColorStop: (at: number, color: string) => void } = {
      stops: [],
      isAcross: fromX !== toX,
      addColorStop: (_at, color) => void fade.stops.push(colorText(color)),
    };
    return fade as unknown as CanvasGradient;
  }

  measureText(text: string) {
    const { size } = this;
    const base = Math.ceil(0.928 * size);
    const isDeep = /[^ -~]|[$()/,;@Q[\\\]_gjpqy{|}]/.test(text);
    return {
      width: lettersWidth(text, size, this.isBold),
      actualBoundingBoxAscent: base - Math.floor(0.148 * size),
      actualBoundingBoxDescent: isDeep ? Math.ceil(1.164 * size) - base : 0,
    };
  }

  /** A halo has no ink of its own. */
  strokeText(): void {}

  fillText(text: string, x: number, y: number): void {
    const look = textLook(text, colorText(String(this.fillStyle)), this.size, this.isBold);
    this.ink.push({ kind: 'text', look, points: [this.placed(x, y)] });
  }

  private get isBold(): boolean {
    return this.font.startsWith('600');
  }

  private get size(): number {
    return Number(/([\d.]+)px/.exec(this.font)![1]);
  }

  private strokeLook(): string {
    return lineLook(colorText(this.strokeStyle), this.lineWidth, this.dashes);
  }

  private placed(x: number, y: number): Place {
    return [x - this.left, y - this.top];
  }
}
