/// The view of one stored camera.

import { button, byId, download, el, say } from "../parts/dom.js";
import { addView, mistakeLine, tell } from "../parts/forms.js";
import * as api from "../recorder/cameras.js";
import { Trouble } from "../recorder/request.js";
import { texts } from "../texts/texts.js";
import { plainName } from "../text/stream-lines.js";
import { stateMark } from "./camera-card.js";
import { CameraEdit } from "./camera-edit.js";
import { CameraTest } from "./camera-test.js";
import { ChangesPart } from "./changes-part.js";
import { FactsPart } from "./facts-part.js";
import { LivePicture } from "./live-picture.js";
import { StreamsPart } from "./streams-part.js";
import { firstLookOf, kindOf, lastingOf, outcomeOf, placeOf, reasonOf, refusesStored, stateOf } from "./camera-words.js";

/** @typedef {api.StoredCamera} StoredCamera */

const words = texts.camera;
const UNKNOWN = 404;
const CHANGED_MEANWHILE = 412;

/** What streams and facts are shown of. @param {StoredCamera} camera */
const shownOf = ({ revision, streams }) => JSON.stringify([revision, streams]);

/** @param {unknown} error */
const isGone = (error) => error instanceof Trouble && error.status === UNKNOWN;

export class CameraView {
  #id = 0;
  /** @type {StoredCamera | null} */
  #camera = null;
  #isAdmin = false;
  #state = el("p", { id: "camera-state" });
  #about = el("p", { id: "camera-about", class: "muted" });
  #mistake = mistakeLine("camera-mistake");
  #typeNew = button(words.typeNewPassword, () => this.#editPassword(), { id: "camera-type-new", class: "main" });
  #refused = el("p", { id: "camera-refused", hidden: true }, this.#typeNew);
  #firstLook = el("p", { id: "camera-first-look", class: "hint" });
  #remarks = el("ul", { id: "camera-remarks", class: "notes", hidden: true });
  #picture = new LivePicture(() => this.#reread());
  #test = new CameraTest(() => this.#reread());
  #streams = new StreamsPart();
  #facts = new FactsPart(() => this.#reread());
  #changes = new ChangesPart((event) => this.#hear(event));
  #edit = new CameraEdit((saved) => this.#edited(saved));
  #editButton = button(words.edit, () => this.#openEdit(), { id: "camera-edit-open", "aria-expanded": "false" });
  #switch = button(words.switchOff, () => this.#turn(), { id: "camera-switch" });
  #export = button(words.export, () => this.#do(() => this.#exportModel()), { id: "camera-export" });
  #delete = button(words.delete, () => this.#do(() => this.#remove()), { id: "camera-delete" });
  #actions = el(
    "div",
    { class: "actions", role: "group", "aria-label": words.actions },
    ...[this.#test.button, this.#editButton, this.#switch, this.#export, this.#delete],
  );
  #body = el(
    "div",
    { id: "camera-body", class: "stored-camera", hidden: true },
    el("div", { class: "camera-top" }, this.#picture.element, el("div", { class: "side" }, ...this.#side())),
    this.#edit.element,
    this.#streams.element,
    this.#facts.element,
    this.#changes.element,
  );

  /**
   * @param {(camera: StoredCamera, askedAt: number, isOpen: boolean) => void} removed is told when it was asked for, in
   * milliseconds since 1970, and whether the view still shows it
   */
  constructor(removed) {
    this.removed = removed;
    const back = el("p", {}, el("a", { href: "#cameras", id: "camera-back", text: words.back }));
    addView("camera", texts.cameras.title, back, this.#mistake, this.#body);
    this.title = byId("camera-title", HTMLElement);
  }

  #side() {
    return [this.#state, this.#about, this.#firstLook, this.#refused, this.#actions, this.#test.element, this.#remarks];
  }

  /** @param {import("../recorder/access.js").Session} session */
  show({ role }) {
    this.#isAdmin = role === "admin";
    this.#facts.isAdmin = this.#isAdmin;
    for (const part of [this.#editButton, this.#switch, this.#delete]) part.hidden = !this.#isAdmin;
  }

  /** @param {number} id */
  async open(id) {
    this.close();
    this.#id = id;
    this.#body.hidden = true;
    this.title.textContent = texts.cameras.unnamed(id);
    tell(this.#mistake, "");
    try {
      const camera = await api.readCamera(id);
      if (this.#id !== id) return; // another one was opened meanwhile
      this.#fill(camera);
      say(texts.changes.isNow(api.nameOf(camera), stateOf(camera).word)); // the heading had its number until now
      this.#picture.open(camera);
      this.#changes.open(id);
      if (this.#isAdmin) this.#showEdit(this.#edit.reopen(id));
    } catch (error) {
      if (this.#id === id) this.#tellUnread(error);
    }
  }

  close() {
    this.#id = 0;
    for (const part of [this.#picture, this.#facts, this.#changes, this.#test]) part.close();
    this.#edit.leave();
    this.#showEdit(false);
    this.#streams.forgetPassword();
    this.#remarks.hidden = true;
    this.#camera = null;
  }

  forgetPasswords() {
    this.#streams.forgetPassword();
    this.#edit.forgetPassword();
  }

  /** @param {unknown} error */
  #tellUnread(error) {
    if (isGone(error)) this.#setTitle(words.gone);
    tell(this.#mistake, isGone(error) ? words.goneText : reasonOf(error));
  }

  /** @param {string} title */
  #setTitle(title) {
    this.title.textContent = title;
    document.title = texts.common.title(title);
  }

  /** @param {StoredCamera} camera */
  #fill(camera) {
    const isChanged = !this.#camera || shownOf(camera) !== shownOf(this.#camera);
    this.#camera = camera;
    this.#setTitle(api.nameOf(camera));
    this.#state.replaceChildren(stateMark(stateOf(camera)), ` ${lastingOf(camera)}`);
    this.#about.textContent = words.about(kindOf(camera), placeOf(camera));
    this.#refused.hidden = !this.#isAdmin || !camera.enabled || !refusesStored(camera.state?.cause ?? "");
    this.#firstLook.textContent = firstLookOf(camera);
    this.#switch.textContent = camera.enabled ? words.switchOff : words.switchOn;
    this.#test.show(camera);
    this.#changes.show(camera);
    this.#body.hidden = false;
    if (!isChanged) return; // nothing that is open is closed
    this.#streams.show(camera);
    this.#facts.show(camera);
  }

  /** What the recorder knows now; what is shown of it goes on. */
  async #reread() {
    const id = this.#id;
    try {
      const camera = await api.readCamera(id);
      if (this.#id === id) this.#fill(camera);
    } catch (error) {
      if (this.#id === id && isGone(error)) this.#leave(error);
    }
  }

  /** Somebody else has deleted it. @param {unknown} error */
  #leave(error) {
    const hadFocus = this.#body.contains(document.activeElement);
    this.close();
    this.#body.hidden = true;
    this.#tellUnread(error);
    if (hadFocus) this.title.focus();
  }

  /** It has changed, which a picture may have told before. @param {import("../recorder/events.js").CameraEvent} event */
  #hear({ cause }) {
    const camera = this.#camera;
    if (!camera?.enabled) return;
    if (cause !== camera.state?.cause) say(texts.changes.isNow(api.nameOf(camera), outcomeOf(cause).word));
    this.#reread();
  }

  /** Shows another state of it, with pictures anew. @param {StoredCamera} camera */
  #refill(camera) {
    if (this.#id !== camera.id) return;
    this.#fill(camera);
    this.#picture.open(camera);
  }

  /** Says what goes wrong. @param {() => Promise<void>} work */
  async #do(work) {
    tell(this.#mistake, "");
    const id = this.#id;
    await work().catch((error) => {
      if (this.#id === id) tell(this.#mistake, reasonOf(error));
    });
  }

  // ---- changing it ----

  #openEdit() {
    if (!this.#edit.element.hidden) return this.#edited(null);
    if (!this.#camera) return;
    this.#showEdit(true);
    this.#edit.open(this.#camera);
  }

  #editPassword() {
    if (this.#edit.element.hidden) this.#openEdit();
    this.#edit.focusPassword();
  }

  /** @param {boolean} isOpen */
  #showEdit(isOpen) {
    this.#editButton.setAttribute("aria-expanded", String(isOpen));
  }

  /** @param {StoredCamera | null} saved */
  #edited(saved) {
    this.#edit.close();
    this.#showEdit(false);
    if (saved) this.#refill(saved);
    this.#editButton.focus();
  }

  #turn() {
    return this.#do(async () => {
      const camera = this.#camera;
      if (!camera) return;
      const changed = await this.#change({ enabled: !camera.enabled }, camera);
      say(changed.enabled ? words.isOn : words.isOff);
      this.#edit.renew(changed);
      this.#refill(changed);
    });
  }

  /**
   * Also when somebody else changed something else of it meanwhile.
   * @param {Partial<api.CameraFields>} change
   * @param {StoredCamera} camera
   */
  async #change(change, { id, revision }) {
    try {
      return await api.changeCamera(id, change, revision);
    } catch (error) {
      if (!(error instanceof Trouble) || error.status !== CHANGED_MEANWHILE) throw error;
      return api.changeCamera(id, change, (await api.readCamera(id)).revision);
    }
  }

  async #exportModel() {
    const camera = this.#camera;
    if (!camera) return;
    const { file, remarks } = await api.exportModel(camera.id);
    download(`${plainName(camera.name, camera.id)}.json`, file, "application/json");
    say(words.exported);
    this.#remarks.replaceChildren(...[words.exported, ...remarks].map((text) => el("li", { text })));
    this.#remarks.hidden = false;
  }

  async #remove() {
    const camera = this.#camera;
    if (!camera) return;
    const [askedAt, address] = [Date.now(), location.hash];
    await api.removeCamera(camera.id);
    this.removed(camera, askedAt, location.hash === address);
  }
}
