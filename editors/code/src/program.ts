// The program `quor`: where it is, and what it is called with.
import { accessSync, constants, statSync } from 'node:fs';
import { delimiter, isAbsolute, join, resolve } from 'node:path';

/** What the author has set. */
export interface Settings {
  path: string;
  bars: string;
  period: string;
  parameters: Readonly<Record<string, number>>;
}

function isProgram(path: string): boolean {
  try {
    accessSync(path, constants.X_OK);
    return statSync(path).isFile();
  } catch {
    return false;
  }
}

/** The file of a program: a name is looked for in PATH, a path counts from the folder that is open. */
export function findProgram(
  name: string,
  folder: string | undefined,
  environment: NodeJS.ProcessEnv = process.env,
): string | undefined {
  const endings = process.platform === 'win32' ? ['', '.exe'] : [''];
  const isPath = /[\\/]/.test(name);
  const folders = isPath ? [folder ?? '.'] : (environment['PATH'] ?? '').split(delimiter);
  for (const each of folders) {
    for (const ending of endings) {
      const path = isAbsolute(name) ? name + ending : join(resolve(each), name + ending);
      if (name !== '' && each !== '' && isProgram(path)) return path;
    }
  }
  return undefined;
}

/** The arguments that draw the script on the standard input. */
export function chartArguments(settings: Settings, picture: string, isDark: boolean): string[] {
  const words = ['chart', '-', '--bars', settings.bars, '--out', picture];
  words.push('--theme', isDark ? 'dark' : 'light');
  if (settings.period !== '') words.push('--period', settings.period);
  for (const [name, value] of Object.entries(settings.parameters)) {
    words.push('--set', `${name}=${value}`);
  }
  return words;
}

/** What the language server is told at its start and when settings change. */
export function serverSettings({ parameters, period }: Settings): object {
  return { parameters, period };
}
