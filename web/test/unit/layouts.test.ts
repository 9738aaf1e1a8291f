// Layouts as the browser keeps them, whoever has written there.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Layouts, mostLayouts, type NamedLayout } from '../../src/layouts.ts';

class Store {
  readonly items = new Map<string, string>();
  getItem = (key: string) => this.items.get(key) ?? null;
  setItem = (key: string, value: string) => void this.items.set(key, value);
}

const layout = (name: string, more: Partial<NamedLayout> = {}): NamedLayout => ({
  ...{ name, heights: { 2: [3, 1] }, scale: 'log', tab: 'values', side: 400, overlay: 'beta' },
  ...more,
});

test('layouts are kept by name, written over and removed', () => {
  const layouts = new Layouts(new Store(), new Store());
  layouts.keep(layout('one'));
  layouts.keep(layout('two', { second: '' }));
  layouts.keep(layout('one', { scale: 'percent' }));
  assert.deepEqual(layouts.all, [
    layout('one', { scale: 'percent' }),
    layout('two', { second: '' }),
  ]);
  layouts.remove('one');
  assert.deepEqual(layouts.all, [layout('two', { second: '' })]);
  for (let i = 1; i < mostLayouts; ++i) layouts.keep(layout(`more ${i}`));
  assert.throws(() => layouts.keep(layout('too many')), /remove one first/);
  layouts.now = layout('');
  assert.deepEqual(layouts.now, layout(''));
});

test('what is no layout is passed over', () => {
  const good = layout('good');
  for (const text of ['', '{', '5', '{}', 'null', '"x"', '[null, 5, []]']) {
    const [store, ofTab] = [new Store(), new Store()];
    store.setItem('quor-studio-layouts', text);
    ofTab.setItem('quor-studio-layout', text);
    const layouts = new Layouts(store, ofTab);
    assert.deepEqual([layouts.all, layouts.now], [[], undefined], text);
  }
  for (const bad of [
    { name: '' },
    { name: 'x'.repeat(41) },
    { heights: { 2: [1] } },
    { heights: { 2: [1, -1] } },
    { heights: { 2: [1, 'x'] } },
    { heights: null },
    { scale: 5 },
    { side: '100%' },
    { side: -5 },
    { overlay: {} },
    { second: 'x'.repeat(300) },
  ]) {
    const store = new Store();
    store.setItem('quor-studio-layouts', JSON.stringify([{ ...good, ...bad }, good]));
    assert.deepEqual(new Layouts(store, store).all, [good], JSON.stringify(bad));
  }
});
