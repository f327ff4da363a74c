/// What the views of stored cameras say.

import { LANGUAGE, counted, spanText } from "./language.js";

export const cameras = {
  title: "Cameras",
  list: "Stored cameras",
  searchLabel: "Search by name, address, vendor and model",
  show: "Show",
  all: "All",
  asTable: "As a table",
  asCards: "As cards",
  reading: "Reading the list",
  none: "No camera matches.",
  showAll: "Show all cameras",
  emptyTitle: "No camera is stored yet",
  emptyText: "All that it takes is a camera's address, with its user and password.",
  askAdmin: "An administrator can add one.",
  /** @param {number} shown @param {number} all */
  count: (shown, all) =>
    shown === all ? counted(all, "camera") : `${shown.toLocaleString(LANGUAGE)} of ${counted(all, "camera")}`,
  /** @param {string} trouble */
  notRead: (trouble) => `The cameras could not be read. ${trouble}`,

  /** A camera without a name. @param {number} id */
  unnamed: (id) => `Camera ${id}`,
  works: "Works",
  untried: "Not tried yet",
  switchedOff: "Switched off",
  /** How long a state lasts. @param {number} seconds */
  since: (seconds) => `for ${spanText(seconds)}`,
  /** @param {number} seconds */
  worked: (seconds) => `worked ${spanText(seconds)} ago`,
  neverWorked: "never worked so far",
  notSinceChanged: "has not worked since it was changed",

  /** @param {string} name */
  picture: (name) => `Picture of ${name}`,
  /** @param {number} seconds */
  ago: (seconds) => `${spanText(seconds)} ago`,
  justNow: "just now",
  /** @param {string} when */
  taken: (when) => `Picture taken ${when}`,
  notAsked: "Not asked for a picture",
  notWhileOff: "No picture while it is off",
  takingPicture: "Taking a picture",
  notAPicture: "What came is no picture.",
  takePicture: "Take a new picture",
  /** @param {number} seconds */
  nextTry: (seconds) => `Next try after ${spanText(seconds)}.`,
  stopped: "No more pictures are taken, so that the camera does not lock its user out.",
  stoppedOff: "No pictures are taken while it is switched off.",

  columns: { name: "Name", address: "Address", model: "Model", state: "State" },
};

export const camera = {
  /** @param {string} kind "AXIS M1135" @param {string} place */
  about: (kind, place) => `${kind} at ${place}`,
  back: "All cameras",
  gone: "No such camera is stored",
  goneText: "It may have been deleted.",
  actions: "What can be done with it",

  testing: "Testing",
  passed: "Camera works",
  passedText: "It was reached, took the login, and sends video.",
  failedTest: "Not tested",
  refused: "The camera answered, but rejected the stored user and password.",
  refusedFirst: "Was its password changed? Press Edit, and type the new one, once.",
  lookFirst: "It has worked before: look first at its power and its cable.",
  typeNewPassword: "Type the new password",
  edit: "Edit",
  switchOff: "Switch off",
  switchOn: "Switch on",
  isOff: "It is switched off",
  isOn: "It is switched on",
  export: "Export its model for others",
  exported: "The model file is downloaded. Other recorders can take it in, for cameras like this one.",
  delete: "Delete",
  /** @param {string} heading @param {string} first */
  advice: (heading, first) => `${heading}. ${first}`,

  streams: "Streams",
  noAddress: "Its address is not known: the camera is asked for it each time.",
  notCopied: "This browser did not let it be copied.",
  lines: "For other programs",
  withPassword: "With password",
  /** @param {string} mask */
  passwordHint: (mask) =>
    "The recorder tells nobody a password. What you type here stands in place of " +
    `${mask} in what is copied, and is kept nowhere.`,
  /** @param {string} what @param {string} stream "" for all */
  copyOf: (what, stream) => (stream ? `Copy ${what} of ${stream}` : `Copy ${what}`),

  facts: "Facts",
  noFacts: "Nothing is known beyond what is stored.",
  ofCamera: "Camera",
  /** @param {string} stream */
  ofStream: (stream) => `${stream} stream`,
  fact: "Fact",
  /** Who says so, where it is no name. @type {Readonly<Record<string, string>>} */
  sources: { measured: "Measured" },
  /** @param {string} from @param {string} time */
  said: (from, time) => (from ? `${from}, ${time}` : time),
  /** @param {string} stream @param {boolean} again */
  measureOf: (stream, again) => `Measure the ${stream} stream${again ? " again" : ""}`,
  /** @param {number} seconds */
  measuring: (seconds) => `Measuring: ${counted(seconds, "second")}`,
  measured: "Measured",
  /** @type {Readonly<Record<string, string>>} */
  factNames: {
    maker: "Maker",
    model: "Model",
    firmware: "Firmware",
    serial: "Serial number",
    codec: "Codec",
    size: "Size",
    frameRate: "Pictures a second",
    bitRate: "Bit rate (kbit/s)",
    keyFrames: "Seconds between key frames",
    audio: "Audio",
  },

  editTitle: "Edit this camera",
  newPassword: "New password",
  passwordStays: "Stays as it is while this is empty. Another address, port or user needs it again.",
  pathHint: "Of the main stream, for a model that asks for it",
  enabled: "Switched on",
  notSavedYet: "This was typed before, and is not saved yet. A password has to be typed again.",
  newCertificate: "Take the camera's new certificate",
  weakerLogin: "Allow a weaker login again",
  trustHint:
    "Only if you know that the camera itself was reset, or its settings were changed: otherwise somebody else may get " +
    "its password.",
  /** @param {string} theirs what is stored now */
  conflict: (theirs) =>
    `Somebody else changed this camera meanwhile: ${theirs}. What you typed is kept. Save again to store it.`,
  /** @param {string} field @param {string} value */
  isNow: (field, value) => (value ? `${field} is now “${value}”` : `${field} is now empty`),
  isOnNow: "It is switched on now",
  isOffNow: "It is switched off now",

  /** @param {string} name */
  deleted: (name) => `${name} is deleted.`,
  /** @param {number} seconds */
  undoTime: (seconds) => `It can be brought back for ${counted(seconds, "second")}.`,
  undo: "Undo",
  /** @param {string} name */
  restored: (name) => `${name} is back`,
};
