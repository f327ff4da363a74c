/// Many cameras: runs, what stops them, mistakes in lists, and the way out.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { audit } from "./audit.js";
import {
  DESKTOP,
  HEADING,
  HOSTS,
  RIGHT,
  WRONG,
  control,
  expectText,
  focused,
  openList,
  openWithLogin,
  ports,
  results,
  rowsOf,
  runBy,
  runEnds,
  sent,
  testAt,
  text,
} from "./stage.js";

const test = testAt("#many");
const groupsOf = (calls) => sent(calls, "CamBatAddVerify").map(({ camList }) => camList.length);

async function saved(page, button) {
  const [download] = await Promise.all([page.waitForEvent("download"), page.click(button)]);
  return download.path();
}

test("a run tests in groups, holds refused logins back, and its export can be read again", async (page, calls) => {
  await audit(page, "Many cameras, empty");
  const rows = [
    ...rowsOf("works", "works", "refused", "works", "works", "busy", "works", "works", "works", "works"),
    ["gate", HOSTS[10], ports.works, WRONG, "", ""],
    ["same login", HOSTS[10], ports.works, WRONG, "", "/stream1"],
    ["other port", HOSTS[10], ports.busy, WRONG, "", ""],
    ["other password", HOSTS[10], ports.works, "", "", "/stream1?"],
    ["path", HOSTS[1], ports.works, "", "", "/stream1"],
    ["mistake", "cam 1", "", "", "", ""],
    ["twice", HOSTS[0], ports.works, "", "", ""],
  ];
  await openWithLogin(page, rows);
  assert.equal(await text(page, "many-start"), "Test 15 cameras");
  await runBy(page, "#many-start");
  assert.equal(await results(page), "✓✓✕✓✓✕✓✓✓✓✕‖✕✓✓!=");
  assert.deepEqual(groupsOf(calls).slice(0, 3), [1, 1, 1], "until one passes");
  assert.equal(sent(calls, "CameraTest").length, 2, "a path rides in no group");
  assert.equal(await text(page, "many-progress-text"), "10 passed, 4 failed, 1 held, 1 to fix");
  await audit(page, "Many cameras, tested", "many-cameras");

  await page.click("#many-filters [data-kind=failed]");
  await page.click("#many-causes [data-kind='467']");
  await expectText(page, "many-advice", "Camera is busy. The camera said");
  assert.equal(await page.locator("#many-rows tr:visible").count(), 1);
  await audit(page, "Many cameras, one cause");
  await page.click("#many-filters [data-kind=all]");

  calls.length = 0;
  await runBy(page, "#many-retry");
  assert.deepEqual(groupsOf(calls), [1, 1], "what failed for another reason than its login");
  await page.click("#row-12-more");
  await audit(page, "Details of a row", "row");
  await page.setViewportSize({ width: 390, height: 600 });
  const places = await page
    .locator("#row, #row-close")
    .evaluateAll((all) => all.map((one) => one.getBoundingClientRect().y));
  assert.ok(places[1] >= places[0], "Close is in sight on a phone");
  await page.setViewportSize(DESKTOP);
  await page.fill("#row-password", RIGHT);
  await runBy(page, "#row-test");
  assert.equal(await results(page), "✓✓✕✓✓✕✓✓✓✓✓‖✕✓✓!=");

  const exported = readFileSync(await saved(page, "#many-export"), "utf8");
  assert.match(exported, /^refused,.*,4,failed,462,Camera not found,\d{4}-\d\d-\d\dT.*[+-]\d\d:\d\d\r$/m);
  for (const password of [RIGHT, WRONG]) assert.ok(!exported.includes(password));
  const cells = () => page.locator("#many-rows :is(.line, th, .code, .code + td)").allTextContents();
  const before = await cells();
  const stored = control("", "camera list").split("\n").length;
  await page.click("#many-export-import");
  await expectText(page, "import-count", "11 of 17 rows: those that passed");
  control("", `camera import ${await saved(page, "#import-export")}`);
  assert.equal(control("", "camera list").split("\n").length, stored + 11);
  await page.click("#many-export-import");
  await page.check("#import-others");
  await page.check("#import-passwords");
  assert.ok(await page.locator("#import-warning").isVisible());
  await audit(page, "Export for import", "export");
  const withPasswords = readFileSync(await saved(page, "#import-export"), "utf8");
  assert.equal(withPasswords.split("\r\n").filter((line) => line.includes(RIGHT)).length, 14);

  const buffer = Buffer.from(exported);
  await page.setInputFiles("#many-file", { name: "exported.csv", mimeType: "text/csv", buffer });
  await expectText(
    page,
    "question-text",
    "The list is replaced by exported.csv. The results of 14 rows are lost. Go on?",
  );
  await page.click("#question-no");
  await page.setInputFiles("#many-file", { name: "book.xlsx", mimeType: "", buffer: Buffer.from("PK\x03\x04") });
  await expectText(page, "many-mistake", "book.xlsx: This is a workbook. Save it as CSV.");
  assert.equal(await results(page), "✓✓✕✓✓✕✓✓✓✓✓‖✕✓✓!=", "neither threw the list away");
  await page.setInputFiles("#many-file", { name: "exported.csv", mimeType: "text/csv", buffer });
  await page.click("#question-yes");
  await expectText(page, "many-name", "exported.csv");
  assert.deepEqual(await cells(), before);
  assert.equal(await results(page), `${"–".repeat(15)}!=`);
});

test("a silent camera keeps no other one waiting, and goes last when it is known", async (page, calls) => {
  const rows = rowsOf("silent", "silent", ...Array(6).fill("works"));
  await openWithLogin(page, rows);
  await page.click("#many-start");
  await page.waitForFunction(() => document.querySelector("#many-rows").innerText.match(/Passed/g)?.length === 6);
  assert.equal(await results(page), "……✓✓✓✓✓✓");
  await expectText(page, "many-progress-text", /6 of 8, about \d+ s left/);
  await runEnds(page);
  assert.equal(await results(page), "✕✕✓✓✓✓✓✓");
  await openWithLogin(page, rows);
  await page.click("#question-yes");
  calls.length = 0;
  await page.click("#many-start");
  await expectText(page, "many-progress-text", "6 of 8, waiting for cameras that do not answer");
  await runEnds(page);
  const silent = sent(calls, "CamBatAddVerify").map(({ camList }) =>
    camList.map(({ port }) => port === ports.silent),
  );
  assert.deepEqual(silent.at(-1), [true, true], "together");
  assert.ok(!silent.slice(0, -1).flat().includes(true), "after all others");
});

test("unknown headings are mapped by choice, which is remembered", async (page) => {
  const list = [
    ["Standort", "Adresse", "Etage"],
    ["Tor", "127.0.0.1", 2],
  ];
  await openList(page, list);
  await expectText(page, "many-notes", "No column holds the address. Choose it below.");
  await audit(page, "Columns to choose", "columns");
  await page.selectOption("#many-column-1", "address");
  await page.selectOption("#many-column-0", "name");
  assert.equal(await text(page, "many-notes"), "");
  await expectText(page, "many-columns-summary", "1 column is not read: Etage");
  await openList(page, [
    ["Adresse", "Standort"],
    ["127.0.0.1", "Hof"],
  ]);
  await expectText(page, "many-rows", "Hof");
  await openList(page, [
    ["Adresse", "Ort"],
    ["127.0.0.1", "Hof"],
  ]);
  await page.selectOption("#many-column-1", "name"); // it can be seen: there is no column of names
  assert.equal(await results(page), "–");
});

test("the cause that the recorder names is shown for each row of a list", async (page, calls) => {
  await openWithLogin(page, rowsOf(...Array(13).fill("works")));
  await page.route("**/CamBatAddVerify", (route) => {
    const { camList } = route.request().postDataJSON();
    const isOdd = ({ tmpId }) => tmpId % 2 === 1;
    camList.reverse(); // results come in any order, each with its cause
    const row = (camera) => ({ tmpId: camera.tmpId, result: isOdd(camera) ? 1 : 0, errinfo: { code: 468 } });
    const names = camList.map((camera) => (isOdd(camera) ? "noService" : "ok"));
    const json = { success: true, data: { resultList: camList.map(row) } };
    return route.fulfill({ json, headers: { "Recorder-Cause": names.join(",") } });
  });
  await runBy(page, "#many-start");
  assert.ok(groupsOf(calls).includes(2));
  await page.click("#many-filters [data-kind=failed]");
  assert.equal(await text(page, "many-causes"), "No ONVIF or PSIA on this port 6");
  await expectText(page, "many-advice", "Find, under Add, also takes a camera without it.");
  await page.click("#many-rows tr:visible button");
  await page.click("#row-result a");
  await page.locator("#view-add:visible").waitFor();
});

/** Name, button, and what came of nine cameras that work, and eight that were not sent yet. */
const STOPS = [
  ["after these", "#many-stop", "✓✓✓✓✓✓✓✓✓––––––––"],
  ["at once", "#many-stop-now", "✓✓✓??????––––––––"],
];

for (const [name, button, signs] of STOPS)
  test(`a run is stopped in the middle, keeps what it has, and goes on with the rest: ${name}`, async (page, calls) => {
    await openWithLogin(page, rowsOf(...Array(15).fill("works"), "busy", "busy"));
    let letGo = () => {};
    const wanted = new Promise((done) => (letGo = done));
    await page.route("**/CamBatAddVerify", async (route) => {
      if (route.request().postDataJSON().camList.length > 1) await wanted;
      await route.continue();
    });
    await page.click("#many-start");
    await expectText(page, "many-progress-text", "3 of 17");
    assert.equal(await page.getAttribute("#many-table", "aria-busy"), "true");
    assert.equal(await page.locator("#many-progress").evaluate((bar) => bar.value / bar.max), 3 / 17);
    await page.click(button);
    letGo();
    await runEnds(page);
    assert.equal(await results(page), signs);
    assert.deepEqual(groupsOf(calls), [1, 1, 1, 2, 2, 2]);
    await runBy(page, "#many-start");
    assert.equal(await results(page), "✓✓✓✓✓✓✓✓✓✓✓✓✓✓✓✕✕");
  });

test("until a login passed only three are refused, and none of them is sent again unasked", async (page, calls) => {
  const rows = rowsOf(..."refused refused refused refused works works refused works works works".split(" "));
  for (const cells of rows.slice(7)) cells[5] = "/stream1"; // tested alone
  await openWithLogin(page, rows, WRONG);
  await page.click("#many-start");
  await expectText(page, "many-pause-text", "The first 3 logins were all refused. Is the shared password right?");
  await expectText(page, "status", "Paused.");
  await runBy(page, "#many-give-up");
  assert.equal(await results(page), "✕✕✕✕✕✕✕✕––");
  assert.deepEqual(groupsOf(calls), Array(7).fill(1));
  calls.length = 0;
  await page.click("#row-6-more");
  await page.fill("#row-path", "/stream1");
  for (const button of ["#row-test", "#row-picture"]) {
    await page.click(button);
    await page.locator("#question[open]", { hasText: "login was refused at this address" }).waitFor();
    await page.click("#question-no");
  }
  assert.deepEqual(calls, []);
  await page.click("#row-close");
  await openList(page, [HEADING, ...rows]);
  await page.click("#question-yes");
  await expectText(page, "status", "10 rows read.");
  assert.equal(await results(page), "––––‖‖–‖––", "nor when the list is read anew");
  await page.fill("#many-password", RIGHT);
  await page.press("#many-password", "Tab");
  await runBy(page, "#many-start");
  assert.equal(await results(page), "✕✕✕✕✓✓✕✓✓✓");
});

test("a request without an answer pauses the run and is not sent again", async (page, calls) => {
  await openWithLogin(page, rowsOf(...Array(4).fill("works")));
  await page.route("**/CamBatAddVerify", (route) => route.abort(), { times: 1 });
  await page.click("#many-start");
  await expectText(page, "many-pause-title", "This camera's test was not answered.");
  await runBy(page, "#many-go-on");
  assert.deepEqual(groupsOf(calls), [1, 1, 1, 1]);
  assert.equal(await results(page), "?✓✓✓");
});

test("mistakes of a file and of its rows are shown at once, and can be mended", async (page) => {
  await page.click("details:has(#many-text) summary");
  await page.fill("#many-text", 'address\n"cam1');
  await page.click("#many-read");
  await expectText(page, "many-mistake", "Pasted rows: The quote opened in line 2 is never closed.");
  assert.equal(await page.inputValue("#many-text"), 'address\n"cam1', "can be mended");
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
  const path = `/user=admin&password=${RIGHT}`;
  const shown = async (...names) => Promise.all(names.map((name) => page.inputValue(`#row-${name}`)));
  await page.fill("#row-path", path);
  await page.press("#row-path", "Tab");
  assert.deepEqual(await shown("path", "user", "password"), ["/", "admin", RIGHT]);
  await page.fill("#row-address", `rtsp://admin:x/${RIGHT}@cam1`);
  await page.click("#row-save");
  assert.deepEqual(await shown("address"), ["@"], "the login is hidden");
  await page.locator("#row [role=status]", { hasText: "Saved" }).waitFor({ state: "attached" }); // in the dialog it is heard
  await page.fill("#row-address", "cam1");
  await page.fill("#row-port", "80");
  await page.click("#row-save");
  await page.fill("#row-path", path);
  await page.locator("#row").evaluate((dialog) => dialog.close());
  await page.locator("#row-2-more:focus").waitFor();
  assert.deepEqual(await shown("path", "password"), ["/", ""], "nothing is left in the closed dialog");
  assert.equal(await results(page), "–!–");
  await page.click("#many-forget");
  assert.equal(await page.inputValue("#many-password"), "");
  await page.click("#many-export-import");
  await page.check("#import-others");
  assert.ok(await page.locator("#import-passwords").isDisabled(), "there is none");
});
