// Calculates away from the page: the first message brings the module, each other one a call.
import { Refusal } from '../refusal.ts';
import type { Asked, Told } from './line.ts';
import { StudioModule } from './module.ts';

const post = (told: Told, transfer: Transferable[] = []): void =>
  (self as unknown as Worker).postMessage(told, transfer);

let module: Promise<StudioModule>;

self.onmessage = async ({ data }: MessageEvent<WebAssembly.Module | Asked>) => {
  if (data instanceof WebAssembly.Module) {
    module = StudioModule.start(data);
    return;
  }
  const { id, call, body } = data;
  try {
    const answer = (await module).call(call, body);
    post({ id, answer }, [answer.buffer]);
  } catch (error) {
    const { message } = error as Error;
    post({ id, message, status: error instanceof Refusal ? error.status : 500 });
  }
};
