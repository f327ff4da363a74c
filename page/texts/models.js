/// Models of cameras: the view of those that the recorder knows, the field that takes one, and what a camera can do.

import { LANGUAGE, counted } from "./language.js";

/** @param {number} count */
const others = (count) => count.toLocaleString(LANGUAGE);

export const models = {
  title: "Known models",
  anyCamera: "Any camera (stream path)",

  // ---- finding one ----
  search: "Search by vendor and model",
  searchHint: "Any words, in any order. One typing error is forgiven in words of four letters or more.",
  /** @param {number} count */
  found: (count) => counted(count, "model"),
  /** @param {number} count @param {number} rest */
  foundMore: (count, rest) => `${counted(count, "model")}, ${others(rest)} not shown: type further`,
  /** @param {number} rest */
  more: (rest) => `${others(rest)} more: type further`,
  reading: "Reading the list",
  incomplete: "The list may be incomplete.",
  /** @param {string} makers */
  ofMaker: (makers) => `Nothing has all these words; these are of ${makers}:`,
  noMatch: "No model matches.",
  fallbacks: "These fit most cameras:",
  choices: "Choices",
  fallbacksExplained:
    "A camera that speaks ONVIF can be tested as “ONVIF”, and every camera whose stream path you know as “Any " +
    "camera (stream path)”.",
  /** @param {string} model */
  testAs: (model) => `Test as ${model}`,
  clear: "Clear the search",

  // ---- those in use ----
  used: "In use here",
  /** @param {string} camera @param {string} model */
  cameraAndModel: (camera, model) => `${camera}, ${model}`,
  /** @param {string} camera @param {string} channel */
  withChannel: (camera, channel) => `${camera}, channel ${channel}`,
  kept: "Capabilities, as the recorder keeps them",
  noFile: "No model file knows this camera's model.",

  // ---- one of them ----
  chooseOne: "Choose a model",
  stands: "Its capabilities stand here, as the recorder's model list has them. No camera is contacted.",
  noSuchModel: "No such model",
  notInList: "It is not in the list.",
  readingModel: "Reading",
  testWith: "Test a camera with this model",
  userGivesPath: "The user gives the path of the stream.",
  /** @param {string} reason */
  streamsNotRead: (reason) => `Its streams, and who says what, could not be read. ${reason}`,
  capabilities: "Capabilities, from the model list",
  note: "Note:",
  /** @param {string} channel */
  streamsOf: (channel) => `Streams of channel ${channel}`,
  over: "Over",
  anyCodec: "any",
  insideTls: "inside TLS",
  givenPort: "the port that you give",
  /** @param {number} port */
  port: (port) => `port ${port}`,
  anyChannel: "or any that you type",

  // ---- what it can do ----
  nothing: "none reported",
  yes: "Yes",
  no: "No",
  /** @param {string} value */
  byDefault: (value) => `${value} (default)`,
  /** @param {string} codec @param {string[]} ways */
  codecOver: (codec, ways) => `${codec} over ${ways.join(" or ")}`,
  /** @param {string} channels */
  yesOn: (channels) => `Yes, channel ${channels}`,
  /** Ways of RTSP that are no names. */
  multicast: "multicast",
  automatic: "automatic",
  facts: {
    channels: "Channels",
    video: "Video",
    codecs: "Codecs",
    resolutions: "Resolutions",
    frameRates: "Frame rates",
    qualities: "Picture qualities",
    streams: "Streams per channel",
    audio: "Audio",
    motion: "Motion detection",
    inputs: "Digital inputs",
    transports: "RTSP transports",
    transport: "Preferred RTSP transport",
    keepAlive: "RTSP keep-alive",
    videoServer: "Video server",
    edgeStorage: "Records to its own card",
    factoryUser: "Factory user",
    picture: "Picture over HTTP",
    optimization: "Levels of optimization",
    fisheye: "Fisheye",
  },
  /** @param {string} path */
  motionJpeg: (path) => `Motion JPEG, ${path}`,
  /** @param {string} lens @param {string} stream */
  fisheyeOf: (lens, stream) => `lens ${lens}, stream ${stream}`,
};
