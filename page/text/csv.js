/// Comma-separated values (RFC 4180), read gently and written strictly. Pure functions.

/**
 * @typedef {object} Line
 * @property {number} number of the line of text that it begins in, from 1
 * @property {string[]} cells
 *
 * @typedef {object} Table
 * @property {Line[]} lines
 * @property {string} separator
 * @property {number} openQuote the line of a quote that is never closed; 0 for none
 */

/**
 * Where a formula could begin, and where such a place is guarded: a sign where a cell begins. A cell also begins behind
 * a separator within it, since spreadsheets may split lines at another one than the file's.
 */
const FORMULA = /(?=[=+\-@\t\r＝＋－＠])(?<=(?:^|[;,|\t\r\n])[ "']*)/g;
const GUARD = /'(?=[=+\-@\t\r＝＋－＠])(?<=(?:^|[;,|\t\r\n])[ "']*)/g;

/** @param {Uint8Array} bytes */
export function isWorkbook(bytes) {
  const start = [...bytes.subarray(0, 4)].map((byte) => byte.toString(16).padStart(2, "0")).join("");
  return start === "504b0304" || start === "d0cf11e0"; // ZIP (xlsx, ods), OLE (xls)
}

/**
 * UTF-8 with or without a byte order mark, UTF-16 with one, or else Windows-1252.
 * @param {Uint8Array} bytes
 * @returns {{text: string, isGuess: boolean}}
 */
export function decodeText(bytes) {
  const encoding =
    bytes[0] === 0xff && bytes[1] === 0xfe ? "utf-16le" : bytes[0] === 0xfe && bytes[1] === 0xff ? "utf-16be" : "utf-8";
  try {
    return { text: new TextDecoder(encoding, { fatal: true }).decode(bytes), isGuess: false };
  } catch {
    return { text: new TextDecoder("windows-1252").decode(bytes), isGuess: true };
  }
}

/** Lines that tell what separates cells; a title may stand above the headings. */
const TELLING_LINES = 6;

/**
 * The separator that most of the first lines have, outside quotes; of two such, the one that is there more often.
 * @param {string} text
 */
function findSeparator(text) {
  const lines = text
    .replace(/"(?:[^"]|"")*"/g, "")
    .split(/[\r\n]+/, TELLING_LINES)
    .filter(Boolean);
  const rank = (/** @type {string} */ separator) => {
    const counts = lines.map((line) => line.split(separator).length - 1);
    return counts.filter(Boolean).length * 1000 + counts.reduce((sum, one) => sum + one, 0);
  };
  return [",", ";", "\t"].reduce((best, other) => (rank(other) > rank(best) ? other : best));
}

/**
 * Reads a table. Lines end with CRLF, LF or CR; empty lines are left out. A cell is as it stands, blanks included.
 * @param {string} source
 * @returns {Table}
 */
export function parseCsv(source) {
  let text = source.replace(/^\ufeff/, "");
  let number = 1;
  let separator = findSeparator(text);
  const declared = /^sep=(.)(?:\r\n|\r|\n|$)/i.exec(text);
  if (declared) {
    separator = declared[1] ?? separator;
    text = text.slice(declared[0].length);
    number = 2;
  }
  /** @type {Line[]} */
  const lines = [];
  let line = { number, cells: /** @type {string[]} */ ([]) };
  let cell = "";
  let quoteLine = 0;
  let isQuoted = false;

  const endLine = () => {
    line.cells.push(cell);
    if (line.cells.some((one) => one.trim() !== "")) lines.push(line);
    cell = "";
    line = { number, cells: [] };
  };
  for (let i = 0; i < text.length; ++i) {
    const character = text.charAt(i);
    const isBreak = character === "\n" || character === "\r";
    const isPair = character === "\r" && text[i + 1] === "\n";
    if (isBreak) ++number;
    if (isQuoted) {
      if (character !== '"') cell += isPair ? text.charAt(i++) + "\n" : character;
      else if (text[i + 1] === '"') cell += text.charAt(++i);
      else isQuoted = false;
    } else if (character === '"' && cell.trim() === "") {
      isQuoted = true;
      quoteLine = number;
      cell = "";
    } else if (character === separator) {
      line.cells.push(cell);
      cell = "";
    } else if (isBreak) {
      if (isPair) ++i;
      endLine();
    } else {
      cell += character;
    }
  }
  endLine();
  return { lines, separator, openQuote: isQuoted ? quoteLine : 0 };
}

/**
 * Makes sure that a spreadsheet takes the cell for text, whichever separator it splits at. `recorderctl` does the same.
 * @param {string} cell
 */
export const guardCell = (cell) => cell.replace(FORMULA, "'");

/**
 * Takes off what guardCell puts into a cell; one that it would not have written so stays as it is.
 * @param {string} cell
 */
export function unguardCell(cell) {
  const plain = cell.replace(GUARD, "");
  return guardCell(plain) === cell ? plain : cell;
}

/** @param {string} cell */
const writeCell = (cell) => (/[",\r\n]/.test(cell) ? `"${cell.replaceAll('"', '""')}"` : cell);

/**
 * @param {readonly (readonly string[])[]} lines
 * @returns {string} with byte order mark, commas and CRLF
 */
export function writeCsv(lines) {
  return "\ufeff" + lines.map((cells) => cells.map(writeCell).join(",") + "\r\n").join("");
}
