/// Rows of a list that are stored for good: which can be, one after the other, and what came of each. Knows no
/// document; what stores a row is given to it.

import { kindOf, lacksPassword } from "../list/camera-list.js";
import { Trouble } from "../recorder/request.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";

/**
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../recorder/saving.js").Kept} Kept
 *
 * What became of a row: "text" says why it failed; "perhaps" is stored already, and was not added for that.
 * @typedef {{kind: "perhaps", id: number, name: string}} Perhaps
 * @typedef {Kept | Perhaps | {kind: "adding"} | {kind: "failed", text: string}} Addition
 */

/** The recorder says what is wrong with this camera; others may be right. */
const ABOUT_THE_ROW = 400;

/** The camera that a row is about, whoever knows its password. @param {Row} row */
const keyOf = ({ camera }) => JSON.stringify({ ...camera, password: "" });

/**
 * Rows by what can be done with them or was. "open": can be added; "failed" and "perhaps": can be added again; "twice":
 * the same camera as a row above that passed, too; "forgotten": the password was.
 * @typedef {"open" | "failed" | "perhaps" | "twice" | "forgotten" | "adding" | "added" | "there"} Sort
 */

export class Additions {
  /** Of rows, as long as they are about the same camera. @type {WeakMap<Row, {of: string, addition: Addition}>} */
  #known = new WeakMap();
  #isStopping = false;
  /** How many rows the latest run has, and how many of them are done. */
  run = { isRunning: false, all: 0, done: 0 };
  /** Why the latest run broke off; "" if it did not. */
  trouble = "";

  /**
   * @param {(row: Row) => Promise<Kept | Perhaps>} keep
   * @param {(rows: Row[]) => void} changed
   */
  constructor(keep, changed) {
    this.keep = keep;
    this.changed = changed;
  }

  /** @param {Row} row @returns {Addition | undefined} undefined when nothing was tried */
  of(row) {
    const known = this.#known.get(row);
    return known?.of === keyOf(row) ? known.addition : undefined;
  }

  /** Those that passed, and those of which something is known. @param {Row[]} rows @returns {Record<Sort, Row[]>} */
  sort(rows) {
    /** @type {Record<Sort, Row[]>} */
    const sorted = { open: [], failed: [], perhaps: [], twice: [], forgotten: [], adding: [], added: [], there: [] };
    const passed = new Set(rows.filter((row) => kindOf(row) === "passed").map(({ line }) => line));
    for (const row of rows) {
      const sort = this.#sortOf(row, passed);
      if (sort) sorted[sort].push(row);
    }
    return sorted;
  }

  /** @param {Row} row @param {Set<number>} passed lines @returns {Sort | null} */
  #sortOf(row, passed) {
    const { kind = "open" } = this.of(row) ?? {};
    if (kind !== "open" && kind !== "failed" && kind !== "perhaps") return kind;
    if (!passed.has(row.line)) return null;
    if (lacksPassword(row)) return "forgotten";
    return kind === "open" && passed.has(row.sameAs) ? "twice" : kind;
  }

  /** What is in flight counts. */
  stop() {
    this.#isStopping = true;
  }

  /** @param {Row[]} rows that `sort` gave */
  async add(rows) {
    this.run = { isRunning: true, all: rows.length, done: 0 };
    this.trouble = "";
    this.#isStopping = false;
    for (const row of rows) {
      if (this.#isStopping) break;
      await this.#addOne(row);
      ++this.run.done;
      this.changed([row]);
    }
    this.run.isRunning = false;
  }

  /** @param {Row} row @param {Addition} addition @param {string} of by which values: they may change meanwhile */
  #note(row, addition, of) {
    this.#known.set(row, { of, addition });
  }

  /** @param {Row} row */
  async #addOne(row) {
    const of = keyOf(row);
    this.#note(row, { kind: "adding" }, of);
    this.changed([row]);
    try {
      this.#note(row, await this.keep(row), of);
    } catch (error) {
      const text = sentence(messageOf(error));
      this.#note(row, { kind: "failed", text }, of);
      if (error instanceof Trouble && error.status === ABOUT_THE_ROW) return;
      this.trouble = text;
      this.stop();
    }
  }
}
