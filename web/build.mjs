// Bundles the page into dist/: index.html, studio.js, studio.css, the icon, and the licences of the
// packages that are in them.
import { build } from 'esbuild';
import { copyFile, mkdir, readdir, readFile, rm, writeFile } from 'node:fs/promises';

await rm('dist', { recursive: true, force: true });
await mkdir('dist', { recursive: true });
const { metafile } = await build({
  entryPoints: { studio: 'src/main.ts' },
  outdir: 'dist',
  bundle: true,
  minify: true,
  format: 'esm',
  target: 'es2022',
  legalComments: 'eof',
  logLevel: 'warning',
  metafile: true,
});
for (const file of ['index.html', 'icon.svg']) await copyFile(`src/${file}`, `dist/${file}`);

const packageOf = /^node_modules\/((?:@[^/]+\/)?[^/]+)\//;
const packages = new Set(
  Object.keys(metafile.inputs).flatMap((input) => packageOf.exec(input)?.[1] ?? []),
);
const licences = [...packages].sort().map(async (name) => {
  const files = await readdir(`node_modules/${name}`);
  const file = files.find((one) => /^licen[cs]e/i.test(one));
  if (!file) throw new Error(`${name} has no licence`);
  return `${name}\n\n${(await readFile(`node_modules/${name}/${file}`, 'utf8')).trim()}\n`;
});
await writeFile('dist/licences.txt', (await Promise.all(licences)).join('\n\n'));
