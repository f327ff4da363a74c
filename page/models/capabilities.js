/// The table of what a camera can do.

import { el } from "../parts/dom.js";
import { capabilityCause } from "../recorder/causes.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../recorder/api.js").Capabilities} Capabilities
 *
 * @typedef {[heading: string, value: string, fact?: string, member?: string]} Row with the member of a model file that the value
 * is from, and the member of that, where it may be missing there
 * @typedef {(fact: string, member?: string) => string} Said who says a fact
 */

const NOTHING = texts.models.nothing;
const FACTS = texts.models.facts;

/** By number in capability documents. */
const TRANSPORTS = ["UDP", "TCP", texts.models.multicast, "HTTP", texts.models.automatic];

/** @param {unknown} flag true, false, or a number that means the same */
const yesNo = (flag) => (flag ? texts.models.yes : texts.models.no);

/**
 * A list with its default marked in words.
 * @param {unknown} values
 * @param {unknown} [preferred]
 */
function listed(values, preferred = "") {
  if (!Array.isArray(values) || values.length === 0) return NOTHING;
  return values
    .map((value) => (value === preferred && values.length > 1 ? texts.models.byDefault(String(value)) : String(value)))
    .join(", ");
}

/** @param {unknown} flag @param {unknown} channels */
const yesOn = (flag, channels) => (flag ? texts.models.yesOn(listed(channels)) : texts.models.no);

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
    [FACTS.channels, listed(can.ChanlList, can.defChanl), "channels"],
    [FACTS.video, yesNo(can.videoCap)],
    [FACTS.codecs, listed(codecsOf(can).map(({ codec, streams }) => texts.models.codecOver(codec, streams))), "codecs"],
    [FACTS.resolutions, listed(can.ResoList, can.defReso), "resolutions"],
    [FACTS.frameRates, listed(can.FPSList, can.defFPS), "frameRates"],
    [FACTS.qualities, listed(can.QualList, can.defQual), "qualities"],
    [FACTS.streams, can.streamCnt ? String(can.streamCnt) : NOTHING, "streams"],
    [FACTS.audio, yesOn(can.audioCap, can.AudioCHList), "audioChannels"],
    [FACTS.motion, yesOn(can.MDCap, can.MDList), "motionChannels"],
    [FACTS.inputs, String(inputs), "digitalInputs"],
    [FACTS.transports, listed(transports), "rtsp"],
    [FACTS.transport, TRANSPORTS[can.defRtspProtocol] ?? NOTHING, "rtsp", "default"],
    [FACTS.keepAlive, yesNo(can.defRtspKeepAlive), "rtsp", "keepAlive"],
    [FACTS.videoServer, yesNo(can.VideoSvr)],
    [FACTS.edgeStorage, yesNo(can.hasEdgeStg), "edgeStorage"],
    [FACTS.factoryUser, can.defUser || NOTHING, "defaultUser"],
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
