// The desk behind its worker: answers in order, what is ended, and what is laid out again.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { type Asked, Ended, type WorkerLike } from '../../src/engine/line.ts';
import { server } from '../../src/engine/serve.ts';
import { Session } from '../../src/engine/session.ts';
import type { BarsAnswer } from '../../src/engine/types.ts';
import { compiled, Desk, madeBars } from './support.ts';

/** A worker in this thread, that a script can hold for ever. */
class FakeWorker implements WorkerLike {
  static made: FakeWorker[] = [];
  onmessage: WorkerLike['onmessage'] = null;
  onerror: WorkerLike['onerror'] = null;
  isEnded = false;
  /** Names of the calls that came. */
  readonly calls: string[] = [];
  private isHeld = false;
  private readonly serve = server((data) => {
    if (!this.isEnded) this.tell('onmessage', { data });
  });

  constructor() {
    FakeWorker.made.push(this);
  }

  terminate(): void {
    this.isEnded = true;
  }

  postMessage(message: WebAssembly.Module | Asked): void {
    if (!(message instanceof WebAssembly.Module)) {
      const { call, script } = message.call as { call: string; script?: string };
      this.calls.push(call);
      this.isHeld ||= script === slow;
    }
    if (!this.isHeld) void this.serve(message);
  }

  tell(handler: 'onmessage' | 'onerror', event: object): void {
    (this[handler] as unknown as (event: object) => void)(event);
  }
}

const slow = 'SLOW:C;';

function makeSession() {
  FakeWorker.made = [];
  const busy: boolean[] = [];
  const restored: BarsAnswer[] = [];
  const session = new Session(
    compiled,
    () => new FakeWorker(),
    (isBusy) => busy.push(isBusy),
    (bars) => restored.push(bars),
  );
  return { session, busy, restored };
}

const bars = { name: 'made', content: new Blob([madeBars(100)]) };

test('what was seen is at the desk again when a calculation was stopped', async () => {
  const { session, busy, restored } = makeSession();
  await session.takeBars(bars);
  await session.forming(true);
  await session.script('WEEK1:"WEEK$1$CLOSE";A:MA(C,3);', []);
  const before = await session.values(99);
  const stuck = session.script(slow, []);
  const behind = session.values(50);
  await new Promise((resolve) => setTimeout(resolve));
  assert.equal(busy.at(-1), true);
  session.stop();
  await assert.rejects(stuck, Ended);
  await assert.rejects(behind, Ended);
  assert.deepEqual(await session.values(99), before);
  assert.deepEqual(
    FakeWorker.made.map(({ isEnded }) => isEnded),
    [true, false],
  );
  assert.deepEqual(FakeWorker.made[1].calls, ['subject', 'forming', 'script', 'bars', 'values']);
  assert.deepEqual(
    restored.map(({ name, rows }) => [name, rows]),
    [['made', 100]],
  );
  assert.equal(busy.at(-1), false);
});

test('a newer wish ends only what takes long', async () => {
  const { session } = makeSession();
  await session.takeBars(bars);
  session.supersede(); // nothing is under way
  const quick = session.script('A:C;', []);
  session.supersede();
  assert.ok((await quick).sound);
  const stuck = session.script(slow, []);
  await new Promise((resolve) => setTimeout(resolve)); // it has been sent
  session.supersede();
  session.supersede();
  await assert.rejects(stuck, Ended);
  assert.ok((await session.script('B:C;', [])).sound);
  assert.equal(FakeWorker.made.length, 2);
});

test('an engine that fails says so, and bars that are refused are not laid out again', async () => {
  const { session } = makeSession();
  await session.takeBars(bars);
  await assert.rejects(session.takeBars({ name: 'bad', content: new Blob(['no bars']) }), {
    status: 400,
  });
  session.stop();
  await session.laidOut();
  assert.equal((await session.values(99)).row, 99);
  const stuck = session.script(slow, []);
  await new Promise((resolve) => setTimeout(resolve));
  FakeWorker.made[1].tell('onerror', { message: 'out of memory' });
  await assert.rejects(stuck, /the engine has failed: out of memory/);
});

test('of a file that grows only what is new is sent, and all of it where that can not be', async () => {
  const { session } = makeSession();
  const csv = madeBars(100);
  const rows = csv.trimEnd().split('\n');
  const follow = async (text: string) => {
    const answer = await session.followBars({ name: 'made', content: new Blob([text]) });
    return { rows: answer.rows, asked: FakeWorker.made[0].calls.splice(0) };
  };
  await session.script('A:MA(C,3);', []);
  const first = rows.slice(0, 51).join('\n');
  assert.deepEqual(await follow(`${first}\n`), { rows: 50, asked: ['script', 'bars'] });
  assert.deepEqual(await follow(csv), { rows: 100, asked: ['more'] });
  assert.equal((await session.values(99)).lines[0] !== null, true);
  FakeWorker.made[0].calls.splice(0);
  // The last bar forms.
  const forming = csv.replace(/,[^,\n]*,[^,\n]*\n$/, ',7,8\n');
  assert.deepEqual(await follow(forming), { rows: 100, asked: ['more'] });
  assert.equal((await session.values(99)).fields[11], 7);
  FakeWorker.made[0].calls.splice(0);
  // An older bar is another one, then the file is a shorter one, then its columns are others.
  const changed = forming.replace(rows[5], rows[5].replace(/\d+$/, '5'));
  assert.deepEqual(await follow(changed), { rows: 100, asked: ['bars'] });
  assert.deepEqual(await follow(`${first}\n`), { rows: 50, asked: ['bars'] });
  await assert.rejects(follow(`${first}\n${rows[51].slice(0, 12)}`), { status: 400 });
  FakeWorker.made[0].calls.splice(0);
  assert.deepEqual(await follow(csv), { rows: 100, asked: ['more'] });
  // All is there again behind a calculation that was stopped.
  session.stop();
  await session.laidOut();
  assert.equal((await session.values(99)).row, 99);
});

test('bars that go on nowhere are refused, and leave those that are seen', async () => {
  const session = await Desk.make(madeBars(10));
  const refused = (csv: string, name = 'bars') =>
    assert.throws(() => session.text({ call: 'more', name }, csv), { status: 409 });
  const [head, ...rows] = madeBars(12).trimEnd().split('\n');
  refused([head, ...rows].join('\n'));
  refused([head, rows[11]].join('\n'), 'others');
  refused(`date,close\n1900-01-12,5`);
  session.script('A:C;');
  session.play(5);
  refused([head, rows[11]].join('\n'));
  session.stop();
  const { rows: count } = session.json<BarsAnswer>(
    { call: 'more', name: 'bars' },
    [head, rows[9], rows[11]].join('\n'),
  );
  assert.equal(count, 11);
});
