// The grammar by its snapshots: scripts with the scope of every word below it.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { test } from 'node:test';
import { createOnigScanner, createOnigString, loadWASM } from 'vscode-oniguruma';
import { type IGrammar, INITIAL, parseRawGrammar, Registry } from 'vscode-textmate';
import { samples } from './scripts';
import { quor } from './session';

const path = '../quor.tmLanguage.json';

async function load(): Promise<IGrammar> {
  const wasm = readFileSync(require.resolve('vscode-oniguruma/release/onig.wasm'));
  await loadWASM(wasm.buffer.slice(wasm.byteOffset, wasm.byteOffset + wasm.byteLength));
  const registry = new Registry({
    onigLib: Promise.resolve({ createOnigScanner, createOnigString }),
    loadGrammar: async () => parseRawGrammar(readFileSync(path, 'utf8'), path),
  });
  const grammar = await registry.loadGrammar('source.quor');
  assert.ok(grammar);
  return grammar;
}

/** Every line of the script, and below it the words that have a scope, with the scope. */
function shades(grammar: IGrammar, script: string): string {
  let state = INITIAL;
  let text = '';
  for (const line of script.split('\n')) {
    const { tokens, ruleStack } = grammar.tokenizeLine(line, state);
    state = ruleStack;
    text += `${line}\n`;
    for (const { startIndex, endIndex, scopes } of tokens) {
      const scope = scopes.slice(1).join(' ');
      if (scope !== '') text += `  ${line.slice(startIndex, endIndex)} | ${scope}\n`;
    }
  }
  return text;
}

const hard = `// MA(C,5) 'not a text'
{ of two
  lines } CONST N:-1.5E-3;
/* A:C; */均线:=MA(C,N) and high>=LOW Or VOL<>0;
MAX1:C,COLORff8000,LINETHICK9,COLORREDDISH;
A:"600000$CLOSE"; DRAWTEXT(C>O,L,'it {is} "text"');
C>O,BK(2); C,STICK; TIMEOUT:=TIME;
`;

test('the file is made from the words of the language', () => {
  const made = execFileSync(quor, ['help', '--grammar'], { encoding: 'utf8' });
  assert.equal(readFileSync(path, 'utf8'), made, 'tools/grammar.sh writes it anew');
});

test('scripts have the colours of their snapshots', async () => {
  const grammar = await load();
  mkdirSync('test/snapshots', { recursive: true });
  const shown = samples().filter(({ name }) => ['macd.quor', 'showcase.quor'].includes(name));
  for (const { name, script } of [...shown, { name: 'hard.quor', script: hard }]) {
    const file = `test/snapshots/${name.replace(/[\\/]/g, '-')}.txt`;
    const found = shades(grammar, script);
    if (process.env['RENEW']) writeFileSync(file, found);
    assert.ok(existsSync(file), `${file}: npm run renew writes it`);
    assert.equal(found, readFileSync(file, 'utf8'), file);
  }
});
