/// How stored cameras were within a week, from the changes that the recorder tells of. Knows no document.

/**
 * @typedef {import("../recorder/cameras.js").CameraState} CameraState
 * @typedef {import("../recorder/events.js").CameraEvent} CameraEvent
 *
 * Times are seconds since 1970; the cause is null for what nobody knows.
 * @typedef {{cause: string | null, from: number, to: number}} Span
 *
 * @typedef {"unknown" | "works" | "partly" | "fails"} HourKind
 *
 * @typedef {object} Week
 * @property {HourKind[]} hours the oldest first, the one that now is last
 * @property {number} known how much of it is known, in seconds
 * @property {number} worked of these
 * @property {number} failures
 */

const HOUR = 3600;
export const HOURS = 7 * 24;

/** When the first hour of the week begins. @param {number} now */
const startOf = (now) => (Math.floor(now / HOUR) + 1 - HOURS) * HOUR;

/**
 * @param {CameraEvent[]} events of one camera, the oldest first
 * @param {CameraState} state
 * @param {number} from from when on none is missing
 * @param {number} now
 * @returns {Span[]}
 */
function spansOf(events, state, from, now) {
  const [first] = events;
  if (!first) return [{ cause: state.cause, from: state.since, to: now }];
  const later = events.map(({ cause, at }, i) => ({ cause, from: at, to: events[i + 1]?.at ?? now }));
  return [{ cause: first.before, from, to: first.at }, ...later];
}

/** Cut to those seconds that are known, from the start on. @param {Span[]} spans @param {number} start */
const knownOf = (spans, start) =>
  spans
    .map((span) => ({ ...span, from: Math.max(span.from, start) }))
    .filter(({ cause, from, to }) => cause !== null && to > from);

/** @param {Span[]} spans @returns {number[]} the seconds of each hour that they take @param {number} start */
function secondsIn(spans, start) {
  const seconds = Array.from({ length: HOURS }, () => 0);
  for (const { from, to } of spans) {
    for (let hour = Math.floor((from - start) / HOUR); start + hour * HOUR < to && hour < HOURS; ++hour) {
      const begin = start + hour * HOUR;
      seconds[hour] = (seconds[hour] ?? 0) + Math.min(to, begin + HOUR) - Math.max(from, begin);
    }
  }
  return seconds;
}

/** A failure that lasts is one, though its cause changes. @param {Span[]} spans */
const failuresIn = (spans) =>
  spans.filter(({ cause }, i) => cause !== "ok" && (i === 0 || spans[i - 1]?.cause === "ok")).length;

/** @param {Span[]} spans */
const lengthOf = (spans) => spans.reduce((sum, { from, to }) => sum + to - from, 0);

/** @param {number} worked @param {number} failed seconds @returns {HourKind} */
function kindOf(worked, failed) {
  if (failed > 0) return worked > 0 ? "partly" : "fails";
  return worked > 0 ? "works" : "unknown";
}

export class History {
  /** Of each camera, the oldest first. @type {Map<number, CameraEvent[]>} */
  #events = new Map();
  #newest = 0;
  #from = 0;

  /** Since when changes have to be read: none before is missing. @param {number} now */
  since(now) {
    return Math.max(startOf(now), this.#newest);
  }

  /**
   * Takes what was read since then, while others may have come.
   * @param {CameraEvent[]} events the newest first
   * @param {boolean} isWhole or else some before the oldest are missing
   */
  take(events, isWhole) {
    const oldest = events.at(-1);
    if (oldest && !isWhole) this.#forgetBefore(oldest);
    for (const event of events) this.add(event);
    this.#newest = events[0]?.at ?? this.#newest;
  }

  /** @param {CameraEvent} event one that is known stays as it is */
  add(event) {
    const known = this.#events.get(event.camera) ?? [];
    if (known.some(({ id }) => id === event.id)) return;
    const kept = [...known, event].filter(({ at }) => at >= startOf(event.at));
    this.#events.set(event.camera, kept.sort((one, other) => one.id - other.id));
  }

  /** @param {CameraEvent} oldest */
  #forgetBefore({ id: first, at }) {
    this.#from = at;
    for (const [camera, events] of this.#events) this.#events.set(camera, events.filter(({ id }) => id >= first));
  }

  /** @param {number} camera @param {CameraState} state @param {number} now @returns {Week} */
  weekOf(camera, state, now) {
    const start = startOf(now);
    const spans = knownOf(spansOf(this.#events.get(camera) ?? [], state, this.#from, now), start);
    const working = spans.filter(({ cause }) => cause === "ok");
    const failing = secondsIn(spans.filter(({ cause }) => cause !== "ok"), start);
    const hours = secondsIn(working, start).map((seconds, hour) => kindOf(seconds, failing[hour] ?? 0));
    return { hours, known: lengthOf(spans), worked: lengthOf(working), failures: failuresIn(spans) };
  }
}
