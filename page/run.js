/// The testing of a list: what is sent when, what is held back, and when it stops to ask. Knows no document; what sends
/// is given to it.

import { Trouble } from "./api.js";
import { UNTESTED, ridesInGroup } from "./camera-list.js";
import { LOGIN_REFUSED } from "./causes.js";
import { messageOf } from "./text.js";

/** @typedef {import("./camera-list.js").Row} Row */

/** A wrong password that all rows share costs this many logins: until one passes, no more are refused or in flight. */
export const FIRST_GROUP = 3;
/** The recorder tests this many side by side; more would only wait. */
export const GROUP = 10;
/** Cameras in flight that are tested alone. */
const ALONE = 3;

/** @param {Row} row */
const hostOf = (row) => row.camera?.host.toLowerCase() ?? "";
/** @param {Row} row */
const rides = (row) => row.camera !== null && ridesInGroup(row.camera);

/**
 * The next rows to send together: in the file's order, never two of one host.
 * @param {Row[]} waiting
 * @param {number} size
 */
function nextGroup(waiting, size) {
  /** @type {Map<string, Row>} */
  const group = new Map();
  for (const row of waiting) {
    if (group.size === size) break;
    if (!group.has(hostOf(row))) group.set(hostOf(row), row);
  }
  return [...group.values()];
}

/**
 * How many requests these rows take if a login of the first group passes; otherwise they take more.
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
  /** @type {"running" | "stopping"} */
  state = "running";
  requestsSent = 0;
  /** @type {number[]} milliseconds that each request took */
  durations = [];
  isAloneNow = false;

  #stop = new AbortController();
  /** @type {() => void} */
  #goOn = () => {};

  /**
   * @param {Row[]} rows to be tested, in the file's order
   * @param {boolean} isProven a login of this list passed before, so that groups are full ones from the start
   * @param {Means} means
   */
  constructor(rows, isProven, means) {
    this.rows = rows;
    this.means = means;
    this.isProven = isProven;
    for (const row of rows) Object.assign(row, UNTESTED);
    means.refusals.holdBack(rows);
  }

  /** Rows that are still to be sent. */
  get waiting() {
    return this.rows.filter((row) => row.result === "waiting");
  }

  /** How many rows need no more work. */
  get done() {
    return this.rows.filter(({ result }) => result !== "waiting" && result !== "testing").length;
  }

  /** Requests that are still to be sent; they become more while no login is proven. */
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
    if (this.pause?.kind === "logins") this.isProven = true;
    this.pause = null;
    this.#goOn();
  }

  /** Tests until nothing is left or it was stopped. */
  async test() {
    await this.#testGroups();
    this.isAloneNow = true;
    await this.#testAlone();
    for (const row of this.rows) row.asHeld = false; // the answer to a question holds for one run
  }

  async #testGroups() {
    while (this.state === "running") {
      const group = nextGroup(this.waiting.filter(rides), this.#mostInFlight(GROUP));
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
      while (this.state === "running" && !this.pause && inFlight.size < this.#mostInFlight(ALONE)) {
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
    for (const row of rows) Object.assign(row, { result: "testing", asHeld: false });
    ++this.requestsSent;
    this.means.changed(rows);
    const start = Date.now();
    try {
      const codes = await ask();
      for (const row of rows) this.#settle(row, codes.get(String(row.line)));
      this.durations.push(Date.now() - start);
    } catch (error) {
      this.#giveUp(rows, error);
    }
    this.means.changed([...rows, ...this.means.refusals.holdBack(this.waiting)]);
  }

  /** @param {Row} row @param {number | undefined} code */
  #settle(row, code) {
    if (code === undefined) {
      Object.assign(row, { result: "unknown", note: "The recorder's answer left this row out." });
      return;
    }
    Object.assign(row, { result: code === 0 ? "passed" : "failed", code, testedAt: new Date() });
    if (row.camera) this.means.refusals.note(row.camera, code);
    if (code === 0) this.isProven = true;
  }

  /** @param {Row[]} rows @param {unknown} error */
  #giveUp(rows, error) {
    const text = messageOf(error);
    const isStop = error instanceof Trouble && error.kind === "stopped";
    for (const row of rows) Object.assign(row, { result: "unknown", note: text });
    if (!isStop && this.state === "running") this.pause = { kind: "trouble", text };
  }

  get #refused() {
    return this.rows.filter((row) => row.code === LOGIN_REFUSED).length;
  }

  /** How many rows may be in flight, of which there is room for so many. @param {number} most */
  #mostInFlight(most) {
    return this.isProven ? most : Math.min(most, FIRST_GROUP - this.#refused);
  }

  /** @returns {Pause | null} */
  #pauseOfLogins() {
    const refused = this.#refused;
    if (this.isProven || refused < FIRST_GROUP || this.waiting.length === 0) return null;
    return { kind: "logins", text: `The first ${refused} logins were all refused. Is the shared password right?` };
  }

  async #waitWhilePaused() {
    while (this.state === "running" && (this.pause ??= this.#pauseOfLogins())) {
      this.means.changed([]);
      await new Promise((resolve) => {
        this.#goOn = () => resolve(undefined);
      });
    }
  }
}
