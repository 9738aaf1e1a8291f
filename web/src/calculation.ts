// Has the server calculate the script: one at a time, and after it the newest that was wanted.
import type { Session } from './api/client.ts';
import type { Parameter, ScriptAnswer } from './api/types.ts';

export class Calculation {
  private isWanted = false;
  private isBusy = false;

  constructor(
    private readonly session: Session,
    /** What to calculate, asked for when its turn has come. */
    private readonly take: () => { script: string; parameters: Parameter[] },
    /** A script is on its way. */
    private readonly sent: () => void,
    private readonly done: (answer: ScriptAnswer) => void,
    private readonly fail: (error: unknown) => Promise<unknown>,
  ) {}

  want(): void {
    this.isWanted = true;
    if (!this.isBusy) void this.work();
  }

  private async work(): Promise<void> {
    this.isBusy = true;
    while (this.isWanted) {
      try {
        await this.session.inTurn(() => this.calculate());
      } catch (error) {
        await this.fail(error);
      }
    }
    this.isBusy = false;
  }

  private async calculate(): Promise<void> {
    this.isWanted = false;
    const { script, parameters } = this.take();
    const answer = this.session.script(script, parameters);
    this.sent();
    this.done(await answer);
  }
}
