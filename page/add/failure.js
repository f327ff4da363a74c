/// Why nothing was found, and the one thing to try.

import { button, el } from "../parts/dom.js";
import { namedCause, wordsOf } from "../recorder/causes.js";
import { Trouble } from "../recorder/request.js";
import { texts } from "../texts/texts.js";

const { add, common } = texts;

/**
 * @typedef {object} Failure
 * @property {string} title
 * @property {string} text
 * @property {string} first "" for nothing to try
 * @property {"address" | "password" | null} look the field to look at
 */

/** What is said of a search for streams, and not of a test. @type {Readonly<Record<string, Partial<Failure>>>} */
const OF_FIND = {
  loginRefused: { text: add.refused, first: add.refusedFirst },
  noService: { text: add.noServiceText, first: add.noServiceFirst, look: "address" },
  noSuchStream: { text: add.noStreamText, first: add.noStreamFirst, look: null },
};

/** @type {Failure} */
const NEEDS_LOGIN = {
  title: add.needsLogin,
  text: add.needsLoginText,
  first: add.needsLoginFirst,
  look: "password",
};

/** @param {string} cause @param {boolean} hadLogin @returns {Failure} */
export function failureOf(cause, hadLogin) {
  if (cause === "loginRefused" && !hadLogin) return NEEDS_LOGIN;
  const { heading, happened, first, field } = namedCause(cause);
  const look = field === "address" || field === "port" ? "address" : field === "password" ? "password" : null;
  return { title: heading, text: happened, first, look, ...OF_FIND[cause] };
}

/** @param {unknown} error @param {boolean} hadLogin @returns {Failure} */
export function failureOfTrouble(error, hadLogin) {
  if (error instanceof Trouble && error.cause) return failureOf(error.cause, hadLogin);
  return { title: common.cannotDo, text: wordsOf(error).happened, first: "", look: null };
}

/**
 * @param {Failure} failure
 * @param {(field: "address" | "password") => void} goTo is told which field is wanted
 */
export function failureCard({ title, text, first, look }, goTo) {
  const card = el("section", { id: "add-failure", class: "card failed" }, el("h2", { text: title }), el("p", { text }));
  if (first) card.append(el("p", {}, el("strong", { text: common.first }), ` ${first}`));
  if (!look) return card;
  const words = look === "address" ? add.goToAddress : add.goToPassword;
  card.append(button(words, () => goTo(look), { class: "link" }));
  return card;
}
