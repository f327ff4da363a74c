/// What a camera said of itself, and what is to be known before it is saved.

import { el } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

const { add } = texts;

/** @typedef {import("../recorder/finding.js").Found} Found */

/** What the camera is called where nobody has named it. @param {Found} found */
export const kindOf = ({ model, maker }) => model.value || maker.value || add.unknownCamera;

/** @param {Found} found */
function aboutIt({ host, maker, model, firmware }) {
  const names = [maker, model, firmware].filter(({ value }) => value).map(({ from }) => from);
  return add.about(host, [...new Set(names)]);
}

/** @param {Found} found */
function nameOf({ maker, model, firmware }) {
  const isNamed = model.value.toLowerCase().startsWith(maker.value.toLowerCase());
  const name = [isNamed ? "" : maker.value, model.value || add.unknownCamera].filter(Boolean).join(" ");
  return firmware.value ? `${name}, ${add.firmware(firmware.value)}` : name;
}

/** @param {Found} found @param {string} pastedPath that somebody gave, "" for none */
function warningsOf({ warnings, clockOffset, streams }, pastedPath) {
  const texts = warnings.map((name) => (name === "clockWrong" ? add.clockWrong(clockOffset) : add.warnings[name]));
  const isMissing = pastedPath !== "" && !streams.some(({ path }) => path === pastedPath);
  return isMissing ? [...texts, add.pastedNotFound(pastedPath)] : texts;
}

/** @param {Found} found @param {string} pastedPath that somebody gave, "" for none */
export function headOf(found, pastedPath) {
  const title = el("h2", {}, nameOf(found), el("span", { class: "about", text: ` ${aboutIt(found)}` }));
  const warnings = warningsOf(found, pastedPath).map((text) => el("li", { text: text ?? "" }));
  return [title, el("ul", { class: "warnings" }, ...warnings)];
}
