import './style/studio.css';
import { readModule } from './api/server.ts';
import { Line } from './engine/line.ts';
import { Session } from './engine/session.ts';
import type { BarsAnswer } from './engine/types.ts';
import { Busy } from './panels/busy.ts';
import { tellError } from './panels/message.ts';
import { readBeginning } from './start.ts';
import { Studio } from './studio.ts';
import { versioned } from './version.ts';

const makeWorker = () =>
  new Worker(new URL(versioned('worker.js'), import.meta.url), { type: 'module' });

try {
  const busy = new Busy();
  let studio: Studio | undefined;
  const compiled = await readModule();
  const makeSession = (restored: (bars: BarsAnswer) => void): Session => {
    const set = (isBusy: boolean, isLayingOut: boolean) => busy.set(session, isBusy, isLayingOut);
    const session = new Session(compiled, makeWorker, set, restored);
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
