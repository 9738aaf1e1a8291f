// Has the script calculated: one at a time, and after it the newest that was wanted. A newer script
// ends one that takes long.
import type { Session } from './engine/session.ts';
import type { Parameter, ScriptAnswer } from './engine/types.ts';

export class Calculation {
  private isWanted = false;
  private isBusy = false;

  constructor(
    private readonly session: Session,
    /** What to calculate, asked for when its turn has come. */
    private readonly take: () => { script: string; parameters: Parameter[] },
    private readonly done: (answer: ScriptAnswer) => void,
    private readonly fail: (error: unknown) => void,
  ) {}

  want(): void {
    this.isWanted = true;
    this.session.supersede();
    if (!this.isBusy) void this.work();
  }

  private async work(): Promise<void> {
    this.isBusy = true;
    while (this.isWanted) {
      try {
        await this.session.laidOut();
        this.isWanted = false;
        const { script, parameters } = this.take();
        this.done(await this.session.script(script, parameters));
      } catch (error) {
        this.fail(error);
      }
    }
    this.isBusy = false;
  }
}
