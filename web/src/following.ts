// Files of the server that come and change, for all who show or read them.
import { readFiles } from './api/server.ts';
import type { Files } from './api/types.ts';
import type { Overlay } from './panels/overlay.ts';
import type { Securities } from './panels/securities.ts';
import type { Sources } from './sources.ts';
import { Watch } from './watch.ts';
import type { Writing } from './writing.ts';

export interface Followers {
  writing: Writing;
  sources: Sources;
  securities: Securities;
  overlay: Overlay;
}

export function makeWatch(
  files: Files,
  { writing, sources, securities, overlay }: Followers,
): Watch {
  return new Watch(files, readFiles, {
    listed: (files) => {
      writing.list(files.scripts.map(({ name }) => name));
      if (!sources.hasFolder) return;
      sources.setNames(files.securities.map(({ name }) => name));
      securities.setNames(sources.names);
      overlay.setNames(sources.names);
    },
    // A file that can't be read now doesn't keep the others.
    securities: (names) => sources.follow(names).finally(() => overlay.follow(names)),
    scripts: (names) => writing.takeChanges(names),
  });
}
