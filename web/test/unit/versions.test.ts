// Versions of scripts: what is kept of each day, and what gives way.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Versions } from '../../src/versions.ts';

function storage(most = Infinity) {
  const kept = new Map<string, string>();
  return {
    getItem: (key: string) => kept.get(key) ?? null,
    setItem: (key: string, value: string) => {
      if (value.length > most) throw new Error('no room');
      kept.set(key, value);
    },
  };
}

const at = (day: number, hour: number) => new Date(2026, 4, day, hour).getTime();
const texts = (versions: Versions, name: string) => versions.of(name).map(({ text }) => text);

test('all of the last day is kept, and the last of each day before', () => {
  const versions = new Versions('folder', storage());
  for (const [text, day, hour] of [
    ['a', 1, 8],
    ['b', 1, 9],
    ['b', 1, 10],
    ['c', 2, 8],
    ['d', 2, 9],
  ] as const)
    versions.keep('one', text, at(day, hour));
  assert.deepEqual(texts(versions, 'one'), ['d', 'c', 'b']);
  assert.equal(versions.of('one')[2].at, at(1, 9));
  versions.keep('one', 'e', at(3, 8));
  assert.deepEqual(texts(versions, 'one'), ['e', 'd', 'b']);
});

test('scripts of one name in two folders are two', () => {
  const store = storage();
  new Versions('here', store).keep('one', 'a');
  assert.deepEqual(texts(new Versions('there', store), 'one'), []);
  assert.deepEqual(texts(new Versions('here', store), 'one'), ['a']);
});

test('too much text drives out the oldest, and what has no room leaves what was there', () => {
  const long = (letter: string) => letter.repeat(400_000);
  const versions = new Versions('', storage());
  versions.keep('one', long('a'), at(1, 1));
  versions.keep('two', long('b'), at(2, 1));
  versions.keep('one', long('c'), at(3, 1));
  assert.deepEqual(texts(versions, 'one'), [long('c')]);
  assert.deepEqual(texts(versions, 'two'), [long('b')]);
  const small = new Versions('', storage(100));
  small.keep('one', 'a', at(1, 1));
  small.keep('one', long('b'), at(2, 1));
  assert.deepEqual(texts(small, 'one'), ['a']);
});

test('what another program has left in its place counts as nothing', () => {
  for (const left of ['5', '{"/one":[{"at":1}]}', 'x']) {
    const store = storage();
    store.setItem('quor-studio-versions', left);
    const versions = new Versions('', store);
    assert.deepEqual(versions.of('one'), []);
    versions.keep('one', 'a');
    assert.deepEqual(texts(versions, 'one'), ['a']);
  }
});
