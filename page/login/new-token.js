/// A token that was just made: shown once, with a button that copies it.

import { copyText } from "../parts/copying.js";
import { button, byId, el, say } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

export class NewToken {
  #label = el("label", { for: "account-token" });
  #value = el("input", { id: "account-token", class: "code", readonly: true, autocomplete: "off" });
  element = el(
    "div",
    { id: "account-token-made", class: "card", hidden: true },
    this.#label,
    el(
      "div",
      { class: "with-button" },
      this.#value,
      button(texts.common.copy, () => this.#copy(), { id: "account-token-copy" }),
      button(texts.login.done, () => this.#done(), { id: "account-token-done" }),
    ),
    el("p", { class: "hint", text: texts.login.copyNow }),
  );

  /** @param {string} name @param {string} token */
  show(name, token) {
    this.#label.textContent = texts.login.theToken(name);
    this.#value.value = token;
    this.element.hidden = false;
    this.#value.focus();
    this.#value.select();
  }

  forget() {
    this.#value.value = "";
    this.element.hidden = true;
  }

  #done() {
    this.forget();
    byId("account-token-name", HTMLInputElement).focus();
  }

  async #copy() {
    const isCopied = await copyText(this.#value.value);
    this.#value.select(); // where the page may not copy, Ctrl+C does
    say(isCopied ? texts.common.copied : texts.login.copyByKeys);
  }
}
