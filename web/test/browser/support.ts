// A real `quor studio` and a real browser for the tests.
import assert from 'node:assert/strict';
import { type ChildProcess, execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { after, afterEach, before, beforeEach } from 'node:test';
import puppeteer, {
  type Browser,
  type HTTPRequest,
  type KeyInput,
  type Page,
} from 'puppeteer-core';

const quor = process.env.QUOR ?? resolve('../build/release/host/quor');
export const samples = resolve('../samples');

/** What `quor` prints for a command. */
export function quorSays(...commandLine: string[]): string {
  return execFileSync(quor, commandLine, { encoding: 'utf8', maxBuffer: 1 << 28 });
}

/** A folder that is gone when the tests end. */
export function makeFolder(): string {
  const folder = mkdtempSync(join(tmpdir(), 'quor-studio-'));
  process.on('exit', () => rmSync(folder, { recursive: true, force: true }));
  return folder;
}

export const sampleBars = readFileSync(join(samples, 'index-daily.csv'), 'utf8');

/** The header and the last so many bars of the sample. */
export function lastBars(count: number): string {
  const [head, ...rows] = sampleBars.trimEnd().split('\n');
  return [head, ...rows.slice(-count)].join('\n') + '\n';
}

/** So many bars of a minute that wander, from another price and by another way for each seed. */
export function manyBars(count: number, seed = 0): string {
  const rows = ['date,time,open,high,low,close,volume'];
  let price = 3000 + 700 * seed;
  let random = 12345 + seed;
  for (let i = 0; i < count; ++i) {
    random = (random * 1103515245 + 12345) % 2147483648;
    const open = price;
    price = Math.max(100, price + (random / 2147483648 - 0.5) * 4);
    const at = new Date(Date.UTC(2020, 0, 1) + i * 60_000).toISOString();
    const [high, low] = [Math.max(open, price) + 1, Math.min(open, price) - 1];
    rows.push(
      `${at.slice(0, 10)},${at.slice(11, 16)},${[open, high, low, price].map((x) => x.toFixed(2)).join(',')},${random % 1000}`,
    );
  }
  return rows.join('\n') + '\n';
}

export class Studio {
  private isOpen = false;

  private constructor(
    private readonly process: ChildProcess,
    readonly link: string,
  ) {}

  get origin(): string {
    return new URL(this.link).origin;
  }

  /** The link, whose token is for once, and from then on the address that the cookie opens. */
  takeEntry(): string {
    const entry = this.isOpen ? `${this.origin}/` : this.link;
    this.isOpen = true;
    return entry;
  }

  static async start(...options: string[]): Promise<Studio> {
    const server = spawn(quor, ['studio', '--no-open', '--port', '0', ...options], {
      stdio: ['ignore', 'pipe', 'inherit'],
    });
    const link = await new Promise<string>((found, fail) => {
      let printed = '';
      server.stdout.on('data', (part: Buffer) => {
        printed += part.toString();
        const link = /http:\/\/\S+/.exec(printed)?.[0];
        if (link && printed.includes('\n')) found(link);
      });
      server.on('exit', (code) => fail(new Error(`quor studio ended with ${code}: ${printed}`)));
    });
    return new Studio(server, link);
  }

  /** As Ctrl-C does. */
  async stop(): Promise<void> {
    const ended = new Promise((resolve) => this.process.once('exit', resolve));
    this.process.kill('SIGINT');
    await ended;
  }
}

/** In milliseconds, for machines that have much else to do. */
const longestWait = 150_000;

export async function startBrowser(): Promise<Browser> {
  return puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: [
      '--no-sandbox',
      '--disable-gpu',
      '--force-color-profile=srgb',
      '--font-render-hinting=none',
    ],
  });
}

declare global {
  interface Window {
    /** Charts that have been drawn with new values, and when the newest was. */
    drawn: { count: number; at: number };
    /** What the engine was asked for. */
    asked: { call: string; to?: number; points?: number }[];
  }
}

/** A page of the studio, and what goes wrong on it. */
export class Desk {
  /** Errors of the page, refusals of the security policy and requests to elsewhere. */
  readonly faults: string[] = [];
  private readonly underWay = new Set<HTTPRequest>();
  private changed = 0;
  /** How often the page asked whether to leave it. */
  warnings = 0;
  private isToLeave = true;

  private constructor(readonly page: Page) {}

  static async open(
    browser: Pick<Browser, 'newPage'>,
    studio: Pick<Studio, 'origin' | 'takeEntry'>,
    fragment = '',
    theme = 'light',
  ): Promise<Desk> {
    const page = await browser.newPage();
    const desk = new Desk(page);
    page.setDefaultTimeout(longestWait);
    await page.setViewport({ width: 1360, height: 860 });
    await page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: theme }]);
    page.on('pageerror', (error) => desk.faults.push(String(error)));
    page.on('console', (message) => {
      const isRefusal = message.text().startsWith('Failed to load resource'); // which the page shows itself
      if (['error', 'warn'].includes(message.type()) && !isRefusal)
        desk.faults.push(message.text());
    });
    desk.followRequests();
    page.on('dialog', (dialog) => {
      if (dialog.type() !== 'beforeunload') return;
      ++desk.warnings;
      void (desk.isToLeave ? dialog.accept() : dialog.dismiss());
    });
    page.on('request', (request) => {
      const { origin, protocol } = new URL(request.url());
      if (origin !== studio.origin && !['blob:', 'data:'].includes(protocol))
        desk.faults.push(request.url());
    });
    await page.evaluateOnNewDocument(() => {
      window.drawn = { count: 0, at: 0 };
      window.asked = [];
      const { postMessage } = Worker.prototype;
      Worker.prototype.postMessage = function (message, ...transfer: never[]) {
        if (message.call) window.asked.push(message.call);
        postMessage.call(this, message, ...transfer);
      };
      const note = () => (window.drawn = { count: window.drawn.count + 1, at: performance.now() });
      window.addEventListener('drawn', note, { capture: true });
    });
    await page.goto(studio.takeEntry() + fragment);
    await page.waitForFunction(() => window.drawn.count > 0);
    await desk.settled();
    return desk;
  }

  /** Opens the page anew by an address, or loads it again. */
  async goTo(address?: string): Promise<void> {
    await (address === undefined ? this.page.reload() : this.page.goto(address));
    await this.page.waitForFunction(() => window.drawn.count > 0);
    await this.settled();
  }

  /** Nothing is under way any more, and hasn't been for a while. */
  async settled(): Promise<void> {
    const idle = 80;
    const end = Date.now() + longestWait;
    this.changed = Date.now();
    while (
      this.underWay.size > 0 ||
      (await this.calculates()) ||
      Date.now() - this.changed < idle
    ) {
      assert.ok(Date.now() < end, `under way: ${[...this.underWay].map((one) => one.url())}`);
      await new Promise((resolve) => setTimeout(resolve, 10));
    }
  }

  private async calculates(): Promise<boolean> {
    const found = await this.page.$('#chart[aria-busy="true"]');
    if (found) this.changed = Date.now();
    return found !== null;
  }

  /** A page that is left may never hear what became of its requests. */
  private followRequests(): void {
    const change = (act: () => void) => {
      act();
      this.changed = Date.now();
    };
    this.page.on('request', (request) => {
      if (request.resourceType() !== 'ping') change(() => this.underWay.add(request));
    });
    this.page.on('response', (response) => {
      if (response.request().isNavigationRequest()) change(() => this.underWay.clear());
    });
    for (const end of ['requestfinished', 'requestfailed'] as const)
      this.page.on(end, (request) => change(() => this.underWay.delete(request)));
  }

  /** Writes a script in place of the one there is. */
  async write(script: string): Promise<void> {
    await this.page.locator('#editor >>> .cm-content').click();
    await this.page.keyboard.down('Control');
    await this.page.keyboard.press('a');
    await this.page.keyboard.up('Control');
    await this.page.keyboard.sendCharacter(script);
    const [first] = script.split('\n');
    await this.page.waitForFunction(
      (first) => {
        const { shadowRoot } = document.getElementById('editor')!;
        return shadowRoot?.querySelector('.cm-line')?.textContent === first;
      },
      {},
      first,
    );
    await this.settled();
  }

  /** Waits for an element of the editor. */
  async seen(selector: string): Promise<void> {
    await this.page.waitForFunction(
      (selector) => document.getElementById('editor')!.shadowRoot?.querySelector(selector),
      {},
      selector,
    );
  }

  text(selector: string): Promise<string> {
    return this.page.$eval(selector, (found) => found.textContent ?? '');
  }

  texts(selector: string): Promise<string[]> {
    return this.page.$$eval(selector, (found) => found.map((one) => one.textContent ?? ''));
  }

  script(): Promise<string> {
    return this.page.$$eval('#editor >>> .cm-line', (lines) =>
      lines.map((line) => line.textContent).join('\n'),
    );
  }

  /** Titles and values of the legends. */
  async legend(): Promise<Record<string, string>> {
    return this.page.$$eval('.legend > div', (entries) =>
      Object.fromEntries(
        entries.map((entry) => [entry.children[0].textContent, entry.children[1].textContent]),
      ),
    );
  }

  /** The pixels of the uppermost pane as the characters of a text. */
  async pixels(): Promise<Buffer> {
    const text = await this.page.$eval('.pane canvas', (canvas) => {
      const { width, height } = canvas as HTMLCanvasElement;
      const copy = new OffscreenCanvas(width, height).getContext('2d', {
        willReadFrequently: true,
      })!;
      copy.drawImage(canvas as HTMLCanvasElement, 0, 0);
      const { data } = copy.getImageData(0, 0, width, height);
      let made = '';
      for (let i = 0; i < data.length; i += 8192) {
        made += String.fromCharCode(...data.subarray(i, i + 8192));
      }
      return btoa(made);
    });
    return Buffer.from(text, 'base64');
  }

  /** What each pane shows, as the address of a picture. */
  pictures(): Promise<string[]> {
    return this.page.$$eval('.pane canvas', (all) =>
      all.map((canvas) => (canvas as HTMLCanvasElement).toDataURL()),
    );
  }

  /** How many pixels aren't the ground's in each of so many parts of the uppermost plot, side by
   * side. */
  ink(parts: number): Promise<number[]> {
    return this.page.$eval(
      '.pane',
      (pane, parts) => {
        const canvas = pane.querySelector('canvas')!;
        const plot = pane.querySelector('.u-over')!;
        const ratio = canvas.width / canvas.clientWidth;
        const [width, height] = [plot.clientWidth * ratio, plot.clientHeight * ratio];
        const copy = new OffscreenCanvas(width, height).getContext('2d')!;
        copy.drawImage(canvas, 0, 0);
        const { data } = copy.getImageData(0, 0, width, height);
        const found = new Array<number>(parts).fill(0);
        for (let i = 0; i < data.length; i += 4) {
          const isColored =
            Math.max(...data.subarray(i, i + 3)) - Math.min(...data.subarray(i, i + 3)) > 40;
          if (isColored && data[i + 3] > 0)
            ++found[Math.floor((((i / 4) % width) / width) * parts)];
        }
        return found;
      },
      parts,
    );
  }

  /** The views that the engine is asked for while something is done. */
  async views(act: () => Promise<unknown>): Promise<Window['asked']> {
    await this.page.evaluate(() => (window.asked = []));
    await act();
    await this.settled();
    return this.page.evaluate(() => window.asked.filter(({ call }) => call === 'view'));
  }

  /** Has a security of the list shown. */
  async choose(name: string): Promise<void> {
    const [tab] = await this.page.$$('#tab-securities[aria-selected="false"]');
    await tab?.click();
    await this.page.click(`::-p-xpath(//ul[@aria-label="Securities"]//button[.="${name}"])`);
    await this.captioned(`${name}  `);
  }

  /** The chart that is drawn has a caption that begins so. */
  async captioned(start: string): Promise<void> {
    await this.page.waitForFunction(
      (start) => document.querySelector('.caption')!.textContent!.startsWith(start),
      {},
      start,
    );
    await this.settled();
  }

  /** Drops a file onto the chart. */
  async drop(name: string, content: string): Promise<void> {
    await this.page.evaluate(
      (name, content) => {
        const dataTransfer = new DataTransfer();
        dataTransfer.items.add(new File([content], name, { type: 'text/csv' }));
        for (const kind of ['dragenter', 'dragover', 'drop']) {
          const event = new DragEvent(kind, { dataTransfer, bubbles: true, cancelable: true });
          document.getElementById('chart')!.dispatchEvent(event);
        }
      },
      name,
      content,
    );
    await this.page.waitForFunction(
      (start) =>
        document.querySelector('#message.error:not(:empty)') ??
        document.querySelector('.caption')!.textContent!.startsWith(start),
      {},
      `${name}  `,
    );
    await this.settled();
  }

  async press(...keys: KeyInput[]): Promise<void> {
    for (const key of keys) await this.page.keyboard.press(key);
    await this.settled();
  }

  /** A key with another one held. */
  async chord(held: KeyInput, key: KeyInput): Promise<void> {
    await this.page.keyboard.down(held);
    await this.page.keyboard.press(key);
    await this.page.keyboard.up(held);
    await this.settled();
  }

  /** Opens a script from the menu, by what is shown there. */
  async openScript(name: string, isLeft = false): Promise<void> {
    const value = await this.page.$eval(
      '#library',
      (menu, name, isLeft) => {
        const shown = [name, `${name}.quor`].flatMap((text) => [text, `• ${text}`]);
        const options = [...(menu as HTMLSelectElement).options].slice(1);
        return options.find(({ text, parentElement: group }) => {
          const isOfLeft = (group as HTMLOptGroupElement).label === 'Left unsaved';
          return shown.includes(text) && isOfLeft === isLeft;
        })!.value;
      },
      name,
      isLeft,
    );
    await this.page.select('#library', value);
    await this.settled();
  }

  /** Has the page loaded again and stays when it asks whether to leave. */
  async stay(): Promise<void> {
    this.isToLeave = false;
    const asked = new Promise((resolve) => this.page.once('dialog', resolve));
    await this.page.evaluate(() => void setTimeout(() => location.reload()));
    await asked;
    this.isToLeave = true;
  }

  async close(): Promise<void> {
    assert.deepEqual(this.faults, []);
    await this.page.close();
  }

  /** Closes as a person does, who is asked. */
  async leave(): Promise<void> {
    assert.deepEqual(this.faults, []);
    const closed = new Promise((resolve) => this.page.once('close', resolve));
    await this.page.close({ runBeforeUnload: true });
    await closed;
  }
}

/** For the tests of a file one studio and one browser, and for each of them a page of its own. */
export function onDesks(
  take: (opened: { studio: Studio; browser: Browser; desk: Desk }) => void,
  ...options: string[]
): void {
  let studio: Studio;
  let browser: Browser;
  let desk: Desk;
  before(async () => {
    [studio, browser] = await Promise.all([Studio.start(...options), startBrowser()]);
  });
  after(async () => {
    await browser.close();
    await studio.stop();
  });
  beforeEach(async () => {
    desk = await Desk.open(browser, studio);
    take({ studio, browser, desk });
  });
  afterEach(() => desk.close());
}

/** A folder with so many securities, the newest bars of the sample each. */
export function folderOf(names: readonly string[], bars = 400): string {
  const folder = makeFolder();
  const content = lastBars(bars);
  for (const name of names) writeFileSync(join(folder, `${name}.csv`), content);
  return folder;
}
