/// The form that changes the open camera. What somebody else changes meanwhile is told, and nothing typed is lost
/// until another camera is edited.

import { spreadAddress, watchAddress } from "../parts/camera-fields.js";
import { button, el, say } from "../parts/dom.js";
import { PLAIN, field, mistakeLine, onSubmit, passwordInput, tell } from "../parts/forms.js";
import { changeCamera, readCamera } from "../recorder/cameras.js";
import { movedTo } from "../recorder/moving.js";
import { Trouble } from "../recorder/request.js";
import { portMistake } from "../text/address.js";
import { texts } from "../texts/texts.js";
import { TrustPart } from "./trust-part.js";

/**
 * @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera
 * @typedef {import("../recorder/cameras.js").CameraFields} CameraFields
 */

const words = texts.camera;
const { common } = texts;
const CHANGED_MEANWHILE = 412;

/** Members with their fields. */
const TEXTS = /** @type {const} */ (["name", "host", "port", "user", "channel", "sourcePath"]);
/** @typedef {(typeof TEXTS)[number]} TextMember */

/** With another one of these the recorder forgets streams and facts that do not come with it. */
const PLACE = ["host", "port", "user"];

const LABELS = {
  name: common.name,
  host: common.address,
  port: common.port,
  user: common.user,
  channel: common.channel,
  sourcePath: common.path,
};

const LABELLED = { "aria-labelledby": "camera-edit-title" };

/** @param {TextMember} member */
const inputOf = (member) =>
  el("input", { id: `camera-${member}`, autocomplete: "off", ...(member === "name" ? {} : PLAIN) });

export class CameraEdit {
  /** @type {StoredCamera | null} what is stored, as far as this form knows; null once it was saved or given up */
  #base = null;
  #inputs = {
    name: inputOf("name"),
    host: inputOf("host"),
    port: inputOf("port"),
    user: inputOf("user"),
    channel: inputOf("channel"),
    sourcePath: inputOf("sourcePath"),
  };
  #password = passwordInput("camera-password", "new-password");
  #enabled = el("input", { type: "checkbox", id: "camera-enabled" });
  #trust = new TrustPart();
  #mistake = mistakeLine("camera-edit-mistake");
  element = el(
    "form",
    { id: "camera-edit", class: "card", novalidate: true, autocomplete: "off", hidden: true, ...LABELLED },
    el("h2", { id: LABELLED["aria-labelledby"], text: words.editTitle }),
    el("div", { class: "grid two" }, ...this.#fields()),
    el("label", { class: "tick" }, this.#enabled, words.enabled),
    this.#trust.element,
    this.#mistake,
    el(
      "div",
      { class: "actions" },
      el("button", { id: "camera-save", class: "main", text: common.save }),
      button(common.cancel, () => this.finished(null)),
    ),
  );

  /** @param {(saved: StoredCamera | null) => void} finished null when nothing has changed */
  constructor(finished) {
    this.finished = finished;
    onSubmit(this.element, this.#mistake, () => this.#save());
    this.element.addEventListener("input", ({ target }) => {
      if (target instanceof HTMLElement) target.removeAttribute("aria-invalid");
    });
    watchAddress(this.#addressFields, () => spreadAddress(this.#addressFields));
  }

  get #addressFields() {
    const { host, port, user, sourcePath } = this.#inputs;
    return { address: host, port, user, password: this.#password, path: sourcePath };
  }

  #fields() {
    const { sourcePath, ...others } = this.#inputs;
    this.#inputs.port.inputMode = "numeric";
    for (const input of [others.host, others.port, sourcePath]) input.classList.add("code");
    const [name, host, port, user, channel] = Object.entries(others).map(([member, input]) =>
      field(LABELS[/** @type {TextMember} */ (member)], input),
    );
    const password = field(words.newPassword, this.#password, words.passwordStays);
    const path = field(LABELS.sourcePath, sourcePath, words.pathHint);
    return [name, host, port, user, password, channel, path].filter((box) => box !== undefined);
  }

  /** @param {StoredCamera} camera */
  open(camera) {
    this.#base = camera;
    for (const member of TEXTS) this.#inputs[member].value = String(camera[member]);
    this.#enabled.checked = camera.enabled;
    this.#trust.open(camera);
    this.#password.value = "";
    this.#mistake.hidden = true;
    this.element.hidden = false;
    this.#inputs.name.focus();
  }

  focusPassword() {
    this.#password.focus();
  }

  /** What was changed beside it is not somebody else's. @param {StoredCamera} camera */
  renew(camera) {
    if (this.element.hidden) return;
    this.#base = camera;
    this.#enabled.checked = camera.enabled;
  }

  close() {
    this.leave();
    this.#base = null;
  }

  /** Its view is left. What was typed stays, but for the password. */
  leave() {
    this.element.hidden = true;
    this.forgetPassword();
  }

  /** Shows what was typed of this camera when it was left, if something was. @param {number} id @returns {boolean} */
  reopen(id) {
    const base = this.#base;
    if (base?.id !== id || Object.keys(this.#changes(base)).length === 0) return false;
    this.element.hidden = false;
    tell(this.#mistake, words.notSavedYet);
    return true;
  }

  forgetPassword() {
    this.#password.value = "";
  }

  /** What is not as it is stored. @param {StoredCamera} base */
  #changes(base) {
    /** @type {Partial<CameraFields>} */
    const change = this.#trust.change;
    const { port, ...others } = this.#inputs;
    for (const member of TEXTS) {
      if (member !== "port" && others[member].value !== base[member]) change[member] = others[member].value;
    }
    if (Number(port.value) !== base.port) change.port = Number(port.value);
    if (this.#enabled.checked !== base.enabled) change.enabled = this.#enabled.checked;
    if (this.#password.value) change.password = this.#password.value;
    return PLACE.some((member) => member in change) ? { ...change, ...movedTo(base, { ...base, ...change }) } : change;
  }

  /** @returns {Promise<string | void>} */
  async #save() {
    const base = this.#base;
    if (!base) return;
    spreadAddress(this.#addressFields);
    const { port } = this.#inputs;
    if (port.value.trim() === "" || portMistake(port.value)) return this.#pointAt(port, common.typePort);
    const change = this.#changes(base);
    if (Object.keys(change).length === 0) return this.finished(null);
    try {
      const saved = await changeCamera(base.id, change, base.revision);
      say(common.saved);
      this.finished(saved);
    } catch (error) {
      return this.#explain(error, base);
    }
  }

  /** @param {HTMLElement} input @param {string} mistake */
  #pointAt(input, mistake) {
    input.setAttribute("aria-invalid", "true");
    input.focus();
    return mistake;
  }

  /** @param {unknown} error @param {StoredCamera} base */
  async #explain(error, base) {
    if (!(error instanceof Trouble)) throw error;
    if (error.status === CHANGED_MEANWHILE) return this.#merge(base, await readCamera(base.id));
    const input = { ...this.#inputs, password: this.#password }[/** @type {TextMember} */ (error.details.member)];
    if (input) this.#pointAt(input, "");
    throw error;
  }

  /**
   * Takes over what somebody else changed, but for what was changed here.
   * @param {StoredCamera} base
   * @param {StoredCamera} stored
   */
  #merge(base, stored) {
    const theirs = TEXTS.filter((member) => stored[member] !== base[member]);
    for (const member of theirs) {
      const input = this.#inputs[member];
      if (input.value === String(base[member])) input.value = String(stored[member]);
    }
    const said = theirs.map((member) => words.isNow(LABELS[member], String(stored[member])));
    if (stored.enabled !== base.enabled) said.push(stored.enabled ? words.isOnNow : words.isOffNow);
    if (this.#enabled.checked === base.enabled) this.#enabled.checked = stored.enabled;
    this.#base = stored;
    return said.length === 0 ? this.#save() : words.conflict(said.join(", ")); // facts of it concern nobody here
  }
}
