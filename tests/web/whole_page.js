/// What holds in all three views: models, banners, accessibility, and how it looks.

import assert from "node:assert/strict";
import { test } from "node:test";
import { AXE, audit } from "./audit.js";
import {
  DESKTOP,
  RIGHT,
  addUser,
  control,
  enterLogin,
  expectText,
  fillOne,
  logIn,
  openList,
  ports,
  runEnds,
  sent,
  testOne,
  withPage,
} from "./stage.js";

test("models are found, shown, and taken over into a test", () =>
  withPage("", async (page) => {
    await page.click("#nav-models");
    await page.locator("#nav-models[aria-current=page]").waitFor();
    await page.locator("#models-title:focus").waitFor();
    assert.equal(await page.title(), "Known models – Camera check");
    await page.fill("#models-search", "zzzz");
    await page.click("#models-clear");
    await page.fill("#models-search", "h265 simcma");
    await page.click("#models-list a");
    await expectText(page, "models-detail-body", "H.265 over RTSP");
    assert.match(page.url(), /#models\/Simcam\/RTSP-H265$/);
    await page.click("#models-detail-body button");
    await page.locator("#view-one").waitFor();
    assert.equal(await page.inputValue("#one-model"), "Simcam RTSP-H265");
    await page.fill("#one-model", "zzzz");
    await page.click("#one-model-list [role=option]:last-of-type");
    assert.equal(await page.inputValue("#one-model"), "Any camera (stream path)");
    await page.click("#nav-models");
    await page.fill("#models-search", "zzzz");
    await page.click("#models-fallbacks button");
    assert.equal(await page.inputValue("#one-model"), "ONVIF");
  }));

test("a model tells its streams by name, and of each value who says so", () =>
  withPage("#models/Acme/Cube-2", async (page) => {
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
    await page.route("**/recorder/1/models/**", (route) => route.fulfill({ status: 404 }));
    await page.reload();
    await expectText(page, "models-detail-body", "H.264 over RTSP");
    assert.equal(await page.locator(".said, .sources").count(), 0, "a recorder that does not tell it");
  }));

test("a recorder that went away is told of, found again, and no test is repeated", () =>
  withPage("", async (page, calls) => {
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
    await expectText(page, "models-failed-text", "All workers of the recorder are busy. Try again in a moment.");
    await page.clock.fastForward(10_000);
    await page.locator("#offline").waitFor({ state: "hidden" });
    assert.equal(sent(calls, "CameraTest").length, 1);
  }));

test("what keeps the page from the recorder is told in every view, with what to do", () =>
  withPage("", async (page) => {
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
  }));

test("somebody who is no longer known logs in again, and the test goes on", () => {
  const user = { username: "leaver", password: "let-me-in-43" };
  addUser(user);
  const work = async (page) => {
    await fillOne(page, { port: ports.works });
    control("", `user remove ${user.username}`);
    await page.click("#one-test");
    await page.locator("#login[open]").waitFor();
    addUser(user);
    await enterLogin(page, user);
    await expectText(page, "one-result-title", "Camera works");
    assert.equal(await page.inputValue("#one-password"), RIGHT, "stays");
    control("", `session end --user ${user.username}`);
    await page.click("#one-test");
    await page.locator("#login[open]").waitFor();
    await logIn(page.context(), user);
    await page.evaluate(() => document.dispatchEvent(new Event("visibilitychange"))); // in another tab
    await expectText(page, "status", "Passed: camera works");
  };
  return withPage("", work, { user });
});

test("axe finds nothing serious in any view, light or dark", () => {
  const work = async (page) => {
    await audit(page, "One camera, empty");
    await page.fill("#one-address", "");
    await page.click("#one-test");
    await audit(page, "One camera with a mistake");
    await fillOne(page, { port: ports.busy });
    await testOne(page);
    await audit(page, "One camera, failed");
    await page.fill("#one-model", "simcam");
    await audit(page, "One camera, choosing a model");
    await page.fill("#one-model", "zzzz");
    await audit(page, "One camera, no such model");
    await fillOne(page, { port: ports.works, model: "Acme Cube-2" });
    await page.click("#one-summary");
    await audit(page, "One camera, its streams", "streams");
    await fillOne(page, { port: ports.onvif, model: "ONVIF" });
    await testOne(page);
    await audit(page, "One camera, passed", "one-camera");
    await page.fill("#one-port", "81");
    await audit(page, "One camera, other values", "other-values");

    await page.click("#nav-many");
    await page.locator("#many-title:focus").waitFor();
    await audit(page, "Many cameras, empty");
    const login = ["admin", RIGHT, "Simcam RTSP-H264"];
    await openList(page, [
      ["name", "address", "port", "user", "password", "model"],
      ["Gate", "127.0.0.1", ports.works, ...login],
      ["Yard", "localhost", ports.busy, ...login],
      ["Stairs", "127.1", ports.refused, ...login],
      ["Roof", "127.0.1", 80800, ...login],
    ]);
    await page.click("#many-start");
    await runEnds(page);
    await audit(page, "Many cameras, tested", "many-cameras");
    await page.click("#many-filters [data-kind=failed]");
    await page.click("#many-causes [data-kind='467']");
    await audit(page, "Many cameras, one cause");
    await page.click("#row-3-more");
    await audit(page, "Details of a row", "row");
    await page.click("#row-close");
    await page.setViewportSize({ width: 390, height: 600 });
    await page.click("#row-3-more");
    const places = await page
      .locator("#row, #row-close")
      .evaluateAll((all) => all.map((one) => one.getBoundingClientRect().y));
    assert.ok(places[1] >= places[0], "Close is in sight on a phone");
    await page.click("#row-close");
    await page.setViewportSize(DESKTOP);
    await page.click("#many-export-import");
    await page.check("#import-passwords");
    await audit(page, "Export for import", "export");
    await page.click("#import-cancel");
    await openList(page, [
      ["Standort", "Adresse"],
      ["Tor", "127.0.0.1"],
    ]);
    await page.click("#question-yes");
    await page.locator("#many-columns[open]").waitFor();
    await audit(page, "Columns to choose", "columns");

    await page.click("#nav-models");
    await page.click("#models-list a:text('RTSP-H264')");
    await expectText(page, "models-detail-body", "H.264 over RTSP");
    await audit(page, "Known models");
    await page.fill("#models-search", "zzzz");
    await audit(page, "Known models, none found");
    await page.evaluate(() => (location.hash = "models/Acme/Cube-2"));
    await page.locator(".sources").waitFor();
    await page.click("#models-clear");
    await audit(page, "A model with sources", "known-models");
  };
  return withPage("", work, { script: AXE });
});
