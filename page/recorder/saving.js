/// What the recorder keeps of a camera that was tested here.

import { inAddress } from "../text/address.js";
import { texts } from "../texts/texts.js";
import { addCamera } from "./cameras.js";
import { defaultPort } from "./models.js";
import { Trouble } from "./request.js";

/**
 * @typedef {import("./api.js").Camera} Camera
 * @typedef {import("./cameras.js").StoredCamera} StoredCamera
 * @typedef {import("./cameras.js").CameraSummary} CameraSummary
 * @typedef {Partial<import("./cameras.js").CameraFields>} CameraFields
 *
 * Under which id and name it is stored; "there" when it was before, and nothing was added.
 * @typedef {{kind: "added" | "there", id: number, name: string}} Kept
 */

const TAKEN = 409;

/** What a camera is called that nobody has named: its place. @param {Camera} camera */
export function presetName(camera) {
  const { host, port, channel } = camera;
  const withPort = `${inAddress(host)}:${port}`;
  const place = port === defaultPort(camera) ? host : withPort;
  return ["", "1"].includes(channel) ? place : texts.saving.placeAndChannel(place, channel);
}

/**
 * By what two records are told to be of one channel; the first channel is the usual one.
 * @param {{host: string, port: number, channel: string}} camera
 */
const spotOf = ({ host, port, channel }) => JSON.stringify([host.toLowerCase(), port, channel || "1"]);

/**
 * As what a camera is perhaps stored already. Two paths that differ lead to two streams; one that is hidden from users is "".
 * Where path and channel are the same, too, the recorder says by itself that it is stored.
 * @param {Camera} camera
 * @param {CameraSummary[]} stored
 */
export function perhapsStored(camera, stored) {
  const { channel, path } = camera;
  const spot = spotOf(camera);
  const isHere = (/** @type {CameraSummary} */ { sourcePath, ...other }) =>
    spotOf(other) === spot && (!sourcePath || !path || sourcePath === path);
  const here = stored.filter(isHere);
  return here.some((one) => one.channel === channel && one.sourcePath === path) ? undefined : here[0];
}

/** What a camera is asked by; codec and stream type are of its test alone. @param {Camera} camera */
const recordOf = ({ host, port, vendor, model, user, password, channel, path }) => ({
  host,
  port,
  vendor,
  model,
  user,
  password,
  channel,
  sourcePath: path,
});

/**
 * Stores a camera, or finds that it is stored already, as `other`. Contacts no camera.
 * @param {CameraFields} fields
 * @returns {Promise<{camera: StoredCamera, other?: undefined} | {camera: null, other: {id: number, name: string}}>}
 */
export async function store(fields) {
  try {
    return { camera: await addCamera(fields) };
  } catch (error) {
    if (!(error instanceof Trouble) || error.status !== TAKEN) throw error;
    return { camera: null, other: error.details["camera"] };
  }
}

/**
 * Stores a camera that was tested, with its password.
 * @param {Camera} camera
 * @param {CameraFields & {name: string}} more
 * @returns {Promise<Kept>}
 */
export async function keep(camera, more) {
  const { camera: stored, other } = await store({ ...recordOf(camera), ...more });
  const { id, name } = stored ?? other;
  return { kind: stored ? "added" : "there", id, name };
}
