/// The view of an admin: where changes of cameras are told to, and what came of it.

import { ask, button, byId, el, say } from "../parts/dom.js";
import { PLAIN, addView, field, mistakeLine, onSubmit, passwordInput, tell } from "../parts/forms.js";
import { Trouble } from "../recorder/request.js";
import { readWebhook, removeWebhook, setWebhook, testWebhook } from "../recorder/webhook.js";
import { messageOf } from "../text/text.js";
import { sentence, timeText } from "../texts/language.js";
import { texts } from "../texts/texts.js";

/** @typedef {import("../recorder/webhook.js").Webhook} Webhook */

const words = texts.notices;

/** @param {string} result "ok", or the recorder's name for the failure */
const resultText = (result) => (result === "ok" ? words.taken : (words.failures[result] ?? words.failed));

/** @param {Webhook | null} webhook */
function lastOf(webhook) {
  if (!webhook) return words.nobody;
  return webhook.result ? words.last(timeText(webhook.triedAt), resultText(webhook.result)) : words.notTried;
}

/** @param {unknown} error */
function failureOf(error) {
  if (!(error instanceof Trouble) || !error.cause) return sentence(messageOf(error));
  const failure = resultText(error.cause);
  return words.tested(error.details.status ? words.withStatus(failure, error.details.status) : failure);
}

export class NoticesView {
  /** The stored address. */
  #stored = "";
  #last = el("p", { id: "notices-last" });
  #tested = el("p", { id: "notices-tested", hidden: true });
  #mistake = mistakeLine("notices-mistake");
  #url = el("input", { id: "notices-url", type: "url", class: "code", autocomplete: "off", ...PLAIN });
  #secret = passwordInput("notices-secret", "new-password");
  #test = button(words.sendTest, () => this.#send(), { id: "notices-test" });
  #removal = button(words.remove, () => this.#remove(), { id: "notices-remove" });

  constructor() {
    const explained = el("p", { class: "hint", text: words.explained });
    addView("notices", words.title, explained, this.#form(), this.#last, this.#tested);
  }

  open() {
    return this.#do(async () => this.#show(await readWebhook()));
  }

  forgetPassword() {
    this.#secret.value = "";
  }

  #form() {
    const save = el("button", { id: "notices-save", class: "main", text: texts.common.save });
    const form = el(
      "form",
      { class: "fields notices", novalidate: true, autocomplete: "off", "aria-label": words.form },
      field(words.url, this.#url),
      field(words.secret, this.#secret, words.secretHint),
      this.#mistake,
      el("div", { class: "actions" }, save, this.#test, this.#removal),
    );
    onSubmit(form, this.#mistake, () => this.#save());
    return form;
  }

  /** @param {Webhook | null} webhook */
  #show(webhook) {
    this.#stored = webhook?.url ?? "";
    this.#url.value = this.#stored;
    this.#last.textContent = lastOf(webhook);
    for (const press of [this.#test, this.#removal]) press.hidden = !webhook;
    tell(this.#tested, "");
  }

  async #save() {
    const url = this.#url.value.trim();
    if (!url) {
      this.#url.focus();
      return words.typeUrl;
    }
    try {
      this.#show(await setWebhook(url, this.#secret.value));
    } catch (error) {
      return this.#explain(error);
    }
    this.forgetPassword();
    say(texts.common.saved);
    return "";
  }

  /** Names the field with the mistake as its label does. @param {unknown} error */
  #explain(error) {
    const { member = "" } = error instanceof Trouble ? error.details : {};
    const mistake = words.mistakes[member];
    if (!mistake) throw error;
    (member === "url" ? this.#url : this.#secret).focus();
    return mistake;
  }

  /** Sends a notice to the stored address, once at a time. */
  async #send() {
    const isStored = this.#url.value.trim() === this.#stored;
    tell(this.#mistake, isStored ? "" : words.saveFirst);
    if (!isStored || this.#test.ariaDisabled === "true") return;
    this.#test.ariaDisabled = "true";
    tell(this.#tested, words.sending);
    tell(this.#tested, await testWebhook().then(() => words.tested(words.taken), failureOf));
    this.#test.ariaDisabled = null;
    say(this.#tested.textContent ?? "");
  }

  async #remove() {
    if (!(await ask(words.removeQuestion, words.remove))) return;
    await this.#do(async () => {
      await removeWebhook();
      this.#show(null);
      say(words.removed);
      byId("notices-title", HTMLElement).focus();
    });
  }

  /** Says what goes wrong. @param {() => Promise<void>} work */
  async #do(work) {
    tell(this.#mistake, "");
    await work().catch((error) => tell(this.#mistake, sentence(messageOf(error))));
  }
}
