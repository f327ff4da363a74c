/// The list of models, as the page names, finds and suggests them.

import { messageOf } from "../text/text.js";
import { namedIn } from "../text/named-in.js";
import { WordSearch } from "../text/word-search.js";
import { texts } from "../texts/texts.js";
import { listModels } from "./api.js";

/** @typedef {import("./api.js").Model} Model */

const USER = "User";
const PROTOCOLS = ["ONVIF", "PSIA"]; // vendors that name a protocol: one model each, and the camera is asked

/** What is tested by a path. */
export const USER_DEFINED = { vendor: USER, model: "" };

/** @param {{vendor: string}} model */
export const isUserDefined = (model) => model.vendor === USER;

/** @param {{vendor: string}} model */
export const isAsked = (model) => PROTOCOLS.includes(model.vendor);

/** @param {{vendor: string}} model */
export const defaultPort = (model) => (isUserDefined(model) ? 554 : 80);

/** @param {{vendor: string, model: string}} model */
export function labelOf({ vendor, model }) {
  if (vendor === USER) return texts.models.anyCamera;
  return isAsked({ vendor }) ? vendor : `${vendor} ${model}`;
}

/** Each once. @param {Model[]} models */
const makersOf = (models) => [...new Set(models.map(({ vendor }) => vendor))];

/** What is said before models that ModelList.ofMaker() gave. @param {Model[]} models */
export const ofMakerText = (models) => texts.models.ofMaker(makersOf(models).join(", "));

/** Maker and family. @param {Model} model @returns {[string, string]} */
const textsOf = (model) => [model.vendor, isUserDefined(model) ? labelOf(model) : model.model];

/** As somebody may type it: blanks and capitals do not count. @param {string} text */
const typed = (text) => text.toLowerCase().split(/\s+/).filter(Boolean).join(" ");

/** What a model goes by. @param {Model} model @returns {[string, Model][]} */
const namesOf = (model) => [labelOf(model), `${model.vendor} ${model.model}`].map((name) => [typed(name), model]);

/** Levenshtein distance. @param {string} one @param {string} other */
function distance(one, other) {
  let row = Array.from({ length: other.length + 1 }, (_, i) => i);
  for (let i = 1; i <= one.length; ++i) {
    const next = [i];
    for (let j = 1; j <= other.length; ++j) {
      const swap = (row[j - 1] ?? 0) + (one[i - 1] === other[j - 1] ? 0 : 1);
      next.push(Math.min((row[j] ?? 0) + 1, (next[j - 1] ?? 0) + 1, swap));
    }
    row = next;
  }
  return row[other.length] ?? 0;
}

/** Tells of "change" when it was loaded or could not be. */
export class ModelList extends EventTarget {
  /** @type {Model[]} */
  #models = [];
  #search = new WordSearch(this.#models, textsOf);
  /** @type {Map<string, Model>} */
  #byName = new Map();
  /** @type {"loading" | "ready" | "failed"} */
  state = "loading";
  isComplete = true;
  trouble = "";

  get models() {
    return this.#models;
  }

  set models(models) {
    this.#models = models;
    this.#search = new WordSearch(models, textsOf);
    this.#byName = new Map(models.flatMap(namesOf));
  }

  /** Contacts no camera. Keeps the last list when it fails. */
  async load() {
    try {
      Object.assign(this, await listModels(), { state: "ready", trouble: "" });
    } catch (error) {
      this.trouble = messageOf(error);
      if (this.models.length === 0) this.state = "failed";
    }
    this.dispatchEvent(new Event("change"));
  }

  /** Models by words of maker, family and model, the best first. @param {string} text */
  search(text) {
    return this.#search.find(text);
  }

  /** For words that no model has all of: the models of the maker that one of them names. @param {string} text */
  ofMaker(text) {
    const made = this.models.filter((model) => !isUserDefined(model) && !isAsked(model));
    const named = namedIn(text, makersOf(made));
    return made.filter(({ vendor }) => named.includes(vendor));
  }

  /** @param {string} text a label, or vendor and model @returns {Model | null} */
  findText(text) {
    return this.#byName.get(typed(text)) ?? null;
  }

  /**
   * Capitals do not matter; a protocol's model has no name of its own, nor has the only model of a vendor need of one.
   * @param {string} vendor
   * @param {string} model
   * @returns {Model | null}
   */
  find(vendor, model) {
    const same = (/** @type {string} */ one, /** @type {string} */ other) => one.toLowerCase() === other.toLowerCase();
    const ofVendor = this.models.filter((entry) => same(entry.vendor, vendor));
    const only = ofVendor.length === 1 ? ofVendor[0] : undefined;
    if (only && (model === "" || isAsked(only) || isUserDefined(only))) return only;
    return ofVendor.find((entry) => same(entry.model, model)) ?? null;
  }

  /** Names most like this text. @param {string} text */
  nearest(text) {
    const wanted = text.toLowerCase();
    return this.models
      .map((model) => ({ label: labelOf(model), far: distance(wanted, labelOf(model).toLowerCase()) }))
      .sort((one, other) => one.far - other.far)
      .slice(0, 2)
      .map(({ label }) => label);
  }

  /** What a new camera most likely is. */
  preferred() {
    return this.models.find((model) => model.vendor === "ONVIF") ?? null;
  }

  userDefined() {
    return this.models.find(isUserDefined) ?? null;
  }

  /** What fits cameras whose model is not in the list: the protocol that most speak, and the path of a stream. */
  fallbacks() {
    return [this.preferred(), this.userDefined()].filter((model) => model !== null);
  }
}
