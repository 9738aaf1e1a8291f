// Play, and what follows each of its steps: the chart, the events, the values, the alarms.
import { byId } from './dom.ts';
import type { Session } from './engine/session.ts';
import type { ScriptAnswer } from './engine/types.ts';
import { Alarms } from './panels/alarms.ts';
import type { Events } from './panels/events.ts';
import { Play } from './panels/play.ts';
import type { Tabs } from './panels/tabs.ts';
import type { Values } from './panels/values.ts';
import type { Pipeline } from './pipeline.ts';

/** Bars that are left for play where no bar is pointed at. */
const barsToPlay = 200;

export interface PlayingParts {
  session: Session;
  pipeline: Pipeline;
  events: Events;
  values: Values;
  tabs: Tabs;
  /** Bars that there are. */
  rows: () => number;
  begun: () => void;
  /** All bars are there again. */
  ended: (answer: ScriptAnswer) => void;
  fail: (error: unknown) => void;
}

export function makePlay(parts: PlayingParts): Play {
  const { session, pipeline, events, values, tabs, fail } = parts;
  const { chart } = pipeline;
  const root = byId('play', HTMLElement);
  const play = new Play(root, session, {
    firstRow: () => {
      const rows = parts.rows();
      return rows < 2 ? undefined : Math.max(chart.pointedRow ?? rows - barsToPlay, 1);
    },
    begun: (answer) => {
      parts.begun();
      events.clear('While bars are played');
      alarms.forget();
      if (!tabs.isOpen('values')) tabs.show('events');
      void pipeline.takeStep(answer);
    },
    stepped: async (answer) => {
      for (const step of answer.steps) {
        events.add(step.events);
        if (step.final) events.closeBar(step.row);
      }
      alarms.take(answer.steps);
      await pipeline.takeStep(answer);
      values.follow(chart.pointedRow === undefined ? answer.rows - 1 : undefined);
    },
    ended: parts.ended,
    fail,
  });
  const alarms = new Alarms(root);
  return play;
}
