// Builds the extension into one file, and with --package the .vsix.
import { execFileSync } from 'node:child_process';
import { copyFileSync, mkdirSync, rmSync } from 'node:fs';
import esbuild from 'esbuild';

rmSync('dist', { recursive: true, force: true });
mkdirSync('dist');
await esbuild.build({
  entryPoints: ['src/extension.ts'],
  outfile: 'dist/extension.js',
  bundle: true,
  minify: true,
  platform: 'node',
  format: 'cjs',
  target: 'node20',
  external: ['vscode'],
});
copyFileSync('../quor.tmLanguage.json', 'dist/quor.tmLanguage.json');
copyFileSync('../../LICENCE', 'LICENCE');

if (process.argv.includes('--package')) {
  mkdirSync('build', { recursive: true });
  const vsce = 'node_modules/@vscode/vsce/vsce';
  execFileSync(
    process.execPath,
    [
      vsce,
      'package',
      '--no-dependencies',
      '--allow-missing-repository',
      '--out',
      'build/quor.vsix',
    ],
    { stdio: 'inherit' },
  );
}
