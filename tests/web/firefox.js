/// The page in Firefox, driven over WebDriver BiDi: what people do most, one after the other in one page.

import assert from "node:assert/strict";
import { before, test } from "node:test";
import puppeteer from "puppeteer-core";
import { RIGHT, USER, atEnd, control, ports, startAll } from "./recorder.js";

const mistakes = [];
let at = "";
let browser;
let page;
let camera; // where the stored one is

before(async () => {
  at = await startAll();
  browser = await puppeteer.launch({ browser: "firefox", executablePath: "/usr/bin/firefox-esr" });
  atEnd(() => browser.close());
  page = await browser.newPage();
  page.on("pageerror", (error) => mistakes.push(error.message));
  page.on("console", (message) => message.type() === "error" && mistakes.push(message.text()));
  await page.setViewport({ width: 1280, height: 800 });
});

const click = (selector) => page.locator(selector).click();
/** Fills fields by their ids. */
async function fill(fields) {
  for (const [id, value] of Object.entries(fields)) await page.locator(`#${id}`).fill(String(value));
}
/** Waits until an element says this. */
const says = (id, words) =>
  page.waitForFunction((id, words) => document.getElementById(id)?.textContent.includes(words), {}, id, words);
/** Goes to a view, as its address. */
const open = (hash) => page.evaluate((hash) => void (location.hash = hash), hash);

const STEPS = {
  "a login opens the page": async () => {
    await page.goto(at);
    await fill({ "login-user": USER.username, "login-password": USER.password });
    await click("#login-go");
    await says("who-name", USER.username);
  },
  "a camera is added from its address to its stored picture": async () => {
    await open("add");
    await fill({ "add-address": `127.0.0.1:${ports.onvif}`, "add-user": "admin", "add-password": RIGHT });
    await click("#add-find");
    await page.waitForSelector(".found-stream img");
    await click("#add-save");
    await page.waitForSelector(".saved img");
  },
  "one camera is tested, and its picture shown": async () => {
    await open("one");
    await fill({ "one-model": "Simcam RTSP-H264", "one-user": "admin", "one-password": RIGHT });
    await fill({ "one-address": "127.0.0.1", "one-port": ports.works });
    await click("#one-test");
    await says("one-picture-text", "640 × 480");
  },
  "a pasted list is tested": async () => {
    await open("many");
    await click("details:has(#many-text) summary");
    const rows = [`127.0.0.1,${ports.works}`, `localhost,${ports.busy}`].map((row) => `${row},admin,${RIGHT},Simcam RTSP-H264`);
    await fill({ "many-text": ["address,port,user,password,model", ...rows].join("\n") });
    await click("#many-read");
    await click("#many-start");
    await says("many-progress-text", "1 passed, 1 failed");
  },
  "a model is looked up": async () => {
    await open("models");
    await fill({ "models-search": "h265 simcma" });
    await click("#models-list a");
    await says("models-detail-body", "H.265 over RTSP");
  },
  "that an open camera has changed is told as it happens": async () => {
    await open("cameras");
    await click(".camera .name");
    await says("camera-state", "Works");
    camera = new URL(page.url()).hash;
    control(RIGHT, `camera edit ${camera.split("/")[1]} --port ${ports.noStream}`);
    const ask = { method: "POST", body: "{}", headers: { "Content-Type": "application/json" } };
    await page.evaluate((camera, ask) => fetch(`recorder/1/${camera.slice(1)}/test`, ask), camera, ask);
    await says("camera-changes", "No ONVIF");
  },
  "no view is wider than a phone": async () => {
    await page.setViewport({ width: 390, height: 844 });
    for (const view of ["cameras", "add", "one", "many", "models", "notices", "users", "account", "camera"]) {
      await open(view === "camera" ? camera : view);
      await page.waitForSelector(`#view-${view}:not([hidden])`);
      const wider = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
      assert.ok(wider <= 0, `${view} is ${wider} px wider`);
    }
  },
};

for (const [name, work] of Object.entries(STEPS))
  test(name, async () => {
    await work();
    assert.deepEqual(mistakes, []);
  });
