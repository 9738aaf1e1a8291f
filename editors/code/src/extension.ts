// Brings the language server of `quor` and its charts into the editor.
import * as vscode from 'vscode';
import { LanguageClient, TransportKind } from 'vscode-languageclient/node';
import { chartPage, drawChart } from './chart';
import { findProgram, type Settings, serverSettings } from './program';

let client: LanguageClient | undefined;

function settings(): Settings {
  const own = vscode.workspace.getConfiguration('quor');
  return {
    path: own.get('path', 'quor'),
    bars: own.get('bars', ''),
    period: own.get('period', ''),
    parameters: own.get('parameters', {}),
  };
}

function folder(): string | undefined {
  return vscode.workspace.workspaceFolders?.[0]?.uri.fsPath;
}

/** The program; without it the author is led to the setting. */
async function program(): Promise<string | undefined> {
  const { path } = settings();
  const found = findProgram(path, folder());
  if (found !== undefined) return found;
  const open = 'Open the setting';
  const text = `The program "${path}" isn't found. Install quor, or say where it is.`;
  if ((await vscode.window.showErrorMessage(text, open)) === open) {
    await vscode.commands.executeCommand('workbench.action.openSettings', 'quor.path');
  }
  return undefined;
}

async function start(): Promise<void> {
  const command = await program();
  if (command === undefined) return;
  client = new LanguageClient(
    'quor',
    'Quor',
    { command, args: ['lsp'], transport: TransportKind.stdio },
    {
      documentSelector: [{ language: 'quor' }],
      initializationOptions: serverSettings(settings()),
    },
  );
  await client.start();
}

async function stop(): Promise<void> {
  const running = client;
  client = undefined;
  await running?.stop();
}

async function changed(event: vscode.ConfigurationChangeEvent): Promise<void> {
  if (event.affectsConfiguration('quor.path')) {
    await stop();
    await start();
  } else if (event.affectsConfiguration('quor')) {
    await client?.sendNotification('workspace/didChangeConfiguration', {
      settings: { quor: serverSettings(settings()) },
    });
  }
}

async function chooseBars(): Promise<string | undefined> {
  const files = await vscode.window.showOpenDialog({
    title: 'Bars for charts',
    filters: { Bars: ['csv'], 'All files': ['*'] },
  });
  const path = files?.[0]?.fsPath;
  if (path === undefined) return undefined;
  const target = folder() === undefined ? vscode.ConfigurationTarget.Global : undefined;
  await vscode.workspace.getConfiguration('quor').update('bars', path, target);
  return path;
}

/** One panel, which follows the script that it was opened for. */
class ChartPanel {
  private panel: vscode.WebviewPanel | undefined;
  private script: vscode.TextDocument | undefined;

  async show(script: vscode.TextDocument): Promise<void> {
    this.script = script;
    if (this.panel === undefined) {
      this.panel = vscode.window.createWebviewPanel(
        'quor.chart',
        'Chart',
        { viewColumn: vscode.ViewColumn.Beside, preserveFocus: true },
        { enableScripts: false, localResourceRoots: [] },
      );
      this.panel.onDidDispose(() => (this.panel = undefined));
    }
    await this.draw();
  }

  /** Draws anew if the script is the one that is shown. */
  async follow(script: vscode.TextDocument): Promise<void> {
    if (this.panel !== undefined && script === this.script) await this.draw();
  }

  private async draw(): Promise<void> {
    const { script, panel } = this;
    const command = await program();
    if (script === undefined || panel === undefined || command === undefined) return;
    const bars = settings().bars || (await chooseBars());
    if (bars === undefined) return;
    const { kind } = vscode.window.activeColorTheme;
    const isDark =
      kind === vscode.ColorThemeKind.Dark || kind === vscode.ColorThemeKind.HighContrast;
    const text = script.getText();
    const chart = await drawChart(command, text, { ...settings(), bars }, isDark, folder());
    if (this.panel === panel) panel.webview.html = chartPage(chart);
  }
}

export async function activate(context: vscode.ExtensionContext): Promise<void> {
  const chart = new ChartPanel();
  context.subscriptions.push(
    vscode.commands.registerCommand('quor.showChart', async () => {
      const script = vscode.window.activeTextEditor?.document;
      if (script?.languageId === 'quor') await chart.show(script);
    }),
    vscode.commands.registerCommand('quor.chooseBars', chooseBars),
    vscode.commands.registerCommand('quor.restart', async () => {
      await stop();
      await start();
    }),
    vscode.workspace.onDidSaveTextDocument((script) => chart.follow(script)),
    vscode.workspace.onDidChangeConfiguration(changed),
  );
  await start();
}

export async function deactivate(): Promise<void> {
  await stop();
}
