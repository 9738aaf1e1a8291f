import './style/studio.css';
import { readModule } from './api/server.ts';
import { Line } from './engine/line.ts';
import { Session } from './engine/session.ts';
import type { BarsAnswer } from './engine/types.ts';
import { Busy } from './panels/busy.ts';
import { tell, tellError } from './panels/message.ts';
import { readBeginning } from './start.ts';
import { Studio } from './studio.ts';
import { versioned } from './version.ts';

const makeWorker = () =>
  new Worker(new URL(versioned('worker.js'), import.meta.url), { type: 'module' });

try {
  const sessions = new Set<Session>();
  const busy = new Busy(() => {
    for (const one of sessions) if (one.isBusy) one.stop();
    tell('Stopped');
  });
  let studio: Studio | undefined;
  const compiled = await readModule();
  const makeSession = (restored: (bars: BarsAnswer) => void): Session => {
    const engine = {};
    const set = (isBusy: boolean, isLayingOut: boolean) => busy.set(engine, isBusy, isLayingOut);
    const session = new Session(compiled, makeWorker, set, restored);
    sessions.add(session);
    return session;
  };
  const session = makeSession((bars) => studio?.takeRestored(bars));
  studio = new Studio(session, await readBeginning(session), {
    line: () => new Line(compiled, makeWorker, () => undefined),
    session: () => makeSession(() => undefined),
  });
  await studio.begin();
} catch (error) {
  tellError(error);
}
