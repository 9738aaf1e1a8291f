// What the page begins with, from the engine and from the server.
import { readSamples, readStart } from './api/server.ts';
import type { Sample, Start } from './api/types.ts';
import { Drafts } from './draft.ts';
import type { Session } from './engine/session.ts';
import type { Language } from './engine/language_types.ts';
import { type Shelf, shelfFor } from './shelf.ts';

export interface Beginning {
  start: Start;
  samples: Sample[];
  language: Language;
  shelf: Shelf;
  drafts: Drafts;
}

export async function readBeginning(session: Session): Promise<Beginning> {
  const [start, samples, language, drafts] = await Promise.all([
    readStart(),
    readSamples(),
    session.language(),
    Drafts.open(),
  ]);
  return { start, samples, language, drafts, shelf: shelfFor(start) };
}
