// Follows a feed of bars, one per line as date,close, and says what the script says.
//   node follow.mjs < feed.csv
import { createInterface } from 'node:readline';
import { load } from 'quor';

const quor = await load();
const script = quor.compile(`
  FAST:MA(C,5);
  SLOW:MA(C,20);
  CROSS(FAST,SLOW),NOTICE('up');
  CROSS(SLOW,FAST),NOTICE('down');
`);
const live = script.live();
for await (const line of createInterface({ input: process.stdin })) {
  const [time, close] = line.split(',');
  if (Number.isNaN(Number(close))) continue;
  const { FAST, SLOW } = live.update({ time, close: Number(close) });
  const notices = live.events.map((event) => event.name).join(' ');
  console.log(time, FAST.toFixed(2), SLOW.toFixed(2), notices);
}
live.free();
script.free();
