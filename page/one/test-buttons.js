/// Test, Cancel, and the seconds between them.

import { byId } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

const LONG_WAIT_S = 8;

export class TestButtons {
  #test = byId("one-test", HTMLButtonElement);
  #cancel = byId("one-cancel", HTMLButtonElement);
  #clock = byId("one-clock", HTMLElement);
  #timer = 0;

  /** @param {() => void} cancel */
  constructor(cancel) {
    this.#cancel.addEventListener("click", cancel);
    byId("view-one", HTMLElement).addEventListener("keydown", (event) => {
      if (event.key === "Escape" && !this.#cancel.hidden) cancel();
    });
  }

  begin() {
    this.#test.setAttribute("aria-disabled", "true");
    this.#cancel.hidden = false;
    const start = Date.now();
    const tick = () => {
      const seconds = Math.floor((Date.now() - start) / 1000);
      const isLong = seconds >= LONG_WAIT_S;
      this.#clock.textContent = isLong ? texts.one.longClock(seconds) : texts.one.clock(seconds);
    };
    tick();
    this.#timer = window.setInterval(tick, 1000);
  }

  end() {
    clearInterval(this.#timer);
    this.#clock.textContent = "";
    this.#test.removeAttribute("aria-disabled");
    if (document.activeElement === this.#cancel) this.#test.focus();
    this.#cancel.hidden = true;
  }
}
