/// What is found out about a camera that passed: its picture, what it can do, its size. Each stays, and is marked, when
/// the fields are about another camera.

import { describeCapabilities } from "../models/capabilities.js";
import { byId, el, say } from "../parts/dom.js";
import { PicturePlace } from "../parts/picture.js";
import * as api from "../recorder/api.js";
import { capabilityCause, sizeCause } from "../recorder/causes.js";
import { isAsked, isUserDefined, labelOf } from "../recorder/models.js";
import { Trouble } from "../recorder/request.js";
import { inAddress } from "../text/address.js";
import { messageOf } from "../text/text.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 * @typedef {import("./earlier.js").Moment} Moment
 */

export class Findings {
  #picture = new PicturePlace("one-picture");
  /** Of the stream, as the latest test measured it, such as "640x480"; "" for not measured. */
  size = "";

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
    const caption = texts.one.modelCapabilities(labelOf(model));
    const table = describeCapabilities(outcome, caption);
    const hint = el("p", { class: "hint", text: texts.one.cameraSaysItself });
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
    this.size = "";
    const hasPicture = await this.#takePicture(camera, tested, signal);
    if (isAsked(camera)) await this.#askCapabilities(camera, tested, signal);
    if (isUserDefined(camera)) await this.#measure(camera, signal);
    if (!hasPicture) say(texts.one.passedWithoutPicture);
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
    this.#picture.clear(texts.common.fetchingPicture);
    this.marks.drop("one-picture-earlier");
    try {
      await this.#also(texts.common.noPictureCame, async () => {
        await this.#picture.show(await api.takePicture(camera, signal), texts.one.pictureOf(camera.host));
        if (this.#picture.isEmpty) this.panel.say(texts.one.passedWithoutPicture);
      });
    } finally {
      if (this.#picture.isEmpty) this.#picture.clear(texts.common.noPictureCame);
      else this.marks.set("one-picture-earlier", tested, PICTURE_MARKS);
    }
    return !this.#picture.isEmpty;
  }

  /** @param {Camera} camera @param {Moment} tested @param {AbortSignal} signal */
  async #askCapabilities(camera, tested, signal) {
    await this.#also(texts.one.noLiveCapabilities, async () => {
      const outcome = await api.askCapabilities(camera, signal);
      if (outcome.value) {
        this.#showOfCamera(camera, tested, outcome);
        return;
      }
      const { heading, happened, first } = capabilityCause(outcome);
      this.panel.note(`${heading}. ${happened} ${first} ${texts.one.valuesOfModelList(outcome.code)}`);
    });
  }

  /** @param {Camera} camera @param {Moment} tested @param {api.Outcome<api.Capabilities>} outcome */
  #showOfCamera(camera, tested, outcome) {
    this.#put([describeCapabilities(outcome, texts.one.cameraCapabilities(`${inAddress(camera.host)}:${camera.port}`))]);
    this.marks.set("one-capabilities-earlier", tested, CAPABILITY_MARKS);
    if (outcome.value && this.isChosen(camera)) this.streamFold.offerOfCamera(outcome.value, camera);
  }

  /** @param {Camera} camera @param {AbortSignal} signal */
  async #measure(camera, signal) {
    await this.#also(texts.one.notMeasured, async () => {
      const outcome = await api.measureSize(camera, signal);
      const { heading, happened } = sizeCause(outcome);
      this.size = outcome.value ?? "";
      const size = this.size.replace("x", " × ");
      this.panel.note(size ? texts.one.sizeOfStream(size) : `${heading}. ${happened}`);
    });
  }
}

const PICTURE_MARKS = {
  place: texts.one.pictureOfEarlierCamera,
  values: texts.one.pictureOfEarlierValues,
};
const CAPABILITY_MARKS = { place: texts.one.ofEarlierCamera, values: texts.one.ofEarlierValues };
