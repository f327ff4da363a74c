/// The table of what a camera can do.

import { el } from "../parts/dom.js";
import { capabilityCause } from "../recorder/causes.js";

/**
 * @typedef {import("../recorder/api.js").Capabilities} Capabilities
 *
 * @typedef {[heading: string, value: string, fact?: string, member?: string]} Row with the member of a model file that the value
 * is from, and the member of that, where it may be missing there
 * @typedef {(fact: string, member?: string) => string} Said who says a fact
 */

const NOTHING = "none reported";

const TRANSPORTS = ["UDP", "TCP", "multicast", "HTTP", "automatic"]; // by number in capability documents

/** @param {unknown} flag true, false, or a number that means the same */
const yesNo = (flag) => (flag ? "Yes" : "No");

/**
 * A list with its default marked in words.
 * @param {unknown} values
 * @param {unknown} [preferred]
 */
function listed(values, preferred = "") {
  if (!Array.isArray(values) || values.length === 0) return NOTHING;
  return values
    .map((value) => (value === preferred && values.length > 1 ? `${value} (default)` : String(value)))
    .join(", ");
}

/** @param {Capabilities} capabilities @returns {{codec: string, streams: string[]}[]} */
export function codecsOf({ videoCapList }) {
  const list = Array.isArray(videoCapList) ? videoCapList : [];
  return list.map(({ vt, stList }) => ({
    codec: String(vt),
    streams: Array.isArray(stList) ? stList.map(String) : [],
  }));
}

/** @param {number} bits one for each number @param {string[]} names */
const namesOfBits = (bits, names) => names.filter((_, number) => (bits >> number) & 1);

/** @param {Capabilities} can @returns {Row[]} */
function rowsOf(can) {
  const inputs = can.DINum ?? 0;
  const transports = namesOfBits(can.rtspProtocolCap ?? 0, TRANSPORTS);
  return [
    ["Channels", listed(can.ChanlList, can.defChanl), "channels"],
    ["Video", yesNo(can.videoCap)],
    ["Codecs", listed(codecsOf(can).map(({ codec, streams }) => `${codec} over ${streams.join(" or ")}`)), "codecs"],
    ["Resolutions", listed(can.ResoList, can.defReso), "resolutions"],
    ["Frame rates", listed(can.FPSList, can.defFPS), "frameRates"],
    ["Picture qualities", listed(can.QualList, can.defQual), "qualities"],
    ["Streams per channel", can.streamCnt ? String(can.streamCnt) : NOTHING, "streams"],
    ["Audio", can.audioCap ? `Yes, channel ${listed(can.AudioCHList)}` : "No", "audioChannels"],
    ["Motion detection", can.MDCap ? `Yes, channel ${listed(can.MDList)}` : "No", "motionChannels"],
    ["Digital inputs", String(inputs), "digitalInputs"],
    ["RTSP transports", listed(transports), "rtsp"],
    ["Preferred RTSP transport", TRANSPORTS[can.defRtspProtocol] ?? NOTHING, "rtsp", "default"],
    ["RTSP keep-alive", yesNo(can.defRtspKeepAlive), "rtsp", "keepAlive"],
    ["Video server", yesNo(can.VideoSvr)],
    ["Records to its own card", yesNo(can.hasEdgeStg), "edgeStorage"],
    ["Factory user", can.defUser || NOTHING, "defaultUser"],
  ];
}

/**
 * The table, or why there is none.
 * @param {import("../recorder/api.js").Outcome<Capabilities>} outcome
 * @param {string} caption
 */
export function describeCapabilities(outcome, caption) {
  if (outcome.value) return capabilityTable(outcome.value, caption);
  const { heading, happened, first } = capabilityCause(outcome);
  return el("p", {}, el("strong", { text: heading }), `. ${happened} ${first}`);
}

/**
 * @param {Capabilities} capabilities
 * @param {string} caption
 * @param {Said} [said] nothing is said of the facts when missing
 * @param {Row[]} [more]
 */
export function capabilityTable(capabilities, caption, said = () => "", more = []) {
  const rows = [...rowsOf(capabilities), ...more].map(([name, value, fact = "", member]) => {
    const source = fact && value !== NOTHING ? said(fact, member) : "";
    return el("tr", {}, el("th", { scope: "row", text: name }), valueCell(value, source));
  });
  return el("table", { class: "facts" }, el("caption", { text: caption }), el("tbody", {}, ...rows));
}

/** @param {string} value @param {string} source */
function valueCell(value, source) {
  const cell = el("td", { text: value, class: value === NOTHING ? "muted" : null });
  if (source) cell.append(" ", el("span", { class: "said", text: source }));
  return cell;
}
