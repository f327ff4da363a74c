/// What is known of the open camera and its streams, with who says so, and measuring anew.

import { button, el, say } from "../parts/dom.js";
import { mistakeLine, tell } from "../parts/forms.js";
import { table } from "../parts/table.js";
import { measureCamera } from "../recorder/cameras.js";
import { timeText } from "../texts/language.js";
import { texts } from "../texts/texts.js";
import { reasonOf } from "./camera-words.js";

/**
 * @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera
 * @typedef {import("../recorder/cameras.js").CameraFact} CameraFact
 * @typedef {import("../recorder/cameras.js").StreamName} StreamName
 */

const words = texts.camera;

/** @param {string} stream */
const headingOf = (stream) => (stream ? words.ofStream(words.streamNames[stream] ?? stream) : words.ofCamera);

/** @param {CameraFact} fact @returns {(string | HTMLElement)[]} */
const rowOf = ({ name, value, from, at }) => [
  words.factNames[name] ?? name,
  value,
  el("span", { class: "muted", text: words.said(from, timeText(at)) }),
];

export class FactsPart {
  #list = el("div", { id: "camera-facts", class: "facts-of" });
  #mistake = mistakeLine("camera-measure-mistake");
  element = el("section", {}, el("h2", { text: words.facts }), this.#mistake, this.#list);
  #end = new AbortController();
  #timer = 0;
  isAdmin = false;

  /** @param {() => Promise<void>} changed there are other facts now */
  constructor(changed) {
    this.changed = changed;
  }

  /** @param {StoredCamera} camera */
  show(camera) {
    tell(this.#mistake, "");
    const ofStreams = camera.streams.map(({ name }) => this.#groupOf(camera, name));
    this.#list.replaceChildren(this.#groupOf(camera, ""), ...ofStreams);
    if (camera.facts.length === 0) this.#list.prepend(el("p", { class: "hint", text: words.noFacts }));
  }

  /** What is being measured is no longer waited for. */
  close() {
    this.#end.abort();
    this.#end = new AbortController();
    clearInterval(this.#timer);
  }

  /** @param {StoredCamera} camera @param {StreamName | ""} stream */
  #groupOf(camera, stream) {
    const facts = camera.facts.filter((fact) => fact.stream === stream);
    const { name, value, from } = words.factColumns;
    const shown = facts.length > 0 ? [table(headingOf(stream), [name, value, from], facts.map(rowOf))] : [];
    const measure = stream && this.isAdmin && camera.enabled ? [this.#measureButton(camera.id, stream)] : [];
    return el("div", {}, ...shown, ...measure);
  }

  /** @param {number} id @param {StreamName} stream */
  #measureButton(id, stream) {
    const label = words.measureOf(words.streamNames[stream] ?? stream);
    const press = button(label, () => this.#measure(press, label, id, stream), { "data-kind": stream });
    return press;
  }

  /** @param {HTMLElement} press @param {string} label @param {number} id @param {StreamName} stream */
  async #measure(press, label, id, stream) {
    if (press.ariaDisabled === "true") return;
    press.ariaDisabled = "true";
    tell(this.#mistake, "");
    this.#count(press);
    const { signal } = this.#end;
    try {
      await measureCamera(id, stream, signal);
      const hadFocus = document.activeElement === press;
      await this.changed();
      say(words.measured);
      const renewed = this.#list.querySelector(`[data-kind="${stream}"]`);
      if (hadFocus && renewed instanceof HTMLElement) renewed.focus();
    } catch (error) {
      if (!signal.aborted) tell(this.#mistake, reasonOf(error));
    }
    clearInterval(this.#timer);
    press.textContent = label;
    press.ariaDisabled = null;
  }

  /** @param {HTMLElement} press */
  #count(press) {
    clearInterval(this.#timer);
    let seconds = 0;
    const show = () => (press.textContent = words.measuring(seconds++));
    show();
    this.#timer = setInterval(show, 1000);
  }
}
