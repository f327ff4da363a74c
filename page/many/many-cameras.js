/// The view of a list of cameras: what it holds, a run, and what came of it.

import { UNTESTED, checkRow, checkRows, forgetPasswords, isTestable, kindOf, lacksPassword } from "../list/camera-list.js";
import { exportResults } from "../list/list-export.js";
import { notesOf, readRows } from "../list/list-reading.js";
import { ask, byId, download, el, say } from "../parts/dom.js";
import * as api from "../recorder/api.js";
import { LOGIN_REFUSED } from "../recorder/causes.js";
import { Estimate } from "../testing/estimate.js";
import { HELD, Refusals, isSameLogin } from "../testing/refusals.js";
import { Run } from "../testing/run.js";
import { Slowness } from "../testing/slowness.js";
import { counted } from "../text/text.js";
import { ImportDialog } from "./import-dialog.js";
import { ListColumns } from "./list-columns.js";
import { ListDefaults } from "./list-defaults.js";
import { ListFilters } from "./list-filters.js";
import { ListMistakes } from "./list-mistakes.js";
import { ListOpening } from "./list-opening.js";
import { ListTable, KINDS } from "./list-table.js";
import { RowDetails } from "./row-details.js";
import { RunPanel } from "./run-panel.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../list/camera-list.js").Kind} Kind
 * @typedef {import("../list/list-reading.js").ReadList} ReadList
 */

export class ManyCameras {
  /** @type {Row[]} */
  #rows = [];
  /** The list as it was read; null once its passwords are forgotten. @type {ReadList | null} */
  #source = null;
  #isEdited = false; // some row's values are others than in the file
  /** @type {Run | null} while it runs */
  #run = null;
  #refusals = new Refusals();
  #slowness = new Slowness();
  #estimate = new Estimate();
  #spokenQuarters = 0;

  /**
   * @param {import("../recorder/models.js").ModelList} models
   * @param {(camera: Camera) => void} openOne
   */
  constructor(models, openOne) {
    this.models = models;
    this.defaults = new ListDefaults(models, () => this.#check());
    this.opening = new ListOpening({
      isRunning: () => this.#run !== null,
      mayReplace: (name) => this.#mayReplace(`The list is replaced by ${name}.`, "Open it"),
      opened: (name, list) => this.#open(name, list),
    });
    this.columns = new ListColumns(() => this.#columnsChanged());
    this.filters = new ListFilters(() => this.#filtered());
    this.details = new RowDetails(models, {
      edited: (row) => this.#edited(row),
      maySend: (row) => this.#maySend(row),
      test: (row) => this.#test([row]),
      openOne,
      isRunning: () => this.#run !== null,
    });
    this.table = new ListTable((row) => this.details.open(row));
    this.mistakes = new ListMistakes((row) => this.details.open(row));
    this.importDialog = new ImportDialog();
    this.panel = new RunPanel({
      start: () => this.#test(this.#remaining),
      retry: () => this.#test(this.#retriable),
      held: () => this.#testHeld(),
      stop: () => this.#run?.stopSending(),
      "stop-now": () => this.#run?.stopNow(),
      "go-on": () => this.#run?.resume(),
      "give-up": () => this.#run?.stopSending(),
    });
    models.addEventListener("change", () => this.#modelsCame());
    this.#listen();
  }

  #listen() {
    /** @param {string} name @param {() => void} press */
    const on = (name, press) => byId(`many-${name}`, HTMLButtonElement).addEventListener("click", press);
    on("forget", () => {
      this.forgetPasswords();
      this.#check();
      say("Passwords forgotten");
    });
    on("export", () => this.#export());
    on("export-import", () => this.importDialog.open(this.#rows));
  }

  // ---- the list ----

  /** Asks before results, or values that were typed, are lost. @param {string} what happens @param {string} yes */
  async #mayReplace(what, yes) {
    const tested = this.#rows.filter((row) => row.testedAt).length;
    if (tested === 0 && !this.#isEdited) return true;
    const lost = tested > 0 ? `The results of ${counted(tested, "row")} are lost` : "What you changed in rows is lost";
    return ask(`${what} ${lost}. Go on?`, yes);
  }

  /** @param {string} name @param {ReadList} list */
  #open(name, list) {
    byId("many-open", HTMLElement).hidden = true;
    byId("many-list", HTMLElement).hidden = false;
    window.addEventListener("beforeunload", warnBeforeLeaving);
    byId("many-name", HTMLElement).textContent = name;
    this.columns.open(list.headings);
    this.#fill(list);
    say(`${counted(this.#rows.length, "row")} read. ${counted(this.#ofKind("toFix").length, "row")} to fix.`);
  }

  /** @param {ReadList} list */
  #fill(list) {
    this.#source = list;
    byId("many-notes", HTMLElement).replaceChildren(...notesOf(list).map((note) => el("li", { text: note })));
    this.#rows = readRows(list);
    this.#isEdited = false;
    this.filters.clear();
    this.#check();
  }

  /** Cells go elsewhere: the rows are read anew. */
  async #columnsChanged() {
    if (!this.#source || !(await this.#mayReplace("The rows are read anew.", "Read them"))) return false;
    this.#fill(this.#source);
    return true;
  }

  /** Empties every place that holds a password. */
  forgetPasswords() {
    this.#run?.stopNow(); // it would go on without them
    forgetPasswords(this.#rows, this.defaults.values);
    this.#refusals.forgetPasswords();
    this.#source = null;
    this.columns.close();
    this.defaults.forgetPassword();
    this.opening.forgetPasswords();
    this.details.forgetPassword();
  }

  #modelsCame() {
    this.defaults.modelsCame();
    if (this.#rows.length > 0 && !this.#run) this.#check();
  }

  // ---- values ----

  /** Works out every row anew. */
  #check() {
    const before = new Map(this.#rows.map((row) => [row, row.camera]));
    checkRows(this.#rows, this.defaults.values, this.models);
    for (const row of this.#rows) this.#compare(row, before.get(row) ?? null);
    this.table.fill(this.#rows, this.defaults.values);
    this.mistakes.show(this.#rows);
    this.#show();
  }

  /**
   * One that is another camera or login now counts as not tested; a refused login that is the same as before stays held
   * back.
   * @param {Row} row
   * @param {Camera | null} was
   */
  #compare(row, was) {
    const { camera } = row;
    if (JSON.stringify(was) === JSON.stringify(camera)) return;
    if (row.result === "passed" && was && camera && isSameButPassword(was, camera)) return; // it was forgotten
    const isHeld = this.#refusals.isRefused(row) && !(was && camera && !isSameLogin(was, camera));
    Object.assign(row, isHeld ? HELD : UNTESTED, { asHeld: false });
  }

  /** @param {Row} row whose values were changed by hand */
  #edited(row) {
    this.#isEdited = true;
    const { camera } = checkRow(row, this.defaults.values, this.models);
    if (row.result === "passed" && JSON.stringify(camera) !== JSON.stringify(row.camera)) Object.assign(row, UNTESTED);
    this.#check();
  }

  // ---- the run ----

  /** @param {Kind} kind */
  #ofKind(kind) {
    return this.#rows.filter((row) => kindOf(row) === kind);
  }

  get #remaining() {
    return this.#rows.filter((row) => ["waiting", "unknown"].includes(kindOf(row)));
  }

  /** A refused login comes back only after it was edited, and then it counts as not tested. */
  get #retriable() {
    return this.#ofKind("failed").filter((row) => row.code !== LOGIN_REFUSED);
  }

  /** Asks before a login is sent that is likely to be refused. @param {Row} row */
  async #maySend(row) {
    const refused = "This user's login was refused at this address. Another try may lock the user out. Go on anyway?";
    if (this.#refusals.isRefused(row) && !(await ask(refused, "Go on anyway"))) return false;
    return this.#maySendWithout([row]);
  }

  /** Asks once before forgotten passwords are taken for empty ones. @param {Row[]} rows */
  async #maySendWithout(rows) {
    const lacking = rows.filter(lacksPassword);
    if (lacking.length === 0) return true;
    const question = `The passwords of ${counted(lacking.length, "row")} were forgotten. Go on without a password?`;
    if (!(await ask(question, "Go on anyway"))) return false;
    for (const row of lacking) row.isForgotten = false;
    return true;
  }

  async #testHeld() {
    const held = this.#ofKind("held");
    const what = `The login of ${counted(held.length, "row")} was refused at the same address.`;
    const question = `${what} Each may lock a user out. Test anyway?`;
    if (!(await ask(question, "Test anyway"))) return;
    for (const row of held) row.asHeld = true;
    this.#test(held);
  }

  /** @param {Row[]} rows */
  async #test(rows) {
    const testable = rows.filter(isTestable);
    if (this.#run || testable.length === 0 || !(await this.#maySendWithout(testable))) return;
    const isProven = this.#ofKind("passed").length > 0;
    this.#run = new Run(testable, isProven, {
      testGroup: (group, signal) => api.testGroup(group.map(asListRow), signal),
      testAlone: (row, signal) => api.testCamera(cameraOf(row), signal),
      refusals: this.#refusals,
      slowness: this.#slowness,
      estimate: this.#estimate,
      changed: (changed) => this.#runChanged(changed),
    });
    this.#spokenQuarters = 0;
    this.table.update(testable, this.defaults.values);
    this.#show();
    say(`Testing ${counted(testable.length, "camera")}`);
    await this.#run.test();
    this.#run = null;
    this.#show();
    say(`Ended. ${this.#summary()}`);
  }

  #summary() {
    const parts = [
      `${this.#ofKind("passed").length} passed`,
      ...["failed", "held", "unknown", "toFix", "waiting"]
        .map((kind) => ({ kind, count: this.#ofKind(/** @type {Kind} */ (kind)).length }))
        .filter(({ count }) => count > 0)
        .map(({ kind, count }) => `${count} ${KINDS[/** @type {Kind} */ (kind)].toLowerCase()}`),
    ];
    return parts.join(", ");
  }

  /** @param {Row[]} rows */
  #runChanged(rows) {
    this.table.update(rows, this.defaults.values);
    this.#show();
    const run = this.#run;
    if (!run) return;
    if (run.pause) {
      if (rows.length === 0) say(`Paused. ${run.pause.text}`);
      return;
    }
    const quarters = Math.floor((run.done / run.rows.length) * 4);
    if (quarters > this.#spokenQuarters && quarters < 4) say(`${run.done} of ${run.rows.length} tested`);
    this.#spokenQuarters = quarters;
  }

  // ---- what is shown ----

  #show() {
    byId("many-count", HTMLElement).textContent = counted(this.#rows.length, "row");
    this.filters.show(this.#rows);
    this.#showRun();
    const visible = this.filters.visible(this.#rows);
    this.table.showOnly(visible);
    byId("many-none", HTMLElement).hidden = visible.length > 0;
  }

  #filtered() {
    this.#show();
    say(counted(this.filters.visible(this.#rows).length, "row"));
  }

  #showRun() {
    const isRunning = this.#run !== null;
    for (const name of ["other", "forget"]) byId(`many-${name}`, HTMLButtonElement).disabled = isRunning;
    this.defaults.disabled = isRunning;
    byId("many-columns-choices", HTMLFieldSetElement).disabled = isRunning;
    byId("many-table", HTMLTableElement).setAttribute("aria-busy", String(isRunning));
    const counts = {
      remaining: this.#remaining.length,
      retriable: this.#retriable.length,
      held: this.#ofKind("held").length,
    };
    const hasRun = this.#rows.some((row) => row.testedAt || row.result === "unknown");
    this.panel.show(this.#run, counts, hasRun, this.#summary());
  }

  #export() {
    const visible = this.filters.visible(this.#rows);
    download("cameras-tested.csv", exportResults(visible));
    say(`${counted(visible.length, "row")} exported`);
  }
}

/** The list, and what came of it, would be lost. @param {Event} event */
const warnBeforeLeaving = (event) => event.preventDefault();

/** @param {Camera} one @param {Camera} other */
const isSameButPassword = (one, other) =>
  JSON.stringify({ ...one, password: other.password }) === JSON.stringify(other);

/** @param {Row} row */
function cameraOf({ camera }) {
  if (!camera) throw new Error("a row with mistakes is never sent");
  return camera;
}

/** @param {Row} row */
const asListRow = (row) => ({ id: String(row.line), name: row.cells.name, camera: cameraOf(row) });
