/// Which text a failure of a camera has, by its code and the name that the recorder gives.

import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";
import { Trouble } from "./request.js";

/** @typedef {import("../texts/causes.js").Cause} Cause */

/** The code of a test that nobody answered in time. */
export const TIMED_OUT = 463;
/** The code of a test whose login the camera refused. */
const LOGIN_REFUSED = 464;
/** Codes of a camera that answered. */
const ANSWERED_CODES = [0, LOGIN_REFUSED, 465, 466, 467];
/** The recorder's names for a refused login; the second where it held the time, and the password may be right. */
const REFUSED_CAUSES = ["loginRefused", "clockUnknown"];

/**
 * Of a failure: by the name that the recorder gave, or else by its code; also of a code that this page does not know.
 * @param {Readonly<Record<number, Cause>>} causes
 * @param {{code: number, cause?: string}} failure
 * @returns {Cause}
 */
function causeOf(causes, { code, cause = "" }) {
  return texts.causes.named[cause] ?? causes[code] ?? texts.causes.unknown;
}

/**
 * Whether the camera refused the login, so that another try may lock its user out.
 * @param {{code?: number, cause?: string}} verdict
 */
export const isLoginRefused = ({ code, cause = "" }) => code === LOGIN_REFUSED || REFUSED_CAUSES.includes(cause);

/** Whether a camera certainly answered a test. @param {{code: number, cause?: string}} verdict */
export const hasAnswered = ({ code, cause = "" }) =>
  ANSWERED_CODES.includes(code) || (texts.causes.named[cause]?.answered ?? false);

/** Codes of tests that are others than 468, by the names of their causes. @type {Readonly<Record<string, number>>} */
const CODES = { encryptedStream: 466, unreachable: 462, timedOut: 463, loginRefused: 464, noSuchStream: 465, noVideo: 466, busy: 467 };

/** What came of a test, by the recorder's name for it. @param {string} cause */
export const verdictNamed = (cause) => ({ code: cause === "ok" ? 0 : (CODES[cause] ?? 468), cause });

/** Why a camera failed, by the recorder's name for it. @param {string} cause */
export const namedCause = (cause) => testCause(verdictNamed(cause));

/**
 * What is said of an error: what a camera failed of, or else what happened, with no heading and nothing to try.
 * @param {unknown} error
 * @returns {{heading: string, happened: string, first: string}}
 */
export function wordsOf(error) {
  if (error instanceof Trouble && error.cause) return namedCause(error.cause);
  return { heading: "", happened: sentence(messageOf(error)), first: "" };
}

/** The same in a line. @param {unknown} error */
export function inALine(error) {
  const { heading, happened } = wordsOf(error);
  return heading || happened;
}

/** Why a test failed. @param {{code: number, cause?: string}} failure */
export const testCause = (failure) => causeOf(texts.causes.test, failure);

/**
 * Why a camera did not tell what it can do, where 457 is also what a test has codes of its own for.
 * @param {{code: number, cause?: string}} failure
 */
export function capabilityCause(failure) {
  const sharedCode = failure.code === 457 ? { busy: 467, noVideo: 466 }[failure.cause ?? ""] : undefined;
  return sharedCode ? testCause({ code: sharedCode }) : causeOf(texts.causes.capability, failure);
}

/** Why no picture was measured. @param {{code: number, cause?: string}} failure */
export const sizeCause = ({ code }) => causeOf(texts.causes.size, { code });

/**
 * What tells causes apart: the name, where it has a text of its own, or the code.
 * @param {{code: number, cause?: string}} failure
 */
export const keyOf = ({ code, cause = "" }) => (texts.causes.named[cause] ? cause : String(code));
