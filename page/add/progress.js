/// What the recorder is doing just now, with the seconds so far, and the steps that have ended, in words.

import { el } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

export class Progress {
  #clock = el("p", { class: "muted" });
  #steps = el("ul", { class: "steps", "aria-label": texts.add.steps });
  #timer = 0;
  element = el("div", { class: "progress-of", hidden: true }, this.#clock, this.#steps);

  /** @param {(seconds: number) => string} words */
  begin(words) {
    const began = Date.now();
    const tick = () => (this.#clock.textContent = words(Math.round((Date.now() - began) / 1000)));
    tick();
    this.#timer = window.setInterval(tick, 1000);
    this.#clock.hidden = false;
    this.#steps.replaceChildren();
    this.element.hidden = false;
  }

  /** @param {string} text */
  step(text) {
    this.#steps.append(el("li", { text }));
  }

  /** The steps stay. */
  end() {
    clearInterval(this.#timer);
    this.#clock.hidden = true;
  }

  clear() {
    this.end();
    this.element.hidden = true;
  }
}
