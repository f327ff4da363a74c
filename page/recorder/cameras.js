/// Of the recorder's own API: the stored cameras. Their addresses and members stand here and nowhere else. Times are
/// seconds since 1970. Passwords go to the recorder and never come back. What a camera fails of is a Trouble with a cause.

import { texts } from "../texts/texts.js";
import { ask } from "./request.js";
import { inTurn } from "./turns.js";

/**
 * @typedef {import("./api.js").StreamName} StreamName
 *
 * What the last contact with a camera came to.
 * @typedef {object} CameraState
 * @property {string} cause "ok", or the recorder's name for the failure
 * @property {number} since
 * @property {number | null} lastSuccess null for none
 * @property {number} flips how often the cause has changed within a day
 * @property {number | null} milliseconds that the last check by itself took
 *
 * @typedef {object} CommonFields
 * @property {number} id
 * @property {string} name
 * @property {string} vendor
 * @property {string} model
 * @property {string} host
 * @property {number} port
 * @property {string} user
 * @property {string} channel
 * @property {string} sourcePath
 * @property {boolean} enabled
 * @property {number} owner of several recorders, 0 for this one
 * @property {number} revision
 * @property {CameraState | null} state null when it was not contacted yet
 *
 * @typedef {CommonFields & {streams: StreamName[]}} CameraSummary
 *
 * @typedef {object} CameraStream
 * @property {StreamName} name
 * @property {string} address without a login; "" if it is not known
 * @property {string} vendor
 * @property {string} model
 * @property {number} port
 * @property {string} channel
 * @property {string} sourcePath
 *
 * @typedef {object} CameraFact
 * @property {StreamName | ""} stream "" for the camera itself
 * @property {string} name
 * @property {string} value
 * @property {string} from who says so
 * @property {number} at
 *
 * @typedef {Omit<CameraFact, "at"> & {at?: number}} NewFact said just now where it has no time
 *
 * @typedef {CommonFields & {streams: CameraStream[], facts: CameraFact[], hasPassword: boolean}} StoredCamera
 *
 * What may be given of a new or a changed camera.
 * @typedef {Omit<CommonFields, "id" | "revision" | "state"> & {streams: CameraStream[], facts: NewFact[],
 *   password: string | null, force: boolean, allowBasic: boolean, trustNewCertificate: boolean}} CameraFields
 *
 * @typedef {import("./request.js").Question} Question
 */

const ADDRESS = "recorder/1/cameras";

/** What a stored camera is called. @param {{id: number, name: string}} camera */
export const nameOf = ({ id, name }) => name || texts.cameras.unnamed(id);

/** @param {Question["verb"]} verb @param {string} path @param {Omit<Question, "verb" | "address">} [more] */
const question = (verb, path, more = {}) => ({ verb, address: ADDRESS + path, ...more });

/** @param {Question} asked @param {AbortSignal} [signal] @returns {Promise<any>} */
const dataOf = async (asked, signal) => (await ask(asked, signal)).body.data;

/** Of a camera's, after all other work with it. @param {number} id @param {Question} asked @param {AbortSignal} [signal] */
const contact = (id, asked, signal) => inTurn([`stored ${id}`], () => dataOf(asked, signal));

/** @type {{tag: string, cameras: CameraSummary[]}} */
let lastList = { tag: "", cameras: [] };

/** Contacts no camera. @returns {Promise<CameraSummary[]>} the same array while nothing has changed */
export async function listCameras() {
  /** @type {Record<string, string>} */
  const headers = lastList.tag ? { "If-None-Match": lastList.tag } : {};
  const { body, tag } = await ask(question("GET", "", { headers }));
  if (body) lastList = { tag, cameras: body.data };
  return lastList.cameras;
}

/** Contacts no camera. @param {number} id @returns {Promise<StoredCamera>} */
export const readCamera = (id) => dataOf(question("GET", `/${id}`));

/** @param {Partial<CameraFields>} camera @returns {Promise<StoredCamera>} */
export const addCamera = (camera) => dataOf(question("POST", "", { parameters: camera }));

/**
 * Fails with status 412 when somebody else has changed it meanwhile.
 * @param {number} id
 * @param {Partial<CameraFields>} change only what is to be another
 * @param {number} revision of the camera that was changed
 * @returns {Promise<StoredCamera>}
 */
export const changeCamera = (id, change, revision) =>
  dataOf(question("PATCH", `/${id}`, { parameters: change, headers: { "If-Match": `"${revision}"` } }));

/** It can be restored for a minute. @param {number} id @returns {Promise<unknown>} */
export const removeCamera = (id) => dataOf(question("DELETE", `/${id}`));

/** @param {number} id @returns {Promise<StoredCamera>} */
export const restoreCamera = (id) => dataOf(question("POST", `/${id}/restore`, { parameters: {} }));

/** Contacts the camera; says nothing when it works. @param {number} id @param {AbortSignal} [signal] */
export const testCamera = async (id, signal) =>
  void (await contact(id, question("POST", `/${id}/test`, { parameters: {} }), signal));

/**
 * A new picture.
 * @param {number} id
 * @param {StreamName} stream
 * @param {boolean} [again] asks a camera that refused the login, too
 * @param {AbortSignal} [signal]
 * @returns {Promise<Blob>} a JPEG
 */
export const takeStill = (id, stream, again = false, signal) =>
  contact(id, question("GET", `/${id}/picture?stream=${stream}${again ? "&again=true" : ""}`), signal);

/**
 * Measures what a stream sends, for some seconds. The recorder keeps it among the camera's facts.
 * @param {number} id
 * @param {StreamName} stream
 * @param {AbortSignal} [signal]
 */
export const measureCamera = (id, stream, signal) =>
  contact(id, question("POST", `/${id}/measure?stream=${stream}`, { parameters: {} }), signal);

/**
 * The camera as a model file of one's own. Contacts no camera.
 * @param {number} id
 * @returns {Promise<{file: string, remarks: string[]}>}
 */
export const exportModel = (id) => dataOf(question("GET", `/${id}/model`));
