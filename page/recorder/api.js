/// The recorder's JSON API. The names of methods and parameters stand here and nowhere else.

import { texts } from "../texts/texts.js";
import { Trouble, call } from "./request.js";
import { inTurn } from "./turns.js";

/**
 * A camera as the page knows it.
 * @typedef {object} Camera
 * @property {string} host
 * @property {number} port
 * @property {string} vendor
 * @property {string} model
 * @property {string} user
 * @property {string} password
 * @property {string} channel "" for the default one
 * @property {string} codec "" for any
 * @property {string} stream "RTSP", "HTTP", or "" for either
 * @property {string} path of the stream, for a model that asks for it
 * @property {StreamName} [which] of a model that has several; the main one when missing
 *
 * @typedef {"main" | "sub" | "third"} StreamName
 *
 * @typedef {object} Model
 * @property {string} vendor
 * @property {string} model
 * @property {boolean} needsPath the user gives the path of the stream
 *
 * A capability object as the recorder renders it; see docs/models.md.
 * @typedef {Record<string, any>} Capabilities
 *
 * @typedef {object} StoredCamera
 * @property {number} id
 * @property {string} name
 * @property {string} vendor
 * @property {string} model
 * @property {string} channel
 * @property {Capabilities | null} capabilities
 *
 * @typedef {import("./request.js").Verdict} Verdict
 */

/**
 * @template T
 * @typedef {import("./request.js").Outcome<T>} Outcome
 */

/** The text that stands for a stored password, for clients of the API: no password of a camera that is typed here. */
export const STORED_PASSWORD = "[stored-password-6f1e0b9c42d7]";

const NO_SIZE = 457;

/** "User" has no model; its blank stays. @param {Camera} camera */
const modelText = (camera) => `${camera.vendor} ${camera.model}`;

/** @param {Camera} camera */
const testParameters = (camera) => ({
  camIP: camera.host,
  camPort: camera.port,
  camUserName: camera.user,
  camModel: modelText(camera),
  camChannel: camera.channel,
  camSourcePath: camera.path,
  camVideoType: camera.codec,
});

/** @param {Camera} camera */
const askParameters = (camera) => ({
  camIP: camera.host,
  camPort: camera.port,
  camUser: camera.user,
  camPass: camera.password,
  vendor: camera.vendor,
  model: camera.model,
  camChannel: camera.channel,
});

/**
 * All models that the recorder knows. Contacts no camera.
 * @returns {Promise<{models: Model[], isComplete: boolean}>}
 */
export async function listModels() {
  const { value } = await call("CameraModelEnum");
  /** @type {{vendor: string, model: string, needsSourcePath: boolean}[]} */
  const entries = value?.cameraModel ?? [];
  return {
    models: entries.map(({ vendor, model, needsSourcePath }) => ({ vendor, model, needsPath: needsSourcePath })),
    isComplete: value?.success === true,
  };
}

/**
 * What the model list says about a model. Contacts no camera.
 * @param {string} vendor
 * @param {string} model
 * @returns {Promise<Outcome<Capabilities>>}
 */
export async function readCapabilities(vendor, model) {
  return firstCapabilities(await call("CamCap", { vendor, model }));
}

/** @param {Outcome<any>} outcome @returns {Outcome<Capabilities>} */
function firstCapabilities(outcome) {
  if (outcome.code !== 0) return outcome;
  const first = outcome.value?.camCap?.[0];
  return first ? { value: first, code: 0 } : { value: null, code: 400 };
}

/**
 * The cameras that the recorder has stored. Contacts none.
 * @returns {Promise<StoredCamera[]>}
 */
export async function listStoredCameras() {
  const { value } = await call("EnumExistedCamCap");
  /** @type {{camId: number, name: string, vendor: string, model: string, channel: string, camCap: any}[]} */
  const entries = value?.camCap ?? [];
  return entries.map(({ camId, name, vendor, model, channel, camCap }) => ({
    id: camId,
    name,
    vendor,
    model,
    channel,
    capabilities: camCap,
  }));
}

/**
 * @param {Camera} camera
 * @param {AbortSignal} [signal]
 * @returns {Promise<Verdict>}
 */
export async function testCamera(camera, signal) {
  const parameters = {
    ...testParameters(camera),
    camPassWord: camera.password,
    camStreamingType: camera.stream,
  };
  return inTurn([camera.host], () => call("CameraTest", parameters, signal));
}

/**
 * @param {Camera} camera
 * @param {AbortSignal} [signal]
 * @returns {Promise<Uint8Array<ArrayBuffer>>} the camera's picture, or the recorder's default one
 */
export const takePicture = async (camera, signal) => (await tryPicture(camera, signal)).bytes;

/**
 * @param {Camera} camera
 * @param {AbortSignal} [signal]
 * @returns the camera's picture, or the recorder's default one, with the recorder's name for why: "ok" for the camera's
 */
export async function tryPicture(camera, signal) {
  const parameters = { ...testParameters(camera), camPassword: camera.password, jsonResponse: true };
  const { value, cause } = await inTurn([camera.host], () => call("GetSnapshot", parameters, signal));
  const bytes = Uint8Array.from(atob(value?.img ?? ""), (character) => character.charCodeAt(0));
  return { bytes, cause };
}

/**
 * Asks the camera itself.
 * @param {Camera} camera
 * @param {AbortSignal} [signal]
 * @returns {Promise<Outcome<Capabilities>>}
 */
export async function askCapabilities(camera, signal) {
  const parameters = { ...askParameters(camera), camCapCmd: 1 };
  return firstCapabilities(await inTurn([camera.host], () => call("CamCapRemote", parameters, signal)));
}

/**
 * How many channels a camera has, by what it said when it was asked last; 0 if that is not known. Contacts no camera.
 * @param {Camera} camera
 */
export async function countChannels(camera) {
  const parameters = { ...askParameters(camera), camPass: "", camCapCmd: 2 };
  const { value } = firstCapabilities(await call("CamCapRemote", parameters));
  return Number(value?.cntChanl ?? 0);
}

/**
 * Measures a picture of a camera that the user describes.
 * @param {Camera} camera
 * @param {AbortSignal} [signal]
 * @returns {Promise<Outcome<string>>} such as "640x480"
 */
export async function measureSize(camera, signal) {
  const parameters = { ...askParameters(camera), camSourcePath: camera.path, camVdoType: camera.codec };
  const outcome = await inTurn([camera.host], () => call("CamCapUserDefineReso", parameters, signal));
  if (outcome.code !== 0) return outcome;
  const size = outcome.value?.userDefineReso;
  return size ? { value: size, code: 0 } : { value: null, code: NO_SIZE };
}

/**
 * Tests cameras side by side, each on its default channel.
 * @param {{id: string, name: string, camera: Camera}[]} rows at most ten, of different hosts
 * @param {AbortSignal} [signal]
 * @returns {Promise<Map<string, Verdict>>} by id; a row may be missing
 */
export async function testGroup(rows, signal) {
  const camList = rows.map(({ id, name, camera }) => ({
    tmpId: id,
    name,
    ip: camera.host,
    port: camera.port,
    username: camera.user,
    password: camera.password,
    vendor: camera.vendor,
    model: camera.model,
  }));
  const hosts = rows.map(({ camera }) => camera.host);
  const { value, code, cause } = await inTurn(hosts, () => call("CamBatAddVerify", { camList }, signal));
  if (code !== 0) throw new Trouble("refused", texts.recorder.wholeGroup(code));
  /** @type {{tmpId: unknown, result: number, errinfo?: {code: number}}[]} */
  const results = value?.resultList ?? [];
  const causes = cause.split(",").map((name) => name.trim()); // one a result
  const areNamed = causes.length === results.length;
  return new Map(
    results.map(({ tmpId, result, errinfo }, i) => {
      const named = areNamed ? causes[i] : "";
      return [String(tmpId), { code: result === 0 ? 0 : (errinfo?.code ?? -1), cause: named }];
    }),
  );
}
