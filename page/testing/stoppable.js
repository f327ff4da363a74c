/// What each way to test rows can do while it is at work: stand still until somebody decides, and stop. Knows no document.

/** @typedef {import("../list/camera-list.js").Row} Row */

/** Whether a row still needs work. @param {Row} row */
export const isToDo = ({ result }) => result === "waiting" || result === "testing";

export class Stoppable {
  /** @type {import("./run.js").Pause | null} */
  pause = null;
  /** @type {"running" | "stopping"} */
  state = "running";
  #stop = new AbortController();

  /**
   * @param {Row[]} rows to be tested
   * @param {import("./run.js").Means} means
   */
  constructor(rows, means) {
    this.rows = rows;
    this.means = means;
  }

  /** Aborted as soon as nobody waits any more. */
  get signal() {
    return this.#stop.signal;
  }

  /** Begins nothing more; what is at hand counts. */
  stopSending() {
    this.state = "stopping";
    this.resume();
  }

  /** Waits for nothing more; rows at hand become unknown. */
  stopNow() {
    this.stopSending();
    this.#stop.abort();
  }

  /** Goes on after a pause. */
  resume() {
    this.pause = null;
  }
}
