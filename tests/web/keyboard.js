/// The longest tasks by keyboard alone: Tab, arrows, Enter, and what is typed. What is wanted is found by its name.

import assert from "node:assert/strict";
import { before, test } from "node:test";
import { OTHER, RIGHT, USER, WRONG, control, ports, serve, withPage } from "./stage.js";

const FAR = 40; // nobody presses Tab more often to get somewhere
const KEYS = { "\n": "Enter", "↓": "ArrowDown", "↑": "ArrowUp" };
let at = "";

before(async () => {
  at = await serve("keys");
});

const logIn = ({ username, password }) => [["textbox User", username], ["textbox Password", `${password}\n`, "", "h1:focus"]];
const typePassword = (password, words) => [
  ["<button Edit"],
  ["textbox New password", `${password}\n`, "", "#camera-edit-open:focus"],
  ["<button Test", "\n", words, "#camera-test-result"],
];

/**
 * What is done; where it begins; the keys, besides text, that it may take; its steps: role and name of what is gone to
 * ("<" for back), what is typed there, words that come of it, where they come, what the page reads meanwhile.
 */
const TASKS = [
  ["the first login, and a camera from its address to its stored picture", "link", 20, () => [
    ["textbox User", USER.username], ["textbox Password", USER.password],
    ["textbox The same password again", `${USER.password}\n`, "", "#add-address:focus"],
    ["textbox Address", `127.0.0.1:${ports.onvif}`],
    ["textbox User", "admin"], ["textbox Password", `${RIGHT}\n`, "found"],
    ["button Save", "\n", "is saved"], ["link Open", "\n", "", "#view-camera img"],
  ]],
  ["a password that the camera refuses, and the right one", "#cameras/1", 60, () =>
    [...typePassword(WRONG, "refused the login"), ...typePassword(RIGHT, "Camera works")]],
  ["a pasted list: tested, narrowed to a cause, and what passed is added", "#many", 60, () => [
    ["summary Paste rows"],
    ["textbox Rows", `name,address,port\none,127.0.0.1,${ports.works}\ntwo,localhost,${ports.busy}`],
    ["button Read the rows", "\n", "2 rows"],
    ["textbox User", "admin"], ["textbox Password", RIGHT], ["combobox Model", "h264 simcam↓\n"],
    ["button Test 2 cameras", "\n", "Ended."], ["button Failed 1", "\n", "1 row"],
    ["button Camera is busy", "\n", "Close other viewers", "#many-advice"],
    ["<button that passed", "\n", "", "#many-add-open:focus"],
  ]],
  ["a user, a token of that user, and both removed", "#users", 90, () => [
    ["textbox Name of a new user", OTHER.username], ["textbox Password", `${OTHER.password}\n`, "is added"],
    ["<combobox Role of hall", "↑", "Admin", "#status", "tokens"],
    ["<button Log out", "\n", "", "#login-user:focus"], ...logIn(OTHER),
    ["link My account", "\n", "hall, an admin", "#account-who"],
    ["textbox Name of a new token", "nightly\n", "is made"],
    ["button Done"], ["<button Remove token nightly", "\n", "done"],
    ["<button Log out", "\n", "", "#login-user:focus"], ...logIn(USER),
    ["link Users", "\n", "hall", "#users-list"],
    ["button Remove hall"], ["<button Remove", "\n", "is removed"],
  ]],
  ["cameras narrowed to those that work, and where changes are told to", "#cameras", 60, () => [
    ["button Works", "\n", "", "[data-kind=ok][aria-pressed=true]"],
    ["link onvif", "\n", "127.0.0.1: Works"],
    ["<link Notices"], ["textbox Address", "http://127.0.0.1:9/"], ["textbox Secret", "sixteen or more letters\n", "Saved"],
    ["button Tell nobody"], ["<button Tell nobody", "\n", "Nobody"],
  ]],
];

/** Does a step, after which the focus is not lost, and gives the keys that it took. */
async function step(page, [target, typed = "\n", words = "", place = "#status", reads = ""]) {
  const [, back, role, name] = /^(<?)(\w+) (.*)/.exec(target);
  const named = role === "summary" ? page.locator(role, { hasText: name }) : page.getByRole(role, { name });
  const isThere = () => named.and(page.locator(":focus")).count();
  let keys = 0;
  for (; keys < FAR && !(await isThere()); keys += 1) await page.keyboard.press(back ? "Shift+Tab" : "Tab");
  assert.ok(await isThere(), `${target} is not reached`);
  const read = reads && page.waitForResponse(`**/${reads}`);
  for (const sign of typed) await (KEYS[sign] ? page.keyboard.press(KEYS[sign]) : page.keyboard.type(sign));
  await read;
  await page.locator(place, { hasText: words }).first().waitFor({ state: "attached" });
  assert.ok(await page.locator(":focus").count(), `${target}: then the focus is lost`);
  return keys + [...typed].filter((sign) => KEYS[sign]).length;
}

for (const [name, start, most, steps] of TASKS)
  test(`by keyboard alone: ${name}`, async () => {
    const hash = start === "link" ? new URL(control("", "link", "keys.json").trim()).hash : start;
    const work = async (page) => {
      let keys = 0;
      for (const one of steps()) keys += await step(page, one);
      console.log(`${name}: ${keys} keys`);
      assert.ok(keys <= most, `${keys} keys`);
    };
    await withPage(hash, work, { at, user: start === "link" ? null : USER });
  });
