import assert from 'node:assert/strict';
import { test } from 'node:test';
import { type Draft, Drafts } from '../../src/draft.ts';

/** A browser's storage, and tabs that hold their locks. */
class Browser {
  private readonly items = new Map<string, string>();
  private readonly held = new Set<string>();
  isFull = false;

  open(session: Map<string, string>): Promise<Drafts> {
    const { items, held } = this;
    const store = {
      getItem: (key: string) => items.get(key) ?? null,
      setItem: (key: string, value: string) => {
        if (this.isFull) throw new Error('full');
        items.set(key, value);
      },
      removeItem: (key: string) => void items.delete(key),
      key: (i: number) => [...items.keys()][i] ?? null,
      get length() {
        return items.size;
      },
    };
    const ofTab = {
      getItem: (key: string) => session.get(key) ?? null,
      setItem: (key: string, value: string) => void session.set(key, value),
    };
    return Drafts.open(ofTab, store, {
      take: async (id) => !held.has(id) && Boolean(held.add(id)),
      living: async () => held,
    });
  }

  /** A tab is closed, loaded again, or has crashed: which is the same for its lock. */
  end(session: Map<string, string>): void {
    this.held.delete([...session.values()][0]);
  }

  get size(): number {
    return this.items.size;
  }
}

const draftOf = (text: string, saved = 'OLD'): Draft => ({
  scripts: [{ id: 'folder one', name: 'one', saved, text }],
  current: 'folder one',
  parameters: { N: 5 },
  link: '',
});
const texts = (drafts: Drafts) => drafts.leftScripts.map(({ text }) => text);

test('a tab that is loaded again has its own draft, and others nothing of it', async () => {
  const [browser, one, other] = [new Browser(), new Map(), new Map()];
  const first = await browser.open(one);
  assert.equal(first.own, undefined);
  first.keepNow(draftOf('ONE'));
  assert.deepEqual(texts(await browser.open(other)), [], 'it lives');
  browser.end(one);
  assert.deepEqual((await browser.open(one)).own, draftOf('ONE'));
});

test('what a tab left unsaved is offered until another one takes it up', async () => {
  const [browser, one, other] = [new Browser(), new Map(), new Map()];
  (await browser.open(one)).keepNow(draftOf('ONE'));
  browser.end(one);
  const second = await browser.open(other);
  assert.deepEqual(texts(second), ['ONE']);
  second.takeUp(second.leftScripts);
  assert.deepEqual(texts(second), []);
  assert.deepEqual(texts(await browser.open(new Map())), []);
});

test('saved scripts of tabs that are gone take no room', async () => {
  const [browser, one] = [new Browser(), new Map()];
  (await browser.open(one)).keepNow(draftOf('ONE', 'ONE'));
  assert.equal(browser.size, 1);
  browser.end(one);
  assert.deepEqual(texts(await browser.open(new Map())), []);
  assert.equal(browser.size, 0);
});

test('a copy of a tab begins with its draft and keeps one of its own', async () => {
  const [browser, one] = [new Browser(), new Map()];
  const first = await browser.open(one);
  first.keepNow(draftOf('ONE'));
  const copy = await browser.open(new Map(one));
  assert.deepEqual(copy.own, draftOf('ONE'));
  copy.keepNow(draftOf('COPY'));
  browser.end(one);
  assert.deepEqual((await browser.open(one)).own, draftOf('ONE'));
});

test('where there is no room there is no draft rather than an old one', async () => {
  const [browser, one] = [new Browser(), new Map()];
  const drafts = await browser.open(one);
  drafts.keepNow(draftOf('ONE'));
  browser.isFull = true;
  drafts.keepNow(draftOf('TWO'));
  assert.equal(browser.size, 0);
});
