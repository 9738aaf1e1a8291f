// Elements of the page. Texts become text nodes: nothing that is shown is ever read as HTML.

type Child = Node | string | undefined;
type Attributes = Readonly<Record<string, string | number | boolean | undefined>>;

/** An element with attributes (true is an empty one, false and undefined none) and children. */
export function element<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: Child[]
): HTMLElementTagNameMap[K] {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === undefined || value === false) continue;
    made.setAttribute(name, value === true ? '' : String(value));
  }
  made.append(...children.filter((child) => child !== undefined));
  return made;
}

/** The element of the page with an id, which is there or the page is broken. */
export function byId<T extends HTMLElement>(id: string, kind: new () => T): T {
  const found = document.getElementById(id);
  if (!(found instanceof kind)) throw new Error(`no ${kind.name} with the id ${id}`);
  return found;
}

/** Sets the text only where it differs, so that a screen reader hears of changes alone. */
export function setText(target: HTMLElement, text: string): void {
  if (target.textContent !== text) target.textContent = text;
}

/** Has the browser save a file. */
export function saveFile(name: string, content: Blob): void {
  const link = element('a', { href: URL.createObjectURL(content), download: name });
  document.body.append(link);
  link.click();
  link.remove();
  setTimeout(() => URL.revokeObjectURL(link.href), 10_000);
}
