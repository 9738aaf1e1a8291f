// Notices as notifications of the browser, and sounds, once each, for who has turned them on.
import { element, setText } from '../dom.ts';
import type { StepAnswer } from '../engine/types.ts';

type Step = StepAnswer['steps'][number];

/** Of the first sound, in hertz, and by how much the next one is higher. */
const pitch = 523;
const interval = 2 ** (2 / 12);
const seconds = 0.25;
const loudness = 0.2;

/** Which of the sounds a file has, from 0. */
const numberOf = (sound: string): number => Number(/(\d+)\.wav$/.exec(sound)?.[1] ?? 1) - 1;

export class Alarms {
  private readonly button = element(
    'button',
    { type: 'button', id: 'alarms', 'aria-pressed': 'false' },
    'Alarms off',
  );
  private audio: AudioContext | undefined;
  private isOn = false;
  private readonly told = new Set<string>();

  constructor(root: HTMLElement) {
    root.append(this.button);
    this.button.title = 'Notices as notifications of the browser, and sounds, while bars come';
    this.button.addEventListener('click', () => void this.toggle());
  }

  /** Bars come anew. */
  forget(): void {
    this.told.clear();
  }

  /** What came with some ticks; several notices of a moment are one notification. */
  take(steps: readonly Step[]): void {
    const notices = steps.flatMap(({ events }) =>
      events.filter(
        ({ word, row, statement }) => word === 'NOTICE' && this.isNew(`${row} ${statement}`),
      ),
    );
    const sounds = steps.flatMap(({ row, sounds }) =>
      sounds.filter((sound) => this.isNew(`${row} ${sound}`)),
    );
    if (!this.isOn) return;
    if (notices.length > 0) notify(notices.map(({ text, name }) => `${text}  ${name}`));
    const heard = new Set([...sounds.map(numberOf), ...(notices.length > 0 ? [0] : [])]);
    for (const number of heard) this.beep(number);
  }

  private isNew(key: string): boolean {
    const isNew = !this.told.has(key);
    this.told.add(key);
    return isNew;
  }

  /** The browser lets one ask, and make sounds, at a click alone. */
  private async toggle(): Promise<void> {
    this.isOn = !this.isOn;
    this.button.setAttribute('aria-pressed', String(this.isOn));
    setText(this.button, this.isOn ? 'Alarms on' : 'Alarms off');
    if (!this.isOn) return;
    this.audio ??= new AudioContext();
    void this.audio.resume();
    if ('Notification' in window && Notification.permission === 'default')
      await Notification.requestPermission();
  }

  private beep(number: number): void {
    const { audio } = this;
    if (!audio) return;
    const tone = audio.createOscillator();
    const volume = audio.createGain();
    const now = audio.currentTime;
    tone.frequency.value = pitch * interval ** number;
    volume.gain.setValueAtTime(loudness, now);
    volume.gain.exponentialRampToValueAtTime(0.001, now + seconds);
    tone.connect(volume).connect(audio.destination);
    tone.start(now);
    tone.stop(now + seconds);
  }
}

function notify(texts: readonly string[]): void {
  if (!('Notification' in window) || Notification.permission !== 'granted') return;
  const title = texts.length === 1 ? 'Notice' : `${texts.length} notices`;
  try {
    new Notification(title, { body: texts.join('\n') });
  } catch {
    // Browsers of phones have no notifications of a page.
  }
}
