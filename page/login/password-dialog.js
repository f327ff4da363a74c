/// The dialog for a new password: somebody's own, which needs the old one, or another user's.

import { button, el, say } from "../parts/dom.js";
import { PLAIN, field, mistakeLine, newPasswordMistake, onSubmit, passwordInput } from "../parts/forms.js";
import { changeUser } from "../recorder/access.js";
import { Trouble } from "../recorder/request.js";
import { loginTrouble } from "../text/login-words.js";
import { messageOf } from "../text/text.js";
import { texts } from "../texts/texts.js";

export class PasswordDialog {
  #user = el("input", { id: "password-user", autocomplete: "username", readonly: true, ...PLAIN });
  #old = passwordInput("password-old", "current-password");
  #oldField = field(texts.login.oldPassword, this.#old);
  #new = passwordInput("password-new", "new-password");
  #again = passwordInput("password-again", "new-password");
  #title = el("h2", { id: "password-title", text: texts.login.newPassword });
  #mistake = mistakeLine("password-mistake");
  #form = el("form", { novalidate: true, "aria-labelledby": "password-title" });
  #dialog = el("dialog", { id: "password", "aria-labelledby": "password-title" }, this.#form);

  #changed = () => {};

  constructor() {
    this.#form.append(
      this.#title,
      this.#mistake,
      field(texts.common.user, this.#user),
      this.#oldField,
      field(texts.login.newPassword, this.#new, texts.login.othersEnd),
      field(texts.login.samePassword, this.#again),
      el(
        "div",
        { class: "actions" },
        el("button", { id: "password-save", class: "main", text: texts.login.changeIt }),
        button(texts.common.cancel, () => this.#dialog.close()),
      ),
    );
    onSubmit(this.#form, this.#mistake, () => this.#save(), wordsOf);
    this.#dialog.addEventListener("close", () => this.forget());
    document.body.append(this.#dialog);
  }

  /** @param {string} user @param {boolean} isOwn @param {() => void} changed */
  open(user, isOwn, changed) {
    this.#changed = changed;
    this.#user.value = user;
    this.#oldField.hidden = !isOwn;
    this.#mistake.hidden = true;
    this.#dialog.showModal();
    (isOwn ? this.#old : this.#new).focus();
  }

  forget() {
    for (const input of [this.#old, this.#new, this.#again]) input.value = "";
  }

  async #save() {
    const wrong = newPasswordMistake(this.#new, this.#again);
    if (wrong) return wrong;
    const password = this.#new.value;
    const old = this.#oldField.hidden ? {} : { oldPassword: this.#old.value };
    await changeUser(this.#user.value, { password, ...old });
    this.#dialog.close();
    say(texts.login.passwordChanged);
    this.#changed();
    return "";
  }
}

/** @param {unknown} error */
const wordsOf = (error) => (error instanceof Trouble ? loginTrouble(error) : messageOf(error));
