// Calculates away from the page.
import { server } from './serve.ts';

const page = self as unknown as Worker;
const take = server((told, transfer) => page.postMessage(told, transfer));
self.onmessage = ({ data }: MessageEvent) => void take(data);
