// The buttons of the page: zoom, link, files and saving.
import { byId } from '../dom.ts';
import { takeFiles } from './drop.ts';
import type { SaveDialog } from './save.ts';

export interface HeaderActions {
  zoom: (factor: number) => void;
  showAll: () => void;
  format: () => Promise<void>;
  showVersions: () => void;
  copyLink: () => Promise<void>;
  savePicture: () => Promise<void>;
  saveCsv: () => Promise<void>;
  openFile: (file: File) => void;
  fail: (error: unknown) => void;
}

const zoomStep = 1.5;

export function bindHeader(actions: HeaderActions, dialog: SaveDialog): void {
  const click = (id: string, act: () => Promise<void> | void) =>
    byId(id, HTMLButtonElement).addEventListener('click', () => {
      Promise.resolve(act()).catch(actions.fail);
    });
  click('zoom-in', () => actions.zoom(1 / zoomStep));
  click('zoom-out', () => actions.zoom(zoomStep));
  click('zoom-all', actions.showAll);
  click('versions', actions.showVersions);
  click('format', actions.format);
  click('copy-link', actions.copyLink);
  click('export-png', actions.savePicture);
  click('export-csv', actions.saveCsv);
  click('save', () => dialog.open());
  window.addEventListener('keydown', (event) => {
    if (!(event.ctrlKey || event.metaKey) || event.key !== 's') return;
    event.preventDefault();
    dialog.saveNow().catch(actions.fail);
  });
  takeFiles(
    byId('drop', HTMLElement),
    byId('open-csv', HTMLButtonElement),
    byId('csv-file', HTMLInputElement),
    actions.openFile,
  );
}
