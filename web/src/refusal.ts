/** A request or a calculation that was refused or got no answer, and why in a sentence. */
export class Refusal extends Error {
  constructor(
    message: string,
    /** A status of HTTP; 0 without an answer. */
    readonly status: number,
    /** What else is told of it. */
    readonly answer: Readonly<Record<string, unknown>> = {},
  ) {
    super(message);
  }
}
