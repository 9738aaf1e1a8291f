// The few things that the module asks of a system. There are no files, and nothing is printed.

const success = 0;
const noSuchCall = 52;
const longestRandom = 65536;

export function wasiImports(memory: () => WebAssembly.Memory): WebAssembly.ModuleImports {
  const view = () => new DataView(memory().buffer);
  const known: Record<string, (...args: never[]) => number> = {
    environ_get: () => success,
    environ_sizes_get(count: number, size: number) {
      view().setUint32(count, 0, true);
      view().setUint32(size, 0, true);
      return success;
    },
    clock_time_get(_clock: number, _precision: bigint, result: number) {
      view().setBigUint64(result, BigInt(Date.now()) * 1_000_000n, true);
      return success;
    },
    random_get(address: number, length: number) {
      for (let at = 0; at < length; at += longestRandom) {
        const size = Math.min(longestRandom, length - at);
        crypto.getRandomValues(new Uint8Array(memory().buffer, address + at, size));
      }
      return success;
    },
    proc_exit(status: number) {
      throw new WebAssembly.RuntimeError(`exit ${status}`);
    },
  };
  return new Proxy(known, {
    get: (calls, name) => calls[String(name)] ?? (() => noSuchCall),
  }) as unknown as WebAssembly.ModuleImports;
}
