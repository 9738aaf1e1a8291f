// The module of WebAssembly behind its calls: texts and arrays go in and out by copies.

import { EngineStopped, OutOfMemory, roomFor, ScriptError, type Finding } from './errors.js';
import { wasiImports } from './wasi.js';

/** An address in the module's memory. */
export type Address = number;

interface Exports {
  readonly memory: WebAssembly.Memory;
  _initialize(): void;
  malloc(size: number): Address;
  free(address: Address): void;
  quor_text(): Address;
  quor_text_length(): number;
  quor_set_zone(seconds: number): void;
  quor_compile(settings: Address, length: number, result: Address): number;
  quor_free(handle: Address): void;
  quor_run(
    handle: Address,
    count: number,
    keys: Address,
    columns: number,
    ids: Address,
    values: Address,
    withEvents: number,
  ): number;
  quor_make_place(handle: Address, columns: number, ids: Address, result: Address): number;
  quor_update(handle: Address): number;
  quor_row_count(handle: Address): number;
  quor_rows(handle: Address): Address;
  quor_line(handle: Address, line: number): Address;
  quor_key(handle: Address, row: number): number;
  quor_shapes(handle: Address): number;
  quor_events(handle: Address): number;
  quor_findings(handle: Address): number;
}

/** How a call ended, as npm/engine/module.cpp numbers it. */
const outcomes = { done: 0, scriptFailed: 1, misuse: 2, noMemory: 3 };

const encoder = new TextEncoder();
const decoder = new TextDecoder('utf-8', { ignoreBOM: true });

/** The values of a field, by the id of its column. */
export interface Column {
  readonly id: number;
  readonly values: Float64Array;
}

const largestBlock = 0xffff_ffff;

/** Clocks of a zone change at full quarters of an hour only. */
const quarter = 900_000;

export class Module {
  readonly #exports: Exports;
  #end: EngineStopped | undefined;
  /** All memory; empty once the memory has grown. */
  #cells = new Float64Array();
  #quarterOfZone = NaN;

  private constructor(exports: Exports) {
    this.#exports = exports;
  }

  static async start(compiled: WebAssembly.Module): Promise<Module> {
    const imports = { wasi_snapshot_preview1: wasiImports(() => exports.memory) };
    const instance = await WebAssembly.instantiate(compiled, imports);
    const exports = instance.exports as unknown as Exports;
    exports._initialize();
    return new Module(exports);
  }

  get memory(): number {
    return this.#exports.memory.buffer.byteLength;
  }

  /** Compiles, and gives the handle and what the script is like. */
  compile(settings: object): { handle: Address; description: string } {
    const text = encoder.encode(JSON.stringify(settings));
    return this.#work(() => {
      this.#tellZone();
      return this.#withBlock(8 + text.length, (result) => {
        this.#bytes().set(text, result + 8);
        this.#settle(this.#exports.quor_compile(result + 8, text.length, result));
        return { handle: this.#view().getUint32(result, true), description: this.#text() };
      });
    });
  }

  free(handle: Address): void {
    if (this.#end === undefined) this.#work(() => this.#exports.quor_free(handle));
  }

  /** Takes bars in place of those before and calculates. */
  run(handle: Address, keys: Float64Array, columns: Column[], events: boolean) {
    this.#work(() => {
      this.#tellZone();
      const arrays = [keys, ...columns.map((column) => column.values)];
      const table = arrays.length * keys.length * 8;
      this.#withBlock(table + columns.length * 8 + 8, (start) => {
        const cells = new Float64Array(this.#exports.memory.buffer, start, table / 8);
        arrays.forEach((values, i) => cells.set(values, i * keys.length));
        const view = this.#view();
        const ids = start + table;
        const addresses = ids + columns.length * 4;
        columns.forEach(({ id }, i) => {
          view.setUint32(ids + i * 4, id, true);
          view.setUint32(addresses + i * 4, start + (i + 1) * keys.length * 8, true);
        });
        this.#settle(
          this.#exports.quor_run(
            handle,
            keys.length,
            start,
            columns.length,
            ids,
            addresses,
            Number(events),
          ),
        );
      });
    });
  }

  /** Makes a place for bars that come alone, with the values of these columns. */
  makePlace(handle: Address, ids: readonly number[]): Address {
    return this.#work(() =>
      this.#withBlock(4 + ids.length * 4, (result) => {
        const view = this.#view();
        ids.forEach((id, i) => view.setUint32(result + 4 + i * 4, id, true));
        this.#settle(this.#exports.quor_make_place(handle, ids.length, result + 4, result));
        return this.#view().getUint32(result, true);
      }),
    );
  }

  /** Takes a bar, its key in front of its values, and calculates from it on. Fills in `last`. */
  update(handle: Address, place: Address, bar: Float64Array, last: Float64Array): void {
    this.#work(() => {
      this.#tellZone();
      this.#memoryCells().set(bar, place / 8);
      this.#settle(this.#exports.quor_update(handle));
      const cells = this.#memoryCells();
      const first = place / 8 + bar.length;
      for (let i = 0; i < last.length; ++i) last[i] = cells[first + i]!;
    });
  }

  rowCount(handle: Address): number {
    return this.#work(() => this.#exports.quor_row_count(handle));
  }

  /** The rows of the bars taken in last; nothing if they are all rows in their order. */
  rows(handle: Address, count: number): Uint32Array | undefined {
    return this.#work(() => {
      const address = this.#exports.quor_rows(handle);
      if (address === 0) return undefined;
      return new Uint32Array(this.#exports.memory.buffer, address, count).slice();
    });
  }

  /** The cells of a line from a row on. */
  line(handle: Address, line: number, first = 0): Float64Array {
    return this.#work(() => {
      const count = this.#exports.quor_row_count(handle) - first;
      const address = this.#exports.quor_line(handle, line) + first * 8;
      const cells = roomFor(count);
      cells.set(new Float64Array(this.#exports.memory.buffer, address, count));
      return cells;
    });
  }

  key(handle: Address, row: number): number {
    return this.#work(() => this.#exports.quor_key(handle, row));
  }

  shapes(handle: Address): string {
    return this.#answer(() => this.#exports.quor_shapes(handle));
  }

  events(handle: Address): string {
    return this.#answer(() => this.#exports.quor_events(handle));
  }

  findings(handle: Address): string {
    return this.#answer(() => this.#exports.quor_findings(handle));
  }

  #answer(call: () => number): string {
    return this.#work(() => {
      this.#settle(call());
      return this.#text();
    });
  }

  /** A trap leaves the module in a state that nobody knows, so it serves no more. */
  #work<Result>(task: () => Result): Result {
    if (this.#end !== undefined) throw this.#end;
    try {
      return task();
    } catch (fault) {
      if (!isTrap(fault)) throw fault;
      this.#end = new EngineStopped(fault);
      throw this.#end;
    }
  }

  #settle(outcome: number): void {
    if (outcome === outcomes.done) return;
    if (outcome === outcomes.noMemory) throw new OutOfMemory();
    const text = this.#text();
    if (outcome === outcomes.misuse) throw new TypeError(text);
    const [first = unknownError, ...others] = JSON.parse(text) as Finding[];
    throw new ScriptError(first, ...others);
  }

  #withBlock<Result>(size: number, task: (address: Address) => Result): Result {
    const address = size > largestBlock ? 0 : this.#exports.malloc(size);
    if (address === 0) throw new OutOfMemory();
    let result: Result;
    try {
      result = task(address);
    } catch (fault) {
      // After a trap nothing can be given back.
      if (!isTrap(fault)) this.#exports.free(address);
      throw fault;
    }
    this.#exports.free(address);
    return result;
  }

  /** The words of the wall clock follow the zone of the page. */
  #tellZone(): void {
    const now = Math.floor(Date.now() / quarter);
    if (now === this.#quarterOfZone) return;
    this.#exports.quor_set_zone(-60 * new Date().getTimezoneOffset());
    this.#quarterOfZone = now;
  }

  #memoryCells(): Float64Array {
    if (this.#cells.length === 0) this.#cells = new Float64Array(this.#exports.memory.buffer);
    return this.#cells;
  }

  #text(): string {
    const address = this.#exports.quor_text();
    return decoder.decode(
      this.#bytes().subarray(address, address + this.#exports.quor_text_length()),
    );
  }

  #bytes(): Uint8Array {
    return new Uint8Array(this.#exports.memory.buffer);
  }

  #view(): DataView {
    return new DataView(this.#exports.memory.buffer);
  }
}

const unknownError: Finding = {
  severity: 'error',
  code: -1,
  sentence: 'the script failed',
  suggestion: '',
  line: 0,
  column: 0,
  length: 0,
};

/** Faults of the module itself: traps, exceptions of its own, a stack that overflows. */
function isTrap(fault: unknown): boolean {
  if (!(fault instanceof Error) || fault instanceof WebAssembly.RuntimeError) return true;
  return /call stack|recursion/i.test(fault.message);
}
