/// Of the recorder's own API: long lists that the recorder tests by itself, in the background. Their addresses and members
/// stand here and nowhere else. Passwords go to the recorder and never come back. For admins.

import { ask } from "./request.js";

/**
 * @typedef {import("./api.js").Camera} Camera
 *
 * @typedef {object} BackgroundState
 * @property {number} id
 * @property {"open" | "started" | "ended" | "cancelled" | "expired"} state
 * @property {string} owner who opened it
 * @property {number | null} openedAt in seconds since 1970
 * @property {boolean} hasTester somebody is there to test its rows
 * @property {number} rows how many it has
 * @property {number} done how many of them have a result
 * @property {number} atHand how many are being tested
 * @property {Record<string, number>} results how many came to each cause
 *
 * @typedef {object} BackgroundRow
 * @property {number} number from 1, in the order in which they were added
 * @property {"waiting" | "atHand" | "done"} state
 * @property {string | null} cause "ok", the recorder's name for the failure, or "unknown" where nobody knows
 * @property {number | null} at when its test began, in seconds since 1970
 * @property {string} name
 * @property {string} vendor
 * @property {string} model
 * @property {string} host
 * @property {number} port
 * @property {string} user
 * @property {string} channel
 * @property {string} sourcePath
 * @property {string} codec
 * @property {string} streamType
 */

const ADDRESS = "recorder/1/runs";
/** Rows of a request, which has at most 1 MiB. */
const ROWS_AT_ONCE = 400;
const LONGEST_NAME = 64;

/**
 * @param {import("./request.js").Question["verb"]} verb
 * @param {string} path
 * @param {AbortSignal} [signal]
 * @param {Record<string, unknown>} [parameters]
 * @returns {Promise<any>}
 */
const dataOf = async (verb, path, signal, parameters) =>
  (await ask({ verb, address: ADDRESS + path, ...(parameters && { parameters }) }, signal)).body.data;

/** Members of a row, with the columns of a list that they stand for. */
export const COLUMNS = /** @type {const} */ ([
  ["name", "name"],
  ["vendor", "vendor"],
  ["model", "model"],
  ["host", "address"],
  ["port", "port"],
  ["user", "user"],
  ["channel", "channel"],
  ["sourcePath", "path"],
  ["codec", "codec"],
  ["streamType", "stream"],
]);

/** @param {{name: string, camera: Camera}} row */
const memberOf = ({ name, camera }) => ({
  name: [...name].slice(0, LONGEST_NAME).join(""),
  vendor: camera.vendor,
  model: camera.model,
  host: camera.host,
  port: camera.port,
  user: camera.user,
  password: camera.password,
  channel: camera.channel,
  sourcePath: camera.path,
  codec: camera.codec,
  streamType: camera.stream,
});

/** @param {AbortSignal} [signal] @returns {Promise<BackgroundState>} */
export const openRun = (signal) => dataOf("POST", "", signal, {});

/**
 * Adds rows, in order, to a run that has the first of them.
 * @param {number} id
 * @param {{name: string, camera: Camera}[]} rows
 * @param {number} first how many it has
 * @param {AbortSignal} [signal]
 */
export async function addRows(id, rows, first, signal) {
  for (let after = first; after < rows.length; after += ROWS_AT_ONCE) {
    const some = rows.slice(after, after + ROWS_AT_ONCE).map(memberOf);
    await dataOf("POST", `/${id}/rows`, signal, { after, rows: some });
  }
}

/** @param {number} id @param {AbortSignal} [signal] @returns {Promise<BackgroundState>} */
export const startRun = (id, signal) => dataOf("POST", `/${id}/start`, signal, {});

/** All that there are, by id. @returns {Promise<BackgroundState[]>} */
export const listRuns = () => dataOf("GET", "");

/** @param {number} id @param {AbortSignal} [signal] @returns {Promise<BackgroundState>} */
export const readRun = (id, signal) => dataOf("GET", `/${id}`, signal);

/** @param {number} id @param {AbortSignal} [signal] @returns {Promise<BackgroundRow[]>} */
export async function readRows(id, signal) {
  const all = [];
  for (let next = 0; next !== null; ) {
    const page = await dataOf("GET", `/${id}/rows?after=${next}`, signal);
    all.push(...page.rows);
    ({ next } = page);
  }
  return all;
}

/** Cancels a run: what is at hand ends, nothing else begins. Forgets one that is over. @param {number} id */
export const endRun = (id) => dataOf("DELETE", `/${id}`);
