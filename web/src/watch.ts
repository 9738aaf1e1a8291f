// Follows the files of the server: which there are, and which have changed.
import type { FileEntry, Files } from './api/types.ts';

/** In milliseconds between two looks, at least; and at most, while no server answers. */
const pause = 1500;
const longestPause = 12_000;
/** How much longer than a look takes they are apart. */
const share = 10;

export interface WatchEvents {
  /** Other names are there. */
  listed: (files: Files) => void;
  /** Files with other content, or new ones. */
  securities: (names: ReadonlySet<string>) => Promise<void>;
  scripts: (names: ReadonlySet<string>) => Promise<void>;
}

const namesOf = (files: readonly FileEntry[]): string => files.map(({ name }) => name).join('\n');

function changedSince(before: readonly FileEntry[], now: readonly FileEntry[]): Set<string> {
  const stamps = new Map(before.map(({ name, stamp }) => [name, stamp]));
  const changed = now.filter(({ name, stamp }) => stamps.get(name) !== stamp);
  return new Set(changed.map(({ name }) => name));
}

export class Watch {
  private pause = pause;

  constructor(
    private files: Files,
    private readonly read: () => Promise<Files>,
    private readonly events: WatchEvents,
  ) {}

  /** Looks while the page is seen. */
  async begin(page: Document): Promise<never> {
    for (;;) {
      const began = performance.now();
      if (page.visibilityState === 'visible') await this.look();
      const time = performance.now() - began;
      await new Promise((resolve) => setTimeout(resolve, Math.max(this.pause, share * time)));
    }
  }

  /** What can't be read now is looked at again the next time. */
  async look(): Promise<void> {
    try {
      this.pause = Math.min(2 * this.pause, longestPause);
      const now = await this.read();
      this.pause = pause;
      const before = this.files;
      const { securities, scripts } = this.events;
      const isSame = (kind: keyof Files) => namesOf(before[kind]) === namesOf(now[kind]);
      if (!isSame('scripts') || !isSame('securities')) this.events.listed(now);
      await scripts(changedSince(before.scripts, now.scripts));
      this.files = { ...before, scripts: now.scripts };
      await securities(changedSince(before.securities, now.securities));
      this.files = now;
    } catch {
      // The server has ended, or a file is being written.
    }
  }
}
