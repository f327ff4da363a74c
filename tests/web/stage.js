/// What the tests play on: simulated cameras, a recorder that serves the page, a browser. All of it ends with the tests.

import assert from "node:assert/strict";
import { spawn, spawnSync } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join, resolve } from "node:path";
import { createInterface } from "node:readline";
import { after, before, test } from "node:test";
import { chromium } from "playwright-core";

const [PROGRAMS, MODULE, SOURCE] = process.argv.slice(2).map((path) => resolve(path));
export const source = (path) => join(SOURCE, path);
export const here = (path) => new URL(path, import.meta.url).pathname;

export const RIGHT = "open-sesame-41"; // the password of all cameras
export const WRONG = "close-sesame-42";
export const USER = { username: "tester", password: "let-me-in-43" };
export const OTHER = { username: "hall", password: "let-me-in-too-44" };
const PASSWORDS = [RIGHT, WRONG, USER.password, OTHER.password];
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
const CHROMIUM = "--no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking".split(" ");

export const DESKTOP = { width: 1280, height: 800 };

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
let address = "";
let browser;

/** Starts a program and gives the line with which it says that it is ready. It ends with this process. */
async function start(program, ...args) {
  const command = ["--pdeathsig", "TERM", join(PROGRAMS, program), ...args];
  const child = spawn("setpriv", command, { stdio: ["ignore", "pipe", "inherit"] });
  const exit = new Promise((done) => child.on("exit", done));
  const report = (code, signal) => console.error(`${program} ended by itself: ${signal ?? code}`);
  child.on("exit", report);
  endings.unshift(() => child.off("exit", report).kill() && exit);
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

before(async () => {
  mkdirSync(here("out/page"), { recursive: true });
  Object.assign(ports, await startCameras("cameras.json", CAMERAS));
  address = await serve("recorder", (config) => {
    addUsers(config);
    mkdirSync(join(folder, "state-of-recorder/models"), { mode: 0o700 });
    writeFileSync(join(folder, "state-of-recorder/models/acme.json"), JSON.stringify(OWN_MODELS));
  });
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: CHROMIUM });
  endings.unshift(() => browser.close());
});

after(async () => {
  for (const end of endings) await end();
});

/**
 * Opens the page in a browser that knows nothing of earlier ones, and looks afterwards that nothing went wrong in it
 * and that no password is left where it could be read.
 * @param {string} hash
 * @param {(page: import("playwright-core").Page, calls: {method: string, parameters: any}[]) => Promise<void>} work
 * gets the page, and what it sent so far
 * @param {{user?: typeof USER | null, at?: string}} [options] null for nobody who is logged in
 */
export async function withPage(hash, work, { user = USER, at = address } = {}) {
  const context = await browser.newContext({ reducedMotion: "reduce", viewport: DESKTOP });
  try {
    if (user) await logIn(context, user, at);
    context.setDefaultTimeout(30_000);
    const page = await context.newPage();
    const calls = [];
    const heard = [];
    const mistakes = [];
    page.on("request", (request) => {
      heard.push(request.url());
      const method = /api\/[^/]+\/\d+\/(\w+)/.exec(request.url())?.[1];
      if (method) calls.push({ method, parameters: request.postDataJSON() });
    });
    page.on("pageerror", (error) => mistakes.push(error.message));
    page.on("console", (message) => {
      heard.push(message.text());
      const isAboutNetwork = message.text().startsWith("Failed to load resource");
      if (message.type() === "error" && !isAboutNetwork) mistakes.push(message.text());
    });
    await page.goto(`${at}${hash}`);
    if (user) await page.locator("#models-list a").first().waitFor({ state: "attached" });
    await work(page, calls);
    assert.deepEqual(mistakes, []);
    heard.push(page.url(), await page.evaluate(readable), JSON.stringify(await context.cookies()));
    for (const password of PASSWORDS) assert.ok(!heard.join("\n").includes(password), `${password} can be read`);
  } finally {
    await context.close();
  }
}

/**
 * Gives what makes tests of the page as it is opened at a hash.
 * @param {string} hash @param {Parameters<typeof withPage>[2]} [options]
 */
export const testAt = (hash, options) => (name, work) =>
  test(name, (t) => withPage(hash, (page, calls) => work(page, calls, t), options));

/** Gives a browser a session, if need be after the pause for wrong passwords of earlier tests. */
export async function logIn(context, { username, password }, at = address) {
  const data = { user: username, password };
  const send = () => context.request.post(`${at}recorder/1/session`, { data, headers: { Connection: "close" } });
  // A connection that an earlier test left open is used first, and the server may just be ending it.
  const answer = await send().catch((error) => (/socket hang up|ECONNRESET/.test(error.message) ? send() : Promise.reject(error)));
  if (answer.status() === 429) {
    await new Promise((done) => setTimeout(done, Number(answer.headers()["retry-after"]) * 1000));
    return logIn(context, { username, password }, at);
  }
  assert.equal(answer.status(), 200, await answer.text());
}

/** What scripts, extensions and people with the developer tools read later: markup with its attributes, and storage. */
const readable = () =>
  JSON.stringify([document.documentElement.outerHTML, { ...localStorage }, { ...sessionStorage }, history.state]);

/** Fills the fields of One camera that are named, and waits until the model's own values have come. */
export async function fillOne(page, fields) {
  const values = { address: "127.0.0.1", model: "Simcam RTSP-H264", user: "admin", password: RIGHT, ...fields };
  for (const [name, value] of Object.entries(values)) await page.fill(`#one-${name}`, String(value));
  await page.locator("#one-capabilities", { hasText: `of ${values.model},` }).waitFor();
}

/** Tests, in One camera, what the fields say, or what is filled in before. */
export async function testOne(page, fields = null) {
  if (fields) await fillOne(page, fields);
  await page.click("#one-test");
  await page.locator("#one-test:not([aria-disabled])").waitFor();
}

/** Parameters of the calls of a method. */
export const sent = (calls, method) => calls.filter((call) => call.method === method).map((call) => call.parameters);

export const focused = (page) => page.evaluate(() => document.activeElement?.id);

/** Goes to a view, as its address. */
export const openView = (page, hash) => page.evaluate((hash) => (location.hash = hash), hash);

/** Text that can be seen. */
export const text = (page, id) => page.locator(`#${id}`).innerText();

export async function expectText(page, id, wanted) {
  const place = page.locator(`#${id}`, { hasText: wanted });
  await place.waitFor({ state: "attached" }).catch(async () => {
    assert.fail(`${id} says "${await page.locator(`#${id}`).textContent()}" instead of "${wanted}"`);
  });
}

/** Opens a list in Many cameras. @param {(string | number)[][]} rows with a heading */
export async function openList(page, rows) {
  const buffer = Buffer.from(rows.map((cells) => cells.join(",")).join("\r\n"));
  await page.setInputFiles("#many-file", { name: "cameras.csv", mimeType: "text/csv", buffer });
}

/** A host each, as the page sees it: ways to write one address. */
export const HOSTS = ["localhost", ...Array.from({ length: 17 }, (_, i) => `127.0.0.${"0".repeat(i)}1`)];
/** Of rows that are opened so. */
export const HEADING = ["name", "address", "port", "password", "model", "path"];
/** Rows of one host each. @param {string[]} cameras */
export const rowsOf = (...cameras) => cameras.map((camera, i) => [camera, HOSTS[i], ports[camera], "", "", ""]);

/** Opens a list, and types the login of its rows. */
export async function openWithLogin(page, rows, password = RIGHT) {
  await openList(page, [HEADING, ...rows]);
  await fillLogin(page, password);
}

/** The login that rows without one of their own are tested with. */
export async function fillLogin(page, password = RIGHT) {
  await page.fill("#many-model", "Simcam RTSP-H264");
  await page.fill("#many-user", "admin");
  await page.fill("#many-password", password);
  await page.press("#many-password", "Tab");
}

/** The signs of what came of each row, in the file's order. */
export const results = async (page) => (await page.locator("#many-rows .sign").allTextContents()).join("");

/** A run ends when its buttons and fields are free again. */
export const runEnds = (page) => page.locator("#many-other:enabled").waitFor();

/** Has a run begin, or go on, by a button, and waits for its end. */
export async function runBy(page, button) {
  await page.click(button);
  await runEnds(page);
}

/** Fills in the page's own login. */
export async function enterLogin(page, { username, password }) {
  if (await page.isEditable("#login-user")) await page.fill("#login-user", username);
  await page.fill("#login-password", password);
  await page.click("#login-go");
}
