/// The testing of a list: what is sent when, what is held back, and when it stops to ask. Knows no document; what sends
/// is given to it.

import { UNTESTED } from "../list/camera-list.js";
import { workingTime } from "../recorder/admission.js";
import { TIMED_OUT, isLoginRefused } from "../recorder/causes.js";
import { Trouble } from "../recorder/request.js";
import { messageOf } from "../text/text.js";
import { texts } from "../texts/texts.js";
import { LANES, countRequests, nextRequest, rides } from "./grouping.js";
import { Lanes } from "./lanes.js";
import { Stoppable, isToDo } from "./stoppable.js";

/**
 * @typedef {import("../recorder/api.js").Verdict} Verdict
 * @typedef {import("../list/camera-list.js").Row} Row
 */

/** A wrong password that all rows share costs this many logins: until one passes, no more are refused or in flight. */
const FIRST_ROWS = 3;

/**
 * Why a run stands still until somebody decides: all first logins were refused, a request for so many rows was not
 * answered, or nobody tells how the recorder gets on with them.
 * @typedef {{kind: "logins" | "trouble" | "background", text: string, rows: number}} Pause
 *
 * @typedef {object} Means
 * @property {(rows: Row[], signal: AbortSignal) => Promise<Map<string, Verdict>>} testGroup verdicts by line
 * @property {(row: Row, signal: AbortSignal) => Promise<Verdict>} testAlone
 * @property {import("./refusals.js").Refusals} refusals
 * @property {import("./slowness.js").Slowness} slowness
 * @property {import("./estimate.js").Estimate} estimate
 * @property {(rows: Row[]) => void} changed
 */

/**
 * Notes what a test of a row gave.
 * @param {Row} row
 * @param {Verdict} verdict
 * @param {Pick<Means, "refusals" | "slowness">} means
 * @param {Date} testedAt
 */
export function settle(row, verdict, { refusals, slowness }, testedAt) {
  const { code, cause = "" } = verdict;
  Object.assign(row, { result: code === 0 ? "passed" : "failed", code, cause, testedAt });
  if (!row.camera) return;
  refusals.note(row.camera, verdict);
  slowness.note(row.camera, verdict);
}

/**
 * Whether all that is left waits for cameras that are likely to be silent; how many of them share a host, no estimate knows.
 * @param {Row[]} rows
 * @param {Pick<Means, "slowness">} means
 */
export function waitsForSilent(rows, { slowness }) {
  const left = rows.filter(isToDo);
  return left.length > 0 && left.every(({ camera }) => camera !== null && slowness.isLikely(camera));
}

export class Run extends Stoppable {
  #lanes = new Lanes();

  /**
   * @param {Row[]} rows to be tested, in the file's order
   * @param {boolean} isProven a login of this list passed before, so that groups are full ones from the start
   * @param {Means} means
   */
  constructor(rows, isProven, means) {
    super(rows, means);
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
    return this.rows.filter((row) => !isToDo(row)).length;
  }

  /** Milliseconds that the run most likely still takes; 0 while nothing is known. */
  get timeLeft() {
    const waiting = this.state === "running" ? this.waiting : [];
    const { usual, slow } = countRequests(waiting, this.#isSlow);
    return this.means.estimate.left(usual, slow, this.#lanes.ages, LANES);
  }

  /** As for all; refused logins then no longer stop the run. */
  resume() {
    if (this.pause?.kind === "logins") this.isProven = true;
    super.resume();
    this.#lanes.wake();
  }

  /** Tests until nothing is left or it was stopped. */
  async test() {
    for (;;) {
      if (this.#lanes.size === 0) await this.#waitWhilePaused();
      this.#fillLanes();
      if (this.#lanes.size === 0) break;
      await this.#lanes.moved();
    }
    for (const row of this.rows) row.asHeld = false; // the answer to a question holds for one run
  }

  #fillLanes() {
    while (this.state === "running" && !this.pause && this.#lanes.size < LANES) {
      const rows = this.#next();
      if (rows.length === 0) return;
      this.#lanes.carry(rows, () => this.#send(rows));
    }
  }

  #isSlow = (/** @type {Row} */ row) => row.camera !== null && this.means.slowness.isLikely(row.camera);

  /** What to send next; nothing while that could cost too many logins. */
  #next() {
    const sent = this.#lanes.rows;
    if (!this.isProven && sent.length + this.#refused >= FIRST_ROWS) return [];
    return nextRequest(this.waiting, sent, this.isProven, this.#isSlow);
  }

  /** @param {Row[]} rows @returns {Promise<Map<string, Verdict>>} */
  async #ask(rows) {
    const [row] = rows;
    if (!row || rides(row)) return this.means.testGroup(rows, this.signal);
    return new Map([[String(row.line), await this.means.testAlone(row, this.signal)]]);
  }

  /** @param {Row[]} rows */
  async #send(rows) {
    const isLikely = rows.every(this.#isSlow);
    const sent = workingTime();
    for (const row of rows) Object.assign(row, { result: "testing", asHeld: false });
    this.means.changed(rows);
    try {
      const verdicts = await this.#ask(rows);
      for (const row of rows) this.#settle(row, verdicts.get(String(row.line)));
      const hadSilent = rows.some(({ code }) => code === TIMED_OUT);
      this.means.estimate.note(workingTime() - sent, hadSilent, isLikely);
    } catch (error) {
      this.#giveUp(rows, error);
    }
    this.means.changed([...rows, ...this.means.refusals.holdBack(this.waiting)]);
  }

  /** @param {Row} row @param {Verdict | undefined} verdict */
  #settle(row, verdict) {
    if (!verdict) {
      Object.assign(row, { result: "unknown", note: texts.many.rowUnanswered });
      return;
    }
    settle(row, verdict, this.means, new Date());
    if (verdict.code === 0) this.isProven = true;
  }

  /** @param {Row[]} rows @param {unknown} error */
  #giveUp(rows, error) {
    const text = messageOf(error);
    const kind = error instanceof Trouble ? error.kind : "refused";
    const isStop = kind === "stopped";
    const isUnsent = kind === "signedOut"; // no camera was asked
    for (const row of rows) Object.assign(row, isUnsent ? UNTESTED : { result: "unknown", note: text });
    if (!isStop && this.state === "running") this.pause = { kind: "trouble", text, rows: rows.length };
  }

  get #refused() {
    return this.rows.filter(isLoginRefused).length;
  }

  /** @returns {Pause | null} */
  #pauseOfLogins() {
    const rows = this.#refused;
    if (this.isProven || rows < FIRST_ROWS || this.waiting.length === 0) return null;
    return { kind: "logins", text: texts.many.loginsRefused(rows), rows };
  }

  async #waitWhilePaused() {
    while (this.state === "running" && (this.pause ??= this.#pauseOfLogins())) {
      this.means.changed([]);
      await this.#lanes.moved();
    }
  }
}
