/// What holds in all three views: models, banners, logins.

import assert from "node:assert/strict";
import { audit } from "./audit.js";
import {
  RIGHT, USER, control, expectText, fillOne, logIn, openView, openWithLogin, ports, rowsOf, sent, testAt, testOne,
} from "./stage.js";

testAt("#one")("models are found, shown, and taken over into a test", async (page) => {
  await page.click("#nav-models");
  await page.locator("#nav-models[aria-current=page]").waitFor();
  await page.locator("#models-title:focus").waitFor();
  assert.equal(await page.title(), "Known models – Camera check");
  await page.fill("#models-search", "zzzz");
  await page.click("#models-clear");
  await page.fill("#models-search", "acme dome-77");
  await expectText(page, "models-count", "Nothing has all these words; these are of Acme:");
  assert.deepEqual(await page.locator("#models-list a").allInnerTexts(), ["Acme Cube-2"]);
  await page.fill("#models-search", "h265 simcma");
  await page.click("#models-list a");
  await expectText(page, "models-detail-body", "H.265 over RTSP");
  assert.match(page.url(), /#models\/Simcam\/RTSP-H265$/);
  await audit(page, "Known models");
  await page.click("#models-detail-body button");
  await page.locator("#view-one").waitFor();
  assert.equal(await page.inputValue("#one-model"), "Simcam RTSP-H265");
  await page.fill("#one-model", "acme dome-77");
  const options = await page.locator("#one-model-list [role=option]").allInnerTexts();
  assert.deepEqual(options, ["Acme Cube-2", "ONVIF", "Any camera (stream path)"]);
  await page.fill("#one-model", "zzzz");
  await audit(page, "One camera, no such model");
  await page.click("#one-model-list [role=option]:last-of-type");
  assert.equal(await page.inputValue("#one-model"), "Any camera (stream path)");
  await page.click("#nav-models");
  await page.fill("#models-search", "zzzz");
  await audit(page, "Known models, none found");
  await page.click("#models-fallbacks button");
  assert.equal(await page.inputValue("#one-model"), "ONVIF");
});

testAt("#models/Acme/Cube-2")("a model tells its streams by name, and of each value who says so", async (page) => {
  const rowsOf = (place) => page.locator(place).allInnerTexts();
  const linesOf = async (place) => (await rowsOf(place)).map((row) => row.split(/\s*[\t\n]+\s*/));
  await expectText(page, "models-detail-body", "Note: Switch RTSP on first.");
  assert.deepEqual(await linesOf("#models-detail-body .cards tbody tr"), [
    ["Main", "H.264", "RTSP, the port that you give", "/main1", "read in [1]"],
    ["Sub", "any", "RTSP, the port that you give", "/stream1", "as reported, not tried by us [2]"],
  ]);
  const facts = await linesOf("#models-detail-body .facts tr");
  const said = Object.fromEntries(facts.map(([name, ...value]) => [name, value.join("; ")]));
  assert.equal(said["Codecs"], "H.264 over RTSP; read in [1]");
  assert.equal(said["Audio"], "No; assumed");
  assert.equal(said["Channels"], "1 (default), or any that you type; assumed");
  assert.equal(said["RTSP transports"], "TCP; read in [1]");
  assert.equal(said["RTSP keep-alive"], "Yes; assumed");
  assert.equal(said["Resolutions"], "none reported");
  assert.deepEqual(await linesOf(".sources li"), [
    ["Read in: Acme interface 2, page 12"],
    ["As reported, not tried by us: A list of addresses"],
  ]);
  assert.deepEqual(
    await page.locator(".sources a").evaluateAll((all) => all.map(({ href }) => href)),
    ["https://acme.example/2"],
    "nothing else is a link",
  );
  await audit(page, "A model with sources", "known-models");
  await page.route("**/recorder/1/models/**", (route) => route.fulfill({ status: 404 }));
  await page.reload();
  await expectText(page, "models-detail-body", "H.264 over RTSP");
  assert.equal(await page.locator(".said, .sources").count(), 0, "a recorder that does not tell it");
  await page.route("**/recorder/1/models/**", (route) => route.fulfill({ status: 503 }));
  await page.reload();
  await expectText(page, "models-detail-body", "H.264 over RTSP");
  await expectText(page, "models-detail-body", "could not be read. The recorder is busy.");
  await page.route("**/CamCap", (route) => route.fulfill({ status: 503 }));
  await page.reload();
  await expectText(page, "models-detail-body", "The recorder is busy. Try again in a moment.");
});

testAt("#models")("in colours that are forced, the open view, a chosen filter, and what waits can be told", async (page) => {
  await page.emulateMedia({ forcedColors: "active" });
  const looks = (selector, property) =>
    page.locator(selector).evaluateAll((all, property) => all.map((one) => getComputedStyle(one)[property]), property);
  const differ = async (selector, property) => assert.equal(new Set(await looks(selector, property)).size, 2, selector);
  await differ("#nav-models, #nav-many, #nav-add", "borderBottomColor");
  await openView(page, "many");
  await openWithLogin(page, rowsOf("works"));
  await differ("#many-filters button", "backgroundColor");
  await page.evaluate(() => (document.querySelector("#many-other").ariaDisabled = "true"));
  await differ("#many-other, #many-forget", "color");
});

testAt("#one")("a recorder that went away is told of, found again, and no test is repeated", async (page, calls) => {
  await page.clock.install();
  await fillOne(page, { port: ports.works });
  await page.context().setOffline(true);
  await testOne(page);
  await page.locator("#offline").waitFor();
  await expectText(page, "one-result-title", "Not tested");
  assert.equal(await page.inputValue("#one-password"), RIGHT, "stays");
  await page.route("**/CameraModelEnum", (route) => route.fulfill({ status: 503 }), { times: 1 });
  await page.context().setOffline(false);
  await page.clock.fastForward(5000);
  await expectText(page, "models-failed-text", "The recorder is busy. Try again in a moment.");
  await page.clock.fastForward(10_000);
  await page.locator("#offline").waitFor({ state: "hidden" });
  assert.equal(sent(calls, "CameraTest").length, 1);
});

testAt("")("what keeps the page from the recorder is told in every view, with what to do", async (page) => {
  const [cookie] = await page.context().cookies();
  await page.context().addCookies([{ ...cookie, domain: "recorder.localhost" }]);
  await page.goto(page.url().replace("127.0.0.1", "recorder.localhost"));
  await expectText(page, "login-mistake", 'Add "recorder.localhost" to "hostNames" in its configuration');
  await page.route("**/CameraModelEnum", (route) => route.fulfill({ status: 500 }));
  await page.goto(`${page.url().replace("recorder.localhost", "127.0.0.1")}#one`);
  await page.locator("#models-failed").waitFor();
  await page.click("#one-test");
  await expectText(page, "one-model-mistake", "The list of models could not be read: see above.");
  await page.unroute("**/CameraModelEnum");
  await page.route("**/CameraModelEnum", (route) => route.fulfill({ status: 401 }));
  await page.reload();
  await page.click("#login-later");
  await expectText(page, "signed-out", "Nobody is logged in.");
  assert.ok(await page.locator("#models-failed").isHidden(), "one trouble, one banner");
});

testAt("#one")("a test that wanted a login goes on when there is one, in another tab too", async (page) => {
  await fillOne(page, { port: ports.works });
  control("", `session end --user ${USER.username}`);
  await page.click("#one-test");
  await page.locator("#login[open]").waitFor();
  await logIn(page.context(), USER);
  await page.evaluate(() => document.dispatchEvent(new Event("visibilitychange")));
  await expectText(page, "status", "Passed: camera works");
  assert.equal(await page.inputValue("#one-password"), RIGHT, "stays");
});
