// Bundles the page into dist/: index.html, studio.js, studio.css and the icon.
import { build } from 'esbuild';
import { copyFile, mkdir, rm } from 'node:fs/promises';

await rm('dist', { recursive: true, force: true });
await mkdir('dist', { recursive: true });
await build({
  entryPoints: { studio: 'src/main.ts' },
  outdir: 'dist',
  bundle: true,
  minify: true,
  format: 'esm',
  target: 'es2022',
  legalComments: 'eof',
  logLevel: 'warning',
});
for (const file of ['index.html', 'icon.svg']) await copyFile(`src/${file}`, `dist/${file}`);
