/// The view of the models that the recorder knows. Contacts no camera.

import { button, byId, el, sayLater } from "../parts/dom.js";
import * as api from "../recorder/api.js";
import { nameOf } from "../recorder/cameras.js";
import { labelOf, ofMakerText } from "../recorder/models.js";
import { readModel } from "../recorder/model-document.js";
import { cameraHash } from "../text/address.js";
import { messageOf } from "../text/text.js";
import { texts } from "../texts/texts.js";
import { capabilityTable } from "./capabilities.js";
import { describeModel } from "./model-page.js";

/** @typedef {import("../recorder/api.js").Model} Model */

const MOST_SHOWN = 200;

/** An address of this view. @param {Model} model */
const hashOf = ({ vendor, model }) => `#models/${encodeURIComponent(vendor)}/${encodeURIComponent(model)}`;

export class KnownModels {
  /** @type {api.StoredCamera[]} */
  #stored = [];
  #shownKey = "";

  /**
   * @param {import("../recorder/models.js").ModelList} models
   * @param {(model: Model) => void} test
   */
  constructor(models, test) {
    this.models = models;
    this.test = test;
    this.search = byId("models-search", HTMLInputElement);
    this.search.addEventListener("input", () => {
      this.#show();
      sayLater(byId("models-count", HTMLElement).textContent ?? "");
    });
    byId("models-clear", HTMLButtonElement).addEventListener("click", () => {
      this.search.value = "";
      this.#show();
      this.search.focus();
    });
    models.addEventListener("change", () => {
      this.#show();
      this.#showDetail();
    });
    this.#show();
  }

  /**
   * Shows the view, with a model if the address names one.
   * @param {string} vendor
   * @param {string} model
   */
  open(vendor, model) {
    this.vendor = vendor;
    this.model = model;
    this.#show();
    this.#showDetail();
    this.#readStored();
  }

  async #readStored() {
    this.#stored = await api.listStoredCameras().catch(() => this.#stored);
    const items = this.#stored.map((camera) => {
      const name = texts.models.cameraAndModel(nameOf(camera), labelOf(camera));
      const title = camera.channel ? texts.models.withChannel(name, camera.channel) : name;
      const show = button(title, () => this.#showStored(camera), { class: "link" });
      const label = texts.common.openNamed(name);
      const open = el("a", { href: cameraHash(camera), text: texts.saving.open, "aria-label": label });
      return el("li", {}, show, " ", open);
    });
    byId("models-used-list", HTMLElement).replaceChildren(...items);
    byId("models-used", HTMLElement).hidden = items.length === 0;
  }

  #show() {
    const { models } = this;
    const found = models.search(this.search.value);
    const isNone = found.length === 0 && models.state === "ready";
    const near = isNone ? models.ofMaker(this.search.value) : [];
    const isLoading = models.state === "loading";
    byId("models-incomplete", HTMLElement).hidden = models.isComplete;
    this.#showNone(!isNone);
    const counts = near.length > 0 ? ofMakerText(near) : this.#countOf(found);
    byId("models-count", HTMLElement).textContent = isLoading ? texts.models.reading : counts;
    const items = isLoading
      ? Array.from({ length: 8 }, () => el("li", { class: "skeleton", "aria-hidden": "true" }))
      : [...found, ...near].slice(0, MOST_SHOWN).map((model) => el("li", {}, this.#linkTo(model)));
    byId("models-list", HTMLElement).replaceChildren(...items);
  }

  /** @param {Model[]} found */
  #countOf({ length }) {
    const rest = length - MOST_SHOWN;
    return rest > 0 ? texts.models.foundMore(length, rest) : texts.models.found(length);
  }

  /** What fits cameras that are not in the list. @param {boolean} isHidden */
  #showNone(isHidden) {
    const testAs = (/** @type {Model} */ model) =>
      button(texts.models.testAs(labelOf(model)), () => this.test(model));
    byId("models-fallbacks", HTMLElement).replaceChildren(...this.models.fallbacks().map(testAs));
    byId("models-none", HTMLElement).hidden = isHidden;
  }

  /** @param {Model} model */
  #linkTo(model) {
    const isCurrent = model.vendor === this.vendor && model.model === this.model;
    return el("a", { href: hashOf(model), text: labelOf(model), "aria-current": isCurrent ? "true" : null });
  }

  async #showDetail() {
    if (this.vendor === undefined) return;
    const model = this.models.find(this.vendor, this.model ?? "");
    if (!model) {
      if (this.vendor && this.models.state === "ready")
        this.#put(texts.models.noSuchModel, [el("p", { text: texts.models.notInList })]);
      return;
    }
    const key = hashOf(model);
    if (key === this.#shownKey) return;
    this.#shownKey = key;
    this.#put(labelOf(model), [el("p", { class: "muted", text: texts.models.readingModel })]);
    const content = await this.#describe(model).catch(messageOf);
    if (this.#shownKey !== key) return; // another one was chosen meanwhile
    const isRead = typeof content !== "string";
    this.#put(labelOf(model), isRead ? content : [el("p", { text: content })]);
    if (!isRead) this.#shownKey = ""; // the next try reads it again
  }

  /** @param {Model} model @returns {Promise<HTMLElement[]>} */
  async #describe(model) {
    const test = button(texts.models.testWith, () => this.test(model), { class: "main" });
    const path = el("p", { class: "hint", text: texts.models.userGivesPath });
    const [outcome, document] = await Promise.all([
      api.readCapabilities(model.vendor, model.model),
      readModel(model).catch(messageOf),
    ]);
    const top = [test, ...(model.needsPath ? [path] : [])];
    if (typeof document !== "string") return [...top, ...describeModel(outcome, document)];
    const trouble = el("p", { text: texts.models.streamsNotRead(document) });
    return [...top, ...describeModel(outcome, null), trouble];
  }

  /** @param {api.StoredCamera} camera */
  #showStored(camera) {
    this.#shownKey = `stored ${camera.id}`;
    const content = camera.capabilities
      ? capabilityTable(camera.capabilities, texts.models.kept)
      : el("p", { text: texts.models.noFile });
    this.#put(nameOf(camera), [content]);
    byId("models-detail-title", HTMLElement).focus();
  }

  /** @param {string} title @param {HTMLElement[]} content */
  #put(title, content) {
    byId("models-detail-title", HTMLElement).textContent = title;
    byId("models-detail-body", HTMLElement).replaceChildren(...content);
  }
}
