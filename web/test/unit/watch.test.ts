// Files of the server that come, change and can't be read for a while.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { Files } from '../../src/api/types.ts';
import { Watch } from '../../src/watch.ts';

const filesOf = (securities: string[], scripts: string[] = []): Files => {
  const entries = (texts: string[]) =>
    texts.map((text) => ({ name: text.slice(0, -1), stamp: text.slice(-1) }));
  return { securities: entries(securities), scripts: entries(scripts) };
};

/** What is told when the files were these one after the other. */
async function told(list: (Files | undefined)[], fails: (told: string) => boolean = () => false) {
  const all: string[] = [];
  const note = async (text: string) => {
    all.push(text);
    if (fails(text)) throw new Error('not now');
  };
  const queue = [...list];
  const watch = new Watch(
    queue.shift()!,
    async () => queue.shift() ?? Promise.reject(new Error('the server has ended')),
    {
      listed: ({ securities }) => void note(`list ${securities.map(({ name }) => name).join(',')}`),
      securities: (names) => note(`bars ${[...names].join(',')}`),
      scripts: (names) => note(`scripts ${[...names].join(',')}`),
    },
  );
  while (queue.length > 0) await watch.look();
  return all.filter((text) => !text.endsWith(' '));
}

test('what has changed is told once, what is new is listed, too', async () => {
  const list = [
    filesOf(['a1', 'b1'], ['s1']),
    filesOf(['a1', 'b1'], ['s1']),
    filesOf(['a2', 'b1'], ['s1']),
    filesOf(['a2', 'b1', 'c1'], ['s2']),
    filesOf(['a2', 'c1'], ['s2']),
  ];
  assert.deepEqual(await told(list), ['bars a', 'list a,b,c', 'scripts s', 'bars c', 'list a,c']);
});

test('what could not be taken is told again', async () => {
  let isWritten = false;
  const fails = (text: string) => text === 'bars a' && !isWritten && (isWritten = true);
  const changed = filesOf(['a2']);
  assert.deepEqual(await told([filesOf(['a1']), undefined, changed, changed, changed], fails), [
    'bars a',
    'bars a',
  ]);
});
