// An editor's day with the language server.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import {
  CodeActionRequest,
  CompletionRequest,
  DefinitionRequest,
  DidChangeTextDocumentNotification,
  DocumentColorRequest,
  DocumentFormattingRequest,
  DocumentSymbolRequest,
  FoldingRangeRequest,
  HoverRequest,
  PrepareRenameRequest,
  ReferencesRequest,
  RenameRequest,
  SemanticTokensRequest,
  SignatureHelpRequest,
  type DocumentSymbol,
  type TextEdit,
} from 'vscode-languageserver-protocol/node';
import { mistakes, samples, soundScripts } from './scripts';
import { edited, Session } from './session';

const session = new Session();
before(() => session.begin());
after(async () => assert.equal(await session.end(), 0));

test('tells each mistake where it stands, and mends many', async () => {
  let told = 0;
  let mended = 0;
  const cases = mistakes();
  assert.ok(cases.length >= 100);
  for (const { script, places } of cases) {
    const { uri, findings } = await session.open(script);
    assert.equal(findings.length, places.length, script);
    for (const { line, column } of places) {
      // Columns of the cases count characters, those of the protocol units of UTF-16.
      const before = [...(script.split('\n')[line - 1] ?? '')].slice(0, column - 1).join('').length;
      const covers = findings.some(
        ({ range }) =>
          range.start.line === line - 1 &&
          range.start.character <= before &&
          before < Math.max(range.end.character, range.start.character + 1),
      );
      if (covers) ++told;
    }
    const whole = { start: { line: 0, character: 0 }, end: { line: 999, character: 0 } };
    const actions = await session.connection.sendRequest(CodeActionRequest.type, {
      textDocument: { uri },
      range: whole,
      context: { diagnostics: findings },
    });
    for (const action of actions ?? []) {
      assert.ok('edit' in action && action.edit?.changes);
      const edits = action.edit.changes[uri] ?? [];
      const after = await session.open(edited(script, edits));
      const cured = action.diagnostics?.[0]?.message;
      const times = (all: readonly { message: string }[]) =>
        all.filter(({ message }) => message === cured).length;
      assert.ok(times(after.findings) < times(findings), `${action.title} in ${script}`);
      ++mended;
    }
  }
  const places = cases.reduce((sum, each) => sum + each.places.length, 0);
  assert.equal(told, places);
  assert.ok(mended >= 100, `${mended} quick fixes for ${places} mistakes`);
});

test('is silent about sound scripts, as they are and laid out', async () => {
  const scripts = [...soundScripts(), ...samples().map(({ script }) => script)];
  assert.ok(scripts.length >= 70);
  for (const script of scripts) {
    const { uri, findings } = await session.open(script);
    assert.deepEqual(findings, [], script);
    const options = { tabSize: 4, insertSpaces: true };
    const textDocument = { uri };
    const request = { textDocument, options };
    const edits = await session.connection.sendRequest(DocumentFormattingRequest.type, request);
    const laidOut = edited(script, edits ?? []);
    const again = await session.open(laidOut);
    assert.deepEqual(again.findings, [], laidOut);
    const more = await session.connection.sendRequest(DocumentFormattingRequest.type, {
      textDocument: { uri: again.uri },
      options,
    });
    assert.deepEqual(more, [], laidOut);
  }
});

test('knows every name of the samples', async () => {
  for (const { name, script } of samples()) {
    const { uri } = await session.open(script);
    const textDocument = { uri };
    const ask = session.connection;
    const symbols = (await ask.sendRequest(DocumentSymbolRequest.type, {
      textDocument,
    })) as DocumentSymbol[];
    for (const { name: symbol, selectionRange } of symbols) {
      const position = selectionRange.start;
      const place = { textDocument, position };
      const hover = await ask.sendRequest(HoverRequest.type, place);
      assert.deepEqual(hover?.range, selectionRange, `${symbol} in ${name}`);
      const definition = await ask.sendRequest(DefinitionRequest.type, place);
      assert.deepEqual(definition, { uri, range: selectionRange });
      const context = { includeDeclaration: true };
      const uses = await ask.sendRequest(ReferencesRequest.type, { ...place, context });
      assert.ok((uses?.length ?? 0) >= 1);
      assert.notEqual(await ask.sendRequest(PrepareRenameRequest.type, place), null);
      const newName = `${symbol}_2`;
      const rename = await ask.sendRequest(RenameRequest.type, { ...place, newName });
      const edits = rename?.changes?.[uri] ?? [];
      assert.equal(edits.length, uses?.length);
      const renamed = await session.open(edited(script, edits));
      assert.deepEqual(renamed.findings, [], `${newName} in ${name}`);
    }
    const tokens = await ask.sendRequest(SemanticTokensRequest.type, { textDocument });
    assert.ok((tokens?.data.length ?? 0) > 0 && (tokens?.data.length ?? 0) % 5 === 0);
    const colours = await ask.sendRequest(DocumentColorRequest.type, { textDocument });
    const written = script.match(/\bCOLOR[A-Z0-9]+|\bRGB\(/g) ?? [];
    const shown = written.filter((word) => !/COLORSTICK|COLORAUTO/.test(word));
    assert.equal(colours.length, shown.length, name);
    const folds = await ask.sendRequest(FoldingRangeRequest.type, { textDocument });
    assert.ok(folds?.every(({ startLine, endLine }) => startLine < endLine));
  }
});

test('follows a script that is typed letter by letter', async () => {
  const script =
    "CONST N:9; // 均线\nMID:=MA(C,N);\nMID>C,NOTICE('高😀');\nDRAWICON(C>MID,L,'ICO1');\n";
  const { uri } = await session.open('');
  const textDocument = { uri };
  let version = 1;
  let line = 0;
  let character = 0;
  for (const text of script) {
    const position = { line, character };
    await session.connection.sendNotification(DidChangeTextDocumentNotification.type, {
      textDocument: { uri, version: ++version },
      contentChanges: [{ range: { start: position, end: position }, text }],
    });
    character += text.length;
    if (text === '\n') [line, character] = [line + 1, 0];
    const place = { textDocument, position: { line, character } };
    const list = await session.connection.sendRequest(CompletionRequest.type, place);
    assert.ok(list && 'items' in list);
    await session.connection.sendRequest(SignatureHelpRequest.type, place);
  }
  const last = session.findings(uri);
  const end = { line, character };
  const change: TextEdit = { range: { start: end, end }, newText: 'A:MIDD;' };
  await session.connection.sendNotification(DidChangeTextDocumentNotification.type, {
    textDocument: { uri, version: ++version },
    contentChanges: [{ range: change.range, text: change.newText }],
  });
  // Findings of the text before may still be on their way.
  let findings = await last;
  while (findings.length === 0) findings = await session.findings(uri);
  assert.deepEqual(
    findings.map(({ range, message }) => [range.start, message]),
    [[{ line: 4, character: 2 }, 'nothing defines MIDD; did you mean MID?']],
  );
});
