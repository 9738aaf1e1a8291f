// The packed extension, unpacked where nothing else is, as an editor holds and starts it.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { after, test } from 'node:test';
import { Editor, Position, Script } from './editor';
import { quor } from './session';

const place = mkdtempSync(join(tmpdir(), 'quor-test-'));
after(() => rmSync(place, { recursive: true }));
// Any tool for .zip would do, but this one is there wherever `quor` is built.
execFileSync('cmake', ['-E', 'tar', 'xf', resolve('build/quor.vsix')], { cwd: place });

const home = join(place, 'extension');
const read = (path: string) => readFileSync(join(home, path), 'utf8');
const manifest = JSON.parse(read('package.json'));

test('every file that the manifests name is there', () => {
  const { languages, grammars } = manifest.contributes;
  assert.ok(existsSync(join(home, manifest.main)));
  for (const { configuration } of languages) {
    // An editor offers completions while one types a word by this pattern.
    const { wordPattern } = JSON.parse(read(configuration));
    const words = new RegExp(wordPattern.pattern ?? wordPattern, `g${wordPattern.flags ?? ''}`);
    assert.deepEqual('均线:MA(C,N_2);'.match(words), ['均线', 'MA', 'C', 'N_2']);
  }
  for (const { path, scopeName } of grammars)
    assert.equal(JSON.parse(read(path)).scopeName, scopeName);
  const listed = readFileSync(join(place, 'extension.vsixmanifest'), 'utf8');
  assert.match(listed, new RegExp(`Id="quor" Version="${manifest.version}"`));
  const paths = [...listed.matchAll(/Path="([^"]*)"/g)].map(([, path]) => path ?? '');
  assert.ok(paths.length >= 3);
  for (const path of paths) assert.ok(existsSync(join(place, path)), path);
});

test('it starts the server, shows what is found and completed, and draws', async () => {
  const editor = new Editor();
  Object.assign(globalThis, { editor: editor.api });
  mkdirSync(join(place, 'node_modules'));
  writeFileSync(join(place, 'node_modules/vscode.js'), 'module.exports = globalThis.editor;\n');
  editor.settings['path'] = resolve(quor);
  editor.settings['bars'] = resolve('../../samples/index-daily.csv');
  editor.settings['parameters'] = { N: 5 };
  const script = new Script(join(place, 'a.quor'), 'MID:EMMA(C,N);\n');
  editor.scripts.push(script);

  const extension = require(join(home, manifest.main));
  const found = new Promise((resolve) => editor.found.event(resolve));
  await extension.activate({ subscriptions: [] });
  try {
    await found;
    const findings = editor.findings.get(script.uri.toString());
    assert.deepEqual(
      findings?.map(({ range, message }) => [range.start.character, message]),
      [[4, 'nothing defines EMMA; did you mean EMA?']],
    );

    const completions = editor.providers.get('registerCompletionItemProvider');
    assert.ok(completions);
    const token = { isCancellationRequested: false, onCancellationRequested: () => undefined };
    const at = new Position(0, 6);
    const list = await completions.provideCompletionItems(script, at, token, {});
    assert.ok(list.items.some(({ label }) => label === 'EMA'));

    const named = manifest.contributes.commands.map(({ command }: { command: string }) => command);
    assert.deepEqual([...editor.commands.keys()].sort(), named.sort());
    const show = editor.commands.get('quor.showChart');
    assert.ok(show);
    await show();
    const [panel] = editor.panels;
    assert.match(panel?.webview.html ?? '', /<pre>line 1:5: error: nothing defines EMMA/);
    script.text = 'MID:EMA(C,N);\n';
    await editor.saved.fire(script);
    assert.match(panel?.webview.html ?? '', /<img [^>]*svg/);

    // The server that the setting leads to is another one, or there is none.
    editor.settings['path'] = join(place, 'none');
    await editor.configured.fire({ affectsConfiguration: (name: string) => name === 'quor.path' });
    assert.equal(editor.errors.length, 1);
    assert.match(editor.errors[0] ?? '', /none" isn't found/);
  } finally {
    await extension.deactivate();
  }
});
