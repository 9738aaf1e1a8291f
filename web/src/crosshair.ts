// The crosshair of one chart at the time of another one's.
import type { Chart } from './chart/chart.ts';
import type { Session } from './engine/session.ts';

export class Crosshair {
  private wanted: { key: number | undefined; isBrought: boolean } | undefined;
  private isBusy = false;

  constructor(
    private readonly session: Session,
    private readonly chart: () => Chart,
  ) {}

  /** Has the bar of a key under the crosshair, and on demand in sight; none without a key. Bars that
   * aren't at the desk at once are left, so that no hand has to wait for its pointer. */
  point(key: number | undefined, isBrought: boolean): void {
    this.wanted = { key, isBrought: isBrought || (this.wanted?.isBrought ?? false) };
    if (!this.isBusy && (key === undefined || !this.session.isBusy)) void this.work();
  }

  private async work(): Promise<void> {
    this.isBusy = true;
    while (this.wanted) {
      const { key, isBrought } = this.wanted;
      this.wanted = undefined;
      const row =
        key === undefined ? undefined : await this.session.rowOf(key).catch(() => undefined);
      this.chart().follow(row, isBrought);
    }
    this.isBusy = false;
  }
}
