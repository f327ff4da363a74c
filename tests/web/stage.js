/// What most tests play on: the page in a browser, which ends with the tests, before a recorder and cameras.

import assert from "node:assert/strict";
import { mkdirSync } from "node:fs";
import { before, test } from "node:test";
import { chromium } from "playwright-core";
import { PASSWORDS, RIGHT, USER, atEnd, here, ports, startAll } from "./recorder.js";

export * from "./recorder.js";

const CHROMIUM = "--no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking".split(" ");
export const DESKTOP = { width: 1280, height: 800 };

let address = "";
let browser;

before(async () => {
  mkdirSync(here("out/page"), { recursive: true });
  address = await startAll();
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: CHROMIUM });
  atEnd(() => browser.close());
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
