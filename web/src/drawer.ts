// The panels below the chart, a tab each.
import { byId } from './dom.ts';
import type { Session } from './engine/session.ts';
import type { ScriptAnswer } from './engine/types.ts';
import { Data } from './panels/data.ts';
import { Events } from './panels/events.ts';
import { Scan, type ScanEvents } from './panels/scan.ts';
import { Securities } from './panels/securities.ts';
import { Tabs } from './panels/tabs.ts';
import { Values } from './panels/values.ts';
import type { Sources } from './sources.ts';

const allTabs = [
  { id: 'securities', title: 'Securities' },
  { id: 'events', title: 'Events' },
  { id: 'values', title: 'Values' },
  { id: 'data', title: 'Data' },
  { id: 'scan', title: 'Scan' },
];

export interface DrawerEvents {
  /** Another tab is open, or none. */
  turned: () => void;
  /** Values of a row are held, or none. */
  held: (row: number | undefined) => void;
  /** A row is to be seen. */
  wanted: (row: number) => void;
  /** Something changes what the script gives. */
  redo: (work: () => Promise<ScriptAnswer | null>) => void;
  /** Scripts read longer periods as they form, or no more. */
  forming: () => void;
  scan: Omit<ScanEvents, 'fail'>;
  fail: (error: unknown) => void;
}

export class Drawer {
  readonly tabs: Tabs;
  readonly values: Values;
  readonly securities: Securities;
  readonly events: Events;
  readonly data: Data;

  constructor(session: Session, sources: Sources, events: DrawerEvents) {
    const { redo, fail } = events;
    const list = allTabs.filter(({ id }) => id !== 'scan' || sources.hasFolder);
    this.tabs = new Tabs(byId('drawer', HTMLElement), byId('tabs', HTMLElement), list, () => {
      // They tell of the first one while they are made.
      this.values?.setOpen(this.tabs.isOpen('values'));
      events.turned();
    });
    const { tabs } = this;
    this.values = new Values(tabs.panel('values'), session, events.held, fail);
    this.securities = new Securities(
      tabs.panel('securities'),
      sources.names,
      (name) => void sources.open({ security: name }),
    );
    this.events = new Events(tabs.panel('events'), events.wanted, (count) =>
      tabs.setCount('events', count),
    );
    this.data = new Data(tabs.panel('data'), {
      changed: (subject) => redo(() => session.subject(subject)),
      forming: (on) => {
        redo(() => session.forming(on));
        events.forming();
      },
      take: (name, content) => redo(() => session.takeOther({ name, content })),
    });
    if (sources.hasFolder) new Scan(tabs.panel('scan'), { ...events.scan, fail });
  }
}
