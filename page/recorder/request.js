/// One request to the recorder: how it is sent, and what it means when no answer comes.

import { texts } from "../texts/texts.js";
import { loginsSoFar, untilSignedIn } from "./admission.js";
import { LINES_TYPE, readLines } from "./lines.js";

/**
 * What came of a test: 0, or the code of the cause; with the recorder's name for it, if it gave one.
 * @typedef {{code: number, cause?: string}} Verdict
 */

/**
 * What came of a question: a value, or a verdict.
 * @template T
 * @typedef {{value: T, code: 0} | ({value: null} & Verdict)} Outcome
 */

/** @typedef {"offline" | "signedOut" | "refused" | "timeOut" | "stopped"} TroubleKind */

/** A request that did not get what it asked for. The text is for people. */
export class Trouble extends Error {
  /** The recorder's name for what a camera failed of; "" if no camera did. @type {string} */
  cause;

  /**
   * @param {TroubleKind} kind
   * @param {string} text
   * @param {Partial<Answer>} [answer] the recorder's, if there was one
   */
  constructor(kind, text, { status = 0, body = null, waitSeconds = 0 } = {}) {
    super(text);
    this.kind = kind;
    this.status = status;
    this.waitSeconds = waitSeconds;
    /** What else the recorder says of it, such as the cause of a camera's failure or the member with the mistake.
        @type {Readonly<Record<string, any>>} */
    this.details = body?.error ?? {};
    this.cause = this.details.cause ?? "";
    /** The recorder has no user yet. */
    this.isForFirstUser = this.details.firstUser === true;
  }
}

/**
 * @typedef {object} Question
 * @property {"GET" | "POST" | "PUT" | "PATCH" | "DELETE"} verb
 * @property {string} address
 * @property {Record<string, unknown>} [parameters]
 * @property {Record<string, string>} [headers] besides the usual ones
 * @property {(line: any) => void} [onLine] of an answer in lines: is told each but the last, which is the body
 *
 * @typedef {object} Answer
 * @property {number} status
 * @property {any} body null if it is no JSON; of a picture, with a Blob as its data
 * @property {string} tag the ETag, "" for none
 * @property {string} cause "" if the recorder named none
 * @property {number} waitSeconds after which the recorder wants to be asked again
 */

/** How long an answer may take before it counts as missing. The recorder's own limits end at 300 s. */
const ANSWER_LIMIT_MS = 310_000;

const ADDRESS = "api/NORV.Vistrel.CameraCap/1/";
const NOT_ADMITTED = 105;
const ANSWERED = [200, 201];
const UNCHANGED = 304;

/** @type {(state: "answered" | "offline" | "signedOut") => void} */
let tellState = () => {};

/**
 * Names the one who is told, with each answer, whether the recorder answers.
 * @param {(state: "answered" | "offline" | "signedOut") => void} listener
 */
export function watchRecorder(listener) {
  tellState = listener;
}

/** @param {Question} question @returns {RequestInit} */
const requestOf = ({ verb, parameters, headers = {} }) => ({
  method: verb,
  headers: parameters ? { ...headers, "Content-Type": "application/json" } : headers,
  body: parameters ? JSON.stringify(parameters) : null,
  credentials: "same-origin",
  redirect: "error",
  cache: "no-store",
});

/** @param {Response} response @param {Question} question @returns {Promise<any>} */
async function bodyOf(response, { onLine = () => {} }) {
  if (response.headers.get("Content-Type") === LINES_TYPE) return readLines(response, onLine);
  if (response.headers.get("Content-Type") === "image/jpeg") return { success: true, data: await response.blob() };
  return response.json().catch(() => null);
}

/** @param {Response} response @param {Question} question @returns {Promise<Answer>} */
const answerOf = async (response, question) => ({
  status: response.status,
  body: await bodyOf(response, question),
  tag: response.headers.get("ETag") ?? "",
  cause: response.headers.get("Recorder-Cause") ?? "",
  waitSeconds: Number(response.headers.get("Retry-After") ?? 0),
});

/**
 * Fetches, and tells a missing answer from one that was not waited for.
 * @param {Question} question
 * @param {AbortSignal} [signal]
 * @returns {Promise<Answer>}
 */
async function send(question, signal) {
  const limit = new AbortController();
  const stop = () => limit.abort();
  const timer = setTimeout(stop, ANSWER_LIMIT_MS);
  signal?.addEventListener("abort", stop);
  if (signal?.aborted) stop();
  try {
    return await answerOf(await fetch(question.address, { ...requestOf(question), signal: limit.signal }), question);
  } catch {
    if (signal?.aborted) throw new Trouble("stopped", texts.recorder.stoppedWaiting);
    if (limit.signal.aborted) throw new Trouble("timeOut", texts.recorder.noAnswer);
    throw new Trouble("offline", texts.recorder.notReachable);
  } finally {
    clearTimeout(timer);
    signal?.removeEventListener("abort", stop);
  }
}

/** @param {Answer} answer */
function troubleOf(answer) {
  const { status, body } = answer;
  if (status === 401 || body?.error?.code === NOT_ADMITTED) {
    return new Trouble("signedOut", texts.recorder.nobodyLoggedIn, answer);
  }
  if (body === null && (status === 502 || status === 504)) {
    return new Trouble("offline", texts.recorder.notReachable, answer);
  }
  if (status === 403 && body?.error?.message?.includes("Host header")) {
    return new Trouble("refused", texts.recorder.otherName(location.hostname), answer);
  }
  if (status === UNCHANGED || (ANSWERED.includes(status) && typeof body?.success === "boolean")) return null;
  if (body === null && status === 200) return new Trouble("refused", texts.recorder.cutOff, answer);
  const text = status === 503 ? texts.recorder.busy : texts.recorder.status(status);
  return new Trouble("refused", body?.error?.message ?? text, answer);
}

/**
 * Asks the recorder, and nobody to log in.
 * @param {Question} question
 * @param {AbortSignal} [signal]
 */
export async function askOnce(question, signal) {
  const answer = await send(question, signal);
  const trouble = troubleOf(answer);
  if (trouble) throw trouble;
  return answer;
}

/** @param {Question} question @param {AbortSignal} [signal] @returns {Promise<Answer>} */
async function askSignedIn(question, signal) {
  const before = loginsSoFar();
  try {
    return await askOnce(question, signal);
  } catch (error) {
    if (!(error instanceof Trouble) || error.kind !== "signedOut") throw error;
    const isIn = before !== loginsSoFar() || (await untilSignedIn(signal));
    if (!isIn && !signal?.aborted) throw error;
    return askSignedIn(question, signal); // which says so if it was stopped
  }
}

/**
 * Asks the recorder; where nobody is logged in any more, once somebody is. Tells whoever watches whether it answered.
 * @param {Question} question
 * @param {AbortSignal} [signal]
 */
export async function ask(question, signal) {
  try {
    const answer = await askSignedIn(question, signal);
    tellState("answered");
    return answer;
  } catch (error) {
    if (error instanceof Trouble && (error.kind === "offline" || error.kind === "signedOut")) tellState(error.kind);
    throw error;
  }
}

/**
 * Calls a method of the module.
 * @param {string} method
 * @param {Record<string, unknown>} [parameters]
 * @param {AbortSignal} [signal]
 * @returns {Promise<Outcome<any> & {cause: string}>}
 */
export async function call(method, parameters = {}, signal) {
  const { body, cause } = await ask({ verb: "POST", address: ADDRESS + method, parameters }, signal);
  return body.success ? { value: body.data, code: 0, cause } : { value: null, code: body.error?.code ?? -1, cause };
}
