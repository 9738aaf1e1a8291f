// What leaves the page and comes back to it: links, pictures with their script, lines as a file.
import { saveFile } from './dom.ts';
import type { Session } from './engine/session.ts';
import { fromPicture, intoPicture } from './link.ts';
import { tell } from './panels/message.ts';
import type { Pipeline } from './pipeline.ts';
import type { Writing } from './writing.ts';

export class Handing {
  constructor(
    private readonly session: Session,
    private readonly pipeline: Pipeline,
    private readonly writing: Writing,
    /** Of the bars. */
    private readonly name: () => string,
  ) {}

  async copyLink(): Promise<void> {
    await this.writing.showLink();
    try {
      await navigator.clipboard.writeText(location.href);
      tell('The link is in the clipboard');
    } catch {
      tell('The link is in the address bar');
    }
  }

  async savePicture(): Promise<void> {
    const picture = await this.pipeline.chart.picture();
    saveFile(`${this.fileName}.png`, await intoPicture(picture, this.writing.shared));
  }

  async saveCsv(): Promise<void> {
    saveFile(`${this.fileName}.csv`, await this.session.csv());
  }

  /** Has the script and the parameters of a picture that was saved here. */
  async takePicture(file: File): Promise<void> {
    const shared = fromPicture(new Uint8Array(await file.arrayBuffer()));
    if (!shared) throw new Error('this picture holds no script');
    this.writing.takeShared(file.name.replace(/\.png$/i, ''), shared);
  }

  private get fileName(): string {
    return this.name().replace(/[^\p{L}\p{N}._-]+/gu, '_');
  }
}
