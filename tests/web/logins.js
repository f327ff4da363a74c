/// Logging in: the first start, wrong logins, sessions that end in the middle of work, roles, tokens.

import assert from "node:assert/strict";
import { test } from "node:test";
import { audit } from "./audit.js";
import {
  DESKTOP,
  OTHER,
  RIGHT,
  USER,
  WRONG,
  control,
  enterLogin,
  expectText,
  fillOne,
  focused,
  logIn,
  openList,
  openView,
  ports,
  results,
  runEnds,
  sent,
  serve,
  testAt,
  testOne,
  text,
  withPage,
} from "./stage.js";

const isIn = (page, { username }) => page.locator("#who-name:visible", { hasText: username }).waitFor();

test("whoever has the link of a recorder without users makes the first one", async () => {
  const at = await serve("fresh");
  const link = new URL(control("", "link", "fresh.json").trim()).hash;
  const first = async (page) => {
    await expectText(page, "login-title", "The first user");
    assert.equal(page.url(), at, "the code is taken from the address");
    await page.fill("#login-user", USER.username);
    await page.fill("#login-password", USER.password);
    await page.fill("#login-again", OTHER.password);
    await page.click("#login-go");
    await expectText(page, "login-mistake", "These are two different passwords.");
    assert.equal(await focused(page), "login-again");
    await audit(page, "The first user", "first-user");
    await page.fill("#login-again", USER.password);
    await page.route("**/recorder/1/users", (route) => route.fulfill({ status: 401 }), { times: 1 });
    await page.click("#login-go");
    await expectText(page, "login-mistake", "This link was used already, or is too old.");
    await page.route("**/recorder/1/session", (route) => route.fulfill({ status: 503 }), { times: 1 });
    await page.click("#login-go");
    await expectText(page, "login-mistake", "The recorder is busy");
    await page.click("#login-go");
    await isIn(page, USER);
    assert.ok(await page.isVisible("#nav-users"), "an admin");
    await page.reload();
    await isIn(page, USER);
  };
  const second = (page) => expectText(page, "login-mistake", "This link was used already, or is too old.");
  await withPage("", (page) => expectText(page, "login-mistake", "This recorder has no user yet."), { at, user: null });
  await withPage(link, first, { at, user: null });
  await withPage(link, second, { at, user: null });
});

testAt("#many", { user: null })("a login is asked for in the page, and a wrong one says what to do", async (page) => {
  assert.ok(await page.locator("#top, #views").evaluateAll((all) => all.every((one) => one.hidden)));
  assert.equal(await focused(page), "login-user");
  await enterLogin(page, { username: OTHER.username, password: WRONG });
  await expectText(page, "login-mistake", "The user or the password is wrong.");
  assert.equal(await page.inputValue("#login-user"), OTHER.username, "stays");
  await audit(page, "Login", "login");
  await page.clock.install();
  const answers = { 429: /^Wrong passwords came before. Try again in 2 seconds/, 503: /^The recorder is busy/ };
  for (const [status, words] of Object.entries(answers)) {
    const fulfill = (route) => route.fulfill({ status: Number(status), headers: { "Retry-After": "2" }, json: {} });
    await page.route("**/recorder/1/session", fulfill, { times: 1 });
    await enterLogin(page, OTHER);
    await expectText(page, "login-mistake", words);
    assert.equal(await text(page, "login-go"), "Wait 2 s");
    await page.clock.runFor(1000);
    await expectText(page, "login-go", "Wait 1 s");
    await page.clock.runFor(1000);
    await expectText(page, "login-mistake", "You can try again now.");
  }
  await page.route("**/recorder/1/session", (route) => route.abort(), { times: 1 });
  await enterLogin(page, OTHER);
  await expectText(page, "login-mistake", "The recorder is not reachable.");
  await logIn(page.context(), OTHER); // it ends the pause after the wrong password
  control("", `session end --user ${OTHER.username}`);
  await page.check("#login-stay");
  await enterLogin(page, OTHER);
  await isIn(page, OTHER);
  const [cookie] = await page.context().cookies();
  assert.ok(cookie.expires > 0, "it outlives the browser");
  assert.equal(await page.title(), "Many cameras – Camera check");
  await page.click("#log-out");
  await page.locator("#login-title:visible").waitFor();
  assert.deepEqual(await page.context().cookies(), []);
  assert.ok(!control("", "session list").includes(OTHER.username));
});

testAt("#many")("a session that ends while a list runs costs nothing: what was refused is asked again", async (page, calls) => {
  await openView(page, "one");
  await fillOne(page, { port: ports.works });
  await page.click("#nav-many");
  const login = ["admin", RIGHT, "Simcam RTSP-H264"];
  const rows = Array.from({ length: 8 }, (_, i) => [`127.0.0.${"0".repeat(i)}1`, ports.works, ...login]);
  await openList(page, [["address", "port", "user", "password", "model"], ...rows]);
  await page.route("**/CamBatAddVerify", async (route) => {
    if (sent(calls, "CamBatAddVerify").length === 4) control("", `session end --user ${USER.username}`);
    await route.continue();
  });
  await page.click("#many-start");
  await page.locator("#login[open]").waitFor();
  assert.deepEqual(await page.locator("#login").boundingBox(), { x: 0, y: 0, ...DESKTOP }, "a view, and no box");
  assert.equal(await page.title(), "Log in again – Camera check");
  await page.keyboard.press("Escape");
  await expectText(page, "many-pause-text", "Nobody is logged in.");
  assert.equal(await page.title(), "Many cameras – Camera check");
  assert.match(await results(page), /^[✓–]{3}–{5}$/, "one that was still on its way may be refused, too");
  await page.click("#many-go-on");
  await expectText(page, "login-text", "What you typed, the list and its results stay, and what waits goes on.");
  assert.ok(!(await page.isEditable("#login-user")), "the list is this user's");
  await audit(page, "Login over the page", "login-again");
  await enterLogin(page, USER);
  await runEnds(page);
  assert.equal(await results(page), "✓✓✓✓✓✓✓✓");
  await openView(page, "one");
  assert.equal(await page.inputValue("#one-password"), RIGHT);
  await page.click("#log-out");
  await expectText(page, "question-text", "The list is closed. The results of 8 rows are lost. Go on?");
});

test("an admin adds, changes and removes users, and a user sees none of it", async () => {
  const guest = { username: "guest / 2", password: WRONG };
  const rowOf = (page) => page.locator("#users-list tr", { hasText: guest.username });
  const asAdmin = async (page) => {
    await page.fill("#users-name", guest.username);
    await page.fill("#users-password", guest.password);
    await page.click("#users-add");
    await rowOf(page).locator("select").selectOption("admin");
    await expectText(page, "status", `${guest.username} has the role Admin`);
    await page.click("#users-add");
    await expectText(page, "users-add-mistake", /./);
    await rowOf(page).locator("button", { hasText: "New password" }).click();
    for (const id of ["new", "again"]) await page.fill(`#password-${id}`, RIGHT);
    await page.click("#password-save");
    await expectText(page, "status", "Password changed");
    await audit(page, "Users", "users");
    await logIn(page.context(), { ...guest, password: RIGHT });
    await logIn(page.context(), USER);
    await rowOf(page).locator("button", { hasText: "Remove" }).click();
    await page.click("#question-yes");
    await rowOf(page).waitFor({ state: "detached" });
    assert.equal(await page.locator("#users-list tr", { hasText: USER.username }).locator("button, select").count(), 0);
    assert.ok(!control("", "user list").includes(guest.username));
  };
  const asUser = async (page) => {
    await page.locator("#view-cameras:visible").waitFor();
    assert.ok(await page.isHidden("#nav-users"));
    await page.evaluate(() => (location.hash = "one"));
    await testOne(page, { port: ports.works });
    assert.ok(await page.isHidden("#one-save"), "an admin adds cameras");
    const link = new URL(control("", `link --user ${USER.username}`).trim());
    await page.evaluate((hash) => (location.hash = hash), link.hash);
    await isIn(page, USER);
    assert.equal(page.url(), new URL("/", link).href);
  };
  await withPage("#users", asAdmin);
  await withPage("#users", asUser, { user: OTHER });
});

testAt("#account", { user: OTHER })("in the own account a token is made and shown once, the password changed, other sessions ended", async (page) => {
  const phone = await page.context().browser().newContext();
  await logIn(phone, OTHER); // a session that the page does not show yet
  await phone.close();
  await page.click("#account-end-others");
  await expectText(page, "status", "All other sessions have ended");
  assert.equal(control("", "session list").split(OTHER.username).length - 1, 1);
  await page.fill("#account-token-name", "nightly");
  await page.fill("#account-token-until", "2099-12-31");
  await page.click("#account-token-make");
  await page.locator("#account-token-made").waitFor();
  const token = await page.inputValue("#account-token");
  const ask = () =>
    fetch(new URL("/recorder/1/session", page.url()), { headers: { Authorization: `Bearer ${token}` } });
  assert.equal((await (await ask()).json()).data.user, OTHER.username);
  await audit(page, "My account", "account");
  await openView(page, "one");
  await page.click("#nav-account");
  assert.equal(await page.inputValue("#account-token"), "", "shown once");
  await expectText(page, "account-tokens", /nightly.*Dec 31, 2099/);
  await page.click("#account-tokens button");
  await expectText(page, "account-tokens", "No tokens.");
  assert.equal((await ask()).status, 401);
  await page.click("#account-password");
  await page.fill("#password-old", WRONG);
  for (const id of ["new", "again"]) await page.fill(`#password-${id}`, RIGHT);
  await page.click("#password-save");
  await expectText(page, "password-mistake", "The old password is wrong.");
});
