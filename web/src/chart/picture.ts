// The chart as a PNG.
import { fontFamily } from './frame.ts';
import type { LegendEntry } from './legend.ts';
import { brushOf } from './records.ts';
import type { Theme } from './theme.ts';

interface PanePicture {
  canvas: HTMLCanvasElement;
  entries: readonly LegendEntry[];
}

const margin = 12;
const captionHeight = 30;

/** Puts the canvases of the panes under a caption and writes their legends over them. */
export function pictureOf(
  caption: string,
  panes: readonly PanePicture[],
  theme: Theme,
): Promise<Blob> {
  const ratio = window.devicePixelRatio || 1;
  const width = Math.max(...panes.map(({ canvas }) => canvas.width)) / ratio;
  const height = panes.reduce((sum, { canvas }) => sum + canvas.height / ratio, 0);
  const sheet = document.createElement('canvas');
  sheet.width = Math.round((width + 2 * margin) * ratio);
  sheet.height = Math.round((height + captionHeight + margin) * ratio);
  const ctx = sheet.getContext('2d');
  if (!ctx) return Promise.reject(new Error("the browser can't draw the picture"));
  ctx.scale(ratio, ratio);
  ctx.fillStyle = theme.palette.ground;
  ctx.fillRect(0, 0, sheet.width, sheet.height);
  ctx.textBaseline = 'middle';
  ctx.font = `600 13px ${fontFamily}`;
  ctx.fillStyle = theme.palette.ink;
  ctx.fillText(caption, margin, captionHeight / 2 + 2);
  let top = captionHeight;
  ctx.font = `11.5px ${fontFamily}`;
  for (const { canvas, entries } of panes) {
    ctx.drawImage(canvas, margin, top, canvas.width / ratio, canvas.height / ratio);
    writeLegend(ctx, entries, theme, top, width);
    top += canvas.height / ratio;
  }
  return new Promise((resolve, reject) =>
    sheet.toBlob(
      (blob) => (blob ? resolve(blob) : reject(new Error("the browser can't make the picture"))),
      'image/png',
    ),
  );
}

function writeLegend(
  ctx: CanvasRenderingContext2D,
  entries: readonly LegendEntry[],
  theme: Theme,
  top: number,
  width: number,
): void {
  let left = margin + 8;
  let middle = top + 13;
  for (const { title, text, record } of entries) {
    const words = `${title} ${text}`;
    const room = ctx.measureText(words).width;
    if (left + room > width && left > margin + 8) [left, middle] = [margin + 8, middle + 17];
    ctx.fillStyle = theme.text(brushOf(record));
    ctx.fillText(words, left, middle);
    left += room + 16;
  }
}
