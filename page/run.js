/// The testing of a list: what is sent when, what is held back, and when it stops to ask. Knows no document; what sends
/// is given to it.

import { ridesInGroup } from "./camera-list.js";
import { Trouble } from "./api.js";

/** @typedef {import("./camera-list.js").Row} Row */

/** A wrong password that all rows share costs this many logins. */
export const FIRST_GROUP = 3;
/** The recorder tests this many side by side; more would only wait. */
export const GROUP = 10;
/** Cameras in flight that are tested alone. */
export const ALONE = 3;

const LOGIN_REFUSED = 464;

/** @param {Row} row */
const hostOf = (row) => row.camera?.host.toLowerCase() ?? "";
/** @param {Row} row */
const rides = (row) => row.camera !== null && ridesInGroup(row.camera);

/**
 * The next rows to send together: in the file's order, never two of one host.
 * @param {Row[]} waiting
 * @param {number} size
 */
export function nextGroup(waiting, size) {
  /** @type {Map<string, Row>} */
  const group = new Map();
  for (const row of waiting) {
    if (group.size === size) break;
    if (!group.has(hostOf(row))) group.set(hostOf(row), row);
  }
  return [...group.values()];
}

/**
 * How many requests these rows take.
 * @param {Row[]} rows
 * @param {number} firstSize of the first group
 */
export function countRequests(rows, firstSize) {
  let waiting = rows.filter(rides);
  let count = rows.length - waiting.length;
  for (let size = firstSize; waiting.length > 0; size = GROUP, ++count) {
    const group = new Set(nextGroup(waiting, size));
    waiting = waiting.filter((row) => !group.has(row));
  }
  return count;
}

/**
 * Why a run stands still until somebody decides: all first logins were refused, or a request was not answered.
 * @typedef {{kind: "logins" | "trouble", text: string}} Pause
 *
 * @typedef {object} Means
 * @property {(rows: Row[], signal: AbortSignal) => Promise<Map<string, number>>} testGroup codes by line
 * @property {(row: Row, signal: AbortSignal) => Promise<number>} testAlone
 * @property {import("./refusals.js").Refusals} refusals
 * @property {(rows: Row[]) => void} changed
 */

export class Run {
  /** @type {Pause | null} */
  pause = null;
  /** @type {"running" | "stopping" | "ended"} */
  state = "running";
  done = 0;
  requestsSent = 0;
  /** @type {number[]} milliseconds that each request took */
  durations = [];
  isAloneNow = false;

  #stop = new AbortController();
  #loginsAreRight = false;
  /** @type {() => void} */
  #goOn = () => {};

  /**
   * @param {Row[]} rows to be tested, in the file's order
   * @param {boolean} isProven a login of this list passed before, so the first group may be a full one
   * @param {Means} means
   */
  constructor(rows, isProven, means) {
    this.rows = rows;
    this.means = means;
    this.firstSize = isProven ? GROUP : FIRST_GROUP;
    this.#loginsAreRight = isProven;
    this.requests = countRequests(rows, this.firstSize);
    for (const row of rows) Object.assign(row, { result: "waiting", code: 0, note: "", testedAt: null });
  }

  /** Rows that are still to be sent. */
  get waiting() {
    return this.rows.filter((row) => row.result === "waiting" && row.camera);
  }

  /** Requests that are still to be sent. */
  get requestsLeft() {
    return countRequests(this.waiting, GROUP);
  }

  /** Sends nothing more; what is in flight counts. */
  stopAfterGroup() {
    if (this.state === "running") this.state = "stopping";
    this.resume();
  }

  /** Waits for nothing more; rows in flight become unknown. */
  stopNow() {
    this.stopAfterGroup();
    this.#stop.abort();
  }

  /** Goes on after a pause; refused logins then no longer stop the run. */
  resume() {
    if (this.pause?.kind === "logins") this.#loginsAreRight = true;
    this.pause = null;
    this.#goOn();
  }

  /** Tests until nothing is left or it was stopped. */
  async test() {
    await this.#testGroups();
    this.isAloneNow = true;
    await this.#testAlone();
    this.state = "ended";
    this.means.changed([]);
  }

  async #testGroups() {
    for (let size = this.firstSize; this.state === "running"; size = GROUP) {
      this.#hold();
      const group = nextGroup(this.waiting.filter(rides), size);
      if (group.length === 0) return;
      await this.#send(group, () => this.means.testGroup(group, this.#stop.signal));
      await this.#waitWhilePaused();
    }
  }

  async #testAlone() {
    /** @type {Map<Row, Promise<void>>} */
    const inFlight = new Map();
    for (;;) {
      if (inFlight.size === 0) await this.#waitWhilePaused();
      while (this.state === "running" && !this.pause && inFlight.size < ALONE) {
        this.#hold();
        const busy = new Set([...inFlight.keys()].map(hostOf));
        const row = this.waiting.find((one) => !busy.has(hostOf(one)));
        if (!row) break;
        const code = async () => new Map([[String(row.line), await this.means.testAlone(row, this.#stop.signal)]]);
        inFlight.set(
          row,
          this.#send([row], code).finally(() => inFlight.delete(row)),
        );
      }
      if (inFlight.size === 0) return;
      await Promise.race(inFlight.values());
    }
  }

  /** @param {Row[]} rows @param {() => Promise<Map<string, number>>} ask */
  async #send(rows, ask) {
    for (const row of rows) row.result = "testing";
    ++this.requestsSent;
    this.means.changed(rows);
    const start = Date.now();
    try {
      const codes = await ask();
      for (const row of rows) this.#settle(row, codes.get(String(row.line)));
      this.durations.push(Date.now() - start);
      this.#pauseIfAllRefused();
    } catch (error) {
      this.#giveUp(rows, error);
    }
    this.done += rows.length;
    this.means.changed(rows);
  }

  /** @param {Row} row @param {number | undefined} code */
  #settle(row, code) {
    if (code === undefined) {
      Object.assign(row, { result: "unknown", note: "The recorder's answer left this row out." });
      return;
    }
    Object.assign(row, { result: code === 0 ? "passed" : "failed", code, testedAt: new Date(), asHeld: false });
    if (row.camera) this.means.refusals.note(row.camera, code);
    if (code === 0) this.#loginsAreRight = true;
  }

  /** @param {Row[]} rows @param {unknown} error */
  #giveUp(rows, error) {
    const text = error instanceof Error ? error.message : String(error);
    const isStop = error instanceof Trouble && error.kind === "stopped";
    for (const row of rows) Object.assign(row, { result: "unknown", note: text });
    if (!isStop && this.state === "running") this.pause = { kind: "trouble", text };
  }

  #pauseIfAllRefused() {
    if (this.#loginsAreRight || this.state !== "running" || this.pause) return;
    const refused = this.rows.filter((row) => row.testedAt && row.code === LOGIN_REFUSED).length;
    if (refused < FIRST_GROUP || this.waiting.length === 0) return;
    const text = `The first ${refused} logins were all refused. Is the shared password right?`;
    this.pause = { kind: "logins", text };
  }

  /** Holds back rows whose login was refused at their host, unless somebody asked for them. */
  #hold() {
    const held = this.waiting.filter((row) => row.camera && !row.asHeld && this.means.refusals.count(row.camera) > 0);
    for (const row of held) {
      Object.assign(row, { result: "held", note: "This login was refused at this address a moment ago." });
      ++this.done;
    }
    if (held.length > 0) this.means.changed(held);
  }

  async #waitWhilePaused() {
    while (this.pause && this.state === "running") {
      this.means.changed([]);
      await new Promise((resolve) => {
        this.#goOn = () => resolve(undefined);
      });
    }
  }
}
