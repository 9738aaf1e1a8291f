// Finds places for texts that must not cover bars or one another.

export interface Box {
  left: number;
  top: number;
  right: number;
  bottom: number;
}

/** How far a box may give way, in pixels. */
export interface Leeway {
  /** Away from the bar. */
  ahead: number;
  /** To its other side. */
  behind?: number;
  /** By half of its width, where it gives way at all. */
  sideways?: boolean;
}

const strip = 32;
const step = 3;
/** A text straight above its bar is better than a nearer one aside. */
const firstAside = 9;

export function moved(box: Box, x: number, y: number): Box {
  return { left: box.left + x, top: box.top + y, right: box.right + x, bottom: box.bottom + y };
}

export function meets(one: Box, other: Box): boolean {
  return (
    one.left < other.right &&
    other.left < one.right &&
    one.top < other.bottom &&
    other.top < one.bottom
  );
}

/** A box of a size, the anchor being the share of it that lies before the point. */
export function boxAround(
  x: number,
  y: number,
  width: number,
  height: number,
  [across, down]: readonly [number, number],
): Box {
  const left = x - across * width;
  const top = y - down * height;
  return { left, top, right: left + width, bottom: top + height };
}

export class Placement {
  private readonly strips: Box[][];

  /** Whatever is placed lies within the bounds. */
  constructor(private readonly bounds: Box) {
    const count = Math.max(1, Math.ceil((bounds.right - bounds.left) / strip)) + 1;
    this.strips = Array.from({ length: count }, () => []);
  }

  occupy(box: Box): void {
    for (let i = this.stripOf(box.left); i <= this.stripOf(box.right); ++i)
      this.strips[i].push(box);
  }

  isFree(box: Box): boolean {
    for (let i = this.stripOf(box.left); i <= this.stripOf(box.right); ++i) {
      if (this.strips[i].some((taken) => meets(taken, box))) return false;
    }
    return true;
  }

  /** The free place nearest to the wanted one, looked for upwards or downwards and only then on the
   * other side, and taken. None if there is none near by. */
  place(wanted: Box, upwards: boolean, leeway: Leeway): Box | undefined {
    const start = this.broughtIn(wanted);
    const direction = upwards ? -1 : 1;
    const sideways = leeway.sideways ?? false;
    const box =
      this.search(start, direction, leeway.ahead, sideways) ??
      (leeway.behind ? this.search(start, -direction, leeway.behind, sideways) : undefined);
    if (box) this.occupy(box);
    return box;
  }

  private search(
    wanted: Box,
    direction: number,
    reach: number,
    sideways: boolean,
  ): Box | undefined {
    const half = Math.floor((wanted.right - wanted.left) / 2);
    for (let way = 0; way <= reach; way += step) {
      for (const aside of sideways && way >= firstAside ? [0, -half, half] : [0]) {
        const box = moved(wanted, aside, direction * way);
        if (this.holds(box) && this.isFree(box)) return box;
      }
    }
    return undefined;
  }

  private broughtIn(box: Box): Box {
    const { left, top, right, bottom } = this.bounds;
    const x = Math.max(left - box.left, Math.min(0, right - box.right));
    const y = Math.max(top - box.top, Math.min(0, bottom - box.bottom));
    return moved(box, x, y);
  }

  private holds(box: Box): boolean {
    const { left, top, right, bottom } = this.bounds;
    return box.left >= left && box.right <= right && box.top >= top && box.bottom <= bottom;
  }

  private stripOf(x: number): number {
    const number = Math.floor((x - this.bounds.left) / strip);
    return Math.min(Math.max(number, 0), this.strips.length - 1);
  }
}
