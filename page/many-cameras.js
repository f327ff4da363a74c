/// The view of a list of cameras: a file, what is wrong with it, a run, and what came of it.

import { portMistake } from "./address.js";
import * as api from "./api.js";
import {
  UNTESTED,
  checkRows,
  forgetPasswords,
  isTestable,
  kindOf,
  lacksPassword,
  readList,
  readListFile,
  reasonOf,
} from "./camera-list.js";
import { LOGIN_REFUSED, TEST_CAUSES, causeOf } from "./causes.js";
import { ask, button, byId, download, el, say, showMistake } from "./dom.js";
import { exportForImport, exportResults } from "./list-export.js";
import { ListTable, KINDS } from "./list-table.js";
import { ModelField } from "./model-field.js";
import { HELD, Refusals } from "./refusals.js";
import { RowDetails } from "./row-details.js";
import { FIRST_GROUP, GROUP, Run, countRequests } from "./run.js";
import { counted } from "./text.js";

/**
 * @typedef {import("./api.js").Camera} Camera
 * @typedef {import("./camera-list.js").Row} Row
 * @typedef {import("./camera-list.js").Kind} Kind
 */

/** In the order in which the focus passes on from one that vanishes. */
const RUN_BUTTONS = ["go-on", "stop", "stop-now", "start", "retry", "held", "give-up"];
const DEFAULT_FIELDS = /** @type {const} */ (["user", "password", "port", "model"]);

export class ManyCameras {
  /** @type {Row[]} */
  #rows = [];
  /** @type {Run | null} while it runs */
  #run = null;
  /** @type {Kind | "all"} */
  #filter = "all";
  #code = 0; // cause that failed rows are narrowed to; 0 for all
  #refusals = new Refusals();
  #spokenQuarters = 0;

  /**
   * @param {import("./models.js").ModelList} models
   * @param {(camera: import("./api.js").Camera) => void} openOne
   */
  constructor(models, openOne) {
    this.models = models;
    const input = (/** @type {string} */ name) => byId(`many-${name}`, HTMLInputElement);
    this.defaultFields = {
      user: input("user"),
      password: input("password"),
      port: input("port"),
      model: input("model"),
    };
    this.modelField = new ModelField(this.defaultFields.model, models);
    this.details = new RowDetails(models, {
      edited: () => this.#check(),
      maySend: (row) => this.#maySend(row),
      test: (row) => this.#test([row]),
      openOne,
      isRunning: () => this.#run !== null,
    });
    this.table = new ListTable((row) => this.details.open(row));
    models.addEventListener("change", () => this.#modelsCame());
    this.#listenForFiles();
    this.#listenForWork();
  }

  // ---- files ----

  #listenForFiles() {
    const file = byId("many-file", HTMLInputElement);
    file.addEventListener("change", () => {
      const [chosen] = file.files ?? [];
      if (chosen) this.#openFile(chosen);
      file.value = ""; // the same file can be chosen again
    });
    byId("many-other", HTMLButtonElement).addEventListener("click", () => file.click());
    const text = byId("many-text", HTMLTextAreaElement);
    byId("many-read", HTMLButtonElement).addEventListener("click", () => {
      this.#open("Pasted rows", readList(text.value));
      text.value = ""; // it may hold passwords
    });
    const view = byId("view-many", HTMLElement);
    const drop = byId("many-drop", HTMLElement);
    view.addEventListener("dragover", (event) => {
      event.preventDefault();
      drop.classList.add("over");
    });
    view.addEventListener("dragleave", () => drop.classList.remove("over"));
    view.addEventListener("drop", (event) => {
      event.preventDefault();
      drop.classList.remove("over");
      const [dropped] = event.dataTransfer?.files ?? [];
      if (dropped) this.#openFile(dropped);
    });
  }

  /** @param {File} file */
  async #openFile(file) {
    this.#open(file.name, readListFile(new Uint8Array(await file.arrayBuffer())));
  }

  /** @param {string} name @param {import("./camera-list.js").ReadList} list */
  #open(name, { rows, mistake, notes }) {
    if (this.#run) {
      say("A run is going on. Stop it first.");
      return;
    }
    const text = byId("many-mistake", HTMLElement);
    text.textContent = mistake ? `${name}: ${mistake}` : "";
    text.hidden = mistake === "";
    if (mistake) {
      this.#showOpening(true);
      text.focus();
      return;
    }
    this.#rows = rows;
    this.#refusals.forgetAll();
    this.#filter = "all";
    byId("many-name", HTMLElement).textContent = name;
    byId("many-notes", HTMLElement).replaceChildren(...notes.map((note) => el("li", { text: note })));
    this.#showOpening(false);
    if (!this.modelField.value) this.modelField.value = this.models.preferred();
    this.#check();
    say(`${counted(rows.length, "row")} read. ${counted(this.#ofKind("toFix").length, "row")} to fix.`);
  }

  /** @param {boolean} isEmpty */
  #showOpening(isEmpty) {
    byId("many-open", HTMLElement).hidden = !isEmpty;
    byId("many-list", HTMLElement).hidden = isEmpty;
    if (isEmpty) this.#rows = [];
    if (isEmpty) window.removeEventListener("beforeunload", warnBeforeLeaving);
    else window.addEventListener("beforeunload", warnBeforeLeaving);
  }

  /** Empties every place that holds a password. */
  forgetPasswords() {
    this.#run?.stopNow(); // it would go on without them
    forgetPasswords(this.#rows, this.#defaults);
    this.defaultFields.password.value = "";
    byId("many-text", HTMLTextAreaElement).value = "";
    this.details.forgetPassword();
  }

  #modelsCame() {
    if (!this.modelField.value && this.defaultFields.model.value === "")
      this.modelField.value = this.models.preferred();
    if (this.#rows.length > 0 && !this.#run) this.#check();
  }

  // ---- values ----

  get #defaults() {
    const { user, password, port } = this.defaultFields;
    return { user: user.value, password: password.value, port: port.value.trim(), model: this.modelField.value };
  }

  /** Works out every row anew. */
  #check() {
    this.#refusals.holdBack(this.#rows); // before one row's new password lifts that for others
    const before = new Map(this.#rows.map((row) => [row, row.camera]));
    checkRows(this.#rows, this.#defaults, this.models);
    for (const row of this.#rows) this.#compare(row, before.get(row) ?? null);
    this.table.fill(this.#rows, this.#defaults);
    this.#showMistakes();
    this.#show();
  }

  /**
   * One that did not pass and is another camera or login now counts as not tested; a refused login that is the same as
   * before stays held back.
   * @param {Row} row
   * @param {Camera | null} was
   */
  #compare(row, was) {
    const { camera } = row;
    if (was && camera && was.password !== camera.password) this.#refusals.forget(camera);
    if (row.result === "passed" || JSON.stringify(was) === JSON.stringify(camera)) return;
    const isHeld = this.#refusals.isRefused(row) && !(was && camera && isOtherLogin(was, camera));
    Object.assign(row, isHeld ? HELD : UNTESTED, { asHeld: false });
  }

  #defaultsChanged() {
    const { port, model } = this.defaultFields;
    showMistake(port, port.value.trim() && portMistake(port.value.trim()));
    const isUnknown = model.value.trim() !== "" && !this.modelField.value;
    showMistake(model, isUnknown ? "Choose a model from the list." : "");
    this.#check();
  }

  // ---- the run ----

  #listenForWork() {
    for (const name of DEFAULT_FIELDS)
      this.defaultFields[name].addEventListener("change", () => this.#defaultsChanged());
    this.modelField.addEventListener("change", () => this.#defaultsChanged());
    byId("many-defaults", HTMLFormElement).addEventListener("submit", (event) => {
      event.preventDefault();
      this.#defaultsChanged();
    });
    /** @param {string} name @param {() => void} press */
    const on = (name, press) => byId(`many-${name}`, HTMLButtonElement).addEventListener("click", press);
    on("start", () => this.#test(this.#remaining));
    on("retry", () => this.#test(this.#retriable));
    on("held", () => this.#testHeld());
    on("stop", () => this.#run?.stopAfterGroup());
    on("stop-now", () => this.#run?.stopNow());
    on("go-on", () => this.#run?.resume());
    on("give-up", () => this.#run?.stopAfterGroup());
    on("forget", () => {
      this.forgetPasswords();
      this.#check();
      say("Passwords forgotten");
    });
    on("export", () => this.#export());
    on("export-import", () => this.#exportForImport());
    byId("many-filter", HTMLSelectElement).addEventListener("change", (event) => {
      if (event.target instanceof HTMLSelectElement) this.#choose(/** @type {Kind} */ (event.target.value));
    });
  }

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
      changed: (changed) => this.#runChanged(changed),
    });
    this.#spokenQuarters = 0;
    this.table.update(testable, this.#defaults);
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
    this.table.update(rows, this.#defaults);
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
    this.#showCounts();
    this.#showRun();
    this.#showCauses();
    this.#showRows();
  }

  #showCounts() {
    byId("many-count", HTMLElement).textContent = counted(this.#rows.length, "row");
    const counts = Object.entries(KINDS)
      .map(([kind, label]) => ({
        kind: /** @type {Kind} */ (kind),
        label,
        count: this.#ofKind(/** @type {Kind} */ (kind)).length,
      }))
      .filter(({ kind, count }) => count > 0 || kind === this.#filter);
    const all = [{ kind: /** @type {const} */ ("all"), label: "All", count: this.#rows.length }, ...counts];
    refill(
      byId("many-filters", HTMLElement),
      all.map(({ kind, label, count }) =>
        button(`${label} ${count}`, () => this.#choose(kind), {
          "aria-pressed": String(kind === this.#filter),
          "data-kind": kind,
        }),
      ),
    );
    const select = byId("many-filter", HTMLSelectElement);
    select.replaceChildren(
      ...all.map(({ kind, label, count }) => el("option", { value: kind, text: `${label} ${count}` })),
    );
    select.value = this.#filter;
  }

  /** @param {Kind | "all"} kind */
  #choose(kind) {
    this.#filter = kind;
    this.#code = 0;
    this.#show();
    say(counted(this.#visible.length, "row"));
  }

  get #visible() {
    const rows = this.#filter === "all" ? this.#rows : this.#ofKind(this.#filter);
    return this.#filter === "failed" && this.#code ? rows.filter((row) => row.code === this.#code) : rows;
  }

  #showRows() {
    const visible = this.#visible;
    this.table.showOnly(visible);
    byId("many-none", HTMLElement).hidden = visible.length > 0;
  }

  /** Counts a cause; the advice stands once, not in each row. */
  #showCauses() {
    const failed = this.#filter === "failed" ? this.#ofKind("failed") : [];
    const codes = [...new Set(failed.map((row) => row.code))].sort((one, other) => one - other);
    const place = byId("many-causes", HTMLElement);
    place.hidden = codes.length === 0;
    refill(
      place,
      codes.map((code) => {
        const count = failed.filter((row) => row.code === code).length;
        const choose = () => {
          this.#code = code === this.#code ? 0 : code;
          this.#show();
        };
        const { heading } = causeOf(TEST_CAUSES, code);
        return button(`${heading} ${count}`, choose, {
          "aria-pressed": String(code === this.#code),
          "data-kind": String(code),
        });
      }),
    );
    const advice = byId("many-advice", HTMLElement);
    const only = this.#code || (codes.length === 1 ? (codes[0] ?? 0) : 0);
    advice.hidden = !only || failed.length === 0;
    const { heading, happened, first } = causeOf(TEST_CAUSES, only);
    advice.replaceChildren(
      el("strong", { text: `${heading}. ` }),
      `${happened} `,
      el("strong", { text: "First: " }),
      first,
    );
  }

  /** All mistakes at once, each with a way to its row. */
  #showMistakes() {
    const open = (/** @type {Row} */ row) => () => this.details.open(row);
    const mistakes = this.#rows.flatMap((row) => [
      ...row.problems.map((text) =>
        button(`Line ${row.line}${row.shapeMistake ? ":" : ","} ${text}`, open(row), { class: "link" }),
      ),
      ...(kindOf(row) === "leftOut"
        ? [button(`Line ${row.line}: ${reasonOf(row)}, left out`, open(row), { class: "link" })]
        : []),
      ...row.notices.map((text) => button(`Line ${row.line}: ${text}`, open(row), { class: "link" })),
    ]);
    const fix = byId("many-fix", HTMLDetailsElement);
    if (fix.hidden && mistakes.length > 0) fix.open = mistakes.length <= 10;
    fix.hidden = mistakes.length === 0;
    byId("many-fix-summary", HTMLElement).textContent =
      `${counted(this.#ofKind("toFix").length, "row")} to fix, ${counted(mistakes.length, "remark")}`;
    refill(
      byId("many-fix-list", HTMLElement),
      mistakes.map((link) => el("li", {}, link)),
    );
  }

  #showRun() {
    const run = this.#run;
    const buttons = RUN_BUTTONS.map((name) => byId(`many-${name}`, HTMLButtonElement));
    const focused = buttons.find((one) => one === document.activeElement);
    const remaining = this.#remaining.length;
    const start = byId("many-start", HTMLButtonElement);
    const hasRun = this.#rows.some((row) => row.testedAt || row.result === "unknown");
    showButton("start", run === null && (remaining > 0 || !hasRun));
    start.disabled = remaining === 0;
    start.textContent = hasRun ? `Test the remaining ${remaining}` : `Test ${counted(remaining, "camera")}`;
    showButton("retry", run === null && this.#retriable.length > 0);
    showButton("held", run === null && this.#ofKind("held").length > 0);
    showButton("stop", run?.state === "running" && !run.pause);
    byId("many-stop", HTMLButtonElement).textContent = run?.isAloneNow ? "Stop after these" : "Stop after this group";
    showButton("stop-now", run !== null && !run.pause);
    for (const name of ["other", "forget"]) byId(`many-${name}`, HTMLButtonElement).disabled = run !== null;
    for (const name of DEFAULT_FIELDS) this.defaultFields[name].disabled = run !== null;
    byId("many-table", HTMLTableElement).setAttribute("aria-busy", String(run !== null));
    this.#showPause(run);
    this.#showProgress(run);
    if (!focused || focused.checkVisibility()) return;
    (buttons.find((one) => one.checkVisibility()) ?? byId("many-title", HTMLElement)).focus();
  }

  /** @param {Run | null} run */
  #showPause(run) {
    byId("many-pause", HTMLElement).hidden = !run?.pause;
    if (!run?.pause) return;
    byId("many-pause-title", HTMLElement).textContent =
      run.pause.kind === "logins"
        ? "Paused."
        : run.isAloneNow
          ? "This camera's test was not answered."
          : "This group was not answered.";
    byId("many-pause-text", HTMLElement).textContent = run.pause.text;
  }

  /** @param {Run | null} run */
  #showProgress(run) {
    byId("many-progress-label", HTMLElement).hidden = run === null;
    const text = byId("many-progress-text", HTMLElement);
    if (!run) {
      const rows = this.#remaining;
      const isProven = this.#ofKind("passed").length > 0;
      const requests = countRequests(rows, isProven ? GROUP : FIRST_GROUP);
      const about = isProven || requests === 1 ? "" : "about ";
      text.textContent = rows.length > 0 ? `in ${about}${counted(requests, "request")}` : this.#summary();
      return;
    }
    const progress = byId("many-progress", HTMLProgressElement);
    progress.max = run.rows.length;
    progress.value = run.done;
    const left = run.requestsLeft;
    const about = run.isProven || left === 0 ? "" : "about ";
    const parts = [
      `${run.done} of ${run.rows.length}`,
      `${run.isAloneNow ? "request" : "group"} ${run.requestsSent} of ${about}${run.requestsSent + left}`,
    ];
    const mean = run.durations.reduce((sum, one) => sum + one, 0) / run.durations.length;
    if (run.durations.length > 0 && left > 0) parts.push(timeLeft((left + 1) * mean));
    if (run.state === "stopping") parts.push("stopping");
    text.textContent = parts.join(", ");
  }

  // ---- files out ----

  #export() {
    download("cameras-tested.csv", exportResults(this.#visible));
    say(`${counted(this.#visible.length, "row")} exported`);
  }

  #exportForImport() {
    const { text, count, leftOut } = exportForImport(this.#visible);
    download("cameras-for-import.csv", text);
    const rest = leftOut > 0 ? `; ${counted(leftOut, "row")} left out, which cannot be imported as they stand` : "";
    say(`${counted(count, "row")} exported${rest}`);
    byId("many-progress-text", HTMLElement).textContent = `${counted(count, "row")} exported${rest}`;
  }
}

/** The list, and what came of it, would be lost. @param {Event} event */
const warnBeforeLeaving = (event) => event.preventDefault();

/** @param {Camera} one @param {Camera} other */
const isOtherLogin = (one, other) =>
  one.host.toLowerCase() !== other.host.toLowerCase() || one.user !== other.user || one.password !== other.password;

/** @param {Row} row */
function cameraOf({ camera }) {
  if (!camera) throw new Error("a row with mistakes is never sent");
  return camera;
}

/** @param {Row} row */
const asListRow = (row) => ({ id: String(row.line), name: row.cells.name, camera: cameraOf(row) });

/** @param {string} name @param {boolean} isShown */
function showButton(name, isShown) {
  byId(`many-${name}`, HTMLButtonElement).hidden = !isShown;
}

/**
 * Puts new elements in, and the focus on the one that stands for what had it.
 * @param {HTMLElement} place
 * @param {HTMLElement[]} elements
 */
function refill(place, elements) {
  const focused = document.activeElement;
  const kind = focused instanceof HTMLElement && place.contains(focused) ? focused.dataset.kind : undefined;
  place.replaceChildren(...elements);
  if (kind) elements.find((element) => element.dataset.kind === kind)?.focus();
}

/** @param {number} milliseconds */
function timeLeft(milliseconds) {
  const seconds = Math.ceil(milliseconds / 1000);
  return seconds < 60 ? `about ${seconds} s left` : `about ${Math.round(seconds / 60)} min left`;
}
