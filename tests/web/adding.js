/// Many cameras: storing those that passed.

import assert from "node:assert/strict";
import { audit } from "./audit.js";
import {
  HOSTS,
  RIGHT,
  control,
  expectText,
  fillLogin,
  focused,
  openWithLogin,
  ports,
  results,
  rowsOf,
  runBy,
  testAt,
  text,
} from "./stage.js";

const test = testAt("#many");
const storedCameras = () => control("", "camera list").trim().split("\n").length;
const visibleIn = (page, place) => page.locator(`${place} :is(button, a):visible`).allInnerTexts();

test("thirty pasted rows are tested and stored, each camera once, and their pictures are there", async (page) => {
  const before = `--vendor Simcam --model RTSP-H264 --host ${HOSTS[3]} --port ${ports.onvif} --user admin`;
  control(RIGHT, `camera add --name before ${before}`);
  const named = `--vendor ONVIF --model Generic --channel 1 --host ${HOSTS[1]} --port ${ports.onvif} --user admin`;
  control(RIGHT, `camera add --name named ${named}`);
  const stored = storedCameras();
  const cameras = Array.from({ length: 28 }, (_, i) => (i % 2 ? "onvif" : "withoutOnvif"));
  const rows = cameras.map((camera, i) => [i % 3 ? `hall ${i}` : "", HOSTS[i >> 1], ports[camera]]);
  rows.push(["full", HOSTS[16], ports.busy], ["twice", HOSTS[0], ports.onvif]);
  await page.click("details:has(#many-text) summary");
  await page.fill("#many-text", [["name", "address", "port"], ...rows].map((cells) => cells.join()).join("\n"));
  await page.click("#many-read");
  assert.equal(await focused(page), "many-title");
  await page.click("#many-other-rows");
  assert.match(await page.inputValue("#many-text"), /^name,address,port\n,local/, "can be mended");
  await fillLogin(page);
  await runBy(page, "#many-start");
  assert.equal(await results(page), `${"✓".repeat(28)}✕=`);
  assert.deepEqual(await visibleIn(page, "#many-adding"), ["Add all 28 that passed"]);
  await runBy(page, "#many-add");
  await expectText(page, "status", "Ended. 26 added, 1 stored already, 1 perhaps stored already.");
  const [before9, perhaps5] = ["Line 9: Stored already as before", "Line 5: Perhaps stored already as named"];
  const left = ["Open Cameras", "Add that one all the same", perhaps5, before9];
  assert.deepEqual(await visibleIn(page, "#many-adding"), left);
  await runBy(page, "#many-add-perhaps");
  assert.deepEqual(await visibleIn(page, "#many-adding"), ["Open Cameras", before9]);
  assert.equal(storedCameras(), stored + 27);
  assert.equal(await page.locator("#many-rows .addition").count(), 28, "none of those that did not pass");
  await audit(page, "Many cameras, added", "many-added");
  await page.click("#many-add-open");
  await page.waitForFunction(() => {
    const pictures = [...document.querySelectorAll("main img")];
    return pictures.filter((one) => one.checkVisibility() && one.naturalWidth > 0).length >= 4;
  });
  await page.goBack();
  const name = `localhost:${ports.withoutOnvif}`;
  await page.getByRole("link", { name: `Open ${name}`, exact: true }).click();
  await page.waitForURL(/#cameras\/\d+$/);
  await page.getByRole("heading", { name }).waitFor();
});

test("adding stops when the recorder is away, and goes on with what is left and what failed", async (page) => {
  const rows = rowsOf(...Array(5).fill("brokenOnvif"));
  rows[1][0] = "x".repeat(5000);
  await openWithLogin(page, rows);
  await runBy(page, "#many-start");
  let count = 0;
  const isFourth = (request) => request.method() === "POST" && ++count === 4;
  await page.route("**/recorder/1/cameras", (route) => (isFourth(route.request()) ? route.abort() : route.continue()));
  await runBy(page, "#many-add");
  await expectText(page, "many-add-text", "2 added, 2 failed. Stopped. The recorder is not reachable.");
  await expectText(page, "many-not-added", /Line 3: Not added: .*longer than/);
  assert.equal(await focused(page), "many-add-again");
  await runBy(page, "#many-add-again");
  await expectText(page, "many-add-text", "3 added, 1 failed.");
  await page.click("#many-forget");
  await expectText(page, "many-add-text", "2 rows that passed cannot be added: the password was forgotten.");
  assert.ok(await page.isHidden("#many-add"));
  await page.fill("#many-password", RIGHT);
  await page.press("#many-password", "Tab");
  assert.equal(await text(page, "many-add"), "Add the other one that passed");
  await runBy(page, "#many-add");
  await expectText(page, "many-add-text", "4 added, 1 failed.");
});
