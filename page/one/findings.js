/// What is found out about a camera that passed: its picture, what it can do, its size. Each stays, and is marked, when
/// the fields are about another camera.

import { describeCapabilities } from "../models/capabilities.js";
import { byId, el, say } from "../parts/dom.js";
import { PicturePlace } from "../parts/picture.js";
import * as api from "../recorder/api.js";
import { capabilityCause, sizeCause } from "../recorder/causes.js";
import { isAsked, isUserDefined, labelOf } from "../recorder/models.js";
import { Trouble } from "../recorder/request.js";
import { messageOf } from "../text/text.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 * @typedef {import("./earlier.js").Moment} Moment
 */

export class Findings {
  #picture = new PicturePlace("one-picture");

  /**
   * @param {import("./result-panel.js").ResultPanel} panel
   * @param {import("./stream-fold.js").StreamFold} streamFold
   * @param {import("./earlier.js").EarlierMarks} marks
   * @param {(camera: Camera) => boolean} isChosen whether the fields are about this camera's model
   */
  constructor(panel, streamFold, marks, isChosen) {
    this.panel = panel;
    this.streamFold = streamFold;
    this.marks = marks;
    this.isChosen = isChosen;
  }

  /**
   * What the model list says. Of a camera that is asked it says little: that is folded.
   * @param {api.Outcome<api.Capabilities>} outcome
   * @param {api.Model} model
   */
  showOfModel(outcome, model) {
    const caption = `Capabilities of ${labelOf(model)}, from the model list`;
    const table = describeCapabilities(outcome, caption);
    const hint = el("p", { class: "hint", text: "The camera says itself what it can do, once a test has passed." });
    this.#put(isAsked(model) ? [el("details", {}, el("summary", { text: caption }), table), hint] : [table]);
  }

  /** @param {HTMLElement[]} contents */
  #put(contents) {
    byId("one-capabilities-table", HTMLElement).replaceChildren(...contents);
    byId("one-capabilities", HTMLElement).hidden = false;
    this.marks.drop("one-capabilities-earlier");
  }

  hideCapabilities() {
    byId("one-capabilities", HTMLElement).hidden = true;
  }

  /**
   * What a passed test allows, one question after the other. Nothing here takes the pass back.
   * @param {Camera} camera
   * @param {Moment} tested
   * @param {AbortSignal} signal
   */
  async lookCloser(camera, tested, signal) {
    const hasPicture = await this.#takePicture(camera, tested, signal);
    if (isAsked(camera)) await this.#askCapabilities(camera, tested, signal);
    if (isUserDefined(camera)) await this.#measure(camera, signal);
    if (!hasPicture) say("Test passed. No picture came.");
  }

  /**
   * A question whose failure is no more than a note.
   * @param {string} what
   * @param {() => Promise<void>} question
   */
  async #also(what, question) {
    try {
      await question();
    } catch (error) {
      if (error instanceof Trouble && error.kind === "stopped") throw error;
      this.panel.note(`${what}: ${messageOf(error)}`);
    }
  }

  /** @param {Camera} camera @param {Moment} tested @param {AbortSignal} signal */
  async #takePicture(camera, tested, signal) {
    this.#picture.clear("Fetching a picture");
    this.marks.drop("one-picture-earlier");
    try {
      await this.#also("No picture came", async () => {
        await this.#picture.show(await api.takePicture(camera, signal), `Picture of camera ${camera.host}`);
        if (this.#picture.isEmpty) this.panel.say("Test passed. No picture came.");
      });
    } finally {
      if (this.#picture.isEmpty) this.#picture.clear("No picture came");
      else this.marks.set("one-picture-earlier", tested, PICTURE_MARKS);
    }
    return !this.#picture.isEmpty;
  }

  /** @param {Camera} camera @param {Moment} tested @param {AbortSignal} signal */
  async #askCapabilities(camera, tested, signal) {
    await this.#also("Live capabilities not available", async () => {
      const outcome = await api.askCapabilities(camera, signal);
      if (outcome.value) {
        this.#showOfCamera(camera, tested, outcome);
        return;
      }
      const { heading, happened, first } = capabilityCause(outcome);
      const rest = `The table has the values of the model list. (code ${outcome.code})`;
      this.panel.note(`${heading}. ${happened} ${first} ${rest}`);
    });
  }

  /** @param {Camera} camera @param {Moment} tested @param {api.Outcome<api.Capabilities>} outcome */
  #showOfCamera(camera, tested, outcome) {
    const host = camera.host.includes(":") ? `[${camera.host}]` : camera.host;
    this.#put([describeCapabilities(outcome, `Capabilities, from the camera at ${host}:${camera.port}`)]);
    this.marks.set("one-capabilities-earlier", tested, CAPABILITY_MARKS);
    if (outcome.value && this.isChosen(camera)) this.streamFold.offerOfCamera(outcome.value, camera);
  }

  /** @param {Camera} camera @param {AbortSignal} signal */
  async #measure(camera, signal) {
    await this.#also("Size not measured", async () => {
      const outcome = await api.measureSize(camera, signal);
      const { heading, happened } = sizeCause(outcome);
      const size = outcome.value?.replace("x", " × ");
      this.panel.note(size ? `Size of the stream: ${size}` : `${heading}. ${happened}`);
    });
  }
}

const PICTURE_MARKS = { place: "Picture of the earlier camera", values: "Picture of the earlier values" };
const CAPABILITY_MARKS = { place: "Of the earlier camera", values: "Of the earlier values" };
