// What the server of files answers.

export interface Sample {
  name: string;
  group: string;
  text: string;
}

/** A file as the server has it. */
export interface FileEntry {
  name: string;
  /** Another one when the file has changed. */
  stamp: string;
}

export interface Files {
  scripts: FileEntry[];
  securities: FileEntry[];
}

/** How the page begins: what the server has, or nothing of it where files alone are served. */
export interface Start {
  script: { name: string; text: string } | null;
  folder: string | null;
  files: Files;
}

export interface ScanStart {
  id: string;
  files: number;
  lines: string[];
}

export interface ScanAnswer {
  running: boolean;
  cancelled: boolean;
  done: number;
  files: number;
  next: number;
  rows: { security: string; key: number; text: string; values: (number | null)[] }[];
  failures: { security: string; reason: string }[];
}
