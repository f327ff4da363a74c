/// The view of the stored cameras. Only their stills are asked of cameras.

import { button, el, refill, sayLater } from "../parts/dom.js";
import { addView, field, mistakeLine, tell } from "../parts/forms.js";
import { table } from "../parts/table.js";
import { listCameras, nameOf } from "../recorder/cameras.js";
import { labelOf } from "../recorder/models.js";
import { cameraHash } from "../text/address.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";
import { CameraCard, stateMark } from "./camera-card.js";
import { StateFilter } from "./state-filter.js";
import { Stills } from "./stills.js";
import { Strips } from "./strips.js";
import { hasWords, lastingOf, placeOf, sorted, stateOf } from "./camera-words.js";

/** @typedef {import("../recorder/cameras.js").CameraSummary} CameraSummary */

const words = texts.cameras;
const REREAD_MS = 15_000;
/** After a camera was seen in another state; others may come meanwhile. */
const SOON_MS = 2000;

/** @param {CameraCard} card */
function rowOf({ camera, strip }) {
  const name = el("a", { href: cameraHash(camera), text: nameOf(camera), "data-kind": camera.id });
  const place = el("span", { class: "code", text: placeOf(camera) });
  const state = el("span", {}, stateMark(stateOf(camera)), ` ${lastingOf(camera)}`);
  return [name, place, labelOf(camera), state, strip.cell];
}

export class CamerasView {
  /** Cards by the cameras' numbers, in the order of the list. @type {Map<number, CameraCard>} */
  #cards = new Map();
  /** @type {CameraSummary[] | null} */
  #read = null;
  #timer = 0;
  #soon = 0;
  #stills = new Stills(() => this.#loadSoon());
  #strips = new Strips(() => this.#cards.values(), () => this.#loadSoon());
  #filter = new StateFilter(() => this.#show());
  #search = el("input", { id: "cameras-search", type: "search", autocomplete: "off", spellcheck: "false" });
  #toggle = button(words.asTable, () => this.#turn(), { id: "cameras-table-toggle" });
  #trouble = mistakeLine("cameras-trouble");
  #count = el("p", { id: "cameras-count", class: "hint", text: words.reading });
  #list = el("ul", { id: "cameras-list", class: "camera-cards", "aria-label": words.list });
  #table = el("div", { id: "cameras-table", hidden: true });
  #none = el(
    "p",
    { id: "cameras-none", hidden: true },
    `${words.none} `,
    button(words.showAll, () => this.#showAll(), { class: "link" }),
  );
  #add = el("a", { href: "#add", id: "cameras-add", class: "button main", text: texts.add.title });
  #emptyAdd = el("a", { href: "#add", class: "button main", text: texts.add.title });
  #emptyText = el("p");
  #empty = el(
    "div",
    { id: "cameras-empty", class: "card", hidden: true },
    el("h2", { text: words.emptyTitle }),
    this.#emptyText,
    this.#emptyAdd,
  );
  #tools = el("div", { class: "camera-tools" }, field(words.searchLabel, this.#search), this.#toggle, this.#add);

  constructor() {
    const { trouble } = this.#strips;
    const whole = [this.#trouble, trouble, this.#empty, this.#tools, this.#filter.element, this.#count, this.#none];
    addView("cameras", words.title, ...whole, this.#list, this.#table);
    this.#search.addEventListener("input", () => {
      this.#show();
      sayLater(this.#count.textContent ?? "");
    });
    document.addEventListener("visibilitychange", () => this.#loadIfOpen());
  }

  /** @param {import("../recorder/access.js").Session} session */
  show({ role }) {
    const isAdmin = role === "admin";
    for (const link of [this.#add, this.#emptyAdd]) link.hidden = !isAdmin;
    this.#emptyText.textContent = isAdmin ? words.emptyText : words.askAdmin;
  }

  open() {
    this.#load();
    this.#strips.open();
  }

  close() {
    this.#strips.close();
    clearTimeout(this.#timer);
    this.#timer = 0;
  }

  #loadSoon() {
    this.#soon ||= setTimeout(() => this.#loadIfOpen(), SOON_MS);
  }

  #loadIfOpen() {
    this.#soon = 0;
    if (this.#timer) this.#load();
  }

  async #load() {
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => this.#load(), REREAD_MS);
    if (document.hidden) return;
    try {
      this.#take(await listCameras());
      this.#stills.look();
      tell(this.#trouble, "");
    } catch (error) {
      tell(this.#trouble, words.notRead(sentence(messageOf(error))));
      if (!this.#read) this.#count.textContent = "";
    }
  }

  /** @param {CameraSummary[]} cameras */
  #take(cameras) {
    if (cameras === this.#read) return this.#retell();
    this.#read = cameras;
    const before = this.#cards;
    this.#cards = new Map(sorted(cameras).map((camera) => [camera.id, this.#cardOf(camera)]));
    for (const [id, card] of before) if (!this.#cards.has(id)) this.#stills.remove(card);
    this.#place();
    this.#strips.draw();
    this.#show();
  }

  /** Time has passed. */
  #retell() {
    for (const card of this.#cards.values()) card.update(card.camera);
    this.#show();
    this.#strips.draw();
  }

  /** @param {CameraSummary} camera */
  #cardOf(camera) {
    const known = this.#cards.get(camera.id);
    known?.update(camera);
    return known ?? new CameraCard(camera);
  }

  /** Puts the cards in their order, and leaves those alone that are in it. */
  #place() {
    const wanted = [...this.#cards.values()].map((card) => card.element);
    const { children } = this.#list;
    if (wanted.length === children.length && wanted.every((one, i) => one === children[i])) return;
    const focused = document.activeElement;
    this.#list.replaceChildren(...wanted);
    if (focused instanceof HTMLElement && this.#list.contains(focused)) focused.focus();
    for (const card of this.#cards.values()) this.#stills.add(card);
  }

  /** Shows those that are looked for. */
  #show() {
    const cards = [...this.#cards.values()];
    const found = cards.filter(({ text }) => hasWords(text, this.#search.value));
    this.#filter.offer(found.map(({ camera }) => stateOf(camera)));
    const shown = new Set(found.filter(({ camera }) => this.#filter.takes(stateOf(camera))));
    for (const card of cards) card.element.hidden = !shown.has(card);
    this.#empty.hidden = cards.length > 0;
    for (const part of [this.#tools, this.#count, this.#filter.element]) part.hidden = cards.length === 0;
    this.#none.hidden = cards.length === 0 || shown.size > 0;
    this.#count.textContent = words.count(shown.size, cards.length);
    if (!this.#table.hidden) this.#fillTable([...shown]);
  }

  /** @param {CameraCard[]} shown */
  #fillTable(shown) {
    const { name, address, model, state } = words.columns;
    const headings = [name, address, model, state, texts.changes.week];
    refill(this.#table, [table(words.list, headings, shown.map(rowOf))]);
  }

  #showAll() {
    this.#search.value = "";
    this.#filter.reset();
    this.#show();
    this.#search.focus();
  }

  /** Cards become a table, and the table cards. */
  #turn() {
    const isTable = this.#table.hidden;
    this.#table.hidden = !isTable;
    this.#list.hidden = isTable;
    this.#toggle.textContent = isTable ? words.asCards : words.asTable;
    this.#table.replaceChildren();
    this.#show();
  }
}
