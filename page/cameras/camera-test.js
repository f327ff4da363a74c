/// The test of the open camera, with its stored login.

import { button, el, say } from "../parts/dom.js";
import { testCamera } from "../recorder/cameras.js";
import { texts } from "../texts/texts.js";
import { storedWordsOf } from "./camera-words.js";

/** @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera */

const words = texts.camera;

export class CameraTest {
  #id = 0;
  #end = new AbortController();
  button = button(texts.common.test, () => this.#run(), { id: "camera-test" });
  element = el("div", { id: "camera-test-result", class: "card test-result", hidden: true });

  /** @param {() => void} ended the recorder knows more now */
  constructor(ended) {
    this.ended = ended;
  }

  /** @param {StoredCamera} camera */
  show({ id, enabled }) {
    this.#id = id;
    this.button.hidden = !enabled;
  }

  close() {
    this.#end.abort();
    this.#end = new AbortController();
    this.element.hidden = true;
  }

  async #run() {
    if (this.button.ariaDisabled === "true") return;
    const { signal } = this.#end;
    this.#mark(true);
    try {
      await testCamera(this.#id, signal);
      this.#tell("ok", words.passed, [words.passedText]);
    } catch (error) {
      const { heading, happened, first } = storedWordsOf(error);
      if (!signal.aborted) this.#tell("bad", heading || words.failedTest, first ? [happened, first] : [happened]);
    }
    this.#mark(false);
    if (!signal.aborted) this.ended();
  }

  /** @param {boolean} isRunning */
  #mark(isRunning) {
    this.button.ariaDisabled = isRunning ? "true" : null;
    this.button.textContent = isRunning ? words.testing : texts.common.test;
  }

  /** @param {"ok" | "bad"} kind @param {string} heading @param {string[]} lines */
  #tell(kind, heading, lines) {
    this.element.dataset.kind = kind;
    this.element.replaceChildren(el("h2", { text: heading }), ...lines.map((text) => el("p", { text })));
    this.element.hidden = false;
    say(heading);
  }
}
