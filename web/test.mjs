// Bundles the tests of a folder below test/ for Node and runs them, or those of one file:
// node test.mjs unit|browser|pictures [NAME]
import { build } from 'esbuild';
import { spawnSync } from 'node:child_process';
import { readdirSync, rmSync } from 'node:fs';

const kind = process.argv[2] ?? 'unit';
const outdir = `node_modules/.tests/${kind}`;
const wanted = `${process.argv[3] ?? ''}.test.ts`;
const files = readdirSync(`test/${kind}`).filter((name) => name.endsWith(wanted));
rmSync(outdir, { recursive: true, force: true });
await build({
  entryPoints: files.map((name) => `test/${kind}/${name}`),
  outdir,
  bundle: true,
  packages: 'external',
  platform: 'node',
  format: 'esm',
  target: 'node18',
  sourcemap: 'inline',
  outExtension: { '.js': '.mjs' },
  logLevel: 'warning',
});
const tests = files.map((name) => `${outdir}/${name.replace(/\.ts$/, '.mjs')}`);
const options = ['--enable-source-maps', '--test', '--test-concurrency=1', '--test-reporter=spec'];
process.exitCode =
  spawnSync(process.execPath, [...options, ...tests], { stdio: 'inherit' }).status ?? 1;
