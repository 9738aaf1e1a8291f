import './style/studio.css';
import { readStart } from './api/client.ts';
import { tellError } from './panels/message.ts';
import { Studio } from './studio.ts';

try {
  await new Studio(await readStart()).begin();
} catch (error) {
  tellError(error);
}
