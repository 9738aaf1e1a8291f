/**
 * Technical-indicator scripts in browsers and Node: `await load()`, `compile` a script, `run` it over bars.
 */

import { Module } from './module.js';
import { Script, type Settings } from './script.js';

export type { Bar, Bars, Values } from './bars.js';
export { EngineStopped, OutOfMemory, ScriptError, type Finding } from './errors.js';
export type {
  Line,
  Lines,
  Live,
  Look,
  Report,
  RunOptions,
  Script,
  ScriptEvent,
  Settings,
  Shape,
} from './script.js';
export type { Time, Times } from './times.js';

/** Where the module of WebAssembly is had. A page's own addresses start from that of the page. */
export type Source = string | URL | Response | BufferSource | WebAssembly.Module;

const day = 0x4000;

export class Engine {
  readonly #module: Module;

  /** @internal */
  constructor(module: Module) {
    this.#module = module;
  }

  /** How much memory the engine has taken, in bytes. It grows as needed and is used again. */
  get memory(): number {
    return this.#module.memory;
  }

  /**
   * Compiles a script. A mistake in it is a `ScriptError` with its place.
   */
  compile(source: string, settings: Settings = {}): Script {
    if (typeof source !== 'string') throw new TypeError('a script is a text');
    if (!isObject(settings)) throw new TypeError('settings are an object');
    return new Script(this.#module, source, wholeSettings(source, settings));
  }
}

/**
 * Loads the engine. Each call gives one of its own, with memory of its own.
 */
export async function load(source?: Source | PromiseLike<Source>): Promise<Engine> {
  const given = await source;
  const compiled = given === undefined ? usualModule() : compiledModule(given);
  return new Engine(await Module.start(await compiled));
}

let usual: Promise<WebAssembly.Module> | undefined;

/** The same code serves all engines; a failed attempt may be repeated. */
async function usualModule(): Promise<WebAssembly.Module> {
  usual ??= fromAddress(new URL('./quor.wasm', import.meta.url));
  try {
    return await usual;
  } catch (fault) {
    usual = undefined;
    throw fault;
  }
}

async function compiledModule(source: Source): Promise<WebAssembly.Module> {
  if (source instanceof WebAssembly.Module) return source;
  if (typeof source === 'string' || source instanceof URL) {
    return fromAddress(new URL(source, globalThis.location?.href ?? import.meta.url));
  }
  if (source instanceof ArrayBuffer || ArrayBuffer.isView(source)) {
    return WebAssembly.compile(source);
  }
  // Last, because Node first loads all that belongs to it.
  if (source instanceof Response) return fromResponse(source);
  throw new TypeError('an engine comes from an address, bytes, an answer of fetch, or a module');
}

async function fromAddress(url: URL): Promise<WebAssembly.Module> {
  if (url.protocol !== 'file:') return fromResponse(await fetch(url));
  const { readFile } = await import('node:fs/promises');
  return WebAssembly.compile(await readFile(url));
}

async function fromResponse(response: Response): Promise<WebAssembly.Module> {
  if (!response.ok) throw new Error(`no engine at ${response.url}: status ${response.status}`);
  const isNamed = response.headers.get('content-type')?.startsWith('application/wasm') ?? false;
  if (isNamed) return WebAssembly.compileStreaming(response);
  return WebAssembly.compile(await response.arrayBuffer());
}

/** With each setting there, as the module wants them. */
function wholeSettings(source: string, settings: Settings): object {
  for (const name of Object.keys(settings)) {
    if (!settingNames.has(name)) throw new TypeError(`no setting is called '${name}'`);
  }
  return {
    source: wellFormed(source),
    parameters: parametersOf(settings.parameters ?? {}),
    period: whole(settings.period ?? day),
    code: text(settings.code, 'code'),
    market: text(settings.market, 'market'),
    timeZone: text(settings.timeZone ?? 'UTC+08:00', 'timeZone'),
    calendar: calendarOf(settings.calendar ?? ''),
    minPrice: known(settings.minPrice, 'minPrice'),
    unit: known(settings.unit, 'unit'),
    shareCountPerUnit: known(settings.shareCountPerUnit, 'shareCountPerUnit'),
    isTrading: yesOrNo(settings.isTrading, 'isTrading'),
  };
}

const settingNames: ReadonlySet<string> = new Set<keyof Settings>([
  'parameters',
  'period',
  'code',
  'market',
  'timeZone',
  'calendar',
  'minPrice',
  'unit',
  'shareCountPerUnit',
  'isTrading',
]);

function isObject(value: unknown): value is object {
  return typeof value === 'object' && value !== null;
}

function parametersOf(parameters: unknown): [string, number][] {
  if (!isObject(parameters) || parameters instanceof Map) {
    throw new TypeError('parameters are an object of numbers');
  }
  return Object.entries(parameters).map(([name, value]) => {
    if (typeof value !== 'number' || !Number.isFinite(value)) {
      throw new TypeError(`the parameter ${name} is no finite number`);
    }
    return [wellFormed(name).toUpperCase(), value];
  });
}

function calendarOf(calendar: unknown): string {
  if (typeof calendar === 'string') return wellFormed(calendar);
  if (!isObject(calendar)) throw new TypeError('a calendar is an object or its JSON');
  return wellFormed(JSON.stringify(calendar));
}

function yesOrNo(value: unknown, name: string): boolean {
  if (value === undefined || typeof value === 'boolean') return value ?? false;
  throw new TypeError(`${name} is true or false`);
}

function whole(period: unknown): number {
  if (Number.isInteger(period) && Number(period) >= 0 && Number(period) <= 0xffffffff) {
    return Number(period);
  }
  throw new TypeError('period is the code of a period, such as 0x4000');
}

function text(value: unknown, name: string): string {
  if (value === undefined) return '';
  if (typeof value !== 'string') throw new TypeError(`${name} is no text`);
  return wellFormed(value);
}

function known(value: unknown, name: string): number | null {
  if (value === undefined) return null;
  if (typeof value !== 'number') throw new TypeError(`${name} is no number`);
  return value;
}

/** Without halves of characters, which no other system knows. */
function wellFormed(value: string): string {
  return new TextDecoder('utf-8', { ignoreBOM: true }).decode(new TextEncoder().encode(value));
}
