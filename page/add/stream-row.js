/// One stream that was found: what the camera claims of it, its picture, what it really sends.

import { el } from "../parts/dom.js";
import { StillFrame } from "../parts/still-frame.js";
import { tryPicture } from "../recorder/api.js";
import { inALine, namedCause } from "../recorder/causes.js";
import { measureStream } from "../recorder/finding.js";
import { texts } from "../texts/texts.js";

const { add, common } = texts;

/**
 * @typedef {import("../recorder/finding.js").Login} Login
 * @typedef {import("../recorder/finding.js").FoundStream} FoundStream
 * @typedef {import("../recorder/finding.js").Measured} Measured
 */

/** @param {string} codec @param {number | null} width @param {number | null} height @param {number | null} rate */
function pictureText(codec, width, height, rate) {
  const size = width && height ? add.size(width, height) : "";
  return [codec, size, rate ? add.rate(rate) : ""].filter(Boolean).join(" ");
}

/** What the camera claims of a stream. @param {FoundStream} stream */
export const claimText = ({ codec, width, height, frameRate }) =>
  pictureText(codec, width, height, frameRate);

/** Begins the name of a source that is no camera: a path of another model was tried, and fits. */
const MODEL_FILE = "model file: ";

/** @param {FoundStream} stream */
const sourceText = ({ from }) =>
  from.startsWith(MODEL_FILE) ? add.pathOf(from.slice(MODEL_FILE.length)) : add.claimed(from);

/** @param {FoundStream} stream */
export const labelOf = ({ name }) => common.streamNames[name] ?? name;

/** @param {Measured} measured */
function distanceText({ keyFrameDistance, keyFrameMoreThan }) {
  if (keyFrameDistance) return add.keyFrame(keyFrameDistance);
  return keyFrameMoreThan ? add.noKeyFrame(keyFrameMoreThan) : "";
}

/** @param {Measured} measured */
function figuresText(measured) {
  const { codec, width, height, frameRate, bitRate } = measured;
  const picture = pictureText(codec, width, height, frameRate);
  return [picture, bitRate ? add.bitRate(bitRate) : "", distanceText(measured)].filter(Boolean).join(", ");
}

/** @param {string} label @param {Measured} measured */
function warningTexts(label, measured) {
  const names = measured.warnings.map(({ name }) => name);
  return [
    ...(names.includes("keyFramesFar") ? [add.keyFramesFar(label, distanceText(measured))] : []),
    ...(names.includes("h265") ? [add.h265(label)] : []),
  ];
}

/** That no picture came, and why. @param {string} cause */
function noPictureText(cause) {
  if (cause === "ok") return texts.cameras.notAPicture;
  return cause ? common.noPictureFor(namedCause(cause).heading) : common.noPictureCame;
}

/**
 * Takes the picture of a stream, as its record will be asked for it, and shows it, or why none came.
 * @param {StillFrame} still
 * @param {string} description
 * @param {{host: string, storeAs: FoundStream["storeAs"]} & Login} source
 * @param {AbortSignal} signal
 * @returns {Promise<string>} the cause, "ok" for a picture
 */
export async function showPicture(still, description, { host, storeAs, user, password }, signal) {
  const { sourcePath, ...place } = storeAs;
  const camera = { host, ...place, user, password, path: sourcePath, codec: "", stream: "" };
  try {
    const { bytes, cause } = await tryPicture(camera, signal);
    const isShown = cause === "ok" && (await still.show(new Blob([bytes]), description));
    if (!isShown) still.clear(noPictureText(cause));
    return cause;
  } catch (error) {
    still.clear(common.noPictureCame);
    throw error;
  }
}

export class StreamRow {
  #still = new StillFrame();
  #figures = el("p", { class: "hint" });
  #warnings = el("ul", { class: "warnings" });
  /** What its picture came to, by the recorder's name for it; "" for what is not known. */
  #cause = "";
  element;
  /** @type {Measured | null} */
  measured = null;

  /** @param {string} host @param {FoundStream} stream */
  constructor(host, stream) {
    this.host = host;
    this.stream = stream;
    this.#still.clear(add.pictureWaits);
    const from = stream.asked ? sourceText(stream) : `${sourceText(stream)}, ${add.guessed}`;
    this.element = el(
      "li",
      { class: "found-stream" },
      el("figure", { class: "picture still" }, this.#still.element),
      el(
        "div",
        {},
        el("p", {}, el("strong", { text: labelOf(stream) }), ` ${claimText(stream)}`),
        el("p", { class: "hint", text: from }),
        this.#figures,
        this.#warnings,
      ),
    );
  }

  /** Whether the camera has it, as far as is known: what was worked out is there once its picture came. */
  get isThere() {
    return this.#cause === "ok" || (this.#cause === "" && this.stream.asked);
  }

  /** The camera said that it has no such stream. */
  get isMissing() {
    return this.#cause === "noSuchStream";
  }

  /** @param {Login} login @param {AbortSignal} signal @returns {Promise<string>} the cause, "ok" for a picture */
  async takePicture(login, signal) {
    const { host, stream } = this;
    const source = { host, ...stream, ...login };
    this.#cause = await showPicture(this.#still, add.pictureOf(labelOf(stream)), source, signal);
    return this.#cause;
  }

  /** @param {Login} login @param {AbortSignal} signal */
  async measure(login, signal) {
    this.#figures.textContent = add.measuring;
    try {
      this.measured = await measureStream(this.host, this.stream, login, signal);
      this.#figures.textContent = add.measured(figuresText(this.measured));
      const warnings = warningTexts(labelOf(this.stream), this.measured);
      this.#warnings.replaceChildren(...warnings.map((text) => el("li", { text })));
    } catch (error) {
      this.#figures.textContent = signal.aborted ? "" : add.notMeasured(inALine(error));
      throw error;
    }
  }

  /** What did not come by now comes no more. */
  stop() {
    if (this.#still.isEmpty) this.#still.clear(common.noPictureCame);
  }

  forget() {
    this.#still.clear("");
  }
}
