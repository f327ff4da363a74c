/// One channel of a recorder that was found: a row with a tick, a name, a picture, and what came of saving it.

import { el } from "../parts/dom.js";
import { PLAIN } from "../parts/forms.js";
import { StillFrame } from "../parts/still-frame.js";
import { toStore, usualChoice } from "../recorder/to-store.js";
import { texts } from "../texts/texts.js";
import { save, storedAlready } from "./saving.js";
import { claimText, labelOf, showPicture } from "./stream-row.js";

const { add, common } = texts;

/**
 * @typedef {import("../recorder/finding.js").Found} Found
 * @typedef {import("../recorder/finding.js").FoundStream} FoundStream
 * @typedef {import("../recorder/finding.js").Login} Login
 */

/** @param {string} sign @param {string} result @param {string} text */
const resultOf = (sign, result, text) => {
  const shown = el("span", { class: "sign", "aria-hidden": "true", text: sign });
  return el("p", { class: "result", "data-result": result }, shown, text);
};

export class ChannelRow {
  #still = new StillFrame();
  #result = el("td", { tabindex: "-1" });
  isSaved = false;
  /** Nobody typed another name. */
  hasUsualName = true;
  element;

  /**
   * @param {Found} found
   * @param {string} channel
   * @param {FoundStream[]} streams
   * @param {() => void} changed is told when there is another number of cameras to save
   */
  constructor(found, channel, streams, changed) {
    this.found = found;
    this.channel = channel;
    this.streams = streams;
    this.changed = changed;
    this.tick = el("input", { type: "checkbox", "aria-label": add.take(channel) });
    this.tick.checked = true;
    this.#still.clear(add.pictureWaits);
    this.tick.addEventListener("change", changed);
    this.name = el("input", { "aria-label": add.nameOf(channel), autocomplete: "off", ...PLAIN });
    this.name.addEventListener("input", () => (this.hasUsualName = false));
    const texts = streams.map((stream) => el("li", { text: `${labelOf(stream)}: ${claimText(stream)}` }));
    this.element = el(
      "tr",
      {},
      el("th", { scope: "row" }, el("label", { class: "tick" }, this.tick, channel)),
      el("td", {}, el("figure", { class: "picture still" }, this.#still.element)),
      el("td", {}, this.name),
      el("td", {}, el("ul", { class: "hint" }, ...texts)),
      this.#result,
    );
  }

  get isChosen() {
    return this.tick.checked && !this.isSaved;
  }

  /** @param {Login} login @param {AbortSignal} signal @returns {Promise<string>} the cause, "ok" for a picture */
  async takePicture(login, signal) {
    const { main } = usualChoice(this.streams);
    if (!main) return "";
    this.#still.clear(add.pictureWaits);
    const source = { host: this.found.host, ...main, ...login };
    return showPicture(this.#still, add.pictureOfChannel(this.channel), source, signal).catch(() => "");
  }

  /** @param {Login} login @param {boolean} force stores it although it is stored already */
  async save(login, force) {
    const name = this.name.value.trim();
    if (!name) return this.#failed(common.noName);
    const outcome = await save({ ...toStore(this.found, login, name, usualChoice(this.streams)), force });
    if (outcome.other) {
      this.#result.replaceChildren(storedAlready(outcome.other, () => this.#force(login)));
    } else if (!outcome.camera) {
      this.#failed(outcome.mistake);
    } else {
      this.isSaved = true;
      this.tick.disabled = this.name.disabled = true;
      this.#result.replaceChildren(resultOf("✓", "passed", common.saved));
    }
  }

  /** @param {Login} login */
  async #force(login) {
    this.#result.replaceChildren();
    await this.save(login, true);
    this.changed();
    this.#result.focus();
  }

  /** @param {string} why */
  #failed(why) {
    this.#result.replaceChildren(resultOf("✕", "failed", why));
  }

  forget() {
    this.#still.clear("");
  }
}
