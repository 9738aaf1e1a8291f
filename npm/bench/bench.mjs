// What the package needs beside the engine without it, on the same bars in the same hour:
//   node bench/bench.mjs ENGINE_BENCH
// The columns: a whole run from the caller's arrays to arrays of all lines, the calculation alone, one
// new bar from an object to the last values, and how long the engine takes to load.
import { spawnSync } from 'node:child_process';
import { load } from 'quor';

const sizes = [10_000, 200_000];
const fields = ['open', 'high', 'low', 'close', 'volume'];

/** Minutes of days of four hours, 28 of them in a month, with prices of a random walk. */
function randomWalk(count) {
  let state = 1;
  const step = () => (state = (state * 48_271) % 2_147_483_647) / 2_147_483_647;
  const bars = Object.fromEntries(['time', ...fields].map((name) => [name, []]));
  let close = 100;
  for (let i = 0; i < count; ++i) {
    const [minute, day] = [i % 240, Math.floor(i / 240)];
    const date = (2000 + Math.floor(day / 336)) * 10_000 + ((Math.floor(day / 28) % 12) + 1) * 100;
    const clock = (10 + Math.floor(minute / 60)) * 10_000 + (minute % 60) * 100;
    const open = close;
    close = Math.max(10, Math.round((open + step() - step()) * 100) / 100);
    const bar = [Math.max(open, close) + step(), Math.min(open, close) - step(), close];
    [
      (date + (day % 28) + 1) * 1_000_000 + clock,
      open,
      ...bar,
      100 + Math.floor(step() * 1e5),
    ].forEach((value, at) => bars[['time', ...fields][at]].push(value));
  }
  return Object.fromEntries(
    Object.entries(bars).map(([name, values]) => [name, Float64Array.from(values)]),
  );
}

/** The quickest of at least five rounds, in milliseconds; short work goes on for a tenth of a second. */
function quickest(work) {
  let best = Infinity;
  const start = performance.now();
  for (let round = 0; round < 5 || performance.now() - start < 100; ++round) {
    const before = performance.now();
    work();
    best = Math.min(best, performance.now() - before);
  }
  return best;
}

function measure(quor, source, bars) {
  const count = bars.time.length;
  const script = quor.compile(source);
  const barAt = (i) => Object.fromEntries(Object.entries(bars).map(([k, v]) => [k, v[i]]));
  const live = script.live(bars);
  const [first, last] = [barAt(0), barAt(count - 1)];
  // By turns with the last bar, as nothing may be left out.
  const moved = Object.fromEntries(
    Object.entries(last).map(([k, v]) => [k, k === 'time' ? v : v + 1]),
  );
  const perBar = 1e6 / count;
  const run = perBar * quickest(() => script.run(bars));
  const calculation = perBar * quickest(() => live.update(first));
  const bar = quickest(() => {
    for (let i = 0; i < 1000; ++i) live.update(i % 2 === 0 ? moved : last);
  });
  const values = Object.values(live.last);
  live.free();
  script.free();
  return { run, calculation, bar, last: values.at(-1) };
}

function nativeFigures(program, bars) {
  const input = Buffer.concat(['time', ...fields].map((name) => Buffer.from(bars[name].buffer)));
  const { status, stdout, error } = spawnSync(program, [String(bars.time.length)], {
    input,
    encoding: 'utf8',
    stdio: ['pipe', 'pipe', 'inherit'],
  });
  if (status !== 0) throw error ?? new Error(`${program} ended with ${status}`);
  return stdout
    .trim()
    .split('\n')
    .map((line) => {
      const [name, source, ...figures] = line.split('\t');
      const [run, calculation, bar, last] = figures.map(Number);
      return { name, source, run, calculation, bar, last };
    });
}

const program = process.argv[2];
if (program === undefined) {
  console.error('node bench/bench.mjs ENGINE_BENCH');
  process.exit(1);
}
const start = performance.now();
const quor = await load();
const loaded = performance.now() - start;
quor.compile('A:MA(C,5);').run({ time: [20240101], close: [1] });
const used = performance.now() - start;
console.log(
  `loaded in ${loaded.toFixed(1)} ms, a first script has run after ${used.toFixed(1)} ms`,
);

for (const size of sizes) {
  const bars = randomWalk(size);
  const heads = ['run, ns/bar', 'calculation, ns/bar', 'new bar, us'].map((text) =>
    text.padStart(25),
  );
  console.log(`\n${`${size} bars`.padEnd(20)}${heads.join('')}`);
  const totals = { run: 0, calculation: 0, nativeRun: 0, nativeCalculation: 0 };
  for (const native of nativeFigures(program, bars)) {
    const own = measure(quor, native.source, bars);
    if (!Object.is(own.last, native.last)) {
      throw new Error(`${native.name}: ${own.last} and not ${native.last}`);
    }
    const pair = (kind, digits) =>
      `${native[kind].toFixed(digits)} ${own[kind].toFixed(digits)}`.padStart(18);
    const ratio = (kind) => (own[kind] / native[kind]).toFixed(2).padStart(7);
    const more = (own.bar - native.bar).toFixed(2);
    console.log(
      `${native.name.padEnd(20)}${pair('run', 1)}${ratio('run')}${pair('calculation', 1)}` +
        `${ratio('calculation')}${pair('bar', 2)}${`+${more}`.padStart(7)}`,
    );
    totals.run += own.run;
    totals.calculation += own.calculation;
    totals.nativeRun += native.run;
    totals.nativeCalculation += native.calculation;
  }
  const all = (own, native) => (own / native).toFixed(2).padStart(25);
  console.log(
    `${'all of them'.padEnd(20)}${all(totals.run, totals.nativeRun)}` +
      all(totals.calculation, totals.nativeCalculation),
  );
}
