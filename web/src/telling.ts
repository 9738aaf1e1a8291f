// What is told of an answer to the script beside its chart: findings, sliders, what is missing, values,
// events.
import { byId } from './dom.ts';
import type { Editor } from './editor/editor.ts';
import type { Session } from './engine/session.ts';
import type { Finding } from './engine/text_types.ts';
import type { Drawn, ScriptAnswer } from './engine/types.ts';
import type { Data } from './panels/data.ts';
import type { Events } from './panels/events.ts';
import { Findings } from './panels/findings.ts';
import { tell } from './panels/message.ts';
import type { Tabs } from './panels/tabs.ts';
import type { Values } from './panels/values.ts';
import type { Parameters } from './parameters.ts';
import type { Pipeline } from './pipeline.ts';

export interface TellingParts {
  session: Session;
  editor: Editor;
  parameters: Parameters;
  pipeline: Pipeline;
  tabs: Tabs;
  values: Values;
  data: Data;
  events: Events;
  /** Bars are played: the events are theirs. */
  isPlaying: () => boolean;
  fail: (error: unknown) => void;
}

const newestEvents = 1000;

export class Telling {
  private readonly findings: Findings;
  private areEventsOld = true;

  constructor(private readonly parts: TellingParts) {
    this.findings = new Findings(byId('findings', HTMLElement), (finding) =>
      parts.editor.goTo(finding),
    );
  }

  /** The answer to the text that was taken last. Gives what is drawn from now on, if that is new. */
  show(answer: ScriptAnswer): Drawn | undefined {
    const { editor, parameters, pipeline, fail } = this.parts;
    tell('');
    editor.showFindings(answer.findings);
    this.findings.show(answer.findings, answer.sound);
    this.showMends(answer.findings).catch(fail);
    parameters.show(answer.sliders);
    const drawn = pipeline.newest;
    if (!answer.records || !drawn) return undefined;
    this.findings.showTimes(answer.sound ? answer.times : undefined);
    tellMissing(drawn);
    this.showDrawn(drawn);
    return drawn;
  }

  /** Those of all bars, once they are wanted. */
  refreshEvents(): void {
    const { session, pipeline, tabs, events, isPlaying, fail } = this.parts;
    const count = pipeline.newest?.events;
    if (!this.areEventsOld || count === undefined || isPlaying()) return;
    if (!tabs.isOpen('events')) return;
    this.areEventsOld = false;
    session
      .events(Math.max(count - newestEvents, 0), newestEvents)
      .then((answer) => events.showAll(answer.events, answer.count))
      .catch(fail);
  }

  private showDrawn(drawn: Drawn): void {
    const { tabs, values, data, isPlaying } = this.parts;
    data.show(drawn);
    values.take(drawn);
    if (isPlaying()) return;
    this.areEventsOld = true;
    tabs.setCount('events', drawn.events);
    this.refreshEvents();
  }

  private async showMends(findings: readonly Finding[]): Promise<void> {
    const { editor } = this.parts;
    if (findings.length === 0) return;
    const mends = await editor.seekMends(findings);
    if (!mends) return;
    editor.showFindings(findings, mends);
    this.findings.showMends(mends);
  }
}

function tellMissing({ missing, references }: Drawn): void {
  const texts = missing.map(({ text }) => text);
  const absent = references.filter(({ given }) => !given).map(({ text }) => text);
  if (absent.length > 0) texts.push(`null here: ${absent.join(', ')}`);
  if (texts.length > 0) tell(texts.join('; '));
}
