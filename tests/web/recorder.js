/// What every browser is shown: simulated cameras, and recorders that serve the page. All of it ends with the tests.

import assert from "node:assert/strict";
import { spawn, spawnSync } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join, resolve } from "node:path";
import { createInterface } from "node:readline";
import { after } from "node:test";

const [PROGRAMS, MODULE, SOURCE] = process.argv.slice(2).map((path) => resolve(path));
export const source = (path) => join(SOURCE, path);
export const here = (path) => new URL(path, import.meta.url).pathname;

export const RIGHT = "open-sesame-41"; // the password of all cameras
export const WRONG = "close-sesame-42";
export const USER = { username: "tester", password: "let-me-in-43" };
export const OTHER = { username: "hall", password: "let-me-in-too-44" };
export const PASSWORDS = [RIGHT, WRONG, USER.password, OTHER.password];
const CAMERAS = {
  works: {},
  refused: { fault: "refused" },
  silent: { fault: "silentAfterConnect" },
  noStream: { fault: "describe404" },
  noVideo: { stream: { audio: "only" } },
  busy: { fault: "describe453" },
  odd: { fault: "closeAfterConnect" },
  onvif: { onvif: {} },
  brokenOnvif: { onvif: { trouble: "brokenXml" } },
  withoutOnvif: { onvif: { trouble: "noService" } },
};

const config = {
  modelsFolder: source("models"),
  workFolder: source("models"),
  pageFolder: here("page"),
  module: MODULE,
  limits: { testMs: 4000, pictureMs: 10_000 },
  addressPolicy: { allow: ["127.0.0.0/8"] },
};

/** A model of the user's own: of the cameras here, the sub stream is where most have their only one. */
const OWN_MODELS = {
  vendor: "Acme",
  sources: {
    manual: { document: "Acme interface 2", url: "https://acme.example/2", page: "12", by: "document" },
    list: { document: "A list of addresses", url: "javascript:alert(1)", by: "reported" },
  },
  models: [
    {
      name: "Cube-2",
      from: "manual",
      facts: { "stream/others/0": "list" },
      note: "Switch RTSP on first.",
      channels: { values: ["1"], default: "1", others: true },
      codecs: [{ name: "H.264", streamTypes: ["RTSP"] }],
      rtsp: { protocols: ["tcp"] },
      streams: 2,
      stream: { path: "/main{channel}", others: [{ stream: "sub", path: "/stream{channel}" }] },
      snapshot: { kind: "stream" },
      check: "stream",
    },
  ],
};

/** Of the cameras, by name. */
export const ports = {};
const folder = mkdtempSync(join(tmpdir(), "page-test-"));
const endings = [() => rmSync(folder, { recursive: true })];

/** Has something end with the tests, the last one first. @param {() => unknown} end */
export const atEnd = (end) => endings.unshift(end);

/** Starts a program and gives the line with which it says that it is ready. It ends with this process. */
async function start(program, ...args) {
  const command = ["--pdeathsig", "TERM", join(PROGRAMS, program), ...args];
  const child = spawn("setpriv", command, { stdio: ["ignore", "pipe", "inherit"] });
  const exit = new Promise((done) => child.on("exit", done));
  const report = (code, signal) => console.error(`${program} ended by itself: ${signal ?? code}`);
  child.on("exit", report);
  atEnd(() => child.off("exit", report).kill() && exit);
  for await (const line of createInterface(child.stdout)) return line;
  throw new Error(`${program} did not start`);
}

/** What recorderctl prints. */
export function control(input, line, config = "recorder.json") {
  const command = ["--config", join(folder, config), ...line.split(" ")];
  const { status, stdout, stderr } = spawnSync(join(PROGRAMS, "recorderctl"), command, { input, encoding: "utf8" });
  assert.equal(status, 0, stderr);
  return stdout;
}

const addUser = ({ username, password }, more, config) =>
  control(`${password}\n`, `user add ${username}${more}`, config);

/** An admin, and one who only looks. */
export function addUsers(config) {
  addUser(USER, "", config);
  addUser(OTHER, " --role user", config);
}

/** Starts a recorder with a state folder of its own, and gives its address. @param {(config: string) => void} prepare */
export function serve(name, prepare = () => {}, ...more) {
  const file = join(folder, `${name}.json`);
  writeFileSync(file, JSON.stringify({ ...config, stateFolder: `state-of-${name}` }));
  prepare(`${name}.json`);
  return start("recorderctl", "--config", file, "serve", ...(more.length > 0 ? more : ["--no-watch"]));
}

/** Starts cameras, and gives their ports by name. @param {string} file @param {Record<string, object>} cameras by name */
export async function startCameras(file, cameras) {
  const usual = { password: RIGHT, login: "digest-sha256", stream: { fps: 10, gop: 5 } };
  const list = Object.entries(cameras).map(([name, more]) => {
    const camera = { name, ...usual, ...more };
    return "model" in more ? { ...camera, stream: undefined } : camera;
  });
  writeFileSync(join(folder, file), JSON.stringify({ cameras: list }));
  const started = JSON.parse(await start("simcam", join(folder, file))).cameras;
  return Object.fromEntries(started.map(({ name, port }) => [name, port]));
}

/** Starts the cameras, and the recorder that most tests share; gives its address. */
export async function startAll() {
  Object.assign(ports, await startCameras("cameras.json", CAMERAS));
  return serve("recorder", (config) => {
    addUsers(config);
    mkdirSync(join(folder, "state-of-recorder/models"), { mode: 0o700 });
    writeFileSync(join(folder, "state-of-recorder/models/acme.json"), JSON.stringify(OWN_MODELS));
  });
}

after(async () => {
  for (const end of endings) await end();
});
