/// The picture of the open camera, with its age, renewed while it is seen.

import { button, el, say } from "../parts/dom.js";
import { StillFrame } from "../parts/still-frame.js";
import { nameOf, takeStill } from "../recorder/cameras.js";
import { Trouble } from "../recorder/request.js";
import { texts } from "../texts/texts.js";
import { ageText, reasonOf, refusesStored } from "./camera-words.js";
import { Renewal } from "./renewal.js";

/** @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera */

const words = texts.cameras;
const AGE_MS = 1000;

/** What happens after a failure. @param {unknown} error @param {number} waitSeconds 0 for nothing */
function outlook(error, waitSeconds) {
  if (waitSeconds > 0) return words.nextTry(waitSeconds);
  return error instanceof Trouble && error.cause === "disabled" ? words.stoppedOff : words.stopped;
}

export class LivePicture {
  #frame = new StillFrame();
  #age = el("span", { id: "camera-picture-age" });
  #mistake = el("p", { id: "camera-picture-mistake", class: "mistake", hidden: true });
  #again = button(words.takePicture, () => this.#askAnew(), { id: "camera-again", class: "main" });
  #isInSight = false;
  #timer = 0;
  #takenAt = 0;
  #cause = "";
  /** @type {Renewal | null} */
  #renewal = null;
  element = el(
    "figure",
    { class: "picture" },
    this.#frame.element,
    el("figcaption", {}, this.#age),
    this.#mistake,
    this.#again,
  );

  /** @param {() => void} changed pictures come, or fail, in another way than before */
  constructor(changed) {
    this.changed = changed;
    new IntersectionObserver((entries) => {
      this.#isInSight = entries.some(({ isIntersecting }) => isIntersecting);
      this.#look();
    }).observe(this.#frame.element);
    document.addEventListener("visibilitychange", () => this.#look());
  }

  /** Begins anew, with no picture. @param {StoredCamera} camera */
  open(camera) {
    this.close();
    this.#timer = setInterval(() => this.#showAge(), AGE_MS);
    this.#frame.clear(camera.enabled ? words.takingPicture : words.switchedOff);
    this.#again.hidden = !camera.enabled;
    this.#setCause(camera.state?.cause ?? "");
    if (!camera.enabled) return;
    this.#renewal = new Renewal({
      take: async (again, signal) => this.#show(camera, await takeStill(camera.id, "main", again, signal)),
      failed: (error, waitSeconds) => this.#tell(error, waitSeconds),
    });
    this.#look();
  }

  close() {
    this.#renewal?.end();
    this.#renewal = null;
    clearInterval(this.#timer);
    this.#frame.clear(texts.common.noPictureYet);
    this.#mistake.hidden = true;
    this.#showAge();
  }

  #look() {
    if (this.#renewal) this.#renewal.isSeen = this.#isInSight && !document.hidden;
  }

  #askAnew() {
    this.#mistake.hidden = true;
    if (this.#frame.isEmpty) this.#frame.clear(words.takingPicture);
    say(words.takingPicture);
    this.#renewal?.again();
  }

  /** @param {StoredCamera} camera @param {Blob} picture */
  async #show(camera, picture) {
    if (!(await this.#frame.show(picture, words.picture(nameOf(camera))))) throw new Error(words.notAPicture);
    this.#takenAt = Date.now();
    this.#mistake.hidden = true;
    this.#showAge();
    this.#note("ok");
  }

  /** @param {string} cause what the recorder says of this picture */
  #note(cause) {
    if (cause === this.#cause) return;
    this.#setCause(cause);
    this.changed();
  }

  /** Another picture is not the thing to do where it would be another refused login. @param {string} cause */
  #setCause(cause) {
    this.#cause = cause;
    this.#again.classList.toggle("main", !refusesStored(cause));
  }

  /** @param {unknown} error @param {number} waitSeconds */
  #tell(error, waitSeconds) {
    if (this.#frame.isEmpty) this.#frame.clear(texts.common.noPictureYet);
    this.#mistake.textContent = `${reasonOf(error)} ${outlook(error, waitSeconds)}`;
    if (this.#mistake.hidden || waitSeconds === 0) say(this.#mistake.textContent);
    this.#mistake.hidden = false;
    if (error instanceof Trouble && (error.cause || waitSeconds === 0)) this.#note(error.cause || String(error.status));
  }

  #showAge() {
    this.#age.textContent = this.#frame.isEmpty ? "" : words.taken(ageText(this.#takenAt));
  }
}
