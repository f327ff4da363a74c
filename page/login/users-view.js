/// The view of an admin: users, and the sessions and tokens of others.

import { ask, button, byId, el, say } from "../parts/dom.js";
import { PLAIN, addView, field, mistakeLine, onSubmit, passwordInput, tell } from "../parts/forms.js";
import { table } from "../parts/table.js";
import * as access from "../recorder/access.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { Grants } from "./grants.js";

/** @typedef {access.Role} Role */

/** @type {Readonly<Record<Role, string>>} */
const ROLES = { admin: "Admin", user: "User" };

/** @param {Record<string, string | boolean>} attributes @param {Role} role */
function roleChoice(attributes, role) {
  const options = Object.entries(ROLES).map(([value, text]) => el("option", { value, text }));
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
      "Users",
      this.#mistake,
      this.#place,
      this.#form(),
      el("h2", { text: "Sessions and tokens of others" }),
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
    const hint = "An admin manages users; a user tests, lists and shows cameras.";
    const form = el(
      "form",
      { class: "inline", novalidate: true, autocomplete: "off", "aria-label": "New user" },
      field("Name of a new user", this.#name),
      field("Password", this.#password),
      field("Role", this.#role),
      el("button", { id: "users-add", class: "main", text: "Add" }),
      el("p", { class: "hint", text: hint }),
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
    say(`${name} is added`);
  }

  async #load() {
    const users = await access.listUsers();
    const rows = users.map((user) => [user.name, this.#roleOf(user), this.#buttonsOf(user)]);
    this.#place.replaceChildren(table("Who may log in", ["Name", "Role", ""], rows));
    await this.grants.load();
  }

  /** Nobody takes the own role away, so that an admin is always left. @param {access.User} user */
  #roleOf({ name, role }) {
    if (name === this.#self) return ROLES[role];
    const choice = roleChoice({ "aria-label": `Role of ${name}` }, role);
    choice.addEventListener("change", () => {
      const wanted = roleIn(choice);
      this.#change(() => access.changeUser(name, { role: wanted }), `${name} has the role ${ROLES[wanted]}`);
    });
    return choice;
  }

  /** @param {access.User} user */
  #buttonsOf({ name }) {
    if (name === this.#self) return "this is you";
    const open = () => this.passwords.open(name, false, () => this.open());
    const password = button("New password", open, { "aria-label": `New password for ${name}` });
    const remove = button("Remove", () => this.#remove(name), { "aria-label": `Remove ${name}` });
    return el("div", { class: "actions" }, password, remove);
  }

  /** @param {string} name */
  async #remove(name) {
    if (!(await ask(`${name} is removed, with all sessions and tokens. Go on?`, "Remove"))) return;
    await this.#change(() => access.removeUser(name), `${name} is removed`);
    byId("users-title", HTMLElement).focus();
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
