/// What is told of one model: its facts, each with who says so, and its streams by name.

import { el } from "../parts/dom.js";
import { table } from "../parts/table.js";
import { STREAM_LABELS } from "../recorder/model-document.js";
import { capabilityTable, describeCapabilities } from "./capabilities.js";
import { Sources } from "./sources.js";

/**
 * @typedef {import("../recorder/api.js").Capabilities} Capabilities
 * @typedef {import("../recorder/model-document.js").ModelDocument} ModelDocument
 * @typedef {import("../recorder/model-document.js").Stream} Stream
 */

const CAPTION = "Capabilities, from the model list";

/** Facts that capabilities do not tell. @type {[string, string, (value: any) => string][]} heading, fact, words */
const MORE_FACTS = [
  ["Picture over HTTP", "snapshot", ({ kind, path = "" }) => (kind === "http-mjpeg" ? `Motion JPEG, ${path}` : path)],
  ["Levels of optimization", "codecOptimization", ({ levels }) => levels.join(", ")],
  ["Fisheye", "fisheye", ({ lens, stream }) => `lens ${lens}, stream ${stream}`],
];

/**
 * @param {import("../recorder/api.js").Outcome<Capabilities>} outcome
 * @param {ModelDocument | null} document
 * @returns {HTMLElement[]}
 */
export function describeModel(outcome, document) {
  if (!outcome.value || !document) return [describeCapabilities(outcome, CAPTION)];
  const sources = new Sources();
  const note = el("p", {}, el("strong", { text: "Note: " }), document.note);
  return [
    ...(document.note ? [note] : []),
    ...streamTable(document.streams, outcome.value, sources),
    factTable(document, outcome.value, sources),
    ...sources.list(),
  ];
}

/** @param {ModelDocument} document @param {Capabilities} capabilities @param {Sources} sources */
function factTable({ facts, anyChannel }, capabilities, sources) {
  if (facts.length === 0) return capabilityTable(capabilities, CAPTION);
  const find = (/** @type {string} */ wanted) => facts.find(({ fact }) => fact === wanted);
  /** @type {import("./capabilities.js").Said} */
  const said = (name, member) => {
    const fact = find(name);
    const isSaid = fact && (member === undefined || fact.value?.[member] !== undefined);
    return isSaid ? sources.said(fact) : "assumed";
  };
  const more = MORE_FACTS.filter(([, name]) => find(name)?.value).map(
    ([heading, name, words]) => /** @type {[string, string, string]} */ ([heading, words(find(name)?.value), name]),
  );
  const ChanlList = [...(capabilities.ChanlList ?? []), ...(anyChannel ? ["or any that you type"] : [])];
  return capabilityTable({ ...capabilities, ChanlList }, CAPTION, said, more);
}

/** @param {Stream} stream */
function over({ protocol, port, tls }) {
  return `${protocol}${tls ? " inside TLS" : ""}, ${port === null ? "the port that you give" : `port ${port}`}`;
}

/** @param {Stream[]} streams @param {Capabilities} capabilities @param {Sources} sources */
function streamTable(streams, { defChanl }, sources) {
  const rows = streams.map((stream) => {
    const path = el("span", { class: "code", text: stream.path });
    const said = el("span", { class: "said", text: sources.said(stream.source) });
    return [STREAM_LABELS[stream.name], stream.codec || "any", over(stream), el("div", {}, path, " ", said)];
  });
  if (rows.length === 0) return [];
  return [table(`Streams of channel ${defChanl}`, ["Stream", "Codec", "Over", "Path"], rows)];
}
