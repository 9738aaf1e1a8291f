// Where the program is found, and the charts that it draws for the panel.
import assert from 'node:assert/strict';
import { chmodSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, test } from 'node:test';
import { chartPage, drawChart } from '../src/chart';
import { chartArguments, findProgram, type Settings } from '../src/program';
import { quor } from './session';

const place = mkdtempSync(join(tmpdir(), 'quor-test-'));
after(() => rmSync(place, { recursive: true }));

const settings: Settings = {
  path: 'quor',
  bars: '../../samples/index-daily.csv',
  period: '',
  parameters: {},
};

test('the program is looked for where the author says', () => {
  const program = join(place, 'tool');
  writeFileSync(program, '#!/bin/sh\n');
  chmodSync(program, 0o755);
  writeFileSync(join(place, 'text'), '');
  const PATH = `/nowhere::${place}`;
  assert.equal(findProgram('tool', undefined, { PATH }), program);
  assert.equal(findProgram(program, undefined, {}), program);
  assert.equal(findProgram('./tool', place, {}), program);
  for (const name of ['text', 'other', '', './text', place]) {
    assert.equal(findProgram(name, place, { PATH }), undefined, name);
  }
});

test('settings become options', () => {
  const set = { ...settings, bars: 'b.csv', period: '5min', parameters: { N: 5, M: -0.5 } };
  assert.equal(
    chartArguments(set, 'c.svg', true).join(' '),
    'chart - --bars b.csv --out c.svg --theme dark --period 5min --set N=5 --set M=-0.5',
  );
});

test('a script is drawn as it is written, and a mistake is told in its place', async () => {
  const set = { ...settings, parameters: { N: 5 } };
  const chart = await drawChart(quor, 'MEAN:MA(C,N);', set, false);
  assert.match(chart.svg ?? '', /^<svg|^<\?xml/);
  const page = chartPage(chart);
  assert.ok(page.includes(Buffer.from(chart.svg ?? '').toString('base64')));
  assert.doesNotMatch(page, /<pre>/, 'a sound script needs no remark');
  const faulty = await drawChart(quor, 'A:EMMA(C,5)<B;', settings, true);
  assert.equal(faulty.svg, undefined);
  assert.match(chartPage(faulty), /<pre>line 1:3: error: nothing defines EMMA[^<]*&lt;B/);
  await assert.rejects(drawChart(join(place, 'none'), 'A:C;', settings, true), /ENOENT/);
});
