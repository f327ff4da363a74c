/// The fold of one camera's fields that say which stream: its name, channel, codec, stream type, path.

import { codecsOf } from "../models/capabilities.js";
import { byId, el, setOptions, setSelected } from "../parts/dom.js";
import { isUserDefined } from "../recorder/models.js";
import { STREAM_NAMES } from "../recorder/model-document.js";
import { splitPath } from "../text/path-login.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../recorder/api.js").Capabilities} Capabilities
 * @typedef {import("../recorder/api.js").StreamName} StreamName
 */

export class StreamFold {
  /** Stream types by codec, as they are offered. @type {Map<string, string[]>} */
  #streams = new Map();

  constructor() {
    this.fold = byId("one-more", HTMLDetailsElement);
    this.which = byId("one-which", HTMLSelectElement);
    this.channel = byId("one-channel", HTMLInputElement);
    this.codec = byId("one-codec", HTMLSelectElement);
    this.stream = byId("one-stream", HTMLSelectElement);
    this.path = byId("one-path", HTMLInputElement);
    this.which.addEventListener("change", () => this.#fitToName());
    this.codec.addEventListener("change", () => this.#offerStreams());
    this.fold.addEventListener("input", () => this.summarise());
    this.summarise();
  }

  /** The stream's. @returns {StreamName} */
  get name() {
    return STREAM_NAMES.find((name) => name === this.which.value) ?? "main";
  }

  /** Offers a model's streams, and chooses the main one. @param {StreamName[]} names */
  offerNames(names) {
    this.which.replaceChildren(...names.map((value) => el("option", { value, text: texts.common.streamNames[value] })));
    byId("one-which-field", HTMLElement).hidden = names.length < 2;
    this.#fitToName();
  }

  /** Where a sub stream is, the model alone says. */
  #fitToName() {
    this.stream.disabled = this.name !== "main";
    this.summarise();
  }

  /** Offers what a model can do. @param {Capabilities} capabilities @param {{vendor: string}} model */
  offer(capabilities, model) {
    this.#streams = new Map(codecsOf(capabilities).map(({ codec, streams }) => [codec, streams]));
    if (isUserDefined(model) && !this.#streams.has("H.265")) this.#streams.set("H.265", ["RTSP"]); // no document has it
    const channels = Array.isArray(capabilities.ChanlList) ? capabilities.ChanlList : [];
    const options = channels.map((value) => el("option", { value: String(value) }));
    byId("one-channels", HTMLDataListElement).replaceChildren(...options);
    setOptions(this.codec, [...this.#streams.keys()]);
    this.#offerStreams();
  }

  /**
   * Offers what the camera itself said, and leaves what is chosen as it is.
   * @param {Capabilities} capabilities
   * @param {{vendor: string}} model
   */
  offerOfCamera(capabilities, model) {
    const [codec, stream] = [this.codec.value, this.stream.value];
    this.offer(capabilities, model);
    this.choose(codec, stream);
  }

  /** Chooses, even what is not offered. @param {string} codec @param {string} stream */
  choose(codec, stream) {
    setSelected(this.codec, codec);
    this.#offerStreams();
    setSelected(this.stream, stream);
    this.summarise();
  }

  #offerStreams() {
    const chosen = this.#streams.get(this.codec.value);
    setOptions(this.stream, chosen ?? [...new Set([...this.#streams.values()].flat())]);
    this.summarise();
  }

  /** Says on the closed fold what is in it; a login in the path is not said. */
  summarise() {
    const channel = this.channel.value ? texts.one.channel(this.channel.value) : texts.one.defaultChannel;
    const ofMain = [this.stream.value, splitPath(this.path.value).path];
    const [name, more] = this.name === "main" ? ["", ofMain] : [texts.common.streamNames[this.name], []];
    const parts = [name, channel, this.codec.value || texts.common.any, ...more];
    byId("one-summary", HTMLElement).textContent = texts.one.streamSummary(parts.filter(Boolean).join(", "));
  }
}
