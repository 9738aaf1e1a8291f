import './style/studio.css';
import { readStart } from './api/client.ts';
import { byId } from './dom.ts';
import { Studio } from './studio.ts';

try {
  await new Studio(await readStart()).begin();
} catch (error) {
  const message = byId('message', HTMLElement);
  message.textContent = error instanceof Error ? error.message : String(error);
  message.classList.add('error');
}
