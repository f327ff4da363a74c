/// A file becomes a list of cameras: its headings, its columns, its rows. Asks nobody.

import { decodeText, isWorkbook, parseCsv, unguardCell } from "../text/csv.js";
import { texts } from "../texts/texts.js";
import { UNTESTED, splitCells } from "./camera-list.js";
import { COLUMNS, columnOf } from "./headings.js";

/**
 * @typedef {import("./camera-list.js").Cells} Cells
 * @typedef {import("./camera-list.js").Row} Row
 * @typedef {import("../text/csv.js").Line} Line
 * @typedef {import("./headings.js").Column} Column
 *
 * @typedef {object} Heading
 * @property {string} text as the file has it
 * @property {Column | ""} column that its cells go into; "" for none
 * @property {boolean} isUnknown somebody has to say which column it is
 *
 * @typedef {object} ReadList
 * @property {Line[]} lines of cameras
 * @property {Heading[]} headings
 * @property {string} mistake of the file, which has no lines then; "" for none
 * @property {string[]} notes about the text, whichever column its cells go into
 */

const MOST_ROWS = 1000;
/** Lines that may stand above the cameras: titles, and the headings. */
const MOST_ABOVE = 5;

/** @param {string} mistake @returns {ReadList} */
const refused = (mistake) => ({ lines: [], headings: [], mistake, notes: [] });

/** @param {Uint8Array} bytes @returns {ReadList} */
export function readListFile(bytes) {
  if (isWorkbook(bytes)) return refused(texts.list.workbook);
  const { text, isGuess } = decodeText(bytes);
  const list = readList(text);
  if (isGuess) list.notes.unshift(texts.list.notUtf8);
  return list;
}

/** @param {string} text @returns {ReadList} */
export function readList(text) {
  const { lines, openQuote } = parseCsv(text);
  if (openQuote) return refused(texts.list.openQuote(openQuote));
  const first = lines[0];
  if (!first) return refused(texts.list.noRows);
  const at = findHeading(lines);
  const { headings, notes } = at < 0 ? orderedColumns(first.cells.length) : readHeading(lines[at]?.cells ?? []);
  const titles = lines.slice(0, Math.max(at, 0)).map(({ number }) => texts.list.above(number));
  const cameras = lines.slice(at + 1);
  if (cameras.length === 0) return refused(texts.list.noRows);
  if (cameras.length > MOST_ROWS) return refused(texts.list.tooMany(MOST_ROWS));
  return { lines: cameras, headings, mistake: "", notes: [...titles, ...notes] };
}

/** What is to be said about a list, as its columns are now. @param {ReadList} list */
export function notesOf({ lines, headings, notes }) {
  const lacksAddress = lines.length > 0 && !headings.some(({ column }) => column === "address");
  return lacksAddress ? [...notes, texts.list.noAddressColumn] : notes;
}

/** @param {string} cell */
const isAddress = (cell) => /^(\d{1,3}\.){3}\d{1,3}(:\d+)?$|^[0-9a-f]*:[0-9a-f:]*:[0-9a-f]*$|:\/\//i.test(cell.trim());
/** @param {Line} line */
const hasAddress = ({ cells }) => cells.some(isAddress);
/** No heading is a number, so that "user" may be somebody's user name. @param {Line} line */
const mayBeHeading = (line) => !hasAddress(line) && !line.cells.some((cell) => /^\s*\d+\s*$/.test(cell));
/** A name with a dot, as cameras have. @param {string} cell */
const isHostName = (cell) => /^[\w-]+(\.[\w-]+)+$/.test(cell.trim());
/** How many headings are known: none beside a host name, where "user" is somebody's. @param {Line} line */
const countKnown = ({ cells }) => (cells.some(isHostName) ? 0 : cells.filter((cell) => columnOf(cell) !== null).length);
/** A heading leaves no cell out, except at its ends. @param {Line} line */
const hasWordsAlone = ({ cells }) =>
  cells
    .join("\t")
    .trim()
    .split("\t")
    .every((cell) => /\S/.test(cell) && !/\d/.test(cell) && !isHostName(cell));

/**
 * The line with most known headings, of which one alone is enough only if it is the address, in the first line; or else
 * a line of words alone right above the first address. Titles may stand above it. A camera's line that is taken for a
 * heading would have its password shown.
 * @param {Line[]} lines
 * @returns {number} its place among them; -1 for a file without headings
 */
function findHeading(lines) {
  const end = lines.slice(0, MOST_ABOVE).findIndex((line) => !mayBeHeading(line));
  const above = lines.slice(0, end < 0 ? MOST_ABOVE : end);
  const known = above.map(countKnown);
  const best = known.indexOf(Math.max(...known, 1));
  const isAddressFirst = best === 0 && above[0]?.cells.some((cell) => columnOf(cell) === "address");
  if (isAddressFirst || (known[best] ?? 0) > 1) return best;
  const last = lines[end] && hasAddress(lines[end]) ? above.at(-1) : undefined;
  return last && hasWordsAlone(last) ? end - 1 : -1;
}

/** @param {string[]} cells */
function readHeading(cells) {
  const notes = [];
  /** @type {Heading[]} */
  const headings = [];
  for (const cell of cells) {
    const text = cell.trim();
    const column = columnOf(text);
    const isTwice = Boolean(column) && headings.some((heading) => heading.column === column);
    if (isTwice) notes.push(texts.list.twice(column ?? ""));
    const isUnknown = text !== "" && (column === null || isTwice);
    headings.push({ text, column: isUnknown ? "" : (column ?? ""), isUnknown });
  }
  return { headings, notes };
}

/** Without headings; a list of one column is one of addresses. @param {number} count */
function orderedColumns(count) {
  /** @type {readonly Column[]} */
  const columns = count === 1 ? ["address"] : COLUMNS.slice(0, count);
  const headings = columns.map((column) => ({ text: column, column, isUnknown: false }));
  return { headings, notes: [texts.list.inOrder(columns.join(", "))] };
}

/** The rows of a list, whose cells go where its headings say. @param {ReadList} list @returns {Row[]} */
export const readRows = ({ lines, headings }) => lines.map((line) => readRow(line, headings));

/**
 * @param {Line} line
 * @param {Heading[]} headings
 * @returns {Row}
 */
function readRow({ number, cells }, headings) {
  const width = headings.length;
  const isLong = cells.slice(width).some((cell) => cell.trim() !== "");
  const found = /** @type {Cells} */ (Object.fromEntries(COLUMNS.map((column) => [column, ""])));
  for (const [i, { column }] of headings.entries()) {
    const cell = cells[i] ?? "";
    if (column) found[column] = unguardCell(column === "password" ? cell : cell.trim());
  }
  const isShort = cells.length < width;
  return {
    line: number,
    cells: splitCells(found),
    shapeMistake: isShort || isLong ? texts.list.otherWidth(cells.length, width) : "",
    camera: null,
    problems: [],
    notices: [],
    sameAs: 0,
    asDuplicate: false,
    asHeld: false,
    isForgotten: false,
    ...UNTESTED,
  };
}
