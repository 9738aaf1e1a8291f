// The live client of live.c in JavaScript, over the npm package.
//   tail -f bars.csv | node live.mjs
import { createInterface } from 'node:readline';
import { load } from 'quor';

const quor = await load();
const script = quor.compile("FAST:MA(C,2);SLOW:MA(C,3);CROSS(FAST,SLOW),NOTICE('up');", {
  period: 0x3005,
});
const live = script.live();

const shown = (value) => (Number.isNaN(value) ? 'null' : value.toFixed(2));

for await (const line of createInterface({ input: process.stdin })) {
  const [time, open, high, low, close, volume] = line.split(',').map(Number);
  if (!(volume >= 0)) {
    console.error('no bar:', line);
    continue;
  }
  const { FAST, SLOW } = live.update({ time, open, high, low, close, volume });
  for (const event of live.events) console.log(event.name);
  console.log(`${time} FAST ${shown(FAST)} SLOW ${shown(SLOW)}`);
}
live.free();
script.free();
