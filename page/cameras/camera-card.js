/// One stored camera in the list: its still, its name, how it is.

import { el } from "../parts/dom.js";
import { StillFrame } from "../parts/still-frame.js";
import { nameOf } from "../recorder/cameras.js";
import { inALine, isLoginRefused } from "../recorder/causes.js";
import { Trouble } from "../recorder/request.js";
import { cameraHash } from "../text/address.js";
import { texts } from "../texts/texts.js";
import { ageText, lastingOf, placeOf, searchedIn, stateOf } from "./camera-words.js";
import { Strip } from "./strip.js";

/** @typedef {import("../recorder/cameras.js").CameraSummary} CameraSummary */

/** The sign and the word of a state. @param {import("./camera-words.js").Words} words */
export function stateMark({ sign, word, result }) {
  const signed = el("span", { class: "sign", "aria-hidden": "true", text: sign });
  return el("span", { class: "result", "data-result": result }, signed, el("span", { text: word }));
}

export class CameraCard {
  #name = el("a", { class: "name" });
  #place = el("p", { class: "code" });
  #state = el("p", { class: "state" });
  #age = el("figcaption");
  #frame = new StillFrame();
  strip = new Strip();
  /** When the last still was asked for, in milliseconds since 1970. */
  askedAt = 0;
  /** Its sub stream gave no still. */
  lacksSub = false;
  /** What the last still came to, by the recorder's name for it; "" for none. */
  #cause = "";
  text = "";

  /** @param {CameraSummary} camera */
  constructor(camera) {
    const figure = el("figure", { class: "picture" }, this.#frame.element, this.#age);
    const parts = [figure, this.#name, this.#state, this.strip.element, this.#place];
    this.element = el("li", { class: "camera" }, ...parts);
    this.camera = camera;
    this.update(camera);
  }

  /** @param {CameraSummary} camera the same one, perhaps changed */
  update(camera) {
    if (camera.revision !== this.camera.revision) {
      this.askedAt = 0;
      this.lacksSub = false;
    }
    this.camera = camera;
    this.text = searchedIn(camera);
    this.#name.textContent = nameOf(camera);
    this.#name.href = cameraHash(camera);
    this.#place.textContent = placeOf(camera);
    const lasting = lastingOf(camera);
    this.#state.replaceChildren(stateMark(stateOf(camera)), ...(lasting ? [` ${lasting}`] : []));
    if (this.askedAt === 0 && !this.hasStill) this.clear();
  }

  /** Whether a still may be asked for: no camera is asked that is off or refused the login. */
  get mayBeAsked() {
    const { enabled, state } = this.camera;
    return enabled && !isLoginRefused({ cause: state?.cause });
  }

  /** Whether the last still says something else than the state that is shown. */
  get isNews() {
    return this.#cause !== "" && this.#cause !== this.camera.state?.cause;
  }

  /** Whether it did not answer, or not well, when it was asked last. */
  get hasFailed() {
    const cause = this.#cause || this.camera.state?.cause || "ok";
    return cause !== "ok";
  }

  get hasStill() {
    return !this.#frame.isEmpty;
  }

  /** @param {() => Promise<Blob>} take */
  async renew(take) {
    this.askedAt = Date.now();
    if (!this.hasStill) this.clear(texts.cameras.takingPicture);
    try {
      await this.#show(await take());
      this.#cause = "ok";
    } catch (error) {
      this.#cause = error instanceof Trouble ? error.cause : "";
      this.clear(inALine(error));
    }
  }

  /** @param {Blob} picture */
  async #show(picture) {
    const isShown = await this.#frame.show(picture, texts.cameras.picture(nameOf(this.camera)));
    if (!isShown) return this.clear(texts.cameras.notAPicture);
    this.askedAt = Date.now();
    this.showAge();
  }

  showAge() {
    this.#age.textContent = this.hasStill ? ageText(this.askedAt) : "";
  }

  /** Lets go of the still. @param {string} [words] what stands in its place */
  clear(words = this.#wordsForNone()) {
    this.#frame.clear(words);
    this.showAge();
  }

  #wordsForNone() {
    if (!this.camera.enabled) return texts.cameras.notWhileOff;
    return this.mayBeAsked ? texts.common.noPictureYet : texts.cameras.notAsked;
  }
}
