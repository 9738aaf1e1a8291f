// A session with the language server, spoken by a client of the protocol that others have written.
import { type ChildProcess, spawn } from 'node:child_process';
import {
  createProtocolConnection,
  type Diagnostic,
  DidOpenTextDocumentNotification,
  ExitNotification,
  InitializedNotification,
  InitializeRequest,
  type ProtocolConnection,
  PublishDiagnosticsNotification,
  ShutdownRequest,
  StreamMessageReader,
  StreamMessageWriter,
  type TextEdit,
} from 'vscode-languageserver-protocol/node';

export const quor = process.env['QUOR'] ?? 'quor';

export class Session {
  readonly connection: ProtocolConnection;
  private readonly server: ChildProcess;
  private readonly waiting = new Map<string, (findings: Diagnostic[]) => void>();
  private opened = 0;

  constructor() {
    this.server = spawn(quor, ['lsp'], { stdio: ['pipe', 'pipe', 'inherit'] });
    const { stdin, stdout } = this.server;
    if (!stdin || !stdout) throw new Error('the server has no pipes');
    this.connection = createProtocolConnection(
      new StreamMessageReader(stdout),
      new StreamMessageWriter(stdin),
    );
    this.connection.onNotification(PublishDiagnosticsNotification.type, ({ uri, diagnostics }) => {
      this.waiting.get(uri)?.(diagnostics);
      this.waiting.delete(uri);
    });
    this.connection.listen();
  }

  async begin(): Promise<void> {
    const snippetSupport = true;
    await this.connection.sendRequest(InitializeRequest.type, {
      processId: process.pid,
      rootUri: null,
      // As long as the bars that the cases of the tests are about.
      initializationOptions: { period: '5min' },
      capabilities: { textDocument: { completion: { completionItem: { snippetSupport } } } },
    });
    await this.connection.sendNotification(InitializedNotification.type, {});
  }

  /** The next findings of a script. */
  findings(uri: string): Promise<Diagnostic[]> {
    return new Promise((resolve) => this.waiting.set(uri, resolve));
  }

  /** Opens a script under a name of its own and waits for its findings. */
  async open(text: string): Promise<{ uri: string; findings: Diagnostic[] }> {
    const uri = `file:///script${++this.opened}.quor`;
    const findings = this.findings(uri);
    await this.connection.sendNotification(DidOpenTextDocumentNotification.type, {
      textDocument: { uri, languageId: 'quor', version: 1, text },
    });
    return { uri, findings: await findings };
  }

  /** Says goodbye; gives the status with which the server ends. */
  async end(): Promise<number | null> {
    const ended = new Promise<number | null>((resolve) => this.server.on('exit', resolve));
    await this.connection.sendRequest(ShutdownRequest.type);
    await this.connection.sendNotification(ExitNotification.type);
    const status = await ended;
    this.connection.dispose();
    return status;
  }
}

/** The text after edits, in UTF-16 as editors count. */
export function edited(text: string, edits: readonly TextEdit[]): string {
  const lines = text.split('\n');
  const offsetOf = (line: number, character: number) =>
    line >= lines.length
      ? text.length
      : lines.slice(0, line).reduce((sum, each) => sum + each.length + 1, 0) + character;
  const places = edits.map(({ range, newText }) => ({
    from: offsetOf(range.start.line, range.start.character),
    to: offsetOf(range.end.line, range.end.character),
    newText,
  }));
  places.sort((a, b) => b.from - a.from);
  return places.reduce(
    (whole, { from, to, newText }) => whole.slice(0, from) + newText + whole.slice(to),
    text,
  );
}
