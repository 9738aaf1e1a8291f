// What the tests of an engine make: bars, and faults to look at.

/** A bar a second from the first day of 2000 on. */
export const bars = (count) => ({
  time: Float64Array.from(
    { length: count },
    (_, i) =>
      20000101000000 +
      (i % 60) +
      100 * (Math.floor(i / 60) % 60) +
      10000 * (Math.floor(i / 3600) % 24) +
      1e6 * Math.floor(i / 86400),
  ),
  close: Float64Array.from({ length: count }, (_, i) => 100 + Math.sin(i)),
});

/** What the work throws; undefined if it ends well. */
export const faultOf = (work) => {
  try {
    work();
    return undefined;
  } catch (fault) {
    return fault;
  }
};
