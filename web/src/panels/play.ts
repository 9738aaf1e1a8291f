// Play: bars arrive one by one, the newest of them forming, at a speed the user sets.
import { element, setText } from '../dom.ts';
import type { Session } from '../engine/session.ts';
import type { PlayAnswer, ScriptAnswer, StepAnswer } from '../engine/types.ts';

export interface PlayEvents {
  /** The row to begin with, if there are bars. */
  firstRow: () => number | undefined;
  begun: (answer: PlayAnswer) => void;
  /** Resolves when the step is drawn. */
  stepped: (answer: StepAnswer) => Promise<void>;
  /** All bars are there again. */
  ended: (answer: ScriptAnswer) => void;
  fail: (error: unknown) => void;
}

type Phase = 'idle' | 'paused' | 'running';

/** Ticks that a step catches up with at most where the screen is slower than play. */
const mostTicks = 500;

/** In milliseconds: how long a picture of the screen is waited for, which a page that isn't seen never
 * has. */
const longestFrame = 200;

/** Acts once, with the next picture of the screen. Gives what calls it off. */
function withFrame(act: () => void): () => void {
  const cancel = () => {
    cancelAnimationFrame(frame);
    clearTimeout(timer);
  };
  const once = () => {
    cancel();
    act();
  };
  const frame = requestAnimationFrame(once);
  const timer = setTimeout(once, longestFrame);
  return cancel;
}

/** Bars per second by the place of the slider. */
const speeds = [1, 2, 4, 8, 16, 32, 64];

export class Play {
  private readonly toggle = element(
    'button',
    { type: 'button', class: 'primary', id: 'play-toggle' },
    'Play',
  );
  private readonly stepButton = element('button', { type: 'button', id: 'play-step' }, 'Step');
  private readonly stopButton = element('button', { type: 'button', id: 'play-stop' }, 'Stop');
  private readonly speed = element('input', {
    type: 'range',
    min: 0,
    max: speeds.length - 1,
    step: 1,
    value: 2,
    id: 'play-speed',
    'aria-label': 'Speed',
  });
  private readonly speedText = element('span', { class: 'hint' });
  private readonly ticks = element('select', { id: 'play-ticks', 'aria-label': 'How a bar forms' });
  private readonly place = element('span', { class: 'hint', id: 'play-place', role: 'status' });
  private phase: Phase = 'idle';
  /** Calls the next step off. */
  private cancel = (): void => {};
  private isBusy = false;
  /** Up to when all ticks have come. */
  private clock = 0;

  constructor(
    root: HTMLElement,
    private readonly session: Session,
    private readonly events: PlayEvents,
  ) {
    for (const [count, text] of [
      [4, 'in 4 ticks'],
      [1, 'at once'],
      [16, 'in 16 ticks'],
    ] as const) {
      this.ticks.append(element('option', { value: count }, `bars form ${text}`));
    }
    const speedLabel = element('label', { class: 'speed' }, 'Speed', this.speed, this.speedText);
    root.append(this.toggle, this.stepButton, this.stopButton, speedLabel, this.ticks, this.place);
    this.toggle.addEventListener('click', () => void this.run());
    this.stepButton.addEventListener('click', () => void this.stepOnce());
    this.stopButton.addEventListener('click', () => void this.stop());
    this.speed.addEventListener('input', () => this.refresh());
    this.refresh();
  }

  get isOn(): boolean {
    return this.phase !== 'idle';
  }

  /** Other bars have come in, which ends play. */
  reset(): void {
    this.cancel();
    this.setPhase('idle');
  }

  private async run(): Promise<void> {
    if (this.phase === 'running') {
      this.cancel();
      return this.setPhase('paused');
    }
    if (!(await this.begin())) return undefined;
    this.setPhase('running');
    this.clock = performance.now();
    this.plan();
    return undefined;
  }

  private async stepOnce(): Promise<void> {
    this.cancel();
    if (await this.begin()) {
      this.setPhase('paused');
      await this.advance();
    }
  }

  private async stop(): Promise<void> {
    this.reset();
    try {
      this.events.ended(await this.session.stopPlay());
    } catch (error) {
      this.events.fail(error);
    }
  }

  /** Whether play is on, which it is from here on if there are bars. */
  private async begin(): Promise<boolean> {
    if (this.isOn) return true;
    if (this.isBusy) return false;
    this.isBusy = true;
    try {
      await this.beginNow();
      return this.isOn;
    } catch (error) {
      this.events.fail(error);
      return false;
    } finally {
      this.isBusy = false;
    }
  }

  private async beginNow(): Promise<void> {
    const row = this.events.firstRow();
    if (row === undefined) return;
    const answer = await this.session.play(row, Number(this.ticks.value));
    this.setPhase('paused');
    this.events.begun(answer);
    this.tell(answer);
  }

  /** When so many ticks will have come, on the clock of play. */
  private timeOf(ticks: number): number {
    return (1000 * ticks) / (this.barsPerSecond * Number(this.ticks.value));
  }

  /** With the picture of the screen at which the next tick has come: no more steps than pictures. */
  private plan(): void {
    this.cancel();
    this.cancel = withFrame(() => {
      if (performance.now() < this.clock + this.timeOf(1)) this.plan();
      else void this.advance();
    });
  }

  private async advance(): Promise<void> {
    if (this.isBusy) return;
    this.isBusy = true;
    try {
      await this.advanceNow();
    } catch (error) {
      if (!this.isOn) return; // other bars came while it was on its way
      this.setPhase('paused');
      this.events.fail(error);
    } finally {
      this.isBusy = false;
    }
  }

  private async advanceNow(): Promise<void> {
    const answer = await this.session.step({ ticks: this.dueTicks() });
    if (!this.isOn) return;
    this.tell(answer);
    await this.events.stepped(answer);
    if (!this.isOn) return;
    if (answer.done) return this.finish();
    if (this.phase === 'running') this.plan();
  }

  /** As many as have come since the step before; at a single step one. */
  private dueTicks(): number {
    if (this.phase !== 'running') return 1;
    const late = performance.now() - this.clock;
    const due = Math.min(Math.max(Math.floor(late / this.timeOf(1)), 1), mostTicks);
    this.clock = due < mostTicks ? this.clock + this.timeOf(due) : performance.now();
    return due;
  }

  private finish(): void {
    this.setPhase('paused');
    this.toggle.disabled = this.stepButton.disabled = true;
  }

  private get barsPerSecond(): number {
    return speeds[this.speed.valueAsNumber] ?? 4;
  }

  private tell({ rows, of }: PlayAnswer): void {
    setText(this.place, `bar ${rows} of ${of}`);
  }

  private setPhase(phase: Phase): void {
    this.phase = phase;
    if (phase === 'idle') setText(this.place, '');
    this.toggle.disabled = this.stepButton.disabled = false;
    this.refresh();
  }

  private refresh(): void {
    setText(this.toggle, this.phase === 'running' ? 'Pause' : 'Play');
    this.stopButton.disabled = this.phase === 'idle';
    this.ticks.disabled = this.phase !== 'idle';
    const text = `${this.barsPerSecond} bars a second`;
    setText(this.speedText, text);
    this.speed.setAttribute('aria-valuetext', text);
  }
}
