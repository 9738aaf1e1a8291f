// What is shipped: installed from its tarball into an empty folder, as the README tells.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { existsSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { installed } from './support/installed.mjs';

const { folder, package: home } = installed();
after(() => rmSync(folder, { recursive: true }));

const readme = readFileSync(join(home, 'README.md'), 'utf8');
const blocks = [...readme.matchAll(/^```js\n(.*?)^```$/gms)].map(([, block]) => block);

function run(name, source, input = '') {
  writeFileSync(join(folder, name), source);
  return execFileSync(process.execPath, [name], { cwd: folder, input, encoding: 'utf8' });
}

test('the package is whole and needs no other', () => {
  const names = ['LICENCE', 'dist/index.d.ts', 'dist/quor.wasm', 'examples/page.html'];
  assert.deepEqual(
    names.filter((name) => !existsSync(join(home, name))),
    [],
  );
  assert.equal(existsSync(join(home, 'src')), false);
  const { dependencies, peerDependencies } = JSON.parse(
    readFileSync(join(home, 'package.json'), 'utf8'),
  );
  assert.deepEqual([dependencies, peerDependencies], [undefined, undefined]);
  const links = [...readme.matchAll(/\]\(([^)]+)\)/g)].map(([, link]) => link);
  assert.ok(links.length > 0);
  for (const link of links) assert.ok(existsSync(join(home, link)), link);
});

test('the programs of the README print what it says', () => {
  const programs = blocks.filter((block) => !block.includes('onmessage'));
  assert.equal(programs.length, blocks.length - 1);
  const said = programs
    .flatMap((block) => [...block.matchAll(/console\.log\(.*\); \/\/ (.*)$/gm)])
    .map(([, words]) => words);
  assert.equal(said.length, 5);
  assert.deepEqual(run('readme.mjs', programs.join('\n')).trim().split('\n'), said);
});

test('the live client prints what those of other languages print', () => {
  const example = (name) =>
    readFileSync(new URL(`../../examples/${name}`, import.meta.url), 'utf8');
  const printed = run('live.mjs', example('live.mjs'), example('live.csv'));
  assert.equal(printed, example('live.txt'));
});

test('the worker of the README answers', () => {
  const worker = blocks.find((block) => block.includes('onmessage'));
  const stage = `let answer;
const answered = new Promise((done) => (answer = done));
globalThis.onmessage = undefined;
globalThis.postMessage = answer;
`;
  const call = `
await onmessage({ data: { source: 'A:MA(C,2);', bars: { time: [20240101, 20240102], close: [1, 2] } } });
console.log([...structuredClone(await answered).A].join(' '));`;
  assert.equal(run('worker.mjs', stage + worker + call), 'NaN 1.5\n');
});

test('its types hold a strict program, which gives memory back by using', () => {
  const program = `import { load, ScriptError, type Engine, type Lines, type Live } from 'quor';
const quor: Engine = await load();
function last(closes: Float64Array): number {
  using script = quor.compile('A:MA(C,2);', { period: 0x4000, parameters: {} });
  const time = Array.from(closes, (_, i) => 20240101 + i);
  const lines: Lines = script.run({ time, close: closes });
  using live: Live = script.live({ time, close: closes });
  return (lines['A']?.at(-1) ?? NaN) + (live.last['A'] ?? NaN);
}
console.log(last(Float64Array.of(1, 2)));
try {
  quor.compile('A:');
} catch (error) {
  if (error instanceof ScriptError) console.log(error.line);
}
// @ts-expect-error: a parameter is a number
const wrong = () => quor.compile('A:C;', { parameters: { N: '5' } });
// @ts-expect-error: there is no such setting
const other = () => quor.compile('A:C;', { paramters: {} });
void [wrong, other];
`;
  writeFileSync(join(folder, 'use.mts'), program);
  const tsc = fileURLToPath(new URL('../node_modules/typescript/bin/tsc', import.meta.url));
  const options = '--strict --noUncheckedIndexedAccess --skipLibCheck false --target es2022';
  const words = `${options} --module nodenext --lib es2022,esnext.disposable,dom use.mts`;
  execFileSync(process.execPath, [tsc, ...words.split(' ')], { cwd: folder, stdio: 'inherit' });
  const printed = execFileSync(process.execPath, ['use.mjs'], { cwd: folder, encoding: 'utf8' });
  assert.equal(printed, '3\n1\n');
});

test('the example of a feed follows it', () => {
  const closes = [...Array.from({ length: 25 }, (_, i) => 50 - i), ...[40, 60, 80]];
  const feed = closes.map((close, i) => `${20240101 + i},${close}`).join('\n');
  const example = readFileSync(join(home, 'examples/follow.mjs'), 'utf8');
  const lines = run('follow.mjs', example, `date,close\n${feed}\n`).trimEnd().split('\n');
  assert.equal(lines.length, closes.length);
  assert.equal(lines[24], '20240125 28.00 35.50 ');
  assert.deepEqual(
    lines.filter((line) => line.endsWith(' up')).map((line) => line.split(' ')[0]),
    ['20240127'],
  );
});
