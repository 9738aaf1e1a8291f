// The module of WebAssembly with its one desk.
import { wasiImports } from '../../../npm/src/wasi.ts';
import { Refusal } from '../refusal.ts';

interface Exports {
  readonly memory: WebAssembly.Memory;
  _initialize(): void;
  malloc(size: number): number;
  free(address: number): void;
  quor_set_zone(seconds: number): void;
  studio_call(call: number, length: number, body: number, bodyLength: number): number;
  studio_answer(): number;
  studio_answer_length(): number;
}

const noMemory = 507;
const encoder = new TextEncoder();
const decoder = new TextDecoder();

export class StudioModule {
  private constructor(private readonly exports: Exports) {}

  static async start(compiled: WebAssembly.Module): Promise<StudioModule> {
    const imports = { wasi_snapshot_preview1: wasiImports(() => exports.memory) };
    const instance = await WebAssembly.instantiate(compiled, imports);
    const exports = instance.exports as unknown as Exports;
    exports._initialize();
    return new StudioModule(exports);
  }

  /** Answers a call of web/engine/calls.cpp, or throws a Refusal. */
  call(call: object, body: Uint8Array = new Uint8Array()): Uint8Array<ArrayBuffer> {
    const { exports } = this;
    exports.quor_set_zone(-60 * new Date().getTimezoneOffset()); // words of the wall clock follow it
    const text = encoder.encode(JSON.stringify(call));
    const address = exports.malloc(text.length + body.length);
    if (address === 0) throw new Refusal('there is no memory for this', noMemory);
    const bytes = new Uint8Array(exports.memory.buffer);
    bytes.set(text, address);
    bytes.set(body, address + text.length);
    const status = exports.studio_call(address, text.length, address + text.length, body.length);
    exports.free(address);
    const answer = this.answer();
    if (status !== 0) throw new Refusal(decoder.decode(answer), status);
    return answer;
  }

  private answer(): Uint8Array<ArrayBuffer> {
    const { memory, studio_answer, studio_answer_length } = this.exports;
    return new Uint8Array(memory.buffer, studio_answer(), studio_answer_length()).slice();
  }
}
