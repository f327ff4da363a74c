/// The view that takes cameras in: from an address, or from the network, to what is stored.

import { counted, spanText } from "./language.js";

/** What a port speaks, such as "80 (HTTP, ONVIF)". @param {{port: number, speaks: string[]}} port */
const portText = ({ port, speaks }) => (speaks.length ? `${port} (${speaks.join(", ")})` : String(port));

/** @param {{network: string, interface: string}} network */
const networkText = ({ network, interface: name }) => (name ? `${network} (${name})` : network);

/** @param {string[]} words */
const listed = (words) => (words.length < 2 ? words.join("") : `${words.slice(0, -1).join(", ")} and ${words.at(-1)}`);

const NONE_ANSWERED =
  "No camera answered. One that is in another network, or has ONVIF off, does not: type its address above, or search " +
  "its network.";

export const add = {
  title: "Add a camera",

  // ---- the fields ----
  address: "Address of the camera or recorder",
  addressHint: "Name, IP address, or a whole rtsp:// address. With a port that few cameras have, that one alone is asked.",
  noAddress: "Type the address of the camera or recorder.",
  find: "Find",
  searchNetwork: "Search my network",
  knowsData: "I know its data",

  whatFindDoes:
    "Find asks this address alone, for at most 10 seconds. Then it takes a picture of each stream, and measures main " +
    "and sub. A wrong password is one refused login, after which nothing more is tried.",

  // ---- while it looks ----
  /** @param {string} host @param {number} seconds */
  asking: (host, seconds) => `Asking ${host} … ${seconds} s`,
  /** @param {string} host */
  asksNow: (host) => `Asking ${host}`,
  stopped: "Stopped.",
  steps: "What was found out so far",
  /** @param {{port: number, speaks: string[]}[]} ports */
  portsAnswer: (ports) =>
    ports.length === 0
      ? "No port gave an answer"
      : ports.length === 1
        ? `Port ${ports.map(portText)} answers`
        : `Ports ${listed(ports.map(portText))} answer`,
  /** Of a login. @type {Readonly<Record<string, string>>} */
  logins: {
    notTried: "No login was tried",
    notNeeded: "No login is needed",
    accepted: "Login accepted",
    refused: "Login refused",
    onvifOthers: "Login accepted by the stream, not by ONVIF",
  },
  /** @param {number} count */
  onvifNames: (count) => (count === 0 ? "No stream is named by ONVIF" : `ONVIF names ${counted(count, "stream")}`),
  /** @param {number} sure @param {number} all */
  streamsKnown: (sure, all) => {
    if (all === 0) return "No stream was found";
    return `${counted(sure, "stream")} found${all > sure ? `, ${all - sure} more perhaps` : ""}`;
  },
  /** Of streams that were tried. @param {number} count */
  notThere: (count) => `${count} of them ${count === 1 ? "is" : "are"} not there`,
  /** @param {string} maker @param {string} from */
  madeBy: (maker, from) => `Made by ${maker} (said by ${from})`,

  // ---- why nothing was found ----
  refused: "The camera refused this login. Nothing more was tried.",
  refusedFirst: "Type the password again, once: many cameras lock a user out after a few wrong tries.",
  needsLogin: "This camera asks for a login",
  needsLoginText: "It answered, but tells nothing without a user and a password.",
  needsLoginFirst: "Type the user and the password of the camera, and press Find again.",
  noStreamText: "The camera answered, but none of the paths that cameras of its kind have leads to a stream.",
  noStreamFirst:
    "Switch on RTSP or ONVIF in the camera's settings, and press Find again. Whoever knows the path of its stream can " +
    "give it under “I know its data”.",
  noServiceText: "Something answers at this address, but neither a stream nor ONVIF was found there.",
  noServiceFirst:
    "Compare the address. If it is right, switch on RTSP or ONVIF in the camera's settings, and press Find again.",
  goToAddress: "Go to address",
  goToPassword: "Go to password",

  // ---- what find warns of ----
  /** @type {Readonly<Record<string, string>>} */
  warnings: {
    anyPath:
      "This camera says yes to every path, so its streams are not sure. Look at the pictures before you save it.",
    onvifOthers:
      "ONVIF has users of its own on this camera, and refused this one. Add the user there, too, to let it name its " +
      "streams.",
    ended: "The camera was slow, so not all was asked. What was found can be saved; press Find again for the rest.",
  },
  /** @param {number | null} seconds by which the camera's clock is fast */
  clockWrong: (seconds) =>
    seconds === null
      ? "The camera's clock is wrong. Set it, since logins may depend on it."
      : `The camera's clock is ${spanText(Math.abs(seconds))} ${seconds < 0 ? "slow" : "fast"}. Set it, since ` +
        "logins may depend on it.",
  /** @param {string} path */
  pastedNotFound: (path) => `The path that you gave, ${path}, is not among these.`,

  // ---- what was found ----
  unknownCamera: "Camera",
  /** @param {string} firmware */
  firmware: (firmware) => `firmware ${firmware}`,
  /** @param {string} host @param {string[]} names of who said what it is */
  about: (host, names) => (names.length ? `at ${host}, said by ${listed(names)}` : `at ${host}`),
  streams: "Streams of the camera",
  /** @param {number} width @param {number} height */
  size: (width, height) => `${width} × ${height}`,
  /** @param {number} rate pictures a second */
  rate: (rate) => `${rate}/s`,
  /** @param {number} kbits */
  bitRate: (kbits) => (kbits >= 1000 ? `${(kbits / 1000).toFixed(1)} Mbit/s` : `${kbits} kbit/s`),
  /** @param {number} seconds */
  keyFrame: (seconds) => `a key frame every ${seconds} s`,
  /** @param {number} seconds */
  noKeyFrame: (seconds) => `no key frame for ${seconds} s`,
  /** @param {string} from who says so */
  claimed: (from) => `said by ${from}`,
  /** @param {string} model whose file has this path */
  pathOf: (model) => `its path is that of ${model}`,
  guessed: "worked out, not asked",
  measuring: "Measuring …",
  /** @param {string} figures */
  measured: (figures) => `Measured: ${figures}`,
  /** @param {string} why */
  notMeasured: (why) => `Not measured: ${why}`,
  pictureWaits: "Waiting for the picture",
  /** @param {string} stream */
  pictureOf: (stream) => `Picture of the stream ${stream}`,
  /** @param {string} channel */
  pictureOfChannel: (channel) => `Picture of channel ${channel}`,
  /** @param {string} stream "Main" @param {string} distance */
  keyFramesFar: (stream, distance) =>
    `${stream}: ${distance}. Pictures take that long. Set the camera's GOP or I-frame interval to 1 or 2 s.`,
  /** @param {string} stream */
  h265: (stream) =>
    `${stream} is in H.265, which some browsers cannot show. Set the camera to H.264, or take another stream.`,

  // ---- choosing and saving ----
  none: "None",
  /** @param {string} camera */
  storedAlready: (camera) => `This camera is stored already, as “${camera}”.`,

  // ---- several channels ----
  channels: "Channels of the recorder",
  allChannels: "Save all channels",
  baseName: "Name of the recorder",
  baseHint: "The names below begin with it.",
  /** @param {string} name @param {string} channel */
  channelName: (name, channel) => `${name} channel ${channel}`,
  picture: "Picture",
  streamsOf: "Streams",
  result: "Result",
  /** @param {string} channel */
  take: (channel) => `Save channel ${channel}`,
  /** @param {string} channel */
  nameOf: (channel) => `Name of channel ${channel}`,
  /** @param {number} count */
  saveSeveral: (count) => `Save ${counted(count, "camera")}`,
  progressLabel: "Cameras saved",
  /** @param {number} saved @param {number} failed */
  severalSaved: (saved, failed) => `${counted(saved, "camera")} saved${failed ? `, ${failed} not: see the table` : ""}`,

  // ---- after it ----
  /** @param {string} name */
  isSaved: (name) => `${name} is saved`,
  addAnother: "Add another",
  copy: "Copy its stream's address",
  withPassword: "with user and password",
  copiedWithPassword: "Copied, with the password",
  notCopied: "The browser does not let this page copy. Select the address and copy it.",

  // ---- the network ----
  network: "Cameras in the network",
  /** @param {number} seconds */
  searching: (seconds) => `Searching … ${seconds} s`,
  /** @param {number} count */
  devices: (count) => (count === 0 ? NONE_ANSWERED : `${counted(count, "device")} answered.`),
  /** @param {{network: string, interface: string}[]} networks */
  searched: (networks) =>
    networks.length === 0
      ? "No network was searched."
      : `Searched: ${listed(networks.map(networkText))}.`,
  another: "Another network",
  anotherHint: "Such as 192.168.1.0/24, at most 1,024 addresses: the ports of cameras are tried at each.",
  searchIt: "Search it",
  /** @param {string} device */
  use: (device) => `Add ${device}`,
  unknownDevice: "Device",
  /** @type {Readonly<Record<string, string>>} */
  heardBy: { onvif: "ONVIF", mdns: "multicast DNS", ports: "open ports" },
  known: "stored as",
  /** @param {string} host */
  moved: (host) => `stored at ${host}, and moved here:`,
  update: "Update its address",
  /** @param {string} name @param {string} host */
  updateTo: (name, host) => `Move ${name} to ${host}`,
  updateHint: "Whoever answers can claim to be any camera, so the camera's password is asked for again.",
  cameraPassword: "Password of the camera",
  noPassword: "Type the camera's password.",
  /** @param {string} host */
  nowAt: (host) => `is now stored at ${host}`,
  /** @param {string} name @param {string} host */
  updated: (name, host) => `${name} is now stored at ${host}`,
};
