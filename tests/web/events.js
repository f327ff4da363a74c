/// How stored cameras have changed, in the page; and the address that it is told to.

import assert from "node:assert/strict";
import { createServer } from "node:http";
import { before, test } from "node:test";
import { audit } from "./audit.js";
import { History } from "./page/cameras/history.js";
import { OTHER, RIGHT, addUsers, control, expectText, focused, ports, serve, withPage } from "./stage.js";

const TOLD = "told.json";
const HOUR = 3600;
const DAY = 24 * HOUR;
const NOW = 20_000 * DAY + HOUR / 2; // half of the last hour is over
let at = "";
let id = 0;

before(async () => {
  at = await serve("told", addUsers);
  const camera = `--vendor Simcam --model RTSP-H264 --host 127.0.0.1 --port ${ports.works} --user admin --force`;
  id = Number(/\d+/.exec(control(RIGHT, `camera add --name yard ${camera}`, TOLD)));
});

const told = (hash, work, more = {}) => withPage(hash, work, { at, ...more });

/** Has the camera contacted, at one of the ports. @param {keyof typeof ports} port */
async function contact(page, port) {
  control(RIGHT, `camera edit ${id} --port ${ports[port]}`, TOLD);
  await page.request.post(`${at}recorder/1/cameras/${id}/test`, { data: {}, headers: { Origin: new URL(at).origin } });
}

const rowsOf = (page) => page.locator("#camera-changes tbody tr").allInnerTexts();

test("changes of a camera are told as they come, in the list and where it is open", () =>
  told("#cameras", async (page) => {
    let read = 0;
    page.on("request", (request) => (read += /events\?/.test(request.url()) ? 1 : 0));
    await page.route("**/picture?*", (route) => route.fulfill({ status: 503 }));
    await contact(page, "works");
    await expectText(page, "cameras-list", /Last \d+ seconds?: no failure/);
    await contact(page, "noStream");
    await expectText(page, "cameras-list", /Stream not found on camera.*worked [\d.]+\s%, 1 failure/);
    assert.match(await page.locator(".strip .partly").getAttribute("d"), /^M16[67] 12v-8h1v8z$/);
    await audit(page, "Cameras that changed", "changes-cards");
    await page.click("#cameras-table-toggle");
    await expectText(page, "cameras-table", "1 failure");
    await page.click("#cameras-table a");
    await expectText(page, "camera-changes", "Stream not found on camera");
    const before = read;
    await contact(page, "works");
    await expectText(page, "camera-state", "Works");
    await expectText(page, "status", "yard: Works");
    const rows = await rowsOf(page);
    assert.equal(rows.length, 3);
    assert.match(rows[0], /Not tried\s+✓\s*Works\s+\d+ seconds? so far$/);
    assert.match(rows[2], /Not tried\s+✓\s*Works\s+\d+ seconds?$/);
    assert.equal(read, before, "what was heard is not read");
    await audit(page, "A camera that changed", "changes-camera");
  }));

test("where the recorder does not tell of changes, they are asked for again, and only while they are seen", () =>
  told("#cameras", async (page) => {
    let asked = 0;
    await page.clock.install();
    await page.route("**/picture?*", (route) => route.fulfill({ status: 503 }));
    await page.route("**/recorder/1/events?*", (route, request) => {
      const isStream = request.headers().accept === "text/event-stream";
      asked += isStream ? 1 : 0;
      return isStream ? route.fulfill({ status: 503 }) : route.continue();
    });
    await page.click(`#cameras-list a`);
    await expectText(page, "camera-changes", "Works");
    const before = (await rowsOf(page)).length;
    await contact(page, "busy");
    assert.equal((await rowsOf(page)).length, before);
    await page.clock.runFor(30_000);
    await expectText(page, "camera-changes", "Camera is busy");
    await page.click("#nav-models");
    const last = asked;
    await page.clock.runFor(120_000);
    assert.equal(asked, last);
  }));

test("an admin says where changes are told to, and sees what came of a test", async () => {
  const heard = [];
  const server = createServer((request, answer) => {
    heard.push(request.headers["x-signature"]);
    answer.writeHead(heard.length > 1 ? 500 : 204, { Connection: "close" }).end();
  });
  await new Promise((done) => server.listen(0, "127.0.0.1", done));
  const work = async (page) => {
    await page.click("#nav-notices");
    await expectText(page, "notices-last", "Nobody is told so far.");
    await page.fill("#notices-url", `http://127.0.0.1:${server.address().port}/`);
    await page.click("#notices-save");
    await expectText(page, "notices-mistake", "The secret must have 16 to 256 characters.");
    assert.equal(await focused(page), "notices-secret");
    await page.fill("#notices-secret", "a secret of some length");
    await page.click("#notices-save");
    await expectText(page, "notices-last", "Nothing was sent to it so far.");
    assert.equal(await page.inputValue("#notices-secret"), "");
    for (const said of ["It was taken.", "did not take the notice. Its status: 500."]) {
      await page.click("#notices-test");
      await expectText(page, "notices-tested", said);
    }
    assert.match(heard[0], /^sha256=[0-9a-f]{64}$/);
    await audit(page, "Notices", "notices");
    server.close();
    await page.click("#notices-test");
    await expectText(page, "notices-tested", "Not reachable.");
    await page.click("#notices-remove");
    await page.click("#question-yes");
    await expectText(page, "notices-last", "Nobody is told so far.");
  };
  await told("", work).finally(() => server.close());
  const asUser = async (page) => {
    await expectText(page, "admins-only-text", "Only an admin may see Notices.");
    assert.ok(await page.isHidden("#view-notices"));
  };
  await told("#notices", asUser, { user: OTHER });
});

/** Events as [hours ago, before, cause]; whether none is missing; kinds of hours, as counts; failures. */
const WEEKS = {
  "no change": [[], true, "168 works", 0],
  "a minute without it": [[[9.1, "ok", "busy"], [9.08, "busy", "ok"]], true, "158 works, 1 partly, 9 works", 1],
  "another cause meanwhile": [
    [[5.5, "ok", "busy"], [3.5, "busy", "timedOut"], [1.5, "timedOut", "ok"]],
    true,
    "162 works, 4 fails, 2 works",
    1,
  ],
  "stored a while ago": [[[2.5, null, "busy"]], true, "165 unknown, 3 fails", 1],
  "too many changes for the pages": [[[4.5, "ok", "busy"], [1.5, "busy", "ok"]], false, "163 unknown, 3 fails, 2 works", 1],
};

test("each hour of a week has its kind, and what nobody knows is not called good", () => {
  for (const [name, [changes, isWhole, wanted, failures]] of Object.entries(WEEKS)) {
    const eventOf = ([ago, before, cause], i) => ({ id: i + 1, camera: 1, at: NOW - ago * HOUR, before, cause });
    const events = changes.map(eventOf);
    const history = new History();
    history.take([...events].reverse(), isWhole);
    const { cause = "ok", at: since = 0 } = events.at(-1) ?? {};
    const week = history.weekOf(1, { cause, since, lastSuccess: null, flips: 0, milliseconds: null }, NOW);
    const runs = week.hours.join(" ").match(/(\w+)( \1)*/g).map((run) => run.split(" "));
    assert.equal(runs.map((run) => `${run.length} ${run[0]}`).join(", "), wanted, name);
    assert.equal(week.failures, failures, name);
  }
});
