/// What the recorder knows of a camera model, and who says so. The addresses and members of that API stand here and nowhere
/// else; docs/models.md tells what they mean.

import { texts } from "../texts/texts.js";
import { USER_DEFINED } from "./models.js";
import { Trouble, ask } from "./request.js";

/**
 * Who says it; null for what is not named.
 * @typedef {object} Source
 * @property {"document" | "agreeing" | "reported" | "camera" | "user" | null} by
 * @property {string | null} document
 * @property {string | null} url
 * @property {string | null} page
 * @property {string | null} checked a day, such as "2026-01-31"
 *
 * @typedef {{fact: string, value: any} & Source} Fact a member of a model file
 *
 * @typedef {object} Stream
 * @property {StreamName} name
 * @property {string} codec "" for whatever the camera sends
 * @property {"RTSP" | "HTTP"} protocol
 * @property {number | null} port null for the one that the user gives
 * @property {boolean} tls
 * @property {string} path
 * @property {string} [address] the whole one, when a host was given
 * @property {Source} source
 *
 * @typedef {object} ModelDocument
 * @property {string} note
 * @property {boolean} anyChannel
 * @property {Fact[]} facts all but those of streams
 * @property {Stream[]} streams
 *
 * @typedef {import("./api.js").StreamName} StreamName
 * @typedef {import("./api.js").Camera} Camera
 */

const ADDRESS = "recorder/1/models/";
const UNKNOWN = 404;

/**
 * Contacts no camera.
 * @param {{vendor: string, model: string}} model
 * @param {Record<string, string>} [place] "channel", "host" and "port", for the streams
 * @param {AbortSignal} [signal]
 * @returns {Promise<ModelDocument | null>} null from a recorder that tells nothing of it
 */
export async function readModel({ vendor, model }, place = {}, signal) {
  const query = new URLSearchParams(place);
  const address = `${ADDRESS}${encodeURIComponent(vendor)}/${encodeURIComponent(model)}?${query}`;
  try {
    return (await ask({ verb: "GET", address }, signal)).body.data;
  } catch (error) {
    if (error instanceof Trouble && error.status === UNKNOWN) return null;
    throw error;
  }
}

export const STREAM_NAMES = /** @type {const} */ (["main", "sub", "third"]);

/** Names of the streams, in their order. @param {ModelDocument | null} document @returns {StreamName[]} */
export const streamNames = (document) =>
  STREAM_NAMES.filter((wanted) => document?.streams.some(({ name }) => name === wanted));

/**
 * The camera as the module is asked for its stream. The module knows the main one alone; by another one it is "Any camera",
 * with a whole address. A codec that has no path of its own may well be sent at another's.
 * @param {Camera} camera
 * @param {AbortSignal} signal
 * @returns {Promise<Camera>}
 */
export async function atItsStream(camera, signal) {
  const { which = "main" } = camera;
  if (which === "main") return camera;
  const { host, port, channel } = camera;
  const document = await readModel(camera, { host, port: String(port), channel }, signal);
  const named = (document?.streams ?? []).filter(({ name }) => name === which);
  const inCodec = (/** @type {string} */ wanted) => named.find(({ codec }) => codec === wanted);
  const stream = inCodec(camera.codec) ?? inCodec("") ?? named[0];
  if (!stream?.address) throw new Trouble("refused", texts.recorder.streamUnknown);
  return { ...camera, ...USER_DEFINED, path: stream.address, stream: stream.protocol };
}
