/// The details of one row of a list: what came of it, its values, a picture.

import { CODECS, STREAMS, kindOf, meant, splitCells } from "../list/camera-list.js";
import { ModelField } from "../models/model-field.js";
import { forgetPassword, spreadAddress, watchAddress } from "../parts/camera-fields.js";
import { byId, el, say, setOptions, setSelected } from "../parts/dom.js";
import { PicturePlace } from "../parts/picture.js";
import * as api from "../recorder/api.js";
import { testCause } from "../recorder/causes.js";
import { isUserDefined, labelOf } from "../recorder/models.js";
import { messageOf } from "../text/text.js";
import { texts } from "../texts/texts.js";
import { resultOf } from "./list-table.js";
import { rowDialog } from "./row-dialog.js";

/**
 * @typedef {import("../list/camera-list.js").Row} Row
 *
 * @typedef {object} Surroundings
 * @property {(row: Row) => void} edited
 * @property {(row: Row) => Promise<boolean>} maySend asks, if there is a reason to, before the row's login is sent
 * @property {(row: Row) => void} test
 * @property {(camera: import("../recorder/api.js").Camera) => void} openOne
 * @property {() => boolean} isRunning
 * @property {(row: Row) => Node[]} additionOf what became of it after its test
 */

const TEXTS = /** @type {const} */ (["name", "address", "port", "user", "password", "channel", "path"]);
const CHOICES = /** @type {const} */ ([
  ["codec", CODECS],
  ["stream", STREAMS],
]);

/** The recorder's name for a camera that is found in another way. */
const NO_SERVICE = "noService";

export class RowDetails {
  /** @type {Row | null} */
  #row = null;
  /** @type {AbortController | null} of the picture that is fetched */
  #fetching = null;

  /**
   * @param {import("../recorder/models.js").ModelList} models
   * @param {Surroundings} surroundings
   */
  constructor(models, surroundings) {
    this.models = models;
    this.surroundings = surroundings;
    this.dialog = rowDialog();
    document.body.append(this.dialog);
    this.picture = new PicturePlace("row-picture");
    this.modelField = new ModelField(byId("row-model", HTMLInputElement), models);
    this.#listen();
  }

  #listen() {
    byId("row-form", HTMLFormElement).addEventListener("submit", (event) => {
      event.preventDefault();
      this.#saveAndTest();
    });
    watchAddress(this.#fields, () => spreadAddress(this.#fields));
    /** @param {string} name @param {() => void} press */
    const on = (name, press) => byId(`row-${name}`, HTMLButtonElement).addEventListener("click", press);
    on("close", () => this.dialog.close());
    on("save", () => {
      this.#save();
      if (this.#row) this.#showResult(this.#row);
      say(texts.many.saved);
    });
    on("anyway", () => this.#testAnyway());
    on("picture", () => this.#showPicture());
    on("one", () => this.#openOne());
    this.dialog.addEventListener("close", () => {
      this.forgetPassword();
      this.#fetching?.abort();
      this.picture.clear("");
      const line = this.#row?.line;
      this.#row = null;
      document.getElementById(`row-${line}-more`)?.focus();
    });
  }

  get #fields() {
    const fields = TEXTS.map((name) => [name, byId(`row-${name}`, HTMLInputElement)]);
    return /** @type {Record<(typeof TEXTS)[number], HTMLInputElement>} */ (Object.fromEntries(fields));
  }

  /** @param {(typeof CHOICES)[number][0]} name */
  #choice(name) {
    return byId(`row-${name}`, HTMLSelectElement);
  }

  forgetPassword() {
    forgetPassword(this.#fields);
  }

  /** @param {Row} row */
  #showTexts({ cells }) {
    for (const name of TEXTS) this.#fields[name].value = cells[name];
  }

  /** @param {Row} row */
  open(row) {
    this.#row = row;
    byId("row-title", HTMLElement).textContent = texts.many.rowTitle(row.line, row.cells.name);
    this.#showTexts(row);
    for (const [name, values] of CHOICES) {
      setOptions(this.#choice(name), values);
      setSelected(this.#choice(name), meant(row.cells[name], values) ?? row.cells[name]);
    }
    const { vendor, model } = row.cells;
    const known =
      `${vendor}${model}` === "" ? null : row.camera && this.models.find(row.camera.vendor, row.camera.model);
    this.modelField.value = known;
    if (!known) byId("row-model", HTMLInputElement).value = `${vendor} ${model}`.trim();
    byId("row-figure", HTMLElement).hidden = true;
    this.#showResult(row);
    this.dialog.showModal();
    this.dialog.scrollTop = 0;
  }

  /** @param {Row} row */
  #showResult(row) {
    const place = byId("row-result", HTMLElement);
    place.replaceChildren(el("p", {}, resultOf(row), ...this.surroundings.additionOf(row)));
    if (kindOf(row) === "failed") {
      const { happened, first } = testCause(row);
      place.append(
        el("p", { text: happened }),
        el(
          "p",
          {},
          el("strong", { text: `${texts.common.first} ` }),
          first,
          el("span", { class: "code muted", text: ` ${texts.common.code(row.code)}` }),
        ),
      );
    }
    if (row.cause === NO_SERVICE) place.append(this.#linkToAdd());
    for (const notice of row.notices) place.append(el("p", { class: "muted", text: notice }));
    const isBusy = this.surroundings.isRunning();
    byId("row-anyway", HTMLButtonElement).hidden = kindOf(row) !== "leftOut";
    for (const name of ["test", "anyway", "save"]) byId(`row-${name}`, HTMLButtonElement).disabled = isBusy;
    for (const name of ["picture", "one"]) byId(`row-${name}`, HTMLButtonElement).disabled = !row.camera;
    if (isBusy) place.append(el("p", { class: "hint", text: texts.many.afterRun }));
  }

  #linkToAdd() {
    const link = el("a", { href: "#add", text: texts.many.goToAdd });
    link.addEventListener("click", () => this.dialog.close());
    return el("p", {}, link);
  }

  /** Takes the fields over into the row, and shows what became of them there. */
  #save() {
    const row = this.#row;
    if (!row) return;
    const before = JSON.stringify(row.cells);
    const fields = this.#fields;
    spreadAddress(fields);
    for (const name of TEXTS) row.cells[name] = name === "password" ? fields[name].value : fields[name].value.trim();
    for (const [name] of CHOICES) row.cells[name] = this.#choice(name).value;
    this.#saveModel(row);
    row.cells = splitCells(row.cells);
    this.#showTexts(row);
    if (JSON.stringify(row.cells) === before) return;
    row.shapeMistake = ""; // what was missing stands in the fields now
    this.surroundings.edited(row);
  }

  /** @param {Row} row */
  #saveModel({ cells }) {
    const model = this.modelField.value;
    const text = byId("row-model", HTMLInputElement).value.trim();
    if (model) Object.assign(cells, { vendor: model.vendor, model: isUserDefined(model) ? "" : model.model });
    else Object.assign(cells, { vendor: "", model: text });
  }

  async #saveAndTest() {
    const row = this.#row;
    if (!row || this.surroundings.isRunning()) return;
    this.#save();
    this.#showResult(row);
    if (!row.camera) {
      say(row.problems.join(" "));
      return;
    }
    if (!(await this.surroundings.maySend(row))) return;
    this.dialog.close();
    row.asHeld = true; // asked for, one by one
    this.surroundings.test(row);
  }

  #testAnyway() {
    if (!this.#row) return;
    this.#row.asDuplicate = true;
    this.surroundings.edited(this.#row);
    this.#saveAndTest();
  }

  async #showPicture() {
    const row = this.#row;
    if (!row?.camera || this.#fetching || !(await this.surroundings.maySend(row))) return;
    byId("row-figure", HTMLElement).hidden = false;
    this.picture.clear(texts.common.fetchingPicture);
    this.#fetching = new AbortController();
    try {
      const picture = await api.takePicture(row.camera, this.#fetching.signal);
      if (this.#row !== row) return;
      const size = await this.picture.show(picture, texts.many.pictureOf(labelOf(row.camera), row.camera.host));
      say(size ? texts.many.pictureThere : texts.common.noPictureCame);
    } catch (error) {
      if (this.#row === row) this.picture.clear(messageOf(error));
    } finally {
      this.#fetching = null;
    }
  }

  #openOne() {
    const camera = this.#row?.camera;
    if (!camera) return;
    this.dialog.close();
    this.surroundings.openOne(camera);
  }
}
