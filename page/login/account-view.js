/// The view of one's own account: password, sessions, tokens.

import { button, el, say } from "../parts/dom.js";
import { PLAIN, addView, field, mistakeLine, onSubmit } from "../parts/forms.js";
import * as access from "../recorder/access.js";
import { texts } from "../texts/texts.js";
import { Grants } from "./grants.js";
import { NewToken } from "./new-token.js";

/** The last second of a day, by this browser's clock; null for no day. @param {string} day "2027-01-31" */
const endOf = (day) => (day ? Math.floor(new Date(`${day}T23:59:59`).getTime() / 1000) : null);

export class AccountView {
  #user = "";
  #who = el("p", { id: "account-who" });
  #mistake = mistakeLine("account-token-mistake");
  #name = el("input", { id: "account-token-name", autocomplete: "off", ...PLAIN });
  #until = el("input", { id: "account-token-until", type: "date" });
  #made = new NewToken();

  /** @param {import("./password-dialog.js").PasswordDialog} passwords */
  constructor(passwords) {
    this.grants = new Grants("account", (user) => user === this.#user, false);
    const { sessions, tokens, mistake } = this.grants.elements;
    const change = button(texts.login.changePassword, () => passwords.open(this.#user, true, () => this.open()), {
      id: "account-password",
    });
    const others = button(texts.login.endOthers, () => this.#endOthers(), { id: "account-end-others" });
    addView(
      "account",
      texts.login.account,
      this.#who,
      mistake,
      el("div", { class: "actions" }, change),
      el("h2", { text: texts.login.whereLoggedIn }),
      sessions,
      el("div", { class: "actions" }, others),
      el("h2", { text: texts.login.tokensForScripts }),
      el("p", { class: "hint", text: texts.login.tokensExplained }),
      tokens,
      this.#form(),
      this.#made.element,
    );
  }

  /** @param {access.Session} session */
  show({ user, role }) {
    this.#user = user;
    this.#who.textContent = role === "admin" ? texts.login.anAdmin(user) : texts.login.aUser(user);
  }

  open() {
    return this.grants.change(async () => {}, "");
  }

  /** A token that was made is shown no more. */
  forget() {
    this.#made.forget();
  }

  #form() {
    const form = el(
      "form",
      { class: "inline", novalidate: true, autocomplete: "off", "aria-label": texts.login.newToken },
      field(texts.login.tokenName, this.#name),
      field(texts.login.goodUntil, this.#until),
      el("button", { id: "account-token-make", class: "main", text: texts.login.makeToken }),
      this.#mistake,
    );
    onSubmit(form, this.#mistake, () => this.#make());
    return form;
  }

  async #make() {
    const name = this.#name.value.trim();
    this.#made.show(name, await access.addToken(name, endOf(this.#until.value)));
    this.#name.value = "";
    this.#until.value = "";
    await this.grants.load();
    say(texts.login.tokenMade(name));
  }

  /** Ends all that there are by now, of which not each is shown. */
  #endOthers() {
    const end = async () => {
      await this.grants.load();
      const others = this.grants.sessions.filter(({ isThis }) => !isThis);
      await Promise.all(others.map(({ id }) => access.endSession(id)));
    };
    return this.grants.change(end, texts.login.othersEnded);
  }
}
