// The crosshair of one chart at the time of another one's.
import type { Chart } from './chart/chart.ts';
import type { Session } from './engine/session.ts';

export class Crosshair {
  private wanted: { key: number | undefined; isBrought: boolean } | undefined;
  private isWorking = false;

  constructor(
    private readonly session: Pick<Session, 'rowOf'>,
    private readonly chart: () => Pick<Chart, 'follow'>,
  ) {}

  /** Has the bar of a key under the crosshair, and on demand in sight; none without a key. While the
   * desk is at work only the newest wish waits for it. */
  point(key: number | undefined, isBrought: boolean): void {
    this.wanted = { key, isBrought: isBrought || (this.wanted?.isBrought ?? false) };
    if (key === undefined) this.chart().follow(undefined, false);
    if (!this.isWorking) void this.work();
  }

  /** By now it is wanted away. */
  private get hasLeft(): boolean {
    return this.wanted !== undefined && this.wanted.key === undefined;
  }

  private async work(): Promise<void> {
    this.isWorking = true;
    while (this.wanted) {
      const { key, isBrought } = this.wanted;
      this.wanted = undefined;
      if (key === undefined) continue;
      const row = await this.session.rowOf(key).catch(() => undefined);
      if (row !== undefined && !this.hasLeft) this.chart().follow(row, isBrought);
    }
    this.isWorking = false;
  }
}
