// Bundles the page into dist/: index.html, studio.js, worker.js, studio.css, the icon, the engine, the
// samples, and the licences of the packages that are in them; each beside what it is packed.
import { build } from 'esbuild';
import { createHash } from 'node:crypto';
import { copyFile, mkdir, readdir, readFile, rm, writeFile } from 'node:fs/promises';
import { gzipSync } from 'node:zlib';

await rm('dist', { recursive: true, force: true });
await mkdir('dist', { recursive: true });
const { metafile } = await build({
  entryPoints: { studio: 'src/main.ts', worker: 'src/engine/worker.ts' },
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

await copyFile('../build/wasm/web/studio.wasm', 'dist/studio.wasm');

// What the server of `quor studio` answers by itself; any other server has these files.
const start = { script: null, folder: null, files: { scripts: [], securities: [] } };
await writeFile('dist/start.json', JSON.stringify(start));
await copyFile('../samples/index-daily.csv', 'dist/index-daily.csv');
const samples = [];
for (const [group, folder] of [
  ['samples', '../samples'],
  ['cookbook', '../samples/cookbook'],
]) {
  const files = (await readdir(folder)).filter((name) => name.endsWith('.quor')).sort();
  for (const file of files) {
    const text = await readFile(`${folder}/${file}`, 'utf8');
    samples.push({ name: file.replace(/\.quor$/, ''), group, text });
  }
}
await writeFile('dist/samples.json', JSON.stringify(samples));

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
const own = `quor\n\n${await readFile('../LICENCE', 'utf8')}`;
await writeFile('dist/licences.txt', [own, ...(await Promise.all(licences))].join('\n\n'));

// The front page names all others with the version of the whole, so that browsers keep them for good.
const files = (await readdir('dist')).sort();
const hash = createHash('sha256');
for (const file of files) hash.update(file).update(await readFile(`dist/${file}`));
const version = hash.digest('hex').slice(0, 16);
const front = await readFile('dist/index.html', 'utf8');
const named = front.replace(/(?<=(?:href|src)="[\w.-]+)(?=")/g, `?v=${version}`);
await writeFile('dist/index.html', named);

const worthPacking = 1000;
for (const file of files) {
  const bytes = await readFile(`dist/${file}`);
  if (bytes.length < worthPacking) continue;
  await writeFile(`dist/${file}.gz`, gzipSync(bytes, { level: 9 }));
}
