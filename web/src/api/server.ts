// Requests to the server that the page came from: of files, and scans over them.
import type { Parameter } from '../engine/types.ts';
import { Refusal } from '../refusal.ts';
import { versioned } from '../version.ts';
import type { Files, Sample, ScanAnswer, ScanStart, Start } from './types.ts';

async function send(path: string, request: RequestInit = {}): Promise<Response> {
  let response: Response;
  try {
    response = await fetch(path, { ...request, credentials: 'same-origin' });
  } catch {
    throw new Refusal("the server doesn't answer: has quor studio ended?", 0);
  }
  if (response.ok) return response;
  const answer = (await response.json().catch(() => ({}))) as Record<string, unknown>;
  const { error } = answer;
  const text = typeof error === 'string' ? error : `the server answers ${response.status}`;
  throw new Refusal(text, response.status, answer);
}

async function get<T>(path: string): Promise<T> {
  return (await (await send(path)).json()) as T;
}

async function post<T>(path: string, body: unknown = {}): Promise<T> {
  const headers = { 'Content-Type': 'application/json' };
  const request = { method: 'POST', headers, body: JSON.stringify(body) };
  return (await (await send(path, request)).json()) as T;
}

export const readStart = (): Promise<Start> => get('start.json');
export const readSamples = (): Promise<Sample[]> => get(versioned('samples.json'));
export const readSampleBars = async (): Promise<Blob> =>
  (await send(versioned('index-daily.csv'))).blob();

/** The module of WebAssembly, compiled while it comes in where the server says what it is. */
export async function readModule(): Promise<WebAssembly.Module> {
  const response = await send(versioned('studio.wasm'));
  const isNamed = response.headers.get('content-type')?.startsWith('application/wasm') ?? false;
  return isNamed
    ? WebAssembly.compileStreaming(response)
    : WebAssembly.compile(await response.arrayBuffer());
}

/** What there is at this moment. */
export const readFiles = (): Promise<Files> => get('api/files');

export const readBars = async (security: string): Promise<Blob> =>
  (await send(`api/bars/${encodeURIComponent(security)}`)).blob();

const scriptPath = (name: string): string => `api/scripts/${encodeURIComponent(name)}`;

export const readScript = (name: string): Promise<{ name: string; text: string }> =>
  get(scriptPath(name));

/** Over a script of the name only if that has the text `before`. */
export const saveScript = (
  name: string,
  text: string,
  before: string | undefined,
): Promise<{ name: string }> => post(scriptPath(name), { text, before });

/** A script over all securities of the server. */
export class ScanRun {
  private constructor(readonly start: ScanStart) {}

  static async begin(script: string, parameters: Parameter[], where: string): Promise<ScanRun> {
    const task = { script, parameters, ...(where ? { where } : {}), last: 1 };
    return new ScanRun(await post('api/scans', task));
  }

  progress(since: number): Promise<ScanAnswer> {
    return get(`${this.path}?since=${since}`);
  }

  cancel(): Promise<ScanAnswer> {
    return post(`${this.path}/cancel`);
  }

  /** Without waiting, as the page may go away. */
  close(): void {
    navigator.sendBeacon(`${this.path}/close`);
  }

  private get path(): string {
    return `api/scans/${this.start.id}`;
  }
}
