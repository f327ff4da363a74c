/// The question for user and password: a view of its own, at the start, and over all others when the recorder no longer
/// knows this browser. They stay as they are behind it. The browser's own box never comes.

import { button, el } from "../parts/dom.js";
import { PLAIN, field, mistakeLine, newPasswordMistake, onSubmit, passwordInput, tell } from "../parts/forms.js";
import { Trouble } from "../recorder/request.js";
import { loginTrouble } from "../text/login-words.js";
import { messageOf } from "../text/text.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../recorder/access.js").Session} Session
 *
 * @typedef {object} Wanted
 * @property {string} title
 * @property {string} [text]
 * @property {string} [mistake] what went wrong before
 * @property {string} [user] who has to log in; "" for anybody
 * @property {boolean} [isFirst] a user is made
 * @property {boolean} [isOver] the page is behind it, and may be looked at instead
 * @property {(user: string, password: string, stay: boolean) => Promise<Session>} enter
 */

export class LoginView {
  #title = el("h1", { id: "login-title" });
  #text = el("p", { id: "login-text" });
  #mistake = mistakeLine("login-mistake");
  #user = el("input", { id: "login-user", autocomplete: "username", ...PLAIN });
  #password = passwordInput("login-password", "current-password");
  #again = passwordInput("login-again", "new-password");
  #againField = field(texts.login.samePassword, this.#again);
  #stay = el("input", { id: "login-stay", type: "checkbox" });
  #stayField = el("label", { class: "tick" }, this.#stay, texts.login.stay);
  #go = el("button", { id: "login-go", class: "main", text: texts.login.logIn });
  #later = button(texts.login.later, () => this.#dialog.close(), { id: "login-later" });
  #other = button(texts.login.somebodyElse, () => location.reload(), { id: "login-other", class: "link" });
  #form = el("form", { id: "login-form", novalidate: true, "aria-labelledby": "login-title" });
  #dialog = el("dialog", { id: "login", "aria-labelledby": "login-title" }, this.#form);
  #timer = 0;
  /** @type {Wanted | null} */
  #wanted = null;
  /** @type {(session: Session | null) => void} */
  #done = () => {};

  constructor() {
    const openLine = el("p", { class: "banner warn", text: texts.banners.notEncrypted });
    openLine.hidden = window.isSecureContext;
    this.#form.append(
      el("p", { class: "brand", text: texts.common.product }),
      this.#title,
      this.#text,
      this.#mistake,
      openLine,
      field(texts.common.user, this.#user),
      field(texts.common.password, this.#password),
      this.#againField,
      this.#stayField,
      el("div", { class: "actions" }, this.#go, this.#later, this.#other),
    );
    onSubmit(
      this.#form,
      this.#mistake,
      () => this.#enter(),
      (error) => this.#words(error),
    );
    this.#dialog.addEventListener("cancel", (event) => {
      if (!this.#wanted?.isOver) event.preventDefault();
    });
    this.#dialog.addEventListener("close", () => this.#closed());
    document.body.append(this.#dialog);
  }

  /**
   * Asks until somebody is logged in.
   * @param {Wanted} wanted
   * @returns {Promise<Session | null>} null when a page behind it is looked at instead
   */
  ask(wanted) {
    const { title, text = "", mistake = "", user = "", isFirst = false, isOver = false } = wanted;
    this.#wanted = wanted;
    this.#title.textContent = title;
    tell(this.#text, text);
    tell(this.#mistake, mistake);
    this.#user.value = user;
    this.#user.readOnly = user !== "";
    this.#password.autocomplete = isFirst ? "new-password" : "current-password";
    this.#againField.hidden = !isFirst;
    this.#stayField.hidden = isFirst;
    this.#go.textContent = this.#goText;
    this.#later.hidden = !isOver;
    this.#other.hidden = !isOver;
    this.#dialog.showModal();
    (user ? this.#password : this.#user).focus();
    return new Promise((resolve) => (this.#done = resolve));
  }

  get isOpen() {
    return this.#dialog.open;
  }

  /** @param {Session} session perhaps of a login elsewhere */
  finish(session) {
    this.#done(session);
    this.#wanted = null;
    this.#dialog.close();
    const { activeElement } = document; // where nothing had the focus before, the closed dialog keeps it for a frame
    if (activeElement instanceof HTMLElement && this.#dialog.contains(activeElement)) activeElement.blur();
  }

  forgetPassword() {
    this.#password.value = "";
    this.#again.value = "";
  }

  #closed() {
    this.forgetPassword();
    clearTimeout(this.#timer);
    this.#go.removeAttribute("aria-disabled");
    if (!this.#wanted) return;
    if (this.#wanted.isOver) this.#done(null);
    else this.#dialog.showModal(); // a browser closes it at the second Esc, whatever the page says
  }

  /** @returns {Promise<string | void>} what is wrong with the fields */
  async #enter() {
    if (!this.#wanted) return;
    if (this.#user.value === "") {
      this.#user.focus();
      return texts.login.typeUser;
    }
    const wrong = this.#wanted.isFirst ? newPasswordMistake(this.#password, this.#again) : "";
    if (wrong) return wrong;
    this.finish(await this.#wanted.enter(this.#user.value, this.#password.value, this.#stay.checked));
  }

  /** @param {unknown} error */
  #words(error) {
    if (!(error instanceof Trouble)) return messageOf(error);
    if (error.waitSeconds > 0) this.#count(error.waitSeconds);
    if (error.kind === "signedOut") this.#password.select();
    return loginTrouble(error);
  }

  /** Nothing is sent for so long. @param {number} seconds */
  #count(seconds) {
    if (seconds > 0) this.#timer = window.setTimeout(() => this.#count(seconds - 1), 1000);
    this.#go.setAttribute("aria-disabled", String(seconds > 0));
    this.#go.textContent = seconds > 0 ? texts.login.wait(seconds) : this.#goText;
    if (seconds === 0) tell(this.#mistake, texts.login.tryNow);
  }

  get #goText() {
    return this.#wanted?.isFirst ? texts.login.makeUser : texts.login.logIn;
  }
}
