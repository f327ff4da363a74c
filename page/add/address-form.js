/// What somebody types to add a camera: an address, and the login of the camera.

import { button, el, showMistake } from "../parts/dom.js";
import { PLAIN, field, passwordInput, revealButton } from "../parts/forms.js";
import { isUsualPort } from "../recorder/finding.js";
import { hidesLogin, hostMistake, inAddress, portMistake, splitAddress } from "../text/address.js";
import { texts } from "../texts/texts.js";

const { add, common } = texts;

/**
 * @typedef {object} Place
 * @property {string} host
 * @property {number[]} ports none for the usual ones
 * @property {string} user
 * @property {string} password
 */

export class AddressForm {
  #path = "";
  #place = ""; // what stands in the address since it was split
  #known = el("a", { id: "add-known", href: "#one", text: add.knowsData });
  address = el("input", { id: "add-address", class: "code", autocomplete: "off", ...PLAIN });
  user = el("input", { id: "add-user", autocomplete: "off", ...PLAIN });
  password = passwordInput("add-password", "new-password");
  find = el("button", { id: "add-find", class: "main", text: add.find });
  stop = button(common.stop, () => this.handlers.stop(), { id: "add-stop", hidden: true });
  search = button(add.searchNetwork, () => this.#isHeld || this.handlers.search(), { id: "add-search" });
  #isBusy = false;
  #isHeld = false;
  element = this.#build();

  /** @param {{find: (place: Place) => void, refused: () => void, stop: () => void, search: () => void}} handlers */
  constructor(handlers) {
    this.handlers = handlers;
    this.element.addEventListener("submit", (event) => {
      event.preventDefault();
      if (this.#isBusy || this.#isHeld) return;
      const place = this.#read();
      if (place) handlers.find(place);
      else handlers.refused();
    });
    this.element.addEventListener("keydown", (event) => {
      if (event.key === "Escape" && !this.stop.hidden) handlers.stop();
    });
    this.address.addEventListener("change", () => this.#spread());
    this.address.addEventListener("paste", () => setTimeout(() => this.#spread()));
  }

  #build() {
    return el(
      "form",
      { id: "add-form", autocomplete: "off", novalidate: true, "aria-labelledby": "add-title" },
      this.#addressField(),
      el("div", { class: "add-login" }, field(common.user, this.user), this.#passwordField(), this.#known),
    );
  }

  #addressField() {
    this.address.setAttribute("aria-describedby", "add-address-hint");
    return el(
      "div",
      { class: "field" },
      el("label", { for: this.address.id, text: add.address }),
      el("div", { class: "add-first" }, this.address, this.find, this.stop, this.search),
      el("p", { id: "add-address-mistake", class: "mistake", hidden: true }),
      el("p", { id: "add-address-hint", class: "hint", text: add.addressHint }),
    );
  }

  #passwordField() {
    return el(
      "div",
      { class: "field" },
      el("label", { for: this.password.id, text: common.password }),
      el("div", { class: "with-button" }, this.password, revealButton(this.password)),
    );
  }

  /** Puts the parts of a whole address into their fields, so that no password can be read. */
  #spread() {
    if (this.address.value === this.#place || hidesLogin(this.address.value)) return;
    const { host, port, user, password, path } = splitAddress(this.address.value);
    this.setPlace(host, isUsualPort(Number(port)) ? "" : port);
    this.#path = path;
    if (user) this.user.value = user;
    if (password) this.password.value = password;
  }

  /** @param {string} host @param {string} port "" for the usual ones */
  setPlace(host, port) {
    this.#place = port ? `${inAddress(host)}:${port}` : host;
    this.address.value = this.#place;
    this.#path = "";
  }

  /** The path of a whole address that was put in, "" for none. */
  get path() {
    return this.#path;
  }

  /** @returns {Place | null} null, with the focus on the mistake, if there is one */
  #read() {
    this.#spread();
    const { host, port } = splitAddress(this.address.value);
    const wrong = hostMistake(host) || (port && portMistake(port));
    showMistake(this.address, host === "" ? add.noAddress : wrong);
    if (wrong) {
      this.address.focus();
      return null;
    }
    return { host, ports: port ? [Number(port)] : [], user: this.user.value, password: this.password.value };
  }

  /** @param {boolean} isBusy nothing can be found meanwhile */
  set busy(isBusy) {
    this.#isBusy = isBusy;
    this.#mark();
    this.canStop = isBusy;
  }

  /** @param {boolean} isHeld what was found is being saved: it is not exchanged for something else meanwhile */
  set held(isHeld) {
    this.#isHeld = isHeld;
    this.#mark();
  }

  #mark() {
    this.find.ariaDisabled = this.#isBusy || this.#isHeld ? "true" : null;
    this.search.ariaDisabled = this.#isHeld ? "true" : null;
  }

  /** @param {boolean} canStop something runs that Stop ends */
  set canStop(canStop) {
    if (!canStop && document.activeElement === this.stop) this.find.focus();
    this.stop.hidden = !canStop;
  }

  forgetPassword() {
    this.#spread();
    if (hidesLogin(this.address.value)) this.address.value = "";
    this.password.value = "";
  }
}
