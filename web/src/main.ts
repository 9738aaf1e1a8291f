import './style/studio.css';
import { readModule } from './api/server.ts';
import { Line } from './engine/line.ts';
import { Session } from './engine/session.ts';
import { Busy } from './panels/busy.ts';
import { tell, tellError } from './panels/message.ts';
import { readBeginning } from './start.ts';
import { Studio } from './studio.ts';
import { versioned } from './version.ts';

const makeWorker = () =>
  new Worker(new URL(versioned('worker.js'), import.meta.url), { type: 'module' });

try {
  const busy = new Busy(() => {
    session.stop();
    tell('Stopped');
  });
  let studio: Studio | undefined;
  const compiled = await readModule();
  const session = new Session(
    compiled,
    makeWorker,
    (isBusy, isLayingOut) => busy.set(isBusy, isLayingOut),
    (bars) => studio?.takeRestored(bars),
  );
  const makeLine = () => new Line(compiled, makeWorker, () => undefined);
  studio = new Studio(session, await readBeginning(session), makeLine);
  await studio.begin();
} catch (error) {
  tellError(error);
}
