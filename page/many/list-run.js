/// The run of a list: what is asked before it, its buttons, and what is said of it.

import { isTestable, lacksPassword } from "../list/camera-list.js";
import { ask, say, sayQuarter } from "../parts/dom.js";
import * as api from "../recorder/api.js";
import { isAsked } from "../recorder/models.js";
import { Estimate } from "../testing/estimate.js";
import { LONG, LongRun } from "../testing/long-run.js";
import { Run } from "../testing/run.js";
import { Slowness } from "../testing/slowness.js";
import { texts } from "../texts/texts.js";
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

/** Whether there may be channels that were not tested with it. @param {Row} row */
const mayHaveMore = ({ result, camera }) => result === "passed" && camera?.channel === "" && isAsked(camera);

export class ListRun {
  #isAllowedLong = false;
  /** @type {Run | LongRun | null} while it runs */
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

  /** Only an admin may have the recorder test by itself. @param {import("../recorder/access.js").Session} session */
  allow({ role }) {
    this.#isAllowedLong = role === "admin";
  }

  get isRunning() {
    return this.#run !== null;
  }

  /** What learns from a result. */
  get means() {
    return { refusals: this.list.refusals, slowness: this.#slowness };
  }

  stopNow() {
    this.#run?.stopNow();
  }

  /** The page is left, or its passwords are forgotten: without them it would go on in the recorder alone. */
  leave() {
    if (this.#run instanceof LongRun) this.#run.leave();
    else this.stopNow();
  }

  // ---- what is asked before ----

  /** Asks before a login is sent that is likely to be refused. @param {Row} row */
  async maySend(row) {
    const isRefused = this.list.refusals.isRefused(row);
    if (isRefused && !(await ask(texts.many.refusedBefore, texts.many.goOnAnyway))) return false;
    return this.#maySendWithout([row]);
  }

  /** Asks once before forgotten passwords are taken for empty ones. @param {Row[]} rows */
  async #maySendWithout(rows) {
    const lacking = rows.filter(lacksPassword);
    if (lacking.length === 0) return true;
    if (!(await ask(texts.many.forgottenBefore(lacking.length), texts.many.goOnAnyway))) return false;
    for (const row of lacking) row.isForgotten = false;
    return true;
  }

  async #testHeld() {
    const held = this.list.ofKind("held");
    if (!(await ask(texts.many.heldBefore(held.length), texts.common.testAnyway))) return;
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
    say(texts.many.testing(testable.length));
    await this.#run.test();
    this.#run = null;
    this.changed([]);
    say(texts.common.ended(this.#summary()));
    await this.#noteChannels(testable);
  }

  /** Until there is another list or run. @param {Row[]} rows that were tested */
  async #noteChannels(rows) {
    for (const row of rows) {
      if (this.#run || !this.list.rows.includes(row)) return;
      if (!mayHaveMore(row)) continue;
      const count = await api.countChannels(cameraOf(row)).catch(() => 0);
      if (count < 2 || !mayHaveMore(row)) continue;
      row.note = texts.many.hasChannels(count);
      this.changed([row]);
    }
  }

  /** @param {Row[]} rows */
  #begin(rows) {
    const isLong = this.#isAllowedLong && rows.length >= LONG && !rows.some(({ asHeld }) => asHeld);
    return new (isLong ? LongRun : Run)(rows, this.list.ofKind("passed").length > 0, {
      testGroup: (group, signal) => api.testGroup(group.map(asListRow), signal),
      testAlone: (row, signal) => api.testCamera(cameraOf(row), signal),
      ...this.means,
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
      if (rows.length === 0) say(texts.many.pausedFor(run.pause.text));
      return;
    }
    const { done, rows: all } = run;
    this.#spokenQuarters = sayQuarter(this.#spokenQuarters, done, all.length, texts.many.saidProgress);
  }

  // ---- what is shown ----

  #summary() {
    const countOf = (/** @type {Kind} */ kind) => texts.many.countOf(this.list.ofKind(kind).length, kind);
    const others = COUNTED.filter((kind) => this.list.ofKind(kind).length > 0);
    return [countOf("passed"), ...others.map(countOf)].join(", ");
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
