/// What a list of cameras becomes when it leaves the page: tables, without passwords unless somebody asks for them.

import { guardCell, writeCsv } from "../text/csv.js";
import { kindOf, reasonOf } from "./camera-list.js";
import { COLUMNS, RESULT_HEADINGS } from "./headings.js";

/** @typedef {import("./camera-list.js").Row} Row */

/** What the recorder keeps of a camera. @type {readonly import("./headings.js").Column[]} */
const STORED = ["name", "address", "port", "user", "password", "vendor", "model", "channel", "path"];

/** A point in time as ISO 8601 writes it, with the offset of this place. @param {Date} time */
function isoTime(time) {
  const two = (/** @type {number} */ number) => String(Math.trunc(number)).padStart(2, "0");
  const offset = -time.getTimezoneOffset();
  const date = `${time.getFullYear()}-${two(time.getMonth() + 1)}-${two(time.getDate())}`;
  const clock = `${two(time.getHours())}:${two(time.getMinutes())}:${two(time.getSeconds())}`;
  return `${date}T${clock}${offset < 0 ? "-" : "+"}${two(Math.abs(offset) / 60)}:${two(Math.abs(offset) % 60)}`;
}

/** What came of a row, in words that do not change. @type {Readonly<Record<import("./camera-list.js").Kind, string>>} */
const RESULT_WORDS = {
  waiting: "not tested",
  testing: "not tested",
  passed: "passed",
  failed: "failed",
  held: "held",
  unknown: "unknown",
  toFix: "to fix",
  leftOut: "left out",
};

/**
 * The columns that the page reads, what was tested in them, and what came of it.
 * @param {Row[]} rows
 */
export function exportResults(rows) {
  const columns = COLUMNS.filter((column) => column !== "password");
  const lines = rows.map((row) => {
    const { camera } = row;
    /** @type {Record<string, unknown>} */
    const cells = { ...row.cells, ...camera };
    return [
      ...columns.map((column) => guardCell(String(cells[column]))),
      String(row.line),
      RESULT_WORDS[kindOf(row)],
      row.code ? String(row.code) : "",
      guardCell(reasonOf(row)),
      row.testedAt ? isoTime(row.testedAt) : "",
    ];
  });
  return writeCsv([[...columns, ...RESULT_HEADINGS], ...lines]);
}

/**
 * What `recorderctl camera import` takes: the cameras as they were tested. Rows without one are left out.
 * @param {Row[]} rows
 * @param {boolean} withPasswords
 */
export function exportForImport(rows, withPasswords) {
  const columns = STORED.filter((column) => withPasswords || column !== "password");
  const lines = rows.flatMap(({ cells, camera }) => {
    if (!camera) return [];
    /** @type {Record<string, unknown>} */
    const values = { name: cells.name, address: camera.host, ...camera };
    return [columns.map((column) => guardCell(String(values[column])))];
  });
  return writeCsv([columns, ...lines]);
}
