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
const MEASURED = "measured"; // who says so, as the recorder has it
const WIDE = "(width >= 48rem)";

/** @param {StreamName | ""} stream */
const headingOf = (stream) => (stream ? words.ofStream(texts.common.streamNames[stream] ?? stream) : words.ofCamera);

/** @param {string} from who says something */
const sourceOf = (from) => words.sources[from] ?? from;

/** When each of them said it. @param {CameraFact[]} facts @param {string[]} sources */
function timesOf(facts, sources) {
  const latest = (/** @type {string} */ from) =>
    Math.max(...facts.filter((fact) => fact.from === from).map(({ at }) => at));
  return sources.map((from) => words.said(sourceOf(from), timeText(latest(from)))).join("; ");
}

/** A row for each of them, and a column for each who says so. @param {CameraFact[]} facts */
function tableOf(facts) {
  const names = [...new Set(facts.map(({ name }) => name))];
  const sources = [...new Set(facts.map(({ from }) => from))];
  const said = (/** @type {string} */ name, /** @type {string} */ from) =>
    facts.find((fact) => fact.name === name && fact.from === from)?.value ?? "";
  const rows = names.map((name) => [words.factNames[name] ?? name, ...sources.map((from) => said(name, from))]);
  return table(timesOf(facts, sources), [words.fact, ...sources.map(sourceOf)], rows);
}

export class FactsPart {
  #list = el("div", { id: "camera-facts", class: "facts-of" });
  #mistake = mistakeLine("camera-measure-mistake");
  element = el("section", {}, el("h2", { text: words.facts }), this.#mistake, this.#list);
  /** Folds that were opened or closed, by stream. @type {Map<string, boolean>} */
  #isOpen = new Map();
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
    const shown = facts.length > 0 ? [this.#fold(stream, tableOf(facts))] : [];
    const measure = stream && this.isAdmin && camera.enabled ? [this.#measureButton(camera, stream)] : [];
    return el("div", {}, ...shown, ...measure);
  }

  /** Closed at first where there is little room. @param {StreamName | ""} stream @param {HTMLElement} content */
  #fold(stream, content) {
    const open = this.#isOpen.get(stream) ?? matchMedia(WIDE).matches;
    const fold = el("details", { open }, el("summary", { text: headingOf(stream) }), content);
    fold.addEventListener("toggle", () => this.#isOpen.set(stream, fold.open));
    return fold;
  }

  /** @param {StoredCamera} camera @param {StreamName} stream */
  #measureButton({ id, facts }, stream) {
    const wasMeasured = facts.some((fact) => fact.stream === stream && fact.from === MEASURED);
    const label = words.measureOf(texts.common.streamNames[stream] ?? stream, wasMeasured);
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
