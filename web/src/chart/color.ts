// What is easy to read on a colour.

/** Relative luminance of "#rrggbb", 0 to 1. */
function luminance(color: string): number {
  const code = parseInt(color.slice(1, 7), 16);
  const [red, green, blue] = [16, 8, 0].map((shift) => {
    const share = ((code >> shift) & 255) / 255;
    return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
}

/** Black or white, whichever has more contrast to the ground. */
export function inkOn(ground: string): string {
  const light = luminance(ground) + 0.05;
  return light / 0.05 > 1.05 / light ? '#000000' : '#ffffff';
}

/** "#rrggbb" with an alpha from 0 to 1. */
export function withAlpha(color: string, alpha: number): string {
  const byte = Math.round(Math.min(Math.max(alpha, 0), 1) * 255);
  return color.slice(0, 7) + byte.toString(16).padStart(2, '0');
}
