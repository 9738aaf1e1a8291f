// An editor without a window: as much of the interface for extensions as this one and its client call.
// What they register and show is kept for the test.
import { pathToFileURL, fileURLToPath } from 'node:url';

type Listener = (event: unknown) => unknown;

class Disposable {
  constructor(readonly dispose: () => void = () => undefined) {}
}

class EventEmitter {
  private readonly listeners = new Set<Listener>();
  readonly event = (listener: Listener, self?: unknown) => {
    const bound = listener.bind(self);
    this.listeners.add(bound);
    return new Disposable(() => this.listeners.delete(bound));
  };
  fire(event?: unknown): Promise<unknown> {
    return Promise.all([...this.listeners].map((listener) => listener(event)));
  }
  dispose(): void {
    this.listeners.clear();
  }
}

class CancellationTokenSource {
  readonly token = { isCancellationRequested: false, onCancellationRequested: never };
  cancel(): void {}
  dispose(): void {}
}

export class Position {
  constructor(
    readonly line: number,
    readonly character: number,
  ) {}
}

class Range {
  readonly start: Position;
  readonly end: Position;
  constructor(...ends: [Position, Position] | [number, number, number, number]) {
    if (ends.length === 2) [this.start, this.end] = ends;
    else [this.start, this.end] = [new Position(ends[0], ends[1]), new Position(ends[2], ends[3])];
  }
}

class Uri {
  constructor(private readonly url: URL) {}
  static parse = (text: string) => new Uri(new URL(text));
  static file = (path: string) => new Uri(pathToFileURL(path));
  get scheme(): string {
    return this.url.protocol.slice(0, -1);
  }
  get fsPath(): string {
    return fileURLToPath(this.url);
  }
  toString(): string {
    return this.url.href;
  }
}

class Diagnostic {
  constructor(
    readonly range: Range,
    readonly message: string,
    readonly severity: number,
  ) {}
}

class CompletionItem {
  constructor(readonly label: string) {}
}

class CompletionList {
  constructor(readonly items: CompletionItem[]) {}
}

function never(): Disposable {
  return new Disposable();
}

/** Members by their names; events that no test fires, and classes of values that none looks into. */
function open(members: object): Record<string, unknown> {
  return new Proxy(members as Record<string, unknown>, {
    get(known, name: string) {
      if (!(name in known)) known[name] = /^on[A-Z]/.test(name) ? never : class {};
      return known[name];
    },
  });
}

export class Script {
  readonly languageId = 'quor';
  readonly isClosed = false;
  readonly uri: Uri;
  version = 1;
  constructor(
    path: string,
    public text: string,
  ) {
    this.uri = Uri.file(path);
  }
  getText(): string {
    return this.text;
  }
}

export interface Provider {
  provideCompletionItems(
    script: Script,
    at: Position,
    token: unknown,
    context: object,
  ): Promise<{ items: { label: unknown }[] }>;
}

interface Panel {
  title: string;
  webview: { html: string };
}

export class Editor {
  readonly settings: Record<string, unknown> = {};
  readonly scripts: Script[] = [];
  readonly commands = new Map<string, () => Promise<void>>();
  readonly providers = new Map<string, Provider>();
  readonly findings = new Map<string, Diagnostic[]>();
  readonly panels: Panel[] = [];
  readonly errors: string[] = [];
  readonly found = new EventEmitter();
  readonly saved = new EventEmitter();
  readonly configured = new EventEmitter();

  /** What `require('vscode')` gives to an extension. */
  readonly api = open({
    version: '1.91.0',
    env: { language: 'en', appName: 'Editor' },
    CodeActionKind: { QuickFix: { value: 'quickfix' } },
    ColorThemeKind: { Light: 1, Dark: 2, HighContrast: 3, HighContrastLight: 4 },
    ConfigurationTarget: { Global: 1 },
    DiagnosticSeverity: { Error: 0, Warning: 1, Information: 2, Hint: 3 },
    ViewColumn: { Beside: -2 },
    ...{
      CancellationTokenSource,
      CompletionItem,
      CompletionList,
      Diagnostic,
      Disposable,
      EventEmitter,
    },
    ...{ Position, Range, Uri },
    commands: {
      registerCommand: (name: string, run: () => Promise<void>) => {
        this.commands.set(name, run);
        return new Disposable(() => this.commands.delete(name));
      },
    },
    languages: this.languages(),
    window: this.window(),
    workspace: this.workspace(),
  });

  private languages(): object {
    return new Proxy(
      {
        match: (_: unknown, { languageId }: Script) => (languageId === 'quor' ? 10 : 0),
        createDiagnosticCollection: () => ({
          set: (uri: Uri, findings: Diagnostic[]) => {
            this.findings.set(uri.toString(), findings);
            void this.found.fire(findings);
          },
          delete: (uri: Uri) => this.findings.delete(uri.toString()),
          clear: () => this.findings.clear(),
          dispose: () => undefined,
        }),
      } as Record<string, unknown>,
      {
        get: (known, name: string) =>
          known[name] ??
          ((_: unknown, provider: Provider) => {
            this.providers.set(name, provider);
            return new Disposable();
          }),
      },
    );
  }

  private window(): object {
    const print = () => undefined;
    const channel = { append: print, appendLine: print, show: print, dispose: print };
    const editor = this;
    return open({
      activeColorTheme: { kind: 1 },
      tabGroups: open({ all: [] }),
      get activeTextEditor() {
        return { document: editor.scripts[0] };
      },
      createOutputChannel: () => channel,
      createWebviewPanel: (_: string, title: string) => {
        const panel = { title, webview: { html: '' }, onDidDispose: never };
        this.panels.push(panel);
        return panel;
      },
      showErrorMessage: async (text: string) => void this.errors.push(text),
    });
  }

  private workspace(): object {
    return open({
      textDocuments: this.scripts,
      notebookDocuments: [],
      workspaceFolders: undefined,
      getConfiguration: () => ({
        get: (name: string, usual?: unknown) => this.settings[name] ?? usual,
      }),
      onDidSaveTextDocument: this.saved.event,
      onDidChangeConfiguration: this.configured.event,
    });
  }
}
