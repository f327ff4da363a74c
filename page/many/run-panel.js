/// The buttons of a run, its progress, and why it stands still.

import { byId } from "../parts/dom.js";
import { waitsForSilent } from "../testing/run.js";
import { texts } from "../texts/texts.js";

/** @typedef {import("../testing/run.js").Run | import("../testing/long-run.js").LongRun} Run */

/** In the order in which the focus passes on from one that vanishes. */
const BUTTONS = /** @type {const} */ (["go-on", "stop", "stop-now", "start", "retry", "held", "give-up"]);

/**
 * @typedef {(typeof BUTTONS)[number]} ButtonName
 *
 * @typedef {object} Counts rows that a button would test
 * @property {number} remaining
 * @property {number} retriable
 * @property {number} held
 */

export class RunPanel {
  #timer = 0;
  #buttons = BUTTONS.map((name) => byId(`many-${name}`, HTMLButtonElement));

  /** @param {Record<ButtonName, () => void>} press what each button does */
  constructor(press) {
    for (const name of BUTTONS) this.#button(name).addEventListener("click", press[name]);
  }

  /** @param {ButtonName} name */
  #button = (name) => byId(`many-${name}`, HTMLButtonElement);

  /**
   * Shows a run, or what can be run.
   * @param {Run | null} run
   * @param {Counts} counts
   * @param {boolean} hasRun
   * @param {string} summary of what came of the list, for when there is nothing left to run
   */
  show(run, { remaining, retriable, held }, hasRun, summary) {
    const focused = this.#buttons.find((one) => one === document.activeElement);
    this.#button("start").disabled = remaining === 0;
    this.#button("start").textContent = (hasRun ? texts.many.testRemaining : texts.many.testAll)(remaining);
    this.#button("start").hidden = run !== null || (remaining === 0 && hasRun);
    this.#button("retry").hidden = run !== null || retriable === 0;
    this.#button("held").hidden = run !== null || held === 0;
    this.#button("stop").hidden = run?.state !== "running" || run.pause !== null;
    this.#button("stop-now").hidden = run === null || run.pause !== null;
    this.#showPause(run?.pause ?? null);
    this.#watch(run);
    if (!run) byId("many-progress-text", HTMLElement).textContent = hasRun ? summary : "";
    if (!focused || focused.checkVisibility()) return;
    (this.#buttons.find((one) => one.checkVisibility()) ?? byId("many-title", HTMLElement)).focus();
  }

  /** @param {import("../testing/run.js").Pause | null} pause */
  #showPause(pause) {
    byId("many-pause", HTMLElement).hidden = !pause;
    if (!pause) return;
    const unanswered = pause.rows === 1 ? texts.many.testUnanswered : texts.many.groupUnanswered;
    byId("many-pause-title", HTMLElement).textContent = pause.kind === "trouble" ? unanswered : texts.many.paused;
    byId("many-pause-text", HTMLElement).textContent = pause.text;
  }

  /** @param {Run | null} run */
  #watch(run) {
    clearInterval(this.#timer);
    byId("many-progress-label", HTMLElement).hidden = run === null;
    if (!run) return;
    this.#showProgress(run);
    this.#timer = window.setInterval(() => this.#showProgress(run), 1000); // the time left grows less by itself
  }

  /** @param {Run} run */
  #showProgress(run) {
    const progress = byId("many-progress", HTMLProgressElement);
    progress.max = run.rows.length;
    progress.value = run.done;
    const parts = [texts.common.doneOf(run.done, run.rows.length)];
    const isSilent = waitsForSilent(run.rows, run.means);
    if (isSilent && !run.pause) parts.push(texts.many.waitingForSilent);
    else if (run.timeLeft > 0 && !run.pause) parts.push(timeText(run.timeLeft));
    if (run.state === "stopping") parts.push(texts.many.stopping);
    byId("many-progress-text", HTMLElement).textContent = parts.join(", ");
  }
}

/** @param {number} milliseconds */
function timeText(milliseconds) {
  const seconds = Math.ceil(milliseconds / 1000);
  return seconds < 60 ? texts.many.secondsLeft(seconds) : texts.many.minutesLeft(Math.round(seconds / 60));
}
