/// What is told of one model: its facts, each with who says so, and its streams by name.

import { el } from "../parts/dom.js";
import { table } from "../parts/table.js";
import { texts } from "../texts/texts.js";
import { capabilityTable, describeCapabilities } from "./capabilities.js";
import { Sources } from "./sources.js";

/**
 * @typedef {import("../recorder/api.js").Capabilities} Capabilities
 * @typedef {import("../recorder/model-document.js").ModelDocument} ModelDocument
 * @typedef {import("../recorder/model-document.js").Stream} Stream
 */

const CAPTION = texts.models.capabilities;

/** @param {{kind: string, path?: string}} picture */
const pictureWords = ({ kind, path = "" }) => (kind === "http-mjpeg" ? texts.models.motionJpeg(path) : path);

/** Facts that capabilities do not tell. @type {[string, string, (value: any) => string][]} heading, fact, words */
const MORE_FACTS = [
  [texts.models.facts.picture, "snapshot", pictureWords],
  [texts.models.facts.optimization, "codecOptimization", ({ levels }) => levels.join(", ")],
  [texts.models.facts.fisheye, "fisheye", ({ lens, stream }) => texts.models.fisheyeOf(lens, stream)],
];

/**
 * @param {import("../recorder/api.js").Outcome<Capabilities>} outcome
 * @param {ModelDocument | null} document
 * @returns {HTMLElement[]}
 */
export function describeModel(outcome, document) {
  if (!outcome.value || !document) return [describeCapabilities(outcome, CAPTION)];
  const sources = new Sources();
  const note = el("p", {}, el("strong", { text: `${texts.models.note} ` }), document.note);
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
    return isSaid ? sources.said(fact) : texts.sources.assumed;
  };
  const more = MORE_FACTS.filter(([, name]) => find(name)?.value).map(
    ([heading, name, words]) => /** @type {[string, string, string]} */ ([heading, words(find(name)?.value), name]),
  );
  const ChanlList = [...(capabilities.ChanlList ?? []), ...(anyChannel ? [texts.models.anyChannel] : [])];
  return capabilityTable({ ...capabilities, ChanlList }, CAPTION, said, more);
}

/** @param {Stream} stream */
function over({ protocol, port, tls }) {
  const ofPort = port === null ? texts.models.givenPort : texts.models.port(port);
  return `${tls ? `${protocol} ${texts.models.insideTls}` : protocol}, ${ofPort}`;
}

/** @param {Stream[]} streams @param {Capabilities} capabilities @param {Sources} sources */
function streamTable(streams, { defChanl }, sources) {
  const rows = streams.map((stream) => {
    const path = el("span", { class: "code", text: stream.path });
    const said = el("span", { class: "said", text: sources.said(stream.source) });
    const name = texts.common.streamNames[stream.name];
    return [name, stream.codec || texts.models.anyCodec, over(stream), el("div", {}, path, " ", said)];
  });
  if (rows.length === 0) return [];
  const { stream, codec, path } = texts.common;
  return [table(texts.models.streamsOf(defChanl), [stream, codec, texts.models.over, path], rows)];
}
