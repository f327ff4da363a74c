/// The view of an admin: users, and the sessions and tokens of others.

import { ask, button, el, refill, say } from "../parts/dom.js";
import { PLAIN, addView, field, mistakeLine, onSubmit, passwordInput, tell } from "../parts/forms.js";
import { table } from "../parts/table.js";
import * as access from "../recorder/access.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";
import { Grants } from "./grants.js";

/** @typedef {access.Role} Role */

/** @param {Record<string, string | boolean>} attributes @param {Role} role */
function roleChoice(attributes, role) {
  const options = Object.entries(texts.login.roles).map(([value, text]) => el("option", { value, text }));
  const choice = el("select", attributes, ...options);
  choice.value = role;
  return choice;
}

/** @param {HTMLSelectElement} choice @returns {Role} */
const roleIn = (choice) => (choice.value === "admin" ? "admin" : "user");

export class UsersView {
  #self = "";
  #place = el("div", { id: "users-list" });
  #mistake = mistakeLine("users-mistake");
  #name = el("input", { id: "users-name", autocomplete: "off", ...PLAIN });
  #password = passwordInput("users-password", "new-password");
  #role = roleChoice({ id: "users-role" }, "user");

  /** @param {import("./password-dialog.js").PasswordDialog} passwords */
  constructor(passwords) {
    this.passwords = passwords;
    this.grants = new Grants("users", (user) => user !== this.#self, true);
    const { sessions, tokens, mistake } = this.grants.elements;
    addView(
      "users",
      texts.login.users,
      this.#mistake,
      this.#place,
      this.#form(),
      el("h2", { text: texts.login.ofOthers }),
      mistake,
      sessions,
      tokens,
    );
  }

  /** @param {access.Session} session */
  show({ user }) {
    this.#self = user;
  }

  open() {
    return this.#change(async () => {}, "");
  }

  forgetPassword() {
    this.#password.value = "";
  }

  #form() {
    const mistake = mistakeLine("users-add-mistake");
    const form = el(
      "form",
      { class: "inline", novalidate: true, autocomplete: "off", "aria-label": texts.login.newUser },
      field(texts.login.userName, this.#name),
      field(texts.common.password, this.#password),
      field(texts.login.role, this.#role),
      el("button", { id: "users-add", class: "main", text: texts.login.add }),
      el("p", { class: "hint", text: texts.login.roleExplained }),
      mistake,
    );
    onSubmit(form, mistake, () => this.#add());
    return form;
  }

  async #add() {
    const name = this.#name.value;
    await access.addUser(name, this.#password.value, roleIn(this.#role));
    this.#name.value = "";
    this.#password.value = "";
    this.#name.focus();
    await this.#load();
    say(texts.login.added(name));
  }

  async #load() {
    const users = await access.listUsers();
    const rows = users.map((user) => [user.name, this.#roleOf(user), this.#buttonsOf(user)]);
    const headings = [texts.common.name, texts.login.role, ""];
    refill(this.#place, [table(texts.login.whoMayLogIn, headings, rows)]);
    await this.grants.load();
  }

  /** Nobody takes the own role away, so that an admin is always left. @param {access.User} user */
  #roleOf({ name, role }) {
    if (name === this.#self) return texts.login.roles[role];
    const choice = roleChoice({ "aria-label": texts.login.roleOf(name), "data-kind": `role ${name}` }, role);
    choice.addEventListener("change", () => {
      const wanted = roleIn(choice);
      const said = texts.login.hasRole(name, texts.login.roles[wanted]);
      this.#change(() => access.changeUser(name, { role: wanted }), said);
    });
    return choice;
  }

  /** @param {access.User} user */
  #buttonsOf({ name }) {
    if (name === this.#self) return texts.login.thisIsYou;
    const open = () => this.passwords.open(name, false, () => this.open());
    const { newPassword, newPasswordFor, remove, removeUser } = texts.login;
    const password = button(newPassword, open, { "aria-label": newPasswordFor(name), "data-kind": `password ${name}` });
    const removal = button(remove, () => this.#remove(name), { "aria-label": removeUser(name) });
    return el("div", { class: "actions" }, password, removal);
  }

  /** @param {string} name */
  async #remove(name) {
    if (!(await ask(texts.login.removeQuestion(name), texts.login.remove))) return;
    await this.#change(() => access.removeUser(name), texts.login.removed(name));
  }

  /** Changes something, and shows what is then. @param {() => Promise<unknown>} change @param {string} said */
  async #change(change, said) {
    tell(this.#mistake, "");
    try {
      await change();
      if (said) say(said);
    } catch (error) {
      tell(this.#mistake, sentence(messageOf(error)));
    }
    await this.#load().catch((error) => tell(this.#mistake, sentence(messageOf(error))));
  }
}
