// Runs a program for WASI under Node, with all files of the machine in its sight.
//   node tools/wasi.mjs PROGRAM ARGUMENTS...
import { readFile } from "node:fs/promises";
import { WASI } from "node:wasi";

const wasi = new WASI({
  version: "preview1",
  args: process.argv.slice(2),
  preopens: { "/": "/" },
});
const module = await WebAssembly.compile(await readFile(process.argv[2]));
process.exitCode = wasi.start(await WebAssembly.instantiate(module, wasi.getImportObject()));
