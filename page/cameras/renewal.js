/// When the picture of an open camera is taken anew. Knows no document.

import { isLoginRefused } from "../recorder/causes.js";
import { Trouble } from "../recorder/request.js";

const RENEW_S = 5;
const BACK_OFF_S = [5, 10, 20, 40, 60]; // the last one again and again
const UNKNOWN = 404;

/** A login is not tried again; a camera that is switched off or deleted stays so. @param {unknown} error */
const isFinal = (error) =>
  error instanceof Trouble && (isLoginRefused(error) || error.cause === "disabled" || error.status === UNKNOWN);

/**
 * @typedef {object} Work
 * @property {(again: boolean, signal: AbortSignal) => Promise<void>} take takes a picture, and shows it
 * @property {(error: unknown, waitSeconds: number) => void} failed is told of a failure, with 0 when it is the last
 */

export class Renewal {
  #end = new AbortController();
  #timer = 0;
  #due = 0;
  #failures = 0;
  #isSeen = false;
  #isTaking = false;
  #isOver = false;

  /** @param {Work} work */
  constructor(work) {
    this.work = work;
  }

  /** Pictures are taken only while somebody sees them. @param {boolean} isSeen */
  set isSeen(isSeen) {
    this.#isSeen = isSeen;
    this.#plan();
  }

  /** Somebody wants one now, whatever was before. */
  again() {
    if (this.#isTaking) return;
    clearTimeout(this.#timer);
    this.#failures = 0;
    this.#isOver = false;
    this.#take(true);
  }

  /** No more pictures; one that is under way is not waited for. */
  end() {
    this.#isOver = true;
    clearTimeout(this.#timer);
    this.#end.abort();
  }

  #plan() {
    clearTimeout(this.#timer);
    if (!this.#isSeen || this.#isOver || this.#isTaking) return;
    this.#timer = setTimeout(() => this.#take(false), Math.max(0, this.#due - Date.now()));
  }

  /** @param {boolean} again */
  async #take(again) {
    this.#isTaking = true;
    const wait = await this.work.take(again, this.#end.signal).then(
      () => this.#succeeded(),
      (error) => this.#failed(error),
    );
    this.#due = Date.now() + wait * 1000;
    this.#isTaking = false;
    this.#plan();
  }

  #succeeded() {
    this.#failures = 0;
    return RENEW_S;
  }

  /** @param {unknown} error */
  #failed(error) {
    if (this.#end.signal.aborted) return 0;
    this.#isOver = isFinal(error);
    const wait = BACK_OFF_S[Math.min(this.#failures++, BACK_OFF_S.length - 1)] ?? RENEW_S;
    this.work.failed(error, this.#isOver ? 0 : wait);
    return wait;
  }
}
