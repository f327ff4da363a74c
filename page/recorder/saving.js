/// What the recorder keeps of a camera that was tested here.

import { texts } from "../texts/texts.js";
import { addCamera } from "./cameras.js";
import { defaultPort } from "./models.js";
import { Trouble } from "./request.js";

/**
 * @typedef {import("./api.js").Camera} Camera
 *
 * Under which id and name it is stored; "there" when it was before, and nothing was added.
 * @typedef {{kind: "added" | "there", id: number, name: string}} Kept
 */

const TAKEN = 409;

/** An address of the view that shows it. @param {{id: number}} stored */
export const cameraHash = ({ id }) => `#cameras/${id}`;

/** What a camera is called that nobody has named: its place. @param {Camera} camera */
export function presetName(camera) {
  const { host, port, channel } = camera;
  const withPort = `${host.includes(":") ? `[${host}]` : host}:${port}`;
  const place = port === defaultPort(camera) ? host : withPort;
  return ["", "1"].includes(channel) ? place : texts.saving.placeAndChannel(place, channel);
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
 * Stores a camera with its password. Contacts no camera.
 * @param {Camera} camera
 * @param {Partial<import("./cameras.js").CameraFields> & {name: string}} more
 * @returns {Promise<Kept>}
 */
export async function keep(camera, more) {
  try {
    const { id, name } = await addCamera({ ...recordOf(camera), ...more });
    return { kind: "added", id, name };
  } catch (error) {
    if (!(error instanceof Trouble) || error.status !== TAKEN) throw error;
    return { kind: "there", ...error.details.camera };
  }
}
