/// The table of what a camera can do.

import { el } from "../parts/dom.js";
import { capabilityCause } from "../recorder/causes.js";

/** @typedef {import("../recorder/api.js").Capabilities} Capabilities */

const TRANSPORTS = ["UDP", "TCP", "multicast", "HTTP", "automatic"]; // by number in capability documents

/** @param {unknown} flag true, false, or a number that means the same */
const yesNo = (flag) => (flag ? "Yes" : "No");

/**
 * A list with its default marked in words.
 * @param {unknown} values
 * @param {unknown} [preferred]
 */
function listed(values, preferred = "") {
  if (!Array.isArray(values) || values.length === 0) return "none reported";
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

/** @param {Capabilities} can @returns {[string, string][]} */
function rowsOf(can) {
  const inputs = can.DINum ?? 0;
  const transports = namesOfBits(can.rtspProtocolCap ?? 0, TRANSPORTS);
  return [
    ["Channels", listed(can.ChanlList, can.defChanl)],
    ["Video", yesNo(can.videoCap)],
    ["Codecs", listed(codecsOf(can).map(({ codec, streams }) => `${codec} over ${streams.join(" or ")}`))],
    ["Resolutions", listed(can.ResoList, can.defReso)],
    ["Frame rates", listed(can.FPSList, can.defFPS)],
    ["Picture qualities", listed(can.QualList, can.defQual)],
    ["Streams per channel", can.streamCnt ? String(can.streamCnt) : "none reported"],
    ["Audio", can.audioCap ? `Yes, channel ${listed(can.AudioCHList)}` : "No"],
    ["Motion detection", can.MDCap ? `Yes, channel ${listed(can.MDList)}` : "No"],
    ["Digital inputs", String(inputs)],
    ["RTSP transports", listed(transports)],
    ["Preferred RTSP transport", TRANSPORTS[can.defRtspProtocol] ?? "none reported"],
    ["RTSP keep-alive", yesNo(can.defRtspKeepAlive)],
    ["Video server", yesNo(can.VideoSvr)],
    ["Records to its own card", yesNo(can.hasEdgeStg)],
    ["Factory user", can.defUser || "none reported"],
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
 */
export function capabilityTable(capabilities, caption) {
  const rows = rowsOf(capabilities).map(([name, value]) =>
    el(
      "tr",
      {},
      el("th", { scope: "row", text: name }),
      el("td", { text: value, class: value === "none reported" ? "muted" : null }),
    ),
  );
  return el("table", { class: "facts" }, el("caption", { text: caption }), el("tbody", {}, ...rows));
}
