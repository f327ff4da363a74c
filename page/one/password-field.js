/// The password of one camera: its field, which can be shown, and how often it was changed.

import { byId } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

export class PasswordField {
  #show = byId("one-show", HTMLButtonElement);
  /** No more than this is kept of a password. */
  changes = 0;

  /** @param {HTMLInputElement} input */
  constructor(input) {
    this.input = input;
    this.input.addEventListener("input", () => ++this.changes);
    this.#show.addEventListener("click", () => this.#toggle());
  }

  #toggle() {
    const isShown = this.input.type === "text";
    this.input.type = isShown ? "password" : "text";
    const [word] = this.#show.childNodes; // "password" follows it, out of sight
    if (word) word.textContent = isShown ? texts.one.show : texts.one.hide;
  }
}
