/// The run of a list: what is asked before it, its buttons, and what is said of it.

import { isTestable, lacksPassword } from "../list/camera-list.js";
import { ask, say } from "../parts/dom.js";
import * as api from "../recorder/api.js";
import { Estimate } from "../testing/estimate.js";
import { Run } from "../testing/run.js";
import { Slowness } from "../testing/slowness.js";
import { counted } from "../texts/language.js";
import { KINDS } from "./list-table.js";
import { RunPanel } from "./run-panel.js";

/**
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../list/camera-list.js").Kind} Kind
 */

/** What is counted in the summary besides those that passed. @type {readonly Kind[]} */
const COUNTED = ["failed", "held", "unknown", "toFix", "waiting"];

/** @param {Row} row */
function cameraOf({ camera }) {
  if (!camera) throw new Error("a row with mistakes is never sent");
  return camera;
}

/** @param {Row} row */
const asListRow = (row) => ({ id: String(row.line), name: row.cells.name, camera: cameraOf(row) });

export class ListRun {
  /** @type {Run | null} while it runs */
  #run = null;
  #slowness = new Slowness();
  #estimate = new Estimate();
  #spokenQuarters = 0;

  /**
   * @param {import("../testing/open-list.js").OpenList} list
   * @param {(rows: Row[]) => void} changed these rows, and whether something runs
   */
  constructor(list, changed) {
    this.list = list;
    this.changed = changed;
    this.panel = new RunPanel({
      start: () => this.test(list.remaining),
      retry: () => this.test(list.retriable),
      held: () => this.#testHeld(),
      stop: () => this.#run?.stopSending(),
      "stop-now": () => this.stopNow(),
      "go-on": () => this.#run?.resume(),
      "give-up": () => this.#run?.stopSending(),
    });
  }

  get isRunning() {
    return this.#run !== null;
  }

  stopNow() {
    this.#run?.stopNow();
  }

  // ---- what is asked before ----

  /** Asks before a login is sent that is likely to be refused. @param {Row} row */
  async maySend(row) {
    const refused = "This user's login was refused at this address. Another try may lock the user out. Go on anyway?";
    if (this.list.refusals.isRefused(row) && !(await ask(refused, "Go on anyway"))) return false;
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
    const held = this.list.ofKind("held");
    const what = `The login of ${counted(held.length, "row")} was refused at the same address.`;
    const question = `${what} Each may lock a user out. Test anyway?`;
    if (!(await ask(question, "Test anyway"))) return;
    for (const row of held) row.asHeld = true;
    this.test(held);
  }

  // ---- the run ----

  /** Tests those of these rows that can be. @param {Row[]} rows */
  async test(rows) {
    const testable = rows.filter(isTestable);
    if (this.#run || testable.length === 0 || !(await this.#maySendWithout(testable))) return;
    this.#run = this.#begin(testable);
    this.#spokenQuarters = 0;
    this.changed(testable);
    say(`Testing ${counted(testable.length, "camera")}`);
    await this.#run.test();
    this.#run = null;
    this.changed([]);
    say(`Ended. ${this.#summary()}`);
  }

  /** @param {Row[]} rows */
  #begin(rows) {
    return new Run(rows, this.list.ofKind("passed").length > 0, {
      testGroup: (group, signal) => api.testGroup(group.map(asListRow), signal),
      testAlone: (row, signal) => api.testCamera(cameraOf(row), signal),
      refusals: this.list.refusals,
      slowness: this.#slowness,
      estimate: this.#estimate,
      changed: (changed) => this.#wentOn(changed),
    });
  }

  /** @param {Row[]} rows */
  #wentOn(rows) {
    this.changed(rows);
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

  #summary() {
    const counts = COUNTED.map((kind) => ({ kind, count: this.list.ofKind(kind).length }));
    const others = counts.filter(({ count }) => count > 0);
    const parts = others.map(({ kind, count }) => `${count} ${KINDS[kind].toLowerCase()}`);
    return [`${this.list.ofKind("passed").length} passed`, ...parts].join(", ");
  }

  /** Shows what runs, or what can be run. */
  show() {
    const { rows, remaining, retriable } = this.list;
    const counts = {
      remaining: remaining.length,
      retriable: retriable.length,
      held: this.list.ofKind("held").length,
    };
    const hasRun = rows.some((row) => row.testedAt || row.result === "unknown");
    this.panel.show(this.#run, counts, hasRun, this.#summary());
  }
}
