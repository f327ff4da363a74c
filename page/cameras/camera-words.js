/// What is said of a stored camera in the list and where it is open. Knows no document.

import { nameOf } from "../recorder/cameras.js";
import { namedCause, wordsOf } from "../recorder/causes.js";
import { labelOf } from "../recorder/models.js";
import { Trouble } from "../recorder/request.js";
import { inAddress } from "../text/address.js";
import { texts } from "../texts/texts.js";

/** @typedef {import("../recorder/cameras.js").CommonFields} Camera */

/**
 * @typedef {object} Words
 * @property {string} key what tells states apart
 * @property {string} sign
 * @property {string} word
 * @property {"passed" | "failed" | "none"} result
 */

const words = texts.cameras;

export const now = () => Date.now() / 1000;

/** @param {Camera} camera */
export const placeOf = ({ host, port }) => `${inAddress(host)}:${port}`;

/** What it is: as it says itself, or as it is asked. @param {import("../recorder/cameras.js").StoredCamera} camera */
export function kindOf({ vendor, model, facts }) {
  const said = ["maker", "model"].map((name) => facts.find((fact) => fact.stream === "" && fact.name === name)?.value);
  return said.every(Boolean) ? said.join(" ") : labelOf({ vendor, model });
}

/** @param {Camera} camera @returns {Words} */
export function stateOf({ enabled, state }) {
  if (!enabled) return { key: "disabled", sign: "–", word: words.switchedOff, result: "none" };
  if (!state) return { key: "untried", sign: "–", word: words.untried, result: "none" };
  return outcomeOf(state.cause);
}

/** @param {string} cause what contact came to @returns {Words} */
export function outcomeOf(cause) {
  if (cause === "ok") return { key: "ok", sign: "✓", word: words.works, result: "passed" };
  return { key: cause, sign: "✕", word: namedCause(cause).heading, result: "failed" };
}

/** When it worked. A change of its place forgets that. @param {Camera} camera */
function workedText({ state, revision }) {
  if (state?.lastSuccess) return words.worked(now() - state.lastSuccess);
  return revision === 1 ? words.neverWorked : words.notSinceChanged;
}

/** How long it has been so, and when it worked; "" for what is not known. @param {Camera} camera */
export function lastingOf(camera) {
  const { enabled, state } = camera;
  if (!enabled || !state) return "";
  const lasting = words.since(now() - state.since);
  return state.cause === "ok" ? lasting : `${lasting}, ${workedText(camera)}`;
}

/** Whether the camera refused the login that is stored. @param {string} cause */
export const refusesStored = (cause) => cause === "loginRefused";

/** As wordsOf(), of a stored camera, whose login nobody types. @param {unknown} error */
export function storedWordsOf(error) {
  const isRefused = error instanceof Trouble && refusesStored(error.cause);
  return { ...wordsOf(error), ...(isRefused && { happened: texts.camera.refused, first: texts.camera.refusedFirst }) };
}

/** What to look at before the settings, of a camera that has worked with them; "" for nothing. @param {Camera} camera */
export const firstLookOf = ({ enabled, state }) =>
  enabled && state?.lastSuccess && ["unreachable", "timedOut"].includes(state.cause) ? texts.camera.lookFirst : "";

/** Why something was not done, and of a camera what to try first. @param {unknown} error */
export function reasonOf(error) {
  const { heading, happened, first } = storedWordsOf(error);
  return heading ? texts.camera.advice(heading, first) : happened;
}

/** @param {number} at milliseconds since 1970 */
export function ageText(at) {
  const seconds = (Date.now() - at) / 1000;
  return seconds < 1 ? words.justNow : words.ago(seconds);
}

/** A text in which words are looked for. @param {Camera} camera */
export const searchedIn = (camera) =>
  [nameOf(camera), camera.host, camera.vendor, camera.model].join(" ").toLowerCase();

/** Whether a text has all of the words, in any order. @param {string} text @param {string} wanted */
export const hasWords = (text, wanted) =>
  wanted
    .toLowerCase()
    .split(/\s+/)
    .every((word) => text.includes(word));

const ORDER = new Intl.Collator(undefined, { numeric: true, sensitivity: "base" });

/** @template {Camera} T @param {T[]} cameras @returns {T[]} by name */
export const sorted = (cameras) => [...cameras].sort((one, other) => ORDER.compare(nameOf(one), nameOf(other)));

