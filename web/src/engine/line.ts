// The line to the worker: calls go out and answers come back in their order.
import { Refusal } from '../refusal.ts';

export interface Asked {
  id: number;
  call: object;
  body?: Uint8Array;
}

export type Told =
  { id: number; answer: Uint8Array<ArrayBuffer> } | { id: number; message: string; status: number };

/** What was asked of a worker that is no more: the user has stopped it, or a newer wish. */
export class Ended extends Error {
  constructor(readonly isByUser: boolean) {
    super('the calculation was stopped');
  }
}

const closed = () => new Refusal('the engine was closed', 0);

interface Waiting {
  resolve: (answer: Uint8Array<ArrayBuffer>) => void;
  reject: (error: Error) => void;
}

export type WorkerLike = Pick<Worker, 'postMessage' | 'terminate' | 'onmessage' | 'onerror'>;

export class Line {
  private worker: WorkerLike;
  private readonly waiting = new Map<number, Waiting>();
  private newest = 0;
  private isClosed = false;

  constructor(
    private readonly compiled: WebAssembly.Module,
    private readonly makeWorker: () => WorkerLike,
    /** Calls are under way, or none are any more. */
    private readonly busy: (isBusy: boolean) => void,
  ) {
    this.worker = this.begin();
  }

  /** The call that is under way. */
  get oldest(): number | undefined {
    return this.waiting.keys().next().value;
  }

  ask(call: object, body?: Uint8Array): Promise<Uint8Array<ArrayBuffer>> {
    if (this.isClosed) return Promise.reject(closed());
    const id = ++this.newest;
    return new Promise((resolve, reject) => {
      this.waiting.set(id, { resolve, reject });
      if (this.waiting.size === 1) this.busy(true);
      this.worker.postMessage({ id, call, body }, body ? [body.buffer] : []);
    });
  }

  /** Ends what is calculated, and all that waits behind it: another worker begins, with nothing. */
  cut(reason: Ended): void {
    this.worker.terminate();
    this.worker = this.begin();
    this.fail(reason);
  }

  /** For good: nothing will be at the desk again. */
  close(): void {
    this.isClosed = true;
    this.worker.terminate();
    this.fail(closed());
  }

  private begin(): WorkerLike {
    const worker = this.makeWorker();
    worker.onmessage = ({ data }: MessageEvent<Told>) => this.take(data);
    worker.onerror = ({ message }) =>
      this.fail(new Refusal(`the engine has failed: ${message}`, 0));
    worker.postMessage(this.compiled);
    return worker;
  }

  private take(told: Told): void {
    const one = this.waiting.get(told.id);
    this.waiting.delete(told.id);
    if (this.waiting.size === 0) this.busy(false);
    if ('answer' in told) one?.resolve(told.answer);
    else one?.reject(new Refusal(told.message, told.status));
  }

  private fail(error: Error): void {
    const all = [...this.waiting.values()];
    this.waiting.clear();
    this.busy(false);
    for (const { reject } of all) reject(error);
  }
}
