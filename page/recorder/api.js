/// The recorder's JSON API. The names of methods and parameters stand here and nowhere else.

/**
 * A camera as the page knows it.
 * @typedef {object} Camera
 * @property {string} host
 * @property {number} port
 * @property {string} vendor
 * @property {string} model
 * @property {string} user
 * @property {string} password
 * @property {string} channel "" for the default one
 * @property {string} codec "" for any
 * @property {string} stream "RTSP", "HTTP", or "" for either
 * @property {string} path of the stream, for a model that asks for it
 * @property {number} [storedId] the stored camera that lends its password
 *
 * @typedef {object} Model
 * @property {string} vendor
 * @property {string} model
 * @property {boolean} needsPath the user gives the path of the stream
 *
 * A capability object as the recorder renders it; see docs/models.md.
 * @typedef {Record<string, any>} Capabilities
 *
 * @typedef {object} StoredCamera
 * @property {number} id
 * @property {string} name
 * @property {string} vendor
 * @property {string} model
 * @property {string} channel
 * @property {Capabilities | null} capabilities
 */

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

/** The text that stands for a stored password. It is sent and never shown. */
export const STORED_PASSWORD = "[stored-password-6f1e0b9c42d7]";

/** How long an answer may take before it counts as missing. The recorder's own limits are far below. */
const ANSWER_LIMIT_MS = 90_000;

const ADDRESS = "/api/NORV.Vistrel.CameraCap/1/";
const NOT_ADMITTED = 105;
const ANSWERED_STATUS = 200;
const NO_SIZE = 457;

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
 * @param {string} method
 * @param {Record<string, unknown>} [parameters]
 * @param {AbortSignal} [signal]
 * @returns {Promise<Outcome<any> & {cause: string}>}
 */
async function call(method, parameters = {}, signal) {
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

/** The last piece of work with each host. @type {Map<string, Promise<unknown>>} */
const lastTurns = new Map();

/**
 * Does camera work after all earlier work with the same hosts: weak cameras take one or two connections.
 * @template T
 * @param {string[]} hosts
 * @param {() => Promise<T>} work
 * @returns {Promise<T>}
 */
function inTurn(hosts, work) {
  const turn = Promise.all(hosts.map((host) => lastTurns.get(host))).then(work);
  const settled = turn.catch(() => {});
  for (const host of hosts) lastTurns.set(host, settled);
  settled.then(() => {
    for (const host of hosts) if (lastTurns.get(host) === settled) lastTurns.delete(host);
  });
  return turn;
}

/** @param {Camera} camera */
const password = (camera) => (camera.storedId === undefined ? camera.password : STORED_PASSWORD);

/** "User" has no model; its blank stays. @param {Camera} camera */
const modelText = (camera) => `${camera.vendor} ${camera.model}`;

/** @param {Camera} camera */
const testParameters = (camera) => ({
  camIP: camera.host,
  camPort: camera.port,
  camUserName: camera.user,
  camModel: modelText(camera),
  camChannel: camera.channel,
  camSourcePath: camera.path,
  camVideoType: camera.codec,
  camId: camera.storedId ?? 0,
});

/** @param {Camera} camera */
const askParameters = (camera) => ({
  camIP: camera.host,
  camPort: camera.port,
  camUser: camera.user,
  camPass: password(camera),
  vendor: camera.vendor,
  model: camera.model,
  camChannel: camera.channel,
  camId: camera.storedId ?? 0,
});

/**
 * All models that the recorder knows. Contacts no camera.
 * @returns {Promise<{models: Model[], isComplete: boolean}>}
 */
export async function listModels() {
  const { value } = await call("CameraModelEnum");
  /** @type {{vendor: string, model: string, needsSourcePath: boolean}[]} */
  const entries = value?.cameraModel ?? [];
  return {
    models: entries.map(({ vendor, model, needsSourcePath }) => ({ vendor, model, needsPath: needsSourcePath })),
    isComplete: value?.success === true,
  };
}

/**
 * What the model list says about a model. Contacts no camera.
 * @param {string} vendor
 * @param {string} model
 * @returns {Promise<Outcome<Capabilities>>}
 */
export async function readCapabilities(vendor, model) {
  return firstCapabilities(await call("CamCap", { vendor, model }));
}

/** @param {Outcome<any>} outcome @returns {Outcome<Capabilities>} */
function firstCapabilities(outcome) {
  if (outcome.code !== 0) return outcome;
  const first = outcome.value?.camCap?.[0];
  return first ? { value: first, code: 0 } : { value: null, code: 400 };
}

/**
 * The cameras that the recorder has stored. Contacts none.
 * @returns {Promise<StoredCamera[]>}
 */
export async function listStoredCameras() {
  const { value } = await call("EnumExistedCamCap");
  /** @type {{camId: number, name: string, vendor: string, model: string, channel: string, camCap: any}[]} */
  const entries = value?.camCap ?? [];
  return entries.map(({ camId, name, vendor, model, channel, camCap }) => ({
    id: camId,
    name,
    vendor,
    model,
    channel,
    capabilities: camCap,
  }));
}

/**
 * @param {Camera} camera
 * @param {AbortSignal} [signal]
 * @returns {Promise<Verdict>}
 */
export async function testCamera(camera, signal) {
  const parameters = {
    ...testParameters(camera),
    camPassWord: password(camera),
    camStreamingType: camera.stream,
  };
  return inTurn([camera.host], () => call("CameraTest", parameters, signal));
}

/**
 * @param {Camera} camera
 * @param {AbortSignal} [signal]
 * @returns {Promise<Uint8Array<ArrayBuffer>>} the camera's picture, or the recorder's default one
 */
export async function takePicture(camera, signal) {
  const parameters = { ...testParameters(camera), camPassword: password(camera), jsonResponse: true };
  const { value } = await inTurn([camera.host], () => call("GetSnapshot", parameters, signal));
  return Uint8Array.from(atob(value?.img ?? ""), (character) => character.charCodeAt(0));
}

/**
 * Asks the camera itself.
 * @param {Camera} camera
 * @param {AbortSignal} [signal]
 * @returns {Promise<Outcome<Capabilities>>}
 */
export async function askCapabilities(camera, signal) {
  const parameters = { ...askParameters(camera), camCapCmd: 1 };
  return firstCapabilities(await inTurn([camera.host], () => call("CamCapRemote", parameters, signal)));
}

/**
 * Measures a picture of a camera that the user describes.
 * @param {Camera} camera
 * @param {AbortSignal} [signal]
 * @returns {Promise<Outcome<string>>} such as "640x480"
 */
export async function measureSize(camera, signal) {
  const parameters = { ...askParameters(camera), camSourcePath: camera.path, camVdoType: camera.codec };
  const outcome = await inTurn([camera.host], () => call("CamCapUserDefineReso", parameters, signal));
  if (outcome.code !== 0) return outcome;
  const size = outcome.value?.userDefineReso;
  return size ? { value: size, code: 0 } : { value: null, code: NO_SIZE };
}

/**
 * Tests cameras side by side, each on its default channel.
 * @param {{id: string, name: string, camera: Camera}[]} rows at most ten, of different hosts
 * @param {AbortSignal} [signal]
 * @returns {Promise<Map<string, Verdict>>} by id; a row may be missing
 */
export async function testGroup(rows, signal) {
  const camList = rows.map(({ id, name, camera }) => ({
    tmpId: id,
    name,
    ip: camera.host,
    port: camera.port,
    username: camera.user,
    password: camera.password,
    vendor: camera.vendor,
    model: camera.model,
  }));
  const hosts = rows.map(({ camera }) => camera.host);
  const { value, code, cause } = await inTurn(hosts, () => call("CamBatAddVerify", { camList }, signal));
  if (code !== 0) throw new Trouble("refused", `It gave code ${code} for the whole group.`);
  /** @type {{tmpId: unknown, result: number, errinfo?: {code: number}}[]} */
  const results = value?.resultList ?? [];
  const causes = cause.split(",").map((name) => name.trim()); // one a result
  const areNamed = causes.length === results.length;
  return new Map(
    results.map(({ tmpId, result, errinfo }, i) => {
      const named = areNamed ? causes[i] : "";
      return [String(tmpId), { code: result === 0 ? 0 : (errinfo?.code ?? -1), cause: named }];
    }),
  );
}
