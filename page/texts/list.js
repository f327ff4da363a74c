/// Lists of cameras: what is said of a file that is read, of its columns and of its rows.

import { LANGUAGE, counted } from "./language.js";

export const list = {
  // ---- a file ----
  workbook: "This is a workbook. Save it as CSV.",
  notUtf8: "The file is not UTF-8; it was read as Windows-1252.",
  /** @param {number} line */
  openQuote: (line) => `The quote opened in line ${line} is never closed.`,
  noRows: "There are no rows in it.",
  /** @param {number} most */
  tooMany: (most) => `More than ${most.toLocaleString(LANGUAGE)} rows. Split the file.`,

  // ---- its columns ----
  /** @param {number} line */
  above: (line) => `Line ${line} stands above the headings.`,
  noAddressColumn: "No column holds the address. Choose it below.",
  /** @param {string} column */
  twice: (column) => `The column ${column} is there twice; the first one counts.`,
  /** @param {string} columns */
  inOrder: (columns) => `Line 1 names no columns, so they are taken in this order: ${columns}.`,
  /** @param {number} cells @param {number} width */
  otherWidth: (cells, width) => `${counted(cells, "cell")}, but the heading has ${width}.`,

  // ---- a row ----
  /** @param {string} column @param {string} mistake */
  mistake: (column, mistake) => `${column}: ${mistake}`,
  missing: "missing.",
  standsForStored: "this text stands for a stored password, which a list cannot use.",
  needsPath: "missing; this model needs the stream path.",
  modelsNotRead: "the list of models could not be read yet.",
  /** @param {string} text @param {string} nearest */
  unknownModel: (text, nearest) => `${text} is not in the list. Nearest: ${nearest}.`,
  /** @param {string} text @param {string} known */
  noneOf: (text, known) => `${text} is none of ${known}.`,
  blankInPassword: "password starts or ends with a blank",
  /** @param {string} text */
  spreadsheet: (text) => `${text} looks changed by a spreadsheet`,
  /** @param {number} line */
  sameAs: (line) => `same camera as line ${line}`,
  /** Whose password a row has. */
  passwords: { own: "own", shared: "shared", none: "none" },
};
