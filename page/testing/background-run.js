/// The testing of rows by the recorder itself: they are handed over, and what came of them is asked for now and then.
/// Knows no document.

import { workingTime } from "../recorder/admission.js";
import { isLoginRefused, verdictNamed } from "../recorder/causes.js";
import { Trouble } from "../recorder/request.js";
import * as runs from "../recorder/runs.js";
import { messageOf } from "../text/text.js";
import { texts } from "../texts/texts.js";
import { HELD } from "./refusals.js";
import { settle } from "./run.js";
import { Stoppable, isToDo } from "./stoppable.js";

/**
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../recorder/runs.js").BackgroundRow} BackgroundRow
 */

const ASK_AGAIN_MS = 1000;
const NO_TESTER = "noTester";

/** @param {Row} row */
function asAdded({ cells, camera }) {
  if (!camera) throw new Error("a row with mistakes is never sent");
  return { name: cells.name, camera };
}

/** @param {unknown} error */
const isAnswered = (error) => error instanceof Trouble && error.kind === "refused";
/** What was asked for is surely not done, now or later. @param {unknown} error */
const isRefused = (error) =>
  error instanceof Trouble && isAnswered(error) && (error.status < 500 || error.details.reason === NO_TESTER);

/**
 * Notes what the recorder found of a row.
 * @param {Row} row
 * @param {string} cause
 * @param {number} at in seconds since 1970
 * @param {Parameters<typeof settle>[2]} means
 */
export function settleTold(row, cause, at, means) {
  if (cause === "unknown") Object.assign(row, { result: "unknown", note: texts.many.recorderStopped });
  else settle(row, verdictNamed(cause), means, new Date(at * 1000));
}

export class BackgroundRun extends Stoppable {
  #id = 0;
  /** It was started, or nobody knows. */
  #mayRun = false;
  #isLeft = false;
  #seen = "";
  #began = workingTime();
  /** @type {() => void} */
  #wake = () => {};

  /** Milliseconds that it most likely still takes; 0 while nothing is known. */
  get timeLeft() {
    const left = this.rows.filter(isToDo).length;
    const done = this.rows.length - left;
    return done > 0 && this.state === "running" ? ((workingTime() - this.#began) / done) * left : 0;
  }

  /** As stopNow(), but the recorder goes on with what it was started with. */
  leave() {
    this.#isLeft = this.#mayRun;
    this.stopNow();
  }

  resume() {
    super.resume();
    this.#wake();
  }

  /** Until all rows are tested, or it was stopped. False: the recorder does not take them, and none was tested. */
  async test() {
    const isTaken = await this.#follow();
    if (this.#id && !this.#isLeft) await this.#forget();
    this.#giveUp();
    return isTaken;
  }

  /** As test(). */
  async #follow() {
    for (;;) {
      try {
        if (await this.#goOn()) return true;
      } catch (error) {
        if (this.signal.aborted) return true;
        if (isRefused(error) || (!this.#mayRun && isAnswered(error))) return this.#mayRun;
        this.pause = { kind: "background", text: messageOf(error), rows: this.rows.length };
        this.means.changed([]);
      }
      await this.#waited();
    }
  }

  /** One step on the way. True: it is over. */
  async #goOn() {
    const { signal } = this;
    if (!this.#id) this.#id = (await runs.openRun(signal)).id;
    const run = await runs.readRun(this.#id, signal);
    if (run.state === "open") return this.#handOver(run);
    if (run.state === "started" && this.state === "stopping") await runs.endRun(this.#id);
    const seen = `${run.done} ${run.atHand}`;
    if (seen !== this.#seen) this.#take(await runs.readRows(this.#id, signal));
    this.#seen = seen;
    return run.atHand === 0 && run.state !== "started";
  }

  /** Gives the recorder the rows that it does not have yet. @param {import("../recorder/runs.js").BackgroundState} run */
  async #handOver({ hasTester, rows }) {
    if (this.state === "stopping") return true;
    if (!hasTester) throw new Trouble("refused", "");
    const { signal } = this;
    await runs.addRows(this.#id, this.rows.map(asAdded), rows, signal);
    this.#mayRun = true;
    await runs.startRun(this.#id, signal).catch((error) => {
      this.#mayRun = !isRefused(error);
      throw error;
    });
    return false;
  }

  /** @param {BackgroundRow[]} news */
  #take(news) {
    const changed = [];
    for (const { number, state, cause, at } of news) {
      const row = this.rows[number - 1];
      if (!row || !isToDo(row) || state === "waiting") continue;
      if (state === "done") this.#settle(row, cause ?? "", at ?? 0);
      else if (row.result === "waiting") row.result = "testing";
      else continue;
      changed.push(row);
    }
    if (changed.length > 0) this.means.changed(changed);
  }

  /**
   * Of rows with one login the recorder tries one, and lets its refusal count for all.
   * @param {Row} row
   * @param {string} cause
   * @param {number} at
   */
  #settle(row, cause, at) {
    if (isLoginRefused(verdictNamed(cause)) && this.means.refusals.isRefused(row)) Object.assign(row, HELD);
    else settleTold(row, cause, at, this.means);
  }

  async #waited() {
    const woken = new Promise((resolve) => {
      this.#wake = () => resolve(undefined);
    });
    const later = new Promise((resolve) => setTimeout(resolve, ASK_AGAIN_MS));
    await (this.pause ? woken : Promise.race([woken, later]));
  }

  /** Once to cancel it, if it is not over, and once to forget it. The recorder forgets what it does not hear of. */
  async #forget() {
    for (let times = 0; times < 2; ++times) await runs.endRun(this.#id).catch(() => {});
  }

  /** Nobody waits for what is still at hand. */
  #giveUp() {
    const left = this.rows.filter(({ result }) => result === "testing");
    for (const row of left) Object.assign(row, { result: "unknown", note: texts.recorder.stoppedWaiting });
    if (left.length > 0) this.means.changed(left);
  }
}
