// Numbers as texts, and the steps of axes.

const units = [
  { size: 1e12, sign: 'T' },
  { size: 1e9, sign: 'B' },
  { size: 1e6, sign: 'M' },
  { size: 1e3, sign: 'K' },
  { size: 1, sign: '' },
];

/** From where on not even the greatest unit keeps a number short. */
const huge = 1e16;

function unitOf(value: number): { size: number; sign: string } {
  return units.find(({ size }) => Math.abs(value) >= size) ?? units[units.length - 1];
}

/** With commas between thousands from ten thousand on. */
export function groupedText(value: number, digits: number): string {
  const text = value.toFixed(digits);
  return Math.abs(value) >= 1e4 && Math.abs(value) < 1e21
    ? text.replace(/\B(?=(\d{3})+(?!\d))(?<!\.\d*)/g, ',')
    : text;
}

/** The same, millions and more by their unit. */
export function shortText(value: number, digits: number): string {
  if (Number.isNaN(value)) return '–';
  if (!(Math.abs(value) >= 1e6)) return groupedText(value, digits);
  if (Math.abs(value) >= huge) return value.toExponential(2);
  const { size, sign } = unitOf(value);
  const share = value / size;
  const places = Math.abs(share) < 10 ? 2 : Math.abs(share) < 100 ? 1 : 0;
  return share.toFixed(places) + sign;
}

/** A step of 1, 2 or 5 times a power of ten that divides the span into about so many parts. */
export function niceStep(span: number, count: number): number {
  const raw = span / count;
  const power = 10 ** Math.floor(Math.log10(raw));
  const factor = raw / power;
  return power * (factor < 1.5 ? 1 : factor < 3.5 ? 2 : factor < 7.5 ? 5 : 10);
}

/** The multiples of a step within a range; counted, since adding a step to a huge value may change
 * nothing. */
export function multiples(step: number, low: number, high: number): number[] {
  const values: number[] = [];
  const first = Math.ceil(low / step);
  for (let i = 0; i < 100 && (first + i) * step <= high; ++i) values.push((first + i) * step);
  return values;
}

/** The text of a value of an axis, whose greatest value decides on the unit. */
export function tickText(value: number, step: number, largest: number): string {
  if (Math.abs(value) < step / 2) return '0';
  if (largest >= huge) return value.toExponential(2);
  const unit = largest >= 1e5 && step >= 1e3 ? unitOf(largest) : { size: 1, sign: '' };
  const places = -Math.floor(Math.log10(step / unit.size) + 1e-9);
  return groupedText(value / unit.size, Math.min(Math.max(places, 0), 12)) + unit.sign;
}
