/// A field that takes a model from the list: a combobox with a list box (WAI-ARIA Authoring Practices).

import { button, el, sayLater } from "../parts/dom.js";
import { labelOf, ofMakerText } from "../recorder/models.js";
import { texts } from "../texts/texts.js";

/** @typedef {import("../recorder/api.js").Model} Model */

const MOST_OPTIONS = 50;

/** Models with what is said before them. @typedef {{note: string, models: Model[]}} Group */

/** Tells of "change" when a model was taken, or the text cleared. */
export class ModelField extends EventTarget {
  /** @type {Model[]} what is drawn */
  #options = [];
  #active = -1;
  #wasTyped = false; // the text narrows the list only after typing

  /**
   * @param {HTMLInputElement} input the list and its button come after it
   * @param {import("../recorder/models.js").ModelList} list
   */
  constructor(input, list) {
    super();
    this.input = input;
    this.list = list;
    this.box = el("ul", {
      id: `${input.id}-list`,
      role: "listbox",
      class: "options",
      "aria-label": texts.models.choices,
      hidden: true,
    });
    const opener = button("▾", () => this.#toggle(), { class: "opener", tabindex: -1, "aria-hidden": "true" });
    opener.addEventListener("mousedown", (event) => event.preventDefault());
    input.after(opener, this.box);
    for (const [name, value] of Object.entries({
      role: "combobox",
      "aria-autocomplete": "list",
      "aria-expanded": "false",
      "aria-controls": this.box.id,
      autocomplete: "off",
      spellcheck: "false",
    })) {
      input.setAttribute(name, value);
    }
    input.addEventListener("input", () => this.#typed());
    input.addEventListener("keydown", (event) => this.#key(event));
    input.addEventListener("click", () => this.#open());
    input.addEventListener("blur", () => this.#close());
    this.box.addEventListener("mousedown", (event) => event.preventDefault()); // the input keeps the focus
    this.box.addEventListener("click", (event) => this.#click(event));
  }

  /** The model that the text names, or null. */
  get value() {
    return this.list.findText(this.input.value);
  }

  /** Sets the model without telling. @param {Model | null} model */
  set value(model) {
    this.input.value = model ? labelOf(model) : "";
    this.#wasTyped = false;
  }

  get isOpen() {
    return !this.box.hidden;
  }

  #typed() {
    this.#wasTyped = true;
    this.#open();
    this.dispatchEvent(new Event("change"));
  }

  #toggle() {
    this.input.focus();
    if (this.isOpen) this.#close();
    else this.#open();
  }

  #open() {
    if (this.input.disabled) return;
    if (!this.#wasTyped) this.input.select(); // typing replaces what stands there
    const found = this.list.search(this.#wasTyped ? this.input.value : "");
    const groups = found.length > 0 ? [{ note: "", models: found }] : this.#instead(this.input.value);
    const chosen = this.value;
    this.#draw(groups);
    this.box.hidden = false;
    this.input.setAttribute("aria-expanded", "true");
    this.#activate(this.#wasTyped || !chosen ? -1 : this.#options.indexOf(chosen));
    sayLater(found.length > 0 ? texts.models.found(found.length) : groups.map(({ note }) => note).join(" "));
  }

  #close() {
    this.box.hidden = true;
    this.input.setAttribute("aria-expanded", "false");
    this.input.removeAttribute("aria-activedescendant");
    sayLater("");
  }

  /** What is offered where nothing was found. @param {string} text @returns {Group[]} */
  #instead(text) {
    const near = this.list.ofMaker(text);
    const fallbacks = this.list.fallbacks();
    if (near.length === 0) return [{ note: `${texts.models.noMatch} ${texts.models.fallbacks}`, models: fallbacks }];
    return [
      { note: ofMakerText(near), models: near },
      { note: texts.models.fallbacks, models: fallbacks },
    ];
  }

  /** @param {Group[]} groups */
  #draw(groups) {
    this.#options = [];
    this.box.replaceChildren(...groups.flatMap((group) => this.#drawGroup(group)));
  }

  /** @param {Group} group */
  #drawGroup({ note, models }) {
    const shown = models.slice(0, MOST_OPTIONS);
    const options = shown.map((model, i) => this.#optionFor(model, this.#options.length + i));
    this.#options.push(...shown);
    const rest = models.length - shown.length;
    const notes = [note, rest > 0 ? texts.models.more(rest) : ""];
    const [before = [], after = []] = notes.map((text) =>
      text ? [el("li", { role: "presentation", class: "note", text })] : [],
    );
    return [...before, ...options, ...after];
  }

  /** @param {Model} model @param {number} i */
  #optionFor(model, i) {
    return el("li", { id: `${this.box.id}-${i}`, role: "option", "aria-selected": "false", text: labelOf(model) });
  }

  get #drawn() {
    return [...this.box.querySelectorAll('[role="option"]')];
  }

  /** @param {number} index -1 for none */
  #activate(index) {
    this.#active = index;
    for (const [i, option] of this.#drawn.entries()) {
      option.setAttribute("aria-selected", String(i === index));
      if (i !== index) continue;
      this.input.setAttribute("aria-activedescendant", option.id);
      option.scrollIntoView({ block: "nearest" });
    }
    if (index < 0) this.input.removeAttribute("aria-activedescendant");
  }

  /** @param {number} step */
  #move(step) {
    if (!this.isOpen) return this.#open();
    const last = this.#options.length - 1;
    if (last < 0) return;
    const next = this.#active + step;
    this.#activate(next < 0 ? last : next > last ? 0 : next);
  }

  #take(/** @type {Model} */ model) {
    this.value = model;
    this.#close();
    this.dispatchEvent(new Event("change"));
  }

  #clear() {
    this.value = null;
    this.dispatchEvent(new Event("change"));
  }

  /** @param {MouseEvent} event */
  #click(event) {
    const option = event.target instanceof Element ? event.target.closest('[role="option"]') : null;
    const model = option && this.#options[this.#drawn.indexOf(option)];
    if (model) this.#take(model);
  }

  /** @param {KeyboardEvent} event */
  #key(event) {
    if (event.isComposing) return;
    const active = this.#options[this.#active];
    if (event.key === "ArrowDown") this.#move(1);
    else if (event.key === "ArrowUp") this.#move(-1);
    else if (event.key === "Enter" && this.isOpen && active) this.#take(active);
    else if (event.key === "Enter" && this.isOpen && this.#options.length > 0 && !this.value) this.#close();
    else if (event.key === "Escape" && this.isOpen) this.#close();
    else if (event.key === "Escape" && this.input.value !== "" && !this.input.readOnly) this.#clear();
    else return; // Tab leaves without taking; Enter on a closed list is the form's
    event.preventDefault();
    event.stopPropagation();
  }
}
