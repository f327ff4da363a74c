/// The view of a list of cameras: what it holds, a run, and what came of it.

import { exportResults } from "../list/list-export.js";
import { notesOf } from "../list/list-reading.js";
import { ask, byId, download, el, say } from "../parts/dom.js";
import { OpenList } from "../testing/open-list.js";
import { Refusals } from "../testing/refusals.js";
import { texts } from "../texts/texts.js";
import { Adding } from "./adding.js";
import { EarlierRun, settleEarlier } from "./earlier-run.js";
import { ImportDialog } from "./import-dialog.js";
import { ListColumns } from "./list-columns.js";
import { ListDefaults } from "./list-defaults.js";
import { ListFilters } from "./list-filters.js";
import { ListMistakes } from "./list-mistakes.js";
import { ListOpening } from "./list-opening.js";
import { ListRun } from "./list-run.js";
import { ListTable } from "./list-table.js";
import { RowDetails } from "./row-details.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../list/list-reading.js").ReadList} ReadList
 */

export class ManyCameras {
  /**
   * @param {import("../recorder/models.js").ModelList} models
   * @param {(camera: Camera) => void} openOne
   */
  constructor(models, openOne) {
    this.list = new OpenList(models, new Refusals());
    this.run = new ListRun(this.list, (rows) => this.#changed(rows));
    const isRunning = () => this.#isBusy;
    this.adding = new Adding(
      (rows) => this.#changed(rows),
      (row) => this.details.open(row),
    );
    this.defaults = new ListDefaults(models, () => this.#check());
    this.opening = new ListOpening({
      isRunning,
      mayReplace: (name) => this.#mayReplace(texts.many.replaced(name), texts.many.openIt),
      opened: (name, list) => this.#open(name, list),
    });
    this.earlier = new EarlierRun((list, found) => this.#openEarlier(list, found));
    this.columns = new ListColumns(() => this.#columnsChanged());
    this.filters = new ListFilters(() => this.#filtered());
    this.details = new RowDetails(models, {
      edited: (row) => this.#edited(row),
      maySend: (row) => this.run.maySend(row),
      test: (row) => this.run.test([row]),
      openOne,
      isRunning,
      additionOf: (row) => this.adding.resultOf(row),
    });
    this.table = new ListTable(
      (row) => this.details.open(row),
      (row) => this.adding.resultOf(row),
    );
    this.mistakes = new ListMistakes((row) => this.details.open(row));
    this.importDialog = new ImportDialog();
    models.addEventListener("change", () => this.#modelsCame());
    this.#listen();
  }

  #listen() {
    /** @param {string} name @param {() => void} press */
    const on = (name, press) => byId(`many-${name}`, HTMLButtonElement).addEventListener("click", press);
    on("forget", () => {
      this.forgetPasswords();
      this.#check();
      say(texts.many.forgotten);
    });
    on("export", () => this.#export());
    on("export-import", () => this.importDialog.open(this.list.rows));
  }

  /** What this user may do. @param {import("../recorder/access.js").Session} session */
  allow(session) {
    this.adding.allow(session);
    this.run.allow(session);
    this.earlier.allow(session);
    if (this.list.rows.length > 0) this.#show();
  }

  /** Where no list is open, an earlier test is told of, once rows can be read. */
  open() {
    const isSeen = !byId("view-many", HTMLElement).hidden;
    if (isSeen && this.list.rows.length === 0 && this.list.models.models.length > 0) this.earlier.look();
  }

  /** Rows are being tested, or added. */
  get #isBusy() {
    return this.run.isRunning || this.adding.isRunning;
  }

  /** Asks before the page is left on purpose; the browser then does not ask a second time. */
  async mayLeave() {
    if (!(await this.#mayReplace(texts.many.closed, texts.login.logOut))) return false;
    window.removeEventListener("beforeunload", warnBeforeLeaving);
    return true;
  }

  // ---- the list ----

  /** Asks before results, or values that were typed, are lost. @param {string} what happens @param {string} yes */
  async #mayReplace(what, yes) {
    const { tested, isEdited } = this.list;
    if (tested.length === 0 && !isEdited) return true;
    const { resultsLost, changesLost } = texts.many;
    return ask(tested.length > 0 ? resultsLost(what, tested.length) : changesLost(what), yes);
  }

  /** @param {string} name @param {ReadList} list */
  #open(name, list) {
    byId("many-open", HTMLElement).hidden = true;
    byId("many-list", HTMLElement).hidden = false;
    window.addEventListener("beforeunload", warnBeforeLeaving);
    byId("many-name", HTMLElement).textContent = name;
    this.columns.open(list.headings);
    this.#fill(list);
    say(texts.many.opened(this.list.rows.length, this.list.ofKind("toFix").length));
    byId("many-title", HTMLElement).focus(); // what had it is no longer in sight
  }

  /** @param {ReadList} list @param {import("../recorder/runs.js").BackgroundRow[]} found what came of its rows */
  #openEarlier(list, found) {
    this.#open(texts.many.earlierName, list);
    settleEarlier(this.list.rows, found, this.run.means);
    this.#showChecked();
  }

  /** @param {ReadList} list */
  #fill(list) {
    this.list.fill(list);
    byId("many-notes", HTMLElement).replaceChildren(...notesOf(list).map((note) => el("li", { text: note })));
    this.filters.clear();
    this.#check();
  }

  /** Cells go elsewhere: the rows are read anew. */
  async #columnsChanged() {
    const { source } = this.list;
    if (!source || !(await this.#mayReplace(texts.many.readAnew, texts.many.readThem))) return false;
    this.#fill(source);
    return true;
  }

  /** Empties every place that holds a password. */
  forgetPasswords() {
    this.run.leave();
    this.adding.stop();
    this.list.forgetPasswords(this.defaults.values);
    this.columns.close();
    this.defaults.forgetPassword();
    this.opening.forgetPasswords();
    this.details.forgetPassword();
  }

  // ---- values ----

  #modelsCame() {
    this.defaults.modelsCame();
    this.open();
    if (this.list.rows.length > 0 && !this.#isBusy) this.#check();
  }

  /** Other values may stand for empty cells. */
  #check() {
    this.list.check(this.defaults.values);
    this.#showChecked();
  }

  /** @param {Row} row */
  #edited(row) {
    this.list.edited(row, this.defaults.values);
    this.#showChecked();
  }

  // ---- what is shown ----

  #showChecked() {
    this.table.fill(this.list.rows, this.defaults.values);
    this.mistakes.show(this.list.rows);
    this.#show();
  }

  /** @param {Row[]} rows of a run */
  #changed(rows) {
    this.table.update(rows, this.defaults.values);
    this.#show();
  }

  #show() {
    const { rows } = this.list;
    byId("many-count", HTMLElement).textContent = texts.many.rows(rows.length);
    this.filters.show(rows);
    this.#hold(this.#isBusy);
    this.run.show();
    byId("many-run", HTMLElement).hidden = this.adding.isRunning;
    this.adding.show(rows, this.run.isRunning);
    const visible = this.filters.visible(rows);
    this.table.showOnly(visible);
    byId("many-none", HTMLElement).hidden = visible.length > 0;
  }

  /** What would change the list waits for the end of what runs. @param {boolean} isRunning */
  #hold(isRunning) {
    for (const name of ["other", "other-rows", "forget"]) byId(`many-${name}`, HTMLButtonElement).disabled = isRunning;
    this.defaults.disabled = isRunning;
    byId("many-columns-choices", HTMLFieldSetElement).disabled = isRunning;
    byId("many-table", HTMLTableElement).setAttribute("aria-busy", String(isRunning));
  }

  #filtered() {
    this.#show();
    say(texts.many.rows(this.filters.visible(this.list.rows).length));
  }

  #export() {
    const visible = this.filters.visible(this.list.rows);
    download("cameras-tested.csv", exportResults(visible));
    say(texts.many.exported(visible.length));
  }
}

/** The list, and what came of it, would be lost. @param {Event} event */
const warnBeforeLeaving = (event) => event.preventDefault();
