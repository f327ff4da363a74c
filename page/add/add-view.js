/// The view Add: from an address and a login, or from the network, to stored cameras. A camera is contacted by Find
/// alone, and then for the pictures and figures of what was found; leaving the view or Stop ends that.

import { ask, el, say } from "../parts/dom.js";
import { addView } from "../parts/forms.js";
import { listCameras } from "../recorder/cameras.js";
import { verdictNamed } from "../recorder/causes.js";
import { findStreams } from "../recorder/finding.js";
import { byChannel, freeName } from "../recorder/to-store.js";
import { Refusals } from "../testing/refusals.js";
import { texts } from "../texts/texts.js";
import { AddressForm } from "./address-form.js";
import { failureCard, failureOf, failureOfTrouble } from "./failure.js";
import { FoundCamera } from "./found-camera.js";
import { FoundChannels } from "./found-channels.js";
import { headOf, kindOf } from "./found-head.js";
import { NetworkSearch } from "./network-search.js";
import { Progress } from "./progress.js";
import { SavedPanel } from "./saved-panel.js";

const { add, common } = texts;

/**
 * @typedef {import("./address-form.js").Place} Place
 * @typedef {import("../recorder/finding.js").Found} Found
 * @typedef {import("../recorder/finding.js").FindStep} FindStep
 */

const REFUSALS_BEFORE_ASKING = 2;

/** @param {FindStep} line */
function stepText({ step, ports, login, streams }) {
  if (step === "ports") return add.portsAnswer(ports);
  if (step === "login") return add.logins[login] ?? login;
  if (step === "onvif") return add.onvifNames(streams);
  return streams === 0 ? add.streamsKnown(0, 0) : ""; // which of them are sure is told in the end
}

/** Streams that were worked out, and not asked, may not be there: their pictures will tell. @param {Found} found */
const knownText = ({ streams }) => add.streamsKnown(streams.filter(({ asked }) => asked).length, streams.length);

/** Where they cannot be read, a name may be there twice. */
const namesTaken = () =>
  listCameras().then(
    (cameras) => cameras.map(({ name }) => name),
    () => [],
  );

export class AddView {
  /** @type {AbortController | null} while it looks for streams */
  #running = null;
  #refusals = new Refusals();
  /** What stands under the form, and holds a login. @type {FoundCamera | FoundChannels | SavedPanel | null} */
  #outcome = null;
  #progress = new Progress();
  #intro = el("p", { class: "hint", text: add.whatFindDoes });
  #place = el("div", { id: "add-outcome" }, this.#intro);
  #form = new AddressForm({
    find: (place) => this.#find(place),
    refused: () => this.#forgetFailure(),
    stop: () => this.#stop(),
    search: () => this.#search(),
  });
  #network = new NetworkSearch(
    (host, port) => this.#use(host, port),
    (isBusy) => (this.#form.busy = isBusy),
  );

  constructor() {
    addView("add", add.title, this.#form.element, this.#network.element, this.#progress.element, this.#place);
  }

  /** Nothing is left of a camera that was saved before. At the start of the page, typing begins in the address. */
  open() {
    if (this.#outcome instanceof SavedPanel) this.#forgetSaved();
    if (document.activeElement === document.body) this.#form.address.focus();
  }

  /** What runs ends. */
  close() {
    this.#stop();
  }

  forgetPasswords() {
    this.#stop();
    this.#clear();
    this.#form.forgetPassword();
    this.#network.forgetPasswords();
    this.#refusals.forgetPasswords();
  }

  // ---- looking for streams ----

  /** @param {Place} place */
  async #find(place) {
    const login = { host: place.host, port: place.ports[0] ?? 0, user: place.user, password: place.password };
    const isRisky = this.#refusals.count(login) >= REFUSALS_BEFORE_ASKING;
    if (isRisky && !(await ask(common.lockQuestion, common.tryAnyway))) return;
    const running = this.#begin(place.host);
    try {
      const taken = namesTaken();
      const found = await findStreams(place, (line) => this.#step(line), running.signal);
      this.#refusals.note(login, verdictNamed(found.cause));
      const names = await taken;
      if (this.#running !== running) return; // it was stopped, or something else is looked for
      if (found.cause === "ok") this.#show(found, place, names);
      else this.#fail(failureOf(found.cause, place.user !== "" || place.password !== ""));
    } catch (error) {
      if (this.#running === running) this.#fail(failureOfTrouble(error, place.user !== ""));
    } finally {
      if (this.#running === running) this.#end();
    }
  }

  /** @param {string} host */
  #begin(host) {
    this.#stop();
    this.#clear();
    this.#network.hide();
    this.#place.replaceChildren();
    this.#running = new AbortController();
    this.#form.busy = true;
    this.#progress.begin((seconds) => add.asking(host, seconds));
    say(add.asksNow(host));
    return this.#running;
  }

  /** @param {FindStep} line */
  #step(line) {
    const text = stepText(line);
    if (text) this.#progress.step(text);
    if (line.step === "login" && line.maker.value) this.#progress.step(add.madeBy(line.maker.value, line.maker.from));
  }

  #end() {
    this.#running = null;
    this.#progress.end();
    const isLookedAt = this.#outcome === null;
    this.#form.busy = false;
    this.#form.canStop = !isLookedAt;
  }

  /** @param {import("./failure.js").Failure} failure */
  #fail(failure) {
    this.#place.replaceChildren(failureCard(failure, (field) => this.#form[field].focus()));
    say(common.failed(failure.title));
  }

  /** What failed before is not about what is typed now. What was found stays. */
  #forgetFailure() {
    if (this.#outcome) return;
    this.#clear();
    this.#progress.clear();
  }

  /** @param {Found} found @param {Place} login @param {string[]} taken names of stored cameras */
  #show(found, { user, password }, taken) {
    const name = `${kindOf(found)} ${found.host}`;
    const login = { user, password };
    const another = () => this.#another();
    const saving = (/** @type {boolean} */ isSaving) => (this.#form.held = isSaving);
    /** @type {import("./found-camera.js").Handlers["saved"]} */
    const saved = (camera, address) => this.#saved(new SavedPanel(camera, address, login, another));
    const outcome =
      byChannel(found.streams).size > 1
        ? new FoundChannels(found, login, name, taken, { saving, another })
        : new FoundCamera(found, login, freeName(name, taken), { saving, saved });
    this.#outcome = outcome;
    this.#form.find.classList.remove("main"); // Save is now
    this.#place.replaceChildren(...headOf(found, this.#form.path), outcome.element);
    this.#progress.step(knownText(found));
    say(knownText(found));
    this.#form.canStop = true;
    outcome.look().then(() => this.#lookedAt(outcome));
  }

  /** @param {FoundCamera | FoundChannels} outcome */
  #lookedAt(outcome) {
    if (this.#outcome !== outcome || this.#running) return;
    this.#form.canStop = false;
    const missing = outcome instanceof FoundCamera ? outcome.missing.length : 0;
    if (missing > 0) this.#progress.step(add.notThere(missing));
  }

  // ---- after it ----

  /** @param {SavedPanel} panel */
  #saved(panel) {
    this.#clear();
    this.#progress.clear();
    this.#outcome = panel;
    this.#form.find.classList.remove("main"); // "Add another" is now
    this.#place.replaceChildren(panel.element);
    panel.show();
  }

  #another() {
    this.#forgetSaved();
    this.#form.address.focus();
  }

  /** The login stays: many cameras share one. */
  #forgetSaved() {
    this.#clear();
    this.#form.setPlace("", "");
  }

  #clear() {
    this.#outcome?.forget();
    this.#outcome = null;
    this.#place.replaceChildren(this.#intro);
    this.#form.find.classList.add("main");
    this.#form.canStop = false;
  }

  /** What runs ends; what was found stays. */
  #stop() {
    this.#network.stop();
    if (this.#outcome && "stop" in this.#outcome) this.#outcome.stop();
    if (!this.#running) return;
    this.#running.abort();
    this.#end();
    this.#progress.step(add.stopped);
    say(add.stopped);
  }

  // ---- the network ----

  #search() {
    this.#stop();
    this.#clear();
    this.#progress.clear();
    this.#place.replaceChildren();
    this.#network.search();
  }

  /** @param {string} host @param {string} port */
  #use(host, port) {
    this.#network.stop();
    this.#form.setPlace(host, port);
    this.#form.user.focus();
  }
}
