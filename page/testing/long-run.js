/// The testing of a long list: by requests until a login has passed, then by the recorder itself. Where that does not take
/// it, by requests to its end. Knows no document.

import { BackgroundRun } from "./background-run.js";
import { Run } from "./run.js";

/** From so many rows on a list is a long one. */
export const LONG = 200;

export class LongRun {
  /** @type {"running" | "stopping"} */
  state = "running";
  /** What is at work. @type {Run | BackgroundRun} */
  #part;

  /**
   * @param {import("../list/camera-list.js").Row[]} rows to be tested, in the file's order
   * @param {boolean} isProven a login of this list passed before
   * @param {import("./run.js").Means} means
   */
  constructor(rows, isProven, means) {
    this.rows = rows;
    this.means = means;
    const first = new Run(rows, isProven, { ...means, changed: (changed) => this.#wentOn(changed) });
    this.first = first;
    this.#part = first;
  }

  get pause() {
    return this.#part.pause;
  }

  get timeLeft() {
    return this.#part.timeLeft;
  }

  /** How many rows need no more work. */
  get done() {
    return this.first.done;
  }

  stopSending() {
    this.state = "stopping";
    this.#part.stopSending();
  }

  stopNow() {
    this.state = "stopping";
    this.#part.stopNow();
  }

  /** As stopNow(), but the recorder goes on with what it has. */
  leave() {
    this.state = "stopping";
    if (this.#part instanceof BackgroundRun) this.#part.leave();
    else this.#part.stopNow();
  }

  resume() {
    this.#part.resume();
  }

  /** Tests until nothing is left or it was stopped. */
  async test() {
    if (!this.first.isProven) await this.first.test();
    if (!this.#mayGoOn) return;
    const background = new BackgroundRun(this.first.waiting, this.means);
    this.#part = background;
    if ((await background.test()) || !this.#mayGoOn) return;
    const rest = new Run(this.first.waiting, true, this.means);
    this.#part = rest;
    await rest.test();
  }

  get #mayGoOn() {
    return this.state === "running" && this.first.waiting.length > 0;
  }

  /** A login that has passed is what the first part was for. @param {import("../list/camera-list.js").Row[]} rows */
  #wentOn(rows) {
    this.means.changed(rows);
    if (this.first.isProven) this.first.stopSending();
  }
}
