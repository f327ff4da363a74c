/// A stored camera at another place or with another user: its streams, and what is known of it, go along.

import { inAddress } from "../text/address.js";

/**
 * @typedef {import("./cameras.js").StoredCamera} StoredCamera
 * @typedef {import("./cameras.js").CameraStream} CameraStream
 * @typedef {Pick<StoredCamera, "host" | "port" | "channel" | "sourcePath">} Place
 */

/** Scheme, host, port, path. */
const ADDRESS = /^([a-z]+:\/\/)(\[[^\]]*\]|[^:/?]*)(?::(\d+))?(.*)$/i;

/** @param {string} address @param {Place} from @param {Place} to @returns "" if it is none of the camera's */
function addressAt(address, from, to) {
  const [, scheme, host, port = "", path] = ADDRESS.exec(address) ?? [];
  if (host !== inAddress(from.host)) return "";
  const moved = Number(port) === from.port ? String(to.port) : port;
  return `${scheme}${inAddress(to.host)}${moved && `:${moved}`}${path}`;
}

/** @param {CameraStream} stream @param {Place} from @param {Place} to @returns {CameraStream} */
function streamAt(stream, from, to) {
  const isOther = stream.name === "main" && (to.channel !== from.channel || to.sourcePath !== from.sourcePath);
  return {
    ...stream,
    port: stream.port === from.port ? to.port : stream.port,
    address: isOther ? "" : addressAt(stream.address, from, to),
  };
}

/**
 * What is stored with it. Behind another port may be another camera: what was known of the device is not kept.
 * @param {StoredCamera} camera as it is stored
 * @param {Place} place where it is to be
 */
export const movedTo = (camera, place) => ({
  streams: camera.streams.map((stream) => streamAt(stream, camera, place)),
  facts: place.port === camera.port ? camera.facts : camera.facts.filter(({ stream }) => stream !== ""),
});
