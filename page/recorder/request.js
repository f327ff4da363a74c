/// One request to the recorder: how it is sent, and what it means when no answer comes.

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

/** A request that the module did not answer. The text is for people. */
export class Trouble extends Error {
  /** @param {TroubleKind} kind @param {string} text */
  constructor(kind, text) {
    super(text);
    this.kind = kind;
  }
}

/** How long an answer may take before it counts as missing. The recorder's own limits are far below. */
const ANSWER_LIMIT_MS = 90_000;

const ADDRESS = "/api/NORV.Vistrel.CameraCap/1/";
const NOT_ADMITTED = 105;
const ANSWERED_STATUS = 200;

/** @type {(state: "answered" | "offline" | "signedOut") => void} */
let tellState = () => {};

/**
 * Names the one who is told, with each answer, whether the recorder answers.
 * @param {(state: "answered" | "offline" | "signedOut") => void} listener
 */
export function watchRecorder(listener) {
  tellState = listener;
}

/**
 * Fetches, and tells a missing answer from one that was not waited for.
 * @param {string} method
 * @param {Record<string, unknown>} parameters
 * @param {AbortSignal} [signal]
 * @returns {Promise<{status: number, body: any, cause: string}>} of which the cause is "" if the recorder named none
 */
async function send(method, parameters, signal) {
  const limit = new AbortController();
  const stop = () => limit.abort();
  const timer = setTimeout(stop, ANSWER_LIMIT_MS);
  signal?.addEventListener("abort", stop);
  if (signal?.aborted) stop();
  try {
    const response = await fetch(ADDRESS + method, {
      method: "POST",
      headers: { "Content-Type": "application/json" },
      body: JSON.stringify(parameters),
      credentials: "same-origin",
      redirect: "error",
      cache: "no-store",
      signal: limit.signal,
    });
    const cause = response.headers.get("Recorder-Cause") ?? "";
    return { status: response.status, body: await response.json().catch(() => null), cause };
  } catch {
    if (signal?.aborted) throw new Trouble("stopped", "Stopped waiting. The recorder finishes on its own.");
    if (limit.signal.aborted) throw new Trouble("timeOut", "The recorder did not answer in time.");
    throw new Trouble("offline", "The recorder is not reachable.");
  } finally {
    clearTimeout(timer);
    signal?.removeEventListener("abort", stop);
  }
}

/** @param {number} status @param {any} body */
function troubleOf(status, body) {
  if (status === 401 || body?.error?.code === NOT_ADMITTED) {
    return new Trouble("signedOut", "The recorder wants you to sign in again.");
  }
  if (body === null && (status === 502 || status === 504)) {
    return new Trouble("offline", "The recorder is not reachable.");
  }
  if (status === 403 && body?.error?.message?.includes("Host header")) {
    const name = `This recorder does not go by the name “${location.hostname}”.`;
    const entry = `Add "${location.hostname}" to "hostNames" in its configuration`;
    return new Trouble("refused", `${name} ${entry}, or open this page by the recorder's IP address.`);
  }
  if (status === ANSWERED_STATUS && typeof body?.success === "boolean") return null;
  const busy = "All workers of the recorder are busy. Try again in a moment.";
  const text = status === 503 ? busy : `It answered with status ${status}.`;
  return new Trouble("refused", body?.error?.message ?? text);
}

/**
 * Calls a method, and tells whoever watches whether the recorder answered.
 * @param {string} method
 * @param {Record<string, unknown>} [parameters]
 * @param {AbortSignal} [signal]
 * @returns {Promise<Outcome<any> & {cause: string}>}
 */
export async function call(method, parameters = {}, signal) {
  try {
    const { status, body, cause } = await send(method, parameters, signal);
    const trouble = troubleOf(status, body);
    if (trouble) throw trouble;
    tellState("answered");
    return body.success ? { value: body.data, code: 0, cause } : { value: null, code: body.error?.code ?? -1, cause };
  } catch (error) {
    if (error instanceof Trouble && (error.kind === "offline" || error.kind === "signedOut")) tellState(error.kind);
    throw error;
  }
}
