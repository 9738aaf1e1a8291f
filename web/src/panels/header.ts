// The buttons of the page: zoom, link, files and saving.
import { byId } from '../dom.ts';
import { takeFiles } from './drop.ts';
import { SaveDialog } from './save.ts';

export interface HeaderActions {
  zoom: (factor: number) => void;
  showAll: () => void;
  copyLink: () => Promise<void>;
  savePicture: () => Promise<void>;
  saveCsv: () => Promise<void>;
  openFile: (file: File) => void;
  /** The script as it stands, and its name if it is one of the folder. */
  script: () => { name: string; text: string };
  saved: (name: string, text: string) => void;
  fail: (error: unknown) => void;
}

const zoomStep = 1.5;

export function bindHeader(actions: HeaderActions, canSave: boolean): void {
  const click = (id: string, act: () => Promise<void> | void) =>
    byId(id, HTMLButtonElement).addEventListener('click', () => {
      Promise.resolve(act()).catch(actions.fail);
    });
  click('zoom-in', () => actions.zoom(1 / zoomStep));
  click('zoom-out', () => actions.zoom(zoomStep));
  click('zoom-all', actions.showAll);
  click('copy-link', actions.copyLink);
  click('export-png', actions.savePicture);
  click('export-csv', actions.saveCsv);
  bindSaving(actions, canSave);
  takeFiles(
    byId('drop', HTMLElement),
    byId('open-csv', HTMLButtonElement),
    byId('csv-file', HTMLInputElement),
    actions.openFile,
  );
}

function bindSaving({ script, saved }: HeaderActions, canSave: boolean): void {
  const dialog = new SaveDialog(() => script().text, saved);
  const button = byId('save', HTMLButtonElement);
  const open = () => {
    if (canSave) dialog.open(script().name);
  };
  button.disabled = !canSave;
  button.title = canSave ? '' : 'quor studio was started without a folder';
  button.addEventListener('click', open);
  window.addEventListener('keydown', (event) => {
    if (!(event.ctrlKey || event.metaKey) || event.key !== 's') return;
    event.preventDefault();
    open();
  });
}
