// What the page begins with, from the engine and from the server.
import { readSamples, readStart } from './api/server.ts';
import type { Sample, Start } from './api/types.ts';
import type { Session } from './engine/session.ts';
import type { Language } from './engine/types.ts';
import { type Shelf, shelfFor } from './shelf.ts';

export interface Beginning {
  start: Start;
  samples: Sample[];
  language: Language;
  shelf: Shelf;
}

export async function readBeginning(session: Session): Promise<Beginning> {
  const [start, samples, language] = await Promise.all([
    readStart(),
    readSamples(),
    session.language(),
  ]);
  return { start, samples, language, shelf: shelfFor(start) };
}
