/// Keeps a camera that passed its test: a name, Save, and the way to the stored camera. What is kept was tested so.

import { byId, button, el, say } from "../parts/dom.js";
import { field, mistakeLine, onSubmit, tell } from "../parts/forms.js";
import { keep, presetName } from "../recorder/saving.js";
import { cameraHash } from "../text/address.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 *
 * A camera as it stood in the fields, and as it was asked for its stream.
 * @typedef {{camera: Camera, asked: Camera}} Tested
 */

const words = texts.saving;

/** What is stored of a stream that the module does not know by name. @param {Tested} tested */
function streamsOf({ camera, asked }) {
  const { which = "main" } = camera;
  if (which === "main") return [];
  const { vendor, model, port, channel, path } = asked;
  return [{ name: which, address: path, vendor, model, port, channel, sourcePath: path }];
}

/** @param {import("../recorder/saving.js").Kept} kept */
function linkTo(kept) {
  const label = texts.common.openNamed(kept.name);
  return el("a", { id: "one-saved-open", href: cameraHash(kept), text: words.open, "aria-label": label });
}

export class SaveCamera {
  #isAllowed = false;
  #isForced = false; // the next time, though the same camera is stored
  /** Holds the password, until it is saved or another test begins. @type {Tested | null} */
  #tested = null;
  #place = byId("one-save", HTMLElement);
  #name = el("input", { id: "one-save-name", autocomplete: "off" });
  #mistake = mistakeLine("one-save-mistake");
  #go = el("button", { id: "one-save-go", class: "main", text: words.save });
  #earlier = el("p", { id: "one-save-earlier", class: "earlier", hidden: true });
  #done = el("p", { id: "one-saved", hidden: true });
  #form = el(
    "form",
    { id: "one-save-form", autocomplete: "off", novalidate: true, "aria-label": words.save },
    field(texts.common.name, this.#name),
    el("div", { class: "actions" }, this.#go, this.#earlier),
    this.#mistake,
  );

  /**
   * @param {import("./findings.js").Findings} findings
   * @param {import("./earlier.js").EarlierMarks} marks
   */
  constructor(findings, marks) {
    this.findings = findings;
    this.marks = marks;
    this.#place.append(this.#form, this.#done);
    onSubmit(this.#form, this.#mistake, () => this.#save());
  }

  /** Only an admin may add cameras. @param {import("../recorder/access.js").Session} session */
  allow({ role }) {
    this.#isAllowed = role === "admin";
  }

  /** A test has passed. @param {Tested} tested @param {import("./earlier.js").Moment} moment when it began */
  offer(tested, moment) {
    if (!this.#isAllowed) return;
    this.#tested = tested;
    this.#name.value = presetName(tested.camera);
    tell(this.#mistake, "");
    this.marks.set(this.#earlier.id, moment, { values: words.testedOnes });
    this.#show();
  }

  /** Nothing that could be saved is known any more. */
  drop() {
    this.#tested = null;
    this.#done.hidden = true;
    this.#show();
  }

  /** The next step is the main one. */
  #show() {
    const isOffered = this.#tested !== null;
    this.#form.hidden = !isOffered;
    this.#place.hidden = !isOffered && this.#done.hidden;
    byId("one-test", HTMLButtonElement).classList.toggle("main", !isOffered);
  }

  /** @returns {Promise<string>} what is wrong with the name */
  async #save() {
    const tested = this.#tested;
    const name = this.#name.value.trim();
    const force = this.#isForced;
    this.#isForced = false;
    if (!name) this.#name.focus();
    if (!tested || !name) return texts.common.noName;
    say(words.saving);
    const kept = await keep(tested.camera, { name, streams: streamsOf(tested), facts: this.#facts(tested), force });
    if (this.#tested === tested) this.#showKept(kept); // no other test began meanwhile
    return "";
  }

  /** @param {Tested} tested */
  #facts({ camera: { which = "main" } }) {
    const { size } = this.findings;
    if (!size) return [];
    return [{ stream: which, name: "size", value: size, from: "measured", at: Math.floor(Date.now() / 1000) }];
  }

  /** @param {import("../recorder/saving.js").Kept} kept */
  #showKept(kept) {
    const isAdded = kept.kind === "added";
    const label = isAdded ? words.savedAs : words.storedAlready;
    const link = linkTo(kept);
    this.#done.replaceChildren(label, el("strong", { text: kept.name }), " ", link);
    if (!isAdded) this.#done.append(" ", button(texts.common.saveAnyway, () => this.#force(), { id: "one-save-force" }));
    this.#done.dataset.kind = kept.kind;
    this.#done.hidden = false;
    say(`${label}${kept.name}`);
    if (isAdded) this.#tested = null;
    this.#show();
    if (isAdded) link.focus();
  }

  #force() {
    this.#isForced = true;
    this.#form.requestSubmit();
  }
}
