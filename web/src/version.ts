// The page's files by the version that the front page was made with, under which browsers keep them.

/** The bundle was asked for by the version, too. */
const { search } = new URL(import.meta.url);

export const versioned = (file: string): string => file + search;
