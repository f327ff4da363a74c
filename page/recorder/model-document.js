/// What the recorder knows of a camera model, and who says so. The addresses and members of that API stand here and nowhere
/// else; docs/models.md tells what they mean.

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
 * @property {Fact[]} facts all but those of streams
 * @property {Stream[]} streams
 *
 * @typedef {"main" | "sub" | "third"} StreamName
 */

const ADDRESS = "/recorder/1/models/";
const UNKNOWN = 404;

/**
 * Contacts no camera.
 * @param {{vendor: string, model: string}} model
 * @param {Record<string, string>} [place] "channel" and "host", for the streams
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

/** @type {Readonly<Record<StreamName, string>>} */
export const STREAM_LABELS = { main: "Main", sub: "Sub", third: "Third" };
