// Requests to the server that the page came from.
import type {
  BarsAnswer,
  EventsAnswer,
  Parameter,
  PlayAnswer,
  RecordsAnswer,
  ScanAnswer,
  ScanStart,
  ScriptAnswer,
  Start,
  StepAnswer,
  ValuesAnswer,
} from './types.ts';
import { readView } from './view_answer.ts';
import type { ViewData } from '../chart/view.ts';

const sessionsPath = '/api/sessions/';

/** A request that was refused or got no answer, and why in a sentence. */
export class Refusal extends Error {
  constructor(
    message: string,
    readonly status: number,
    readonly path = '',
  ) {
    super(message);
  }
}

/** Requests that may be under way at once: the server has few for a session to wait. */
const mostAtOnce = 3;
let underWay = 0;
const waiting: (() => void)[] = [];

async function send(path: string, request: RequestInit = {}): Promise<Response> {
  if (underWay >= mostAtOnce) await new Promise<void>((resolve) => waiting.push(resolve));
  ++underWay;
  try {
    return await sendNow(path, request);
  } finally {
    --underWay;
    waiting.shift()?.();
  }
}

async function sendNow(path: string, request: RequestInit): Promise<Response> {
  let response: Response;
  try {
    response = await fetch(path, { ...request, credentials: 'same-origin', cache: 'no-store' });
  } catch {
    throw new Refusal("quor studio doesn't answer: has it ended?", 0);
  }
  if (response.ok) return response;
  const answer = (await response.json().catch(() => ({}))) as { error?: unknown };
  const text =
    typeof answer.error === 'string' ? answer.error : `the server answers ${response.status}`;
  throw new Refusal(text, response.status, path);
}

async function get<T>(path: string): Promise<T> {
  return (await (await send(path)).json()) as T;
}

async function post<T>(path: string, body: unknown = {}): Promise<T> {
  const headers = { 'Content-Type': 'application/json' };
  return (await (
    await send(path, { method: 'POST', headers, body: JSON.stringify(body) })
  ).json()) as T;
}

const query = (values: Record<string, string | number>): string =>
  new URLSearchParams(
    Object.entries(values).map(([name, value]) => [name, String(value)]),
  ).toString();

export const readStart = (): Promise<Start> => get('/api/start');

const scriptPath = (name: string): string => `/api/scripts/${encodeURIComponent(name)}`;

export const readScript = (name: string): Promise<{ name: string; text: string }> =>
  get(scriptPath(name));

export const saveScript = (
  name: string,
  text: string,
  overwrite: boolean,
): Promise<{ name: string }> => post(scriptPath(name), { text, overwrite });

/** The page's own bars and script on the server. */
export class Session {
  private path = '';
  private turn: Promise<unknown> = Promise.resolve();

  /** Has what changes bars, script or play asked for, and its answer taken, one after the other: so
   * the last answer tells how things stand. */
  inTurn(work: () => Promise<void>): Promise<void> {
    const done = this.turn.then(work);
    this.turn = done.catch(() => undefined);
    return done;
  }

  /** Another one takes the place of a session that the server has freed. */
  async open(): Promise<void> {
    const { id } = await post<{ id: string }>('/api/sessions');
    this.path = sessionsPath + encodeURIComponent(id);
  }

  /** Whether a request failed for want of its session: the server frees one after a long rest. */
  async isGone(error: unknown): Promise<boolean> {
    if (!(error instanceof Refusal) || error.status !== 404) return false;
    if (!error.path.startsWith(`${this.path}/`)) return false;
    return this.events(0, 1).then(
      () => false,
      (again: unknown) => again instanceof Refusal && again.status === 404,
    );
  }

  /** Without waiting, as the page goes away. */
  close(): void {
    navigator.sendBeacon(`${this.path}/close`);
  }

  readSecurity(security: string, period?: string): Promise<BarsAnswer> {
    return post(`${this.path}/bars`, { security, period });
  }

  async readCsv(file: Blob, name: string, period?: string): Promise<BarsAnswer> {
    const body = await file.arrayBuffer(); // fails by itself, not as a request, if the file has changed
    const request = { method: 'POST', headers: { 'Content-Type': 'text/csv' }, body };
    const asked = query({ name, ...(period ? { period } : {}) });
    return (await (await send(`${this.path}/bars?${asked}`, request)).json()) as BarsAnswer;
  }

  script(script: string, parameters: Parameter[]): Promise<ScriptAnswer> {
    return post(`${this.path}/script`, { script, parameters });
  }

  /** Rows from `from` up to `to`, in slots of the same number of rows so that there are `points`. */
  async view(from: number, to: number, points: number): Promise<ViewData> {
    const response = await send(`${this.path}/view?${query({ from, to, points })}`);
    return readView(await response.arrayBuffer());
  }

  records(from: number, to: number): Promise<RecordsAnswer> {
    return get(`${this.path}/records?${query({ from, to })}`);
  }

  values(row: number): Promise<ValuesAnswer> {
    return get(`${this.path}/values?${query({ row })}`);
  }

  events(since: number, limit: number): Promise<EventsAnswer> {
    return get(`${this.path}/events?${query({ since, limit })}`);
  }

  play(row: number, ticks: number): Promise<PlayAnswer> {
    return post(`${this.path}/play`, { row, ticks });
  }

  step(by: { ticks: number } | { bars: number }): Promise<StepAnswer> {
    return post(`${this.path}/play/step`, by);
  }

  stopPlay(): Promise<ScriptAnswer> {
    return post(`${this.path}/play/stop`);
  }

  scan(script: string, parameters: Parameter[], where: string): Promise<ScanStart> {
    return post(`${this.path}/scan`, { script, parameters, ...(where ? { where } : {}), last: 1 });
  }

  scanned(since: number): Promise<ScanAnswer> {
    return get(`${this.path}/scan?${query({ since })}`);
  }

  cancelScan(): Promise<ScanAnswer> {
    return post(`${this.path}/scan/cancel`);
  }

  async csv(): Promise<Blob> {
    return (await send(`${this.path}/export.csv`)).blob();
  }
}
