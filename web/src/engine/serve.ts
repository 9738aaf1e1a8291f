// What goes on at the worker's end of the line.
import { Refusal } from '../refusal.ts';
import type { Asked, Told } from './line.ts';
import { StudioModule } from './module.ts';

/** Takes messages: the first one brings the module, each other one a call, answered in their order. */
export function server(
  tell: (told: Told, transfer: Transferable[]) => void,
): (message: WebAssembly.Module | Asked) => Promise<void> {
  let module: Promise<StudioModule>;
  return async (message) => {
    if (message instanceof WebAssembly.Module) {
      module = StudioModule.start(message);
      return;
    }
    const { id, call, body } = message;
    try {
      const answer = (await module).call(call, body);
      tell({ id, answer }, [answer.buffer]);
    } catch (error) {
      const status = error instanceof Refusal ? error.status : 500;
      tell({ id, message: (error as Error).message, status }, []);
    }
  };
}
