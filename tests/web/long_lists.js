/// Many cameras: lists that are so long that the recorder tests them by itself.

import assert from "node:assert/strict";
import { test } from "node:test";
import {
  HOSTS,
  WRONG,
  addUsers,
  expectText,
  openWithLogin,
  ports,
  results,
  runBy,
  sent,
  serve,
  withPage,
} from "./stage.js";

/** Three of them are tested one by one before. Of two with one wrong login one is tried. */
const longList = (portOfLater = ports.works) => {
  const portOf = (i) => (i < 36 ? ports.works : portOfLater);
  const rows = Array.from({ length: 210 }, (_, i) => [i, HOSTS[i % 18], portOf(i), "", "", `/stream1?${i}`]);
  for (const i of [5, 23]) rows[i][3] = WRONG;
  return rows;
};
const LONG_ENDS = "✓✓✓✓✓✕" + "✓".repeat(17) + "‖" + "✓".repeat(186);

/** Of a long list that is stopped: button, and what came of rows that were not done. */
const LONG_STOPS = [
  ["after these", "#many-stop", "–✕"],
  ["at once", "#many-stop-now", "?–"],
];

test("a long list is tested by the recorder itself, or by the page where that does not watch", async (t) => {
  const at = await serve("watching", addUsers, "--workers", "4");
  const expectNoRun = async (page) => {
    const answer = await page.request.get(new URL("/recorder/1/runs", page.url()).href);
    assert.deepEqual((await answer.json()).data, []);
  };
  const byItself = async (page, calls) => {
    await openWithLogin(page, longList());
    await page.route("**/recorder/1/runs/*", (route) => route.abort(), { times: 1 });
    await page.click("#many-start");
    await expectText(page, "many-pause-title", "Paused.");
    await runBy(page, "#many-go-on");
    assert.equal(await results(page), LONG_ENDS);
    assert.equal(sent(calls, "CameraTest").length, 3);
    await expectNoRun(page);
  };
  const byThePage = async (page, calls) => {
    await openWithLogin(page, longList());
    await page.click("#many-start");
    await expectText(page, "many-progress-text", /^\d\d+ of 210/);
    await runBy(page, "#many-stop");
    assert.ok(sent(calls, "CameraTest").length > 9);
    await expectNoRun(page);
  };
  const whoseIsLeft = async (page) => {
    page.on("dialog", (dialog) => dialog.accept());
    await openWithLogin(page, longList(ports.silent));
    await page.click("#many-start");
    await expectText(page, "many-progress-text", /^36 of 210/);
    await page.reload();
    await expectText(page, "many-earlier-text", /Your test of 207 cameras, .*, still runs: \d+ done/);
    await page.click("#many-earlier-end");
    await expectText(page, "many-earlier-text", /, was stopped: \d+ done, 31 of them passed/);
    await page.click("#many-earlier-see");
    await expectText(page, "many-start", /^Test the remaining 1\d\d$/);
    assert.equal((await results(page)).slice(0, 33), LONG_ENDS.slice(3, 36).replace("‖", "✕"));
    await page.reload();
    await page.click("#many-earlier-end");
    await page.locator("#many-earlier").waitFor({ state: "hidden" });
    await expectNoRun(page);
  };
  await t.test("by itself", () => withPage("#many", byItself, { at }));
  await t.test("whose page is left is told of when the page comes back", () => withPage("#many", whoseIsLeft, { at }));
  await t.test("by the page", () => withPage("#many", byThePage));
  for (const [name, button, signs] of LONG_STOPS) {
    const stop = async (page) => {
      await openWithLogin(page, longList(ports.silent));
      await page.click("#many-start");
      await expectText(page, "many-progress-text", /^36 of 210/);
      await runBy(page, button);
      assert.equal([...new Set((await results(page)).slice(36))].sort().join(""), signs);
      await expectNoRun(page);
    };
    await t.test(name, () => withPage("#many", stop, { at }));
  }
});
