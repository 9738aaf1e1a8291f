// A CSV, or a picture with a script, that is dropped onto the page or chosen from the disk.

export function takeFiles(
  overlay: HTMLElement,
  button: HTMLElement,
  input: HTMLInputElement,
  take: (file: File) => void,
): void {
  let depth = 0;
  const setDepth = (value: number) => {
    depth = Math.max(value, 0);
    overlay.hidden = depth === 0;
  };
  const hasFiles = (event: DragEvent) => event.dataTransfer?.types.includes('Files') ?? false;
  window.addEventListener('dragenter', (event) => {
    if (hasFiles(event)) setDepth(depth + 1);
  });
  window.addEventListener('dragleave', (event) => {
    if (hasFiles(event)) setDepth(depth - 1);
  });
  window.addEventListener(
    'dragover',
    (event) => {
      if (hasFiles(event)) event.preventDefault();
    },
    { capture: true },
  );
  window.addEventListener(
    'drop',
    (event) => {
      if (!hasFiles(event)) return;
      event.preventDefault();
      event.stopPropagation();
      setDepth(0);
      const file = event.dataTransfer?.files[0];
      if (file) take(file);
    },
    { capture: true },
  );
  button.addEventListener('click', () => input.click());
  input.addEventListener('change', () => {
    const file = input.files?.[0];
    if (file) take(file);
    input.value = '';
  });
}
