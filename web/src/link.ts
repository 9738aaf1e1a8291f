// A link that holds a script and its parameters, behind the "#", which never leaves the browser; and a
// picture that holds them.
import { textIn, withText } from './chart/png_text.ts';

export interface Shared {
  script: string;
  /** Values by the name of the parameter. */
  parameters: Record<string, number>;
  /** The security whose bars were shown. */
  security?: string;
  /** Of longer periods the script reads the bar under way. */
  forming?: boolean;
}

const mark = 's=';

/** Bytes that a link may unpack to: few packed ones can become very many. */
const mostBytes = 4_000_000;

async function throughStream(
  bytes: Uint8Array<ArrayBuffer>,
  stream: CompressionStream | DecompressionStream,
): Promise<Uint8Array<ArrayBuffer>> {
  const parts: Uint8Array<ArrayBuffer>[] = [];
  let length = 0;
  const reader = new Blob([bytes]).stream().pipeThrough(stream).getReader();
  for (;;) {
    const { done, value } = await reader.read();
    if (done) break;
    parts.push(value);
    length += value.length;
    if (length > mostBytes) throw new RangeError('too much for a link');
  }
  return new Uint8Array(await new Blob(parts).arrayBuffer());
}

function toBase64Url(bytes: Uint8Array): string {
  let text = '';
  for (const byte of bytes) text += String.fromCharCode(byte);
  return btoa(text).replaceAll('+', '-').replaceAll('/', '_').replace(/=+$/, '');
}

function fromBase64Url(text: string): Uint8Array<ArrayBuffer> {
  return Uint8Array.from(atob(text.replaceAll('-', '+').replaceAll('_', '/')), (sign) =>
    sign.charCodeAt(0),
  );
}

export async function toFragment(shared: Shared): Promise<string> {
  const bytes = new TextEncoder().encode(JSON.stringify(shared));
  return `#${mark}${toBase64Url(await throughStream(bytes, new CompressionStream('deflate')))}`;
}

function isNumbers(value: unknown): value is Record<string, number> {
  return (
    typeof value === 'object' &&
    value !== null &&
    Object.values(value).every((number) => typeof number === 'number' && Number.isFinite(number))
  );
}

/** What goes with a script. */
export type Setting = Omit<Shared, 'script'>;

export function isSetting(value: object): value is Setting {
  const { parameters, security, forming } = value as Record<string, unknown>;
  return (
    isNumbers(parameters) &&
    ['string', 'undefined'].includes(typeof security) &&
    ['boolean', 'undefined'].includes(typeof forming)
  );
}

function isShared(value: unknown): value is Shared {
  if (typeof value !== 'object' || value === null) return false;
  return typeof (value as Shared).script === 'string' && isSetting(value);
}

/** None for a fragment that isn't such a link, or a broken one. */
export async function fromFragment(fragment: string): Promise<Shared | undefined> {
  if (!fragment.startsWith(`#${mark}`)) return undefined;
  try {
    const packed = fromBase64Url(fragment.slice(mark.length + 1));
    const bytes = await throughStream(packed, new DecompressionStream('deflate'));
    const value: unknown = JSON.parse(new TextDecoder().decode(bytes));
    return isShared(value) ? value : undefined;
  } catch {
    return undefined;
  }
}

const pictureKey = 'quor-studio';

export function intoPicture(png: Blob, shared: Shared): Promise<Blob> {
  return withText(png, pictureKey, JSON.stringify(shared));
}

/** None for a picture that holds no script. */
export function fromPicture(png: Uint8Array): Shared | undefined {
  try {
    const value: unknown = JSON.parse(textIn(png, pictureKey) ?? 'null');
    return isShared(value) ? value : undefined;
  } catch {
    return undefined;
  }
}
