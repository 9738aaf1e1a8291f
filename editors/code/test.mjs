// Bundles the tests and runs them in Node; --renew writes the snapshots anew.
import { spawnSync } from 'node:child_process';
import { readdirSync, rmSync } from 'node:fs';
import esbuild from 'esbuild';

const names = readdirSync('test').filter((name) => name.endsWith('.test.ts'));
rmSync('build/test', { recursive: true, force: true });
await esbuild.build({
  entryPoints: names.map((name) => `test/${name}`),
  outdir: 'build/test',
  outExtension: { '.js': '.cjs' },
  bundle: true,
  packages: 'external',
  platform: 'node',
  format: 'cjs',
  target: 'node20',
});
const files = names.map((name) => `build/test/${name.replace(/\.ts$/, '.cjs')}`);
const RENEW = process.argv.includes('--renew') ? '1' : '';
const { status } = spawnSync(process.execPath, ['--test', ...files], {
  stdio: 'inherit',
  env: { ...process.env, RENEW },
});
process.exit(status ?? 1);
