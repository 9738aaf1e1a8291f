// Pictures of scripts, drawn by the program.
import { spawn } from 'node:child_process';
import { mkdtemp, readFile, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { chartArguments, type Settings } from './program';

/** A picture, and what the program has said beside it, such as findings. */
export interface Chart {
  svg: string | undefined;
  said: string;
}

function run(program: string, words: string[], input: string, folder: string | undefined) {
  return new Promise<{ status: number | null; said: string }>((resolve, reject) => {
    const child = spawn(program, words, { cwd: folder, windowsHide: true });
    let said = '';
    child.stderr.setEncoding('utf8').on('data', (text: string) => (said += text));
    child.stdout.resume();
    child.on('error', reject);
    child.on('close', (status) => resolve({ status, said }));
    child.stdin.on('error', () => undefined); // it may have ended before it has read the script
    child.stdin.end(input);
  });
}

export async function drawChart(
  program: string,
  script: string,
  settings: Settings,
  isDark: boolean,
  folder?: string,
): Promise<Chart> {
  const place = await mkdtemp(join(tmpdir(), 'quor-'));
  try {
    const picture = join(place, 'chart.svg');
    const words = chartArguments(settings, picture, isDark);
    const { status, said } = await run(program, words, script, folder);
    const svg = status === 0 ? await readFile(picture, 'utf8') : undefined;
    return { svg, said };
  } finally {
    await rm(place, { recursive: true, force: true });
  }
}

function escaped(text: string): string {
  const names: Record<string, string> = { '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;' };
  return text.replace(/[&<>"]/g, (sign) => names[sign] ?? sign);
}

/** What an author can do something about, with places in the script that has no name here. */
function remarks(said: string): string {
  const lines = said.split('\n').filter((line) => !line.startsWith('quor: period: '));
  return lines
    .map((line) => line.replace(/^-:(?=\d)/, 'line '))
    .join('\n')
    .trim();
}

/** The page that shows a chart: a picture can't run anything, and the page may not. */
export function chartPage({ svg, said }: Chart): string {
  const policy = "default-src 'none'; img-src data:; style-src 'unsafe-inline'";
  const data = svg === undefined ? '' : Buffer.from(svg).toString('base64');
  const picture = data === '' ? '' : `<img alt="Chart" src="data:image/svg+xml;base64,${data}">`;
  const told = remarks(said);
  const words = told === '' ? '' : `<pre>${escaped(told)}</pre>`;
  return `<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="${policy}">
<style>
body { margin: 0; padding: 8px; }
img { width: 100%; }
pre { white-space: pre-wrap; }
</style>
</head>
<body>${picture}${words}</body>
</html>
`;
}
