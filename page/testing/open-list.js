/// The list that is open: its rows, and what becomes of their results when values change. Knows no document.

import { UNTESTED, checkRow, checkRows, forgetPasswords, kindOf } from "../list/camera-list.js";
import { readRows } from "../list/list-reading.js";
import { isLoginRefused } from "../recorder/causes.js";
import { HELD, isSameLogin } from "./refusals.js";

/**
 * @typedef {import("../list/camera-list.js").Defaults} Defaults
 * @typedef {import("../list/camera-list.js").Kind} Kind
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../list/list-reading.js").ReadList} ReadList
 * @typedef {import("../recorder/api.js").Camera} Camera
 */

/** @param {Camera} one @param {Camera} other */
const isSameButPassword = (one, other) =>
  JSON.stringify({ ...one, password: other.password }) === JSON.stringify(other);

export class OpenList {
  /** @type {Row[]} */
  rows = [];
  /** The list as it was read; null once its passwords are forgotten. @type {ReadList | null} */
  source = null;
  /** Some row's values are others than in the file. */
  isEdited = false;

  /**
   * @param {import("../recorder/models.js").ModelList} models
   * @param {import("./refusals.js").Refusals} refusals
   */
  constructor(models, refusals) {
    this.models = models;
    this.refusals = refusals;
  }

  /** Reads the rows, of which nothing is known then. @param {ReadList} source */
  fill(source) {
    this.source = source;
    this.rows = readRows(source);
    this.isEdited = false;
  }

  /** Works out every row anew. @param {Defaults} defaults */
  check(defaults) {
    const before = new Map(this.rows.map((row) => [row, row.camera]));
    checkRows(this.rows, defaults, this.models);
    for (const row of this.rows) this.#compare(row, before.get(row) ?? null);
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
    const isHeld = this.refusals.isRefused(row) && !(was && camera && !isSameLogin(was, camera));
    Object.assign(row, isHeld ? HELD : UNTESTED, { asHeld: false });
  }

  /** Works out every row anew. @param {Row} row whose values were changed by hand @param {Defaults} defaults */
  edited(row, defaults) {
    this.isEdited = true;
    const { camera } = checkRow(row, defaults, this.models);
    if (row.result === "passed" && JSON.stringify(camera) !== JSON.stringify(row.camera)) Object.assign(row, UNTESTED);
    this.check(defaults);
  }

  /** @param {Kind} kind */
  ofKind(kind) {
    return this.rows.filter((row) => kindOf(row) === kind);
  }

  get tested() {
    return this.rows.filter((row) => row.testedAt);
  }

  /** Rows without a result. */
  get remaining() {
    return this.rows.filter((row) => ["waiting", "unknown"].includes(kindOf(row)));
  }

  /** A refused login comes back only after it was edited, and then it counts as not tested. */
  get retriable() {
    return this.ofKind("failed").filter((row) => !isLoginRefused(row));
  }

  /** @param {Defaults} defaults */
  forgetPasswords(defaults) {
    forgetPasswords(this.rows, defaults);
    this.refusals.forgetPasswords();
    this.source = null;
  }
}
