/// What was found out about a camera, as the recorder stores it.

import { inAddress } from "../text/address.js";
import { STREAM_NAMES } from "./model-document.js";

/**
 * @typedef {import("./finding.js").Found} Found
 * @typedef {import("./finding.js").FoundStream} FoundStream
 * @typedef {import("./finding.js").Measured} Measured
 * @typedef {import("./finding.js").Login} Login
 * @typedef {import("./cameras.js").CameraFields} CameraFields
 * @typedef {import("./cameras.js").NewFact} NewFact
 * @typedef {import("./api.js").StreamName} StreamName
 *
 * @typedef {Partial<Record<StreamName, FoundStream>>} Choice streams by what they are to be
 */

const LONGEST_VALUE = 128; // of a fact
const MEASURED = "measured"; // who says so, as the recorder has it

/** Streams by their channel, in the order in which they were found. @param {FoundStream[]} streams */
export function byChannel(streams) {
  /** @type {Map<string, FoundStream[]>} */
  const channels = new Map();
  for (const stream of streams) channels.set(stream.channel, [...(channels.get(stream.channel) ?? []), stream]);
  return channels;
}

/**
 * What the streams of one channel say they are; the first is the main one where none says so.
 * @param {FoundStream[]} streams
 * @param {(stream: FoundStream) => boolean} [isThere] those that are taken; not those that were only worked out
 */
export function usualChoice(streams, isThere = ({ asked }) => asked) {
  /** @type {Choice} */
  const choice = {};
  for (const stream of streams) if (stream.name && isThere(stream)) choice[stream.name] ??= stream;
  const [first] = streams;
  if (!choice.main && first) choice.main = first;
  return choice;
}

/** The whole address of a stream, without a login. @param {string} host @param {FoundStream} stream */
export function addressOf(host, { protocol, tls, port, path }) {
  const scheme = protocol === "HTTP" ? "http" : "rtsp";
  return `${scheme}${tls ? "s" : ""}://${inAddress(host)}:${port}${path}`;
}

/** A name that nobody has yet. @param {string} wanted @param {string[]} taken */
export function freeName(wanted, taken) {
  let name = wanted;
  for (let number = 2; taken.includes(name); ++number) name = `${wanted} ${number}`;
  return name;
}

/**
 * @param {StreamName | ""} stream
 * @param {string} name
 * @param {unknown} value
 * @param {string} from
 * @returns {NewFact[]} none where the value is not known
 */
function fact(stream, name, value, from) {
  const text = value ? String(value) : "";
  return text && text.length <= LONGEST_VALUE ? [{ stream, name, value: text, from }] : [];
}

/** @param {number | null} width @param {number | null} height */
const sizeOf = (width, height) => (width && height ? `${width}x${height}` : "");

/** @param {StreamName} name @param {FoundStream} stream */
const claims = (name, { codec, width, height, frameRate, from }) => [
  ...fact(name, "codec", codec, from),
  ...fact(name, "size", sizeOf(width, height), from),
  ...fact(name, "frameRate", frameRate, from),
];

/** @param {StreamName} name @param {Measured} measured */
const measurements = (name, { codec, width, height, frameRate, bitRate, keyFrameDistance, audio }) => [
  ...fact(name, "codec", codec, MEASURED),
  ...fact(name, "size", sizeOf(width, height), MEASURED),
  ...fact(name, "frameRate", frameRate, MEASURED),
  ...fact(name, "bitRate", bitRate, MEASURED),
  ...fact(name, "keyFrames", keyFrameDistance, MEASURED),
  ...fact(name, "audio", audio, MEASURED),
];

/**
 * @param {Found} found
 * @param {Choice} choice
 * @param {Map<FoundStream, Measured>} measured
 */
function factsOf(found, choice, measured) {
  const facts = /** @type {const} */ (["maker", "model", "firmware", "serial"]).flatMap((name) =>
    fact("", name, found[name].value, found[name].from),
  );
  for (const name of STREAM_NAMES) {
    const stream = choice[name];
    if (!stream) continue;
    facts.push(...claims(name, stream));
    const figures = measured.get(stream);
    if (figures) facts.push(...measurements(name, figures));
  }
  return facts;
}

/**
 * @param {Found} found
 * @param {Login} login
 * @param {string} name
 * @param {Choice} choice has a main stream
 * @param {Map<FoundStream, Measured>} [measured]
 * @returns {Partial<CameraFields>}
 */
export function toStore(found, { user, password }, name, choice, measured = new Map()) {
  const { host } = found;
  const chosen = STREAM_NAMES.flatMap((which) => (choice[which] ? [{ which, stream: choice[which] }] : []));
  return {
    ...choice.main?.storeAs,
    name,
    host,
    user,
    password,
    streams: chosen.map(({ which, stream }) => ({ name: which, address: addressOf(host, stream), ...stream.storeAs })),
    facts: factsOf(found, choice, measured),
  };
}
