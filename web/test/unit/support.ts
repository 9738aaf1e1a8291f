// The desk of the page without a page: the module of WebAssembly in Node.
import { readFileSync } from 'node:fs';
import { StudioModule } from '../../src/engine/module.ts';
import type {
  BarsAnswer,
  EventsAnswer,
  PlayAnswer,
  RecordsAnswer,
  ScriptAnswer,
  StepAnswer,
  ValuesAnswer,
} from '../../src/engine/types.ts';
import { readView } from '../../src/engine/view_answer.ts';
import { View } from '../../src/chart/view.ts';

export const compiled = new WebAssembly.Module(readFileSync('../build/wasm/web/studio.wasm'));
export const sampleBars = readFileSync('../samples/index-daily.csv', 'utf8');

/** So many days that go up and down, by another way for each seed. */
export function madeBars(count: number, seed = 1): string {
  const rows = ['date,open,high,low,close,volume'];
  let [price, random] = [100, seed];
  const next = () => (random = (random * 1103515245 + 12345) % 2147483648) / 2147483648;
  for (let i = 0; i < count; ++i) {
    const day = new Date(Date.UTC(1900, 0, 1 + i)).toISOString().slice(0, 10);
    const open = price;
    price = Math.max(1, price + 2 * next() - 1);
    const ends = [Math.max(open, price) + 0.5, Math.min(open, price) - 0.5];
    const prices = [open, ...ends, price].map((value) => value.toFixed(3));
    rows.push(`${day},${prices.join(',')},${1000 + Math.floor(500 * next())}`);
  }
  return rows.join('\n') + '\n';
}

export class Desk {
  private constructor(private readonly module: StudioModule) {}

  static async make(csv?: string): Promise<Desk> {
    const desk = new Desk(await StudioModule.start(compiled));
    if (csv !== undefined) desk.bars(csv);
    return desk;
  }

  bytes(call: object, body = ''): Uint8Array<ArrayBuffer> {
    return this.module.call(call, new TextEncoder().encode(body));
  }
  text(call: object, body = ''): string {
    return new TextDecoder().decode(this.bytes(call, body));
  }
  json<T>(call: object, body = ''): T {
    return JSON.parse(this.text(call, body)) as T;
  }
  bars(csv: string, name = 'bars', period = ''): BarsAnswer {
    return this.json({ call: 'bars', name, period }, csv);
  }
  script(script: string, parameters: object[] = []): ScriptAnswer {
    return this.json({ call: 'script', script, parameters });
  }
  view(call: object = {}): View {
    return new View(readView(this.bytes({ call: 'view', ...call }).buffer));
  }
  records(from: number, to: number): RecordsAnswer {
    return this.json({ call: 'records', from, to });
  }
  values(row: number): ValuesAnswer {
    return this.json({ call: 'values', row });
  }
  events(): EventsAnswer {
    return this.json({ call: 'events', limit: 10000 });
  }
  play(row: number, ticks = 1): PlayAnswer {
    return this.json({ call: 'play', row, ticks });
  }
  step(by: object): StepAnswer {
    return this.json({ call: 'step', ...by });
  }
  stop(): ScriptAnswer {
    return this.json({ call: 'stop' });
  }
  csv(): string {
    return this.text({ call: 'csv' });
  }
}
