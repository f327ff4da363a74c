/// The test of one camera: what is sent, one at a time, and what is said about it.

import { ask, say } from "../parts/dom.js";
import { testCamera } from "../recorder/api.js";
import { atItsStream } from "../recorder/model-document.js";
import { Refusals } from "../testing/refusals.js";
import { texts } from "../texts/texts.js";
import { failureOf, troubleOf } from "./result-panel.js";
import { TestButtons } from "./test-buttons.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 *
 * @typedef {object} Surroundings
 * @property {import("./result-panel.js").ResultPanel} panel
 * @property {import("./findings.js").Findings} findings
 * @property {import("./earlier.js").EarlierMarks} marks
 * @property {import("./save-camera.js").SaveCamera} save
 * @property {() => boolean} needsPath whether the path is the user's, and not the model's
 */

const REFUSALS_BEFORE_ASKING = 2;

export class OneTest {
  /** @type {AbortController | null} while it runs */
  #running = null;
  #refusals = new Refusals();
  #hasPassed = false; // the latest test
  /** When the latest test began. @type {import("./earlier.js").Moment} */
  #began = { place: "", values: "" };
  #buttons = new TestButtons(() => this.#running?.abort());

  /** @param {Surroundings} surroundings */
  constructor({ panel, findings, marks, save, needsPath }) {
    this.panel = panel;
    this.findings = findings;
    this.marks = marks;
    this.save = save;
    this.needsPath = needsPath;
  }

  get isRunning() {
    return this.#running !== null;
  }

  forgetPasswords() {
    this.#refusals.forgetPasswords();
  }

  /** Asks first, if this user's logins were refused before. @param {Camera} camera */
  async run(camera) {
    if (this.#refusals.count(camera) >= REFUSALS_BEFORE_ASKING) {
      if (!(await ask(texts.common.lockQuestion, texts.common.tryAnyway))) return;
    }
    const running = new AbortController();
    this.#begin(running);
    try {
      const asked = await atItsStream(camera, running.signal);
      const verdict = await testCamera(asked, running.signal);
      this.#refusals.note(camera, verdict);
      if (verdict.code !== 0) this.#showFailure(verdict);
      else await this.#lookCloser({ camera, asked }, running.signal);
    } catch (error) {
      this.#showTrouble(error);
    } finally {
      this.#running = null;
      this.#buttons.end();
    }
  }

  /** @param {AbortController} running */
  #begin(running) {
    this.#running = running;
    this.#began = this.marks.now();
    this.#hasPassed = false;
    this.#buttons.begin();
    this.save.drop();
    this.panel.show({ kind: "none", title: texts.one.testing, text: texts.one.contacts });
    this.marks.drop("one-result-earlier");
    say(texts.one.testing);
  }

  /** @param {import("./save-camera.js").Tested} tested @param {AbortSignal} signal */
  async #lookCloser(tested, signal) {
    const { which = "main" } = tested.camera;
    const text = which === "main" ? texts.one.foundVideo : texts.one.foundVideoIn(which);
    this.#showResult({ kind: "ok", title: texts.one.works, text });
    this.#hasPassed = true;
    say(texts.one.passed);
    this.save.offer(tested, this.#began);
    await this.findings.lookCloser(tested.asked, this.#began, signal);
  }

  /** @param {import("./result-panel.js").Result} result */
  #showResult(result) {
    this.panel.show(result);
    this.marks.set("one-result-earlier", this.#began, { values: texts.one.earlierResult });
  }

  /** @param {import("../recorder/api.js").Verdict} verdict */
  #showFailure(verdict) {
    const result = failureOf(verdict, this.needsPath());
    this.#showResult(result);
    say(texts.common.failed(result.title));
  }

  /** @param {unknown} error */
  #showTrouble(error) {
    const result = troubleOf(error);
    if (result.kind === "none" && this.#hasPassed) {
      this.panel.note(result.text); // only what comes after the test was stopped
      return;
    }
    this.#showResult(result);
    say(`${result.title}. ${result.text}`);
  }
}
