// Bars that come one by one.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { StepAnswer } from '../../src/engine/types.ts';
import { Desk, madeBars } from './support.ts';

const script =
  'QUICK:MA(C,5);SLOW:MA(C,20);UP:=CROSS(QUICK,SLOW);UP,BK(1);CROSS(SLOW,QUICK),SP(1);' +
  "UP,NOTICE('up');";

async function deskToPlay(): Promise<Desk> {
  const desk = await Desk.make(madeBars(400));
  assert.ok(desk.script(script).sound);
  return desk;
}

test('play comes to the events and lines of a whole run', async () => {
  const desk = await deskToPlay();
  const [all, lines] = [desk.events().events, desk.csv()];
  for (const ticks of [1, 5]) {
    // A notice comes at the first tick that raises it, and only whole bars raise it always.
    const counts = ({ word }: { word: string }) => ticks === 1 || word !== 'NOTICE';
    const fired: object[] = [];
    desk.play(200, ticks);
    let answer: StepAnswer;
    do {
      answer = desk.step({ bars: 30 });
      for (const { final, ...event } of answer.steps.flatMap(({ events }) => events))
        if (final && counts(event)) fired.push(event);
    } while (!answer.done);
    const expected = all.filter((event) => event.row >= 200 && counts(event));
    assert.ok(expected.length >= 5);
    assert.deepEqual(fired, expected);
    assert.equal(desk.csv(), lines);
    assert.throws(() => desk.step({}), { status: 409 });
  }
  assert.ok(desk.stop().sound);
});

test('a bar forms within its ends', async () => {
  const desk = await deskToPlay();
  const whole = desk.values(200).fields as Record<string, number>;
  desk.play(200, 6);
  assert.throws(() => desk.values(200), { status: 404 });
  let before: Record<string, number> | undefined;
  for (let tick = 1; tick <= 6; ++tick) {
    const answer = desk.step({ ticks: 1 });
    const [step] = answer.steps;
    assert.deepEqual([step.tick, step.final, answer.rows], [tick, tick === 6, 201]);
    const bar = desk.values(200).fields as Record<string, number>;
    assert.equal(bar['7'], whole['7']);
    assert.ok(bar['8'] <= whole['8'] && bar['9'] >= whole['9']);
    assert.ok(bar['11'] <= bar['8'] && bar['11'] >= bar['9']);
    if (before) {
      assert.ok(bar['8'] >= before['8'] && bar['9'] <= before['9'] && bar['13'] >= before['13']);
    }
    before = bar;
  }
  assert.deepEqual(before, whole);
  // The script changes, and the place stays.
  assert.equal(desk.script('A:C;').rows, 201);
  assert.equal(desk.step({ bars: 1 }).rows, 202);
});

test('a mistake leaves the chart of before, in play and behind it', async () => {
  const desk = await deskToPlay();
  const lines = desk.csv();
  desk.play(200);
  assert.ok(!desk.script('A:EMMA(C,5);').sound);
  desk.step({ bars: 1 });
  assert.equal(desk.values(200).lines.length, 3);
  assert.ok(!desk.stop().sound);
  assert.equal(desk.csv(), lines);
  assert.ok(!desk.bars(madeBars(400, 2)).script!.sound);
  assert.notEqual(desk.csv(), lines);
  assert.equal(desk.values(399).lines.length, 3);
});

test('each tick tells the sounds that the script makes at it', async () => {
  const desk = await Desk.make(madeBars(400));
  assert.ok(
    desk.script("C>O,SOUND('B');MOD(BARPOS,2)=0,SOUND('J');UP:=C>O;EVEN:=MOD(BARPOS,2)=0;").sound,
  );
  desk.play(200);
  const heard = desk.step({ ticks: 40 }).steps.map(({ row, sounds }) => {
    const [up, even] = desk.values(row).lines;
    assert.deepEqual(sounds, [...(up ? ['Alarm02.wav'] : []), ...(even ? ['Alarm010.wav'] : [])]);
    return sounds.length;
  });
  assert.deepEqual([...new Set(heard)].sort(), [0, 1, 2]);
});
