// The tools of the header and above the chart.
import type { Editor } from './editor/editor.ts';
import type { Session } from './engine/session.ts';
import { Handing } from './handing.ts';
import { bindHeader } from './panels/header.ts';
import type { SaveDialog } from './panels/save.ts';
import type { VersionDialog } from './panels/version_dialog.ts';
import type { Pipeline } from './pipeline.ts';
import type { Sources } from './sources.ts';
import type { Writing } from './writing.ts';

export interface ToolParts {
  session: Session;
  editor: Editor;
  pipeline: Pipeline;
  writing: Writing;
  sources: Sources;
  saveDialog: SaveDialog;
  versionDialog: VersionDialog;
  /** Of the bars. */
  name: () => string;
  fail: (error: unknown) => void;
}

export function bindTools(parts: ToolParts): void {
  const { session, editor, pipeline, writing, sources, fail } = parts;
  const { chart } = pipeline;
  const handing = new Handing(session, pipeline, writing, parts.name);
  bindHeader(
    {
      zoom: (factor) => chart.zoom(factor),
      showAll: () => chart.showAll(),
      format: () => editor.format(),
      showVersions: () => parts.versionDialog.open(),
      copyLink: () => handing.copyLink(),
      savePicture: () => handing.savePicture(),
      saveCsv: () => handing.saveCsv(),
      openFile: (file) => {
        if (file.type === 'image/png') handing.takePicture(file).catch(fail);
        else void sources.open({ file });
      },
      fail,
    },
    parts.saveDialog,
  );
}
