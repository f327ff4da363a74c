/// Many cameras: runs, what stops them, mistakes in lists, and the way out.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import {
  RIGHT,
  WRONG,
  control,
  expectText,
  focused,
  openList,
  ports,
  results,
  runEnds,
  sent,
  text,
  withPage,
} from "./stage.js";

/** A host each, as the page sees it: ways to write one address. */
const HOSTS =
  "127.0.0.1 localhost 127.1 127.0.1 2130706433 0x7f000001 0x7f.1 0177.1 127.0.0.01 017700000001 0x7f.0.0.1".split(" ");
const HEADING = ["name", "address", "port", "password", "model", "path"];
/** Rows of one host each. @param {string[]} cameras */
const rowsOf = (...cameras) => cameras.map((camera, i) => [camera, HOSTS[i], ports[camera], "", "", ""]);

async function openWithLogin(page, rows, password = RIGHT) {
  await openList(page, [HEADING, ...rows]);
  await page.fill("#many-model", "Simcam RTSP-H264");
  await page.fill("#many-user", "admin");
  await page.fill("#many-password", password);
  await page.press("#many-password", "Tab");
}

const groupsOf = (calls) => sent(calls, "CamBatAddVerify").map(({ camList }) => camList.length);

async function saved(page, button) {
  const [download] = await Promise.all([page.waitForEvent("download"), page.click(button)]);
  return download.path();
}

test("a run tests in groups, holds refused logins back, and its export can be read again", () =>
  withPage("#many", async (page, calls) => {
    const rows = [
      ...rowsOf("works", "works", "refused", "works", "works", "busy", "works", "works", "works", "works"),
      ["gate", HOSTS[10], ports.works, WRONG, "", ""],
      ["gate again", HOSTS[10], ports.busy, WRONG, "", ""],
      ["path", HOSTS[1], ports.works, "", "", "/stream1"],
      ["mistake", "cam 1", "", "", "", ""],
      ["twice", HOSTS[0], ports.works, "", "", ""],
    ];
    await openWithLogin(page, rows);
    assert.equal(await text(page, "many-start"), "Test 13 cameras");
    await page.click("#many-start");
    await runEnds(page);
    assert.equal(await results(page), "✓✓✕✓✓✕✓✓✓✓✕‖✓!=");
    assert.deepEqual(groupsOf(calls), [3, 8]);
    assert.equal(sent(calls, "CameraTest").length, 1, "a path rides in no group");
    assert.equal(await text(page, "many-progress-text"), "9 passed, 3 failed, 1 held, 1 to fix");

    await page.click("#many-filters [data-kind=failed]");
    await page.click("#many-causes [data-kind='467']");
    await expectText(page, "many-advice", "Camera is busy. The camera said");
    assert.equal(await page.locator("#many-rows tr:visible").count(), 1);
    await page.click("#many-filters [data-kind=all]");

    calls.length = 0;
    await page.click("#many-retry");
    await runEnds(page);
    assert.deepEqual(groupsOf(calls), [2], "what failed for another reason than its login");
    await page.click("#row-12-more");
    await page.fill("#row-password", RIGHT);
    await page.click("#row-test");
    await runEnds(page);
    assert.equal(await results(page), "✓✓✕✓✓✕✓✓✓✓✓‖✓!=");

    const exported = readFileSync(await saved(page, "#many-export"), "utf8");
    assert.match(exported, /^refused,.*,4,failed,462,Camera not found,\d{4}-\d\d-\d\dT.*[+-]\d\d:\d\d\r$/m);
    for (const password of [RIGHT, WRONG]) assert.ok(!exported.includes(password));
    const cells = () => page.locator("#many-rows :is(.line, th, .code, .code + td)").allTextContents();
    const before = await cells();
    const buffer = Buffer.from(exported);
    await page.setInputFiles("#many-file", { name: "exported.csv", mimeType: "text/csv", buffer });
    await expectText(page, "many-name", "exported.csv");
    assert.deepEqual(await cells(), before);
    assert.equal(await results(page), `${"–".repeat(13)}!=`);

    const stored = control("", "camera list").split("\n").length;
    control("", `camera import ${await saved(page, "#many-export-import")}`);
    assert.equal(control("", "camera list").split("\n").length, stored + 14, "all but the one with the mistake");
  }));

/** Name, button, and what came of eleven cameras that work. */
const STOPS = [
  ["after this group", "#many-stop", "✓✓✓✓✓✓✓✓✓✓✓–"],
  ["at once", "#many-stop-now", "✓✓✓????????–"],
];

test("a run is stopped in the middle, keeps what it has, and goes on with the rest", async (t) => {
  for (const [name, button, signs] of STOPS)
    await t.test(name, () =>
      withPage("#many", async (page, calls) => {
        const later = ["later", HOSTS[4], ports.busy, "", "", ""];
        await openWithLogin(page, [...rowsOf(...Array(11).fill("works")), later]);
        let letGo = () => {};
        const wanted = new Promise((done) => (letGo = done));
        await page.route("**/CamBatAddVerify", async (route) => {
          if (groupsOf(calls).length === 2) await wanted;
          await route.continue();
        });
        await page.click("#many-start");
        await expectText(page, "many-progress-text", "group 2 of 3");
        assert.equal(await page.getAttribute("#many-table", "aria-busy"), "true");
        assert.equal(await page.locator("#many-progress").evaluate((bar) => bar.value / bar.max), 3 / 12);
        await page.click(button);
        letGo();
        await runEnds(page);
        assert.equal(await results(page), signs);
        assert.deepEqual(groupsOf(calls), [3, 8]);
        await page.click("#many-start");
        await runEnds(page);
        assert.equal(await results(page), "✓✓✓✓✓✓✓✓✓✓✓✕");
      }),
    );
});

test("a wrong password that all share costs three logins", () =>
  withPage("#many", async (page, calls) => {
    await openWithLogin(page, rowsOf(...Array(5).fill("works")), WRONG);
    await page.click("#many-start");
    await expectText(page, "many-pause-text", "The first 3 logins were all refused. Is the shared password right?");
    await expectText(page, "status", "Paused.");
    await page.click("#many-give-up");
    await runEnds(page);
    assert.deepEqual(groupsOf(calls), [3]);
    await page.fill("#many-password", RIGHT);
    await page.press("#many-password", "Tab");
    await page.click("#many-start");
    await runEnds(page);
    assert.equal(await results(page), "✓✓✓✓✓");
  }));

test("until a login passed only three are refused, and none of them is sent again unasked", () =>
  withPage("#many", async (page, calls) => {
    const rows = rowsOf(..."refused refused refused refused works works refused works works works".split(" "));
    for (const cells of rows.slice(7)) cells[5] = "/stream1"; // tested alone
    await openWithLogin(page, rows, WRONG);
    await page.click("#many-start");
    await page.click("#many-give-up");
    await runEnds(page);
    assert.equal(await results(page), "✕✕✕✕✕✕✕✕––");
    assert.deepEqual(groupsOf(calls), [3, 3, 1]);
    calls.length = 0;
    await page.click("#row-6-more");
    await page.fill("#row-path", "/stream1");
    for (const button of ["#row-test", "#row-picture"]) {
      await page.click(button);
      await page.locator("#question[open]", { hasText: "login was refused at this address" }).waitFor();
      await page.click("#question-no");
    }
    assert.deepEqual(calls, []);
  }));

test("a group without an answer pauses the run and is not sent again", () =>
  withPage("#many", async (page, calls) => {
    await openWithLogin(page, rowsOf(...Array(4).fill("works")));
    await page.route("**/CamBatAddVerify", (route) => route.abort(), { times: 1 });
    await page.click("#many-start");
    await expectText(page, "many-pause-title", "This group was not answered.");
    await page.click("#many-go-on");
    await runEnds(page);
    assert.deepEqual(groupsOf(calls), [3, 1]);
    assert.equal(await results(page), "???✓");
  }));

test("mistakes of a file and of its rows are shown at once, and can be mended", () =>
  withPage("#many", async (page) => {
    await openList(page, [["address"], ['"cam1']]);
    await expectText(page, "many-mistake", "cameras.csv: The quote opened in line 2 is never closed.");
    assert.equal(await focused(page), "many-mistake");
    await openList(page, [
      ["address", "port", "codec"],
      ["cam1", 80800, "mjpeg"],
      ["", 80, ""],
      ["127.0.0.1", ports.works, ""],
    ]);
    await expectText(page, "many-count", "3 rows");
    const found = await page.locator("#many-fix-list li").allInnerTexts();
    assert.deepEqual(found, ["Line 2, port: 80800 is not a port (1 to 65535).", "Line 3, address: missing."]);
    assert.equal(await results(page), "!!–");
    await page.click("#many-fix-list button");
    assert.equal(await page.inputValue("#row-codec"), "MJPEG");
    await page.fill("#row-port", "80");
    await page.click("#row-save");
    await page.click("#row-close");
    assert.equal(await results(page), "–!–");
    await page.click("#many-forget");
    assert.equal(await page.inputValue("#many-password"), "");
  }));
