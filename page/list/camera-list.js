/// The rows of a list of cameras: their cells, what is wrong with them, and what came of them. Asks nobody.

import { STORED_PASSWORD } from "../recorder/api.js";
import { testCause } from "../recorder/causes.js";
import { defaultPort, isUserDefined } from "../recorder/models.js";
import { hidesLogin, hostMistake, portMistake, splitAddress } from "../text/address.js";
import { splitPath } from "../text/path-login.js";
import { texts } from "../texts/texts.js";
import { COLUMNS } from "./headings.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 * @typedef {import("../recorder/api.js").Model} Model
 * @typedef {import("../recorder/models.js").ModelList} ModelList
 * @typedef {Record<import("./headings.js").Column, string>} Cells
 *
 * @typedef {object} Defaults what stands in for empty cells
 * @property {string} port "" for the usual one of the model
 * @property {string} user
 * @property {string} password
 * @property {Model | null} model
 *
 * What a run made of a row. "waiting": not tested; "unknown": nobody waited for the answer.
 * @typedef {"waiting" | "testing" | "passed" | "failed" | "held" | "unknown"} Result
 * @typedef {Result | "toFix" | "leftOut"} Kind
 *
 * @typedef {object} Row
 * @property {number} line of the file
 * @property {Cells} cells
 * @property {string} shapeMistake of the line as a whole; "" for none
 * @property {Camera | null} camera what is tested; null while there are problems
 * @property {string[]} problems why it cannot be tested, each beginning with its column
 * @property {string[]} notices
 * @property {number} sameAs line of the same camera further up; 0 for none
 * @property {boolean} asDuplicate is tested although the same camera is further up
 * @property {boolean} asHeld is tested although its login was refused at its host
 * @property {boolean} isForgotten had a password, its own or the shared one, that was forgotten
 * @property {Result} result
 * @property {number} code of the failure; 0 for none
 * @property {string} cause the name that the recorder gave it; "" for none
 * @property {string} note why a row has no result, or what else is to be known of one that passed
 * @property {Date | null} testedAt
 */

export const CODECS = ["H.264", "H.265", "MJPEG", "MPEG4", "MXPEG"];
export const STREAMS = ["RTSP", "HTTP"];
/** Of a row that was not tested. */
export const UNTESTED = /** @type {const} */ ({ result: "waiting", code: 0, cause: "", note: "", testedAt: null });

/**
 * Spreads an address such as "host:8080" or a whole stream address, and a path with a login, over their columns; what
 * stands there already wins. Of an address that hides a login, "@" alone is kept: cells are shown and exported.
 * @param {Cells} cells
 * @returns {Cells}
 */
export function splitCells(cells) {
  const { host, port, ...ofAddress } = splitAddress(cells.address);
  const ofPath = splitPath(cells.path);
  return {
    ...cells,
    address: hidesLogin(host) ? "@" : host,
    port: cells.port || port,
    user: cells.user || ofPath.user || ofAddress.user,
    password: cells.password || ofPath.password || ofAddress.password,
    path: ofPath.path || ofAddress.path,
  };
}

/**
 * @param {Cells} cells
 * @param {Defaults} defaults
 * @param {ModelList} models
 * @returns {Model | string} or what is wrong
 */
function findModel({ vendor, model, path }, defaults, models) {
  if (models.models.length === 0) return texts.list.modelsNotRead;
  const text = `${vendor} ${model}`.trim();
  if (text === "" && path !== "") return models.userDefined() ?? texts.list.missing;
  if (text === "") return defaults.model ?? texts.list.missing;
  const [first = "", ...rest] = text.split(" ");
  const found = models.findText(text) ?? (vendor ? models.find(vendor, model) : models.find(first, rest.join(" ")));
  return found ?? texts.list.unknownModel(text, models.nearest(text).join(", "));
}

/**
 * The value of a list that is meant, without regard to capitals and dots: "" for any, undefined for none of them.
 * @param {string} text
 * @param {string[]} values
 */
export function meant(text, values) {
  const plain = (/** @type {string} */ value) => value.toLowerCase().replace(/[^a-z0-9]/g, "");
  if (text === "" || plain(text) === "any") return "";
  return values.find((value) => plain(value) === plain(text));
}

/**
 * Works out the camera of each row, and what is wrong with it. A camera that passed stays the one that was tested,
 * though the defaults are others now; one whose password was forgotten takes the new one.
 * @param {Row[]} rows
 * @param {Defaults} defaults
 * @param {ModelList} models
 */
export function checkRows(rows, defaults, models) {
  /** @type {Map<string, number>} */
  const lines = new Map();
  for (const row of rows) {
    if (row.result !== "passed" || row.isForgotten) Object.assign(row, checkRow(row, defaults, models));
    row.sameAs = 0;
    if (!row.camera) continue;
    const { host, port, channel, path } = row.camera;
    const key = JSON.stringify([host.toLowerCase(), port, channel, path]);
    row.sameAs = lines.get(key) ?? 0;
    if (!row.sameAs) lines.set(key, row.line);
  }
}

/**
 * The camera of a row, and what is wrong with it.
 * @param {Row} row
 * @param {Defaults} defaults
 * @param {ModelList} models
 * @returns {{camera: Camera | null, problems: string[], notices: string[]}}
 */
export function checkRow({ cells, shapeMistake }, defaults, models) {
  if (shapeMistake) return { camera: null, problems: [shapeMistake], notices: [] };
  const { address: host, path, channel } = cells;
  const user = cells.user || defaults.user;
  const password = cells.password || defaults.password;
  const model = findModel(cells, defaults, models);
  const port = cells.port || defaults.port || String(typeof model === "string" ? 80 : defaultPort(model));
  const codec = meant(cells.codec, CODECS);
  const stream = meant(cells.stream, STREAMS);

  /** @type {string[]} */
  const problems = [];
  /** @param {import("./headings.js").Column} column @param {string} mistake */
  const isWrong = (column, mistake) => problems.push(texts.list.mistake(column, mistake));
  if (hostMistake(host)) isWrong("address", hostMistake(host));
  if (portMistake(port)) isWrong("port", portMistake(port));
  if (password === STORED_PASSWORD) isWrong("password", texts.list.standsForStored);
  if (typeof model === "string") isWrong("model", model);
  else if (model.needsPath && path === "") isWrong("path", texts.list.needsPath);
  if (codec === undefined) isWrong("codec", texts.list.noneOf(cells.codec, CODECS.join(", ")));
  if (stream === undefined) isWrong("stream", texts.list.noneOf(cells.stream, STREAMS.join(", ")));

  const isRight = problems.length === 0 && typeof model !== "string" && codec !== undefined && stream !== undefined;
  const camera = isRight
    ? {
        host,
        port: Number(port),
        vendor: model.vendor,
        model: model.model,
        user,
        password,
        channel,
        codec,
        stream,
        path,
      }
    : null;
  return { camera, problems, notices: noticesOf(cells) };
}

/** What looks wrong and may be right. @param {Cells} cells */
function noticesOf(cells) {
  const notices = [];
  if (cells.password !== cells.password.trim()) notices.push(texts.list.blankInPassword);
  for (const column of COLUMNS) {
    const isChanged = column !== "password" && /^\d+([.,]\d+)?E[+-]?\d+$/i.test(cells[column]);
    if (isChanged) notices.push(texts.list.spreadsheet(cells[column]));
  }
  return notices;
}

/**
 * A batch carries no channel, path, codec or stream; such a row is tested alone.
 * @param {Camera} camera
 */
export const ridesInGroup = (camera) =>
  !camera.channel && !camera.path && !camera.codec && !camera.stream && !isUserDefined(camera);

/** @param {Row} row @returns {Kind} */
export function kindOf(row) {
  if (row.problems.length > 0) return "toFix";
  return row.sameAs && !row.asDuplicate ? "leftOut" : row.result;
}

/** Why a row is of its kind; "" where there is nothing to say. @param {Row} row */
export function reasonOf(row) {
  const kind = kindOf(row);
  if (kind === "toFix") return row.problems.join(" ");
  if (kind === "leftOut") return texts.list.sameAs(row.sameAs);
  return kind === "failed" ? testCause(row).heading : row.note;
}

/** Rows that a run may test. @param {Row} row */
export const isTestable = (row) => row.camera !== null && kindOf(row) !== "leftOut";

/**
 * Whose password a row is tested with, in a word.
 * @param {Row} row
 * @param {Defaults} defaults
 */
export function whosePassword({ cells }, defaults) {
  if (cells.password) return "own";
  return defaults.password ? "shared" : "none";
}

/** Rows that would be tested with no password, because theirs was forgotten. @param {Row} row */
export const lacksPassword = ({ camera, isForgotten }) =>
  isForgotten && camera !== null && camera.user !== "" && camera.password === "";

/** @param {Row[]} rows @param {Defaults} defaults */
export function forgetPasswords(rows, defaults) {
  for (const row of rows) {
    if (whosePassword(row, defaults) !== "none") row.isForgotten = true;
    row.cells.password = "";
    if (row.camera) row.camera.password = "";
  }
}
