/// Adding cameras: from an address and a login to the stored camera, of each maker; several channels; the network.

import assert from "node:assert/strict";
import { before } from "node:test";
import { audit } from "./audit.js";
import {
  RIGHT,
  WRONG,
  control,
  expectText,
  focused,
  openList,
  openView,
  runBy,
  sent,
  source,
  startCameras,
  testAt,
  text,
} from "./stage.js";

const test = testAt("#add");

/** Of a model file: its camera, and by what it names itself. */
const MAKERS = {
  "axis Generic": ["GStreamer RTSP server", "AXIS_ACCC8E012345"],
  "axis Motion JPEG": ["", "AXIS_00408C012345"],
  "dahua Any channel": ["Rtsp Server/3.0", "Login to 3F00A1B2C3D4E5F6"],
  "foscam HD cameras": ["", "Foscam IPCam Living Video"],
  "hikvision Generic": ["App-webs/", "IP Camera(C2345)"],
  "reolink Generic": ["", "BC Streaming Media"],
  "sony SNC network cameras (IPELA)": ["", "Sony Network Camera"],
  "tp-link VIGI": ["", "TP-LINK IP-Camera"],
};
const SMALL = { width: 320, height: 240, fps: 5, gop: 25 };
const CHANNELS = [1, 2, 3].flatMap((channel) =>
  [1, 2].map((number) => ({ ...SMALL, path: `/c/${channel}0${number}`, width: 640 / number })),
);
/** @type {Record<string, number>} */
let ports;

before(async () => {
  const ofMakers = Object.entries(MAKERS).map(([name, [serverName, realm]]) => {
    const [file, ...model] = name.split(" ");
    return [name, { model: { file: source(`models/${file}.json`), name: model.join(" ") }, serverName, realm }];
  });
  ports = await startCameras("makers.json", {
    ...Object.fromEntries(ofMakers),
    onvif: { onvif: {}, stream: [{ ...SMALL, gop: 20, path: "/a" }, { ...SMALL, path: "/b", width: 160, height: 120 }] },
    recorder: { server: "scripted", onvif: { channels: 3, login: "token" }, stream: CHANNELS },
    guessed: {},
    nowhere: { stream: { path: "/not/in/a/file" }, mjpeg: { path: "/nor/this" } },
  });
});

const logOf = async (camera) => (await fetch(`http://127.0.0.1:${ports[camera]}/sim/log`)).json();

/** Fills what is to be typed, and presses Find. */
async function find(page, camera, password = RIGHT) {
  await page.fill("#add-address", `127.0.0.1:${ports[camera]}`);
  await page.fill("#add-user", "admin");
  await page.fill("#add-password", password);
  await page.click("#add-find");
}

const picture = (page, within) => page.locator(`${within} img:visible`).first().waitFor();

/** Counts, in the page, fields typed into and clicks. */
const countWork = () => {
  const fields = new Set();
  const counts = { fields: 0, clicks: 0 };
  addEventListener("input", ({ target }) => (counts.fields = fields.add(target.id).size), true);
  addEventListener("click", ({ isTrusted, detail }) => (counts.clicks += isTrusted && detail > 0 ? 1 : 0), true);
  globalThis.takeCounts = () => {
    const taken = { ...counts };
    fields.clear();
    Object.assign(counts, { fields: 0, clicks: 0 });
    return taken;
  };
};

test("of each maker's camera, three fields and two clicks lead to the stored camera and its picture", async (page) => {
  await page.evaluate(countWork);
  for (const maker of Object.keys(MAKERS)) {
    const began = Date.now();
    await find(page, maker);
    await picture(page, ".found-stream");
    await page.click("#add-save");
    await picture(page, ".saved");
    const seconds = (Date.now() - began) / 1000;
    const { fields, clicks } = await page.evaluate(() => globalThis.takeCounts());
    console.log(`${maker}: ${fields} fields, ${clicks} clicks, ${seconds.toFixed(1)} s`);
    assert.deepEqual([fields, clicks], [3, 2], maker);
    const name = (await text(page, "add-saved")).replace(/ is saved$/, "");
    assert.ok(control("", "camera list").includes(name), name);
    await page.click("#add-another");
    await page.evaluate(() => globalThis.takeCounts());
  }
});

test("a wrong password is one refused login, and the page says what to do", async (page, calls) => {
  await audit(page, "Add, empty", "add-empty");
  await find(page, "onvif", WRONG);
  await expectText(page, "add-failure", "The camera refused this login. Nothing more was tried.");
  await audit(page, "Add, refused", "add-refused");
  assert.equal((await logOf("onvif")).refusedLogins, 1);
  await page.click("#add-failure button");
  assert.equal(await focused(page), "add-password");
  await find(page, "nowhere");
  await expectText(page, "add-failure", "none of the paths that cameras of its kind have");
  await page.fill("#add-address", "127.0.0.1:1");
  await page.click("#add-find");
  await expectText(page, "add-failure", "Camera not found");
  await page.fill("#add-address", "front door cam");
  await page.click("#add-find");
  await expectText(page, "add-address-mistake", "is not a host name or address");
  assert.equal(await page.locator("#add-failure, .progress-of:visible").count(), 0, "is about another address");
  const json = { success: true, data: { contentType: "jpeg", img: "" } };
  const causes = ["loginRefused", "clockUnknown", "clockUnknown"];
  await page.route("**/GetSnapshot", (route) =>
    route.fulfill({ headers: { "Recorder-Cause": causes[sent(calls, "GetSnapshot").length - 1] }, json }),
  );
  for (const [i, camera] of ["recorder", "recorder", "onvif"].entries()) {
    await find(page, camera);
    await expectText(page, "add-save-mistake", "The camera refused this login. Nothing more was tried.");
    assert.equal(sent(calls, "GetSnapshot").length, i + 1);
  }
});

test("a whole address is taken apart, and the keyboard alone leads to the stored camera", async (page) => {
  const press = async (...keys) => {
    for (const key of keys) await page.keyboard.press(key);
  };
  assert.equal(await focused(page), "add-address", "where typing begins");
  const login = `admin:${encodeURIComponent(RIGHT)}`;
  await page.keyboard.insertText(`rtsp://${login}@127.0.0.1:${ports.onvif}/elsewhere`);
  await press("Enter");
  await picture(page, ".found-stream:nth-child(2)");
  assert.equal(await page.inputValue("#add-address"), `127.0.0.1:${ports.onvif}`);
  await expectText(page, "add-outcome", "The path that you gave, /elsewhere, is not among these.");
  await expectText(page, "add-outcome", /Measured: H\.264 .*, a key frame every 4 s.*Set the camera's GOP/s);
  await audit(page, "Add, found", "add-found");
  while ((await focused(page)) !== "add-name") await press("Tab");
  await page.keyboard.type("Yard");
  await press("Enter");
  await expectText(page, "add-saved", "Yard is saved");
  assert.equal(await focused(page), "add-saved");
  await picture(page, ".saved");
  await audit(page, "Add, saved", "add-saved");
  await page.context().grantPermissions(["clipboard-read", "clipboard-write"]);
  const copied = async () => {
    await page.click("#add-copy");
    return page.evaluate(() => navigator.clipboard.readText());
  };
  const address = `127.0.0.1:${ports.onvif}/a`;
  assert.equal(await copied(), `rtsp://${address}`);
  await page.check("#add-copy-password");
  assert.equal(await copied(), `rtsp://${login}@${address}`);

  await page.click("#add-another");
  await find(page, "onvif");
  await page.click("#add-save");
  await page.locator(".stored-already", { hasText: "This camera is stored already, as “Yard”." }).waitFor();
  await page.click(".stored-already button");
  await expectText(page, "add-saved", "onvif 127.0.0.1 is saved");
  await page.click("#add-open");
  await page.goBack();
  assert.equal(await page.inputValue("#add-address"), "");
  await page.fill("#add-address", "http://127.0.0.1:8080/");
  await page.press("#add-address", "Tab");
  assert.equal(await page.inputValue("#add-address"), "127.0.0.1", "that port is asked anyway");
});

test("channels of a recorder are saved as cameras, and what fails is said in its row", async (page, calls) => {
  const row = (channel) => page.locator(`.channels tbody tr:nth-child(${channel})`);
  await find(page, "recorder");
  await row(3).locator("img:visible").waitFor();
  await page.fill("#add-base", "Hall");
  for (const channel of [2, 3]) await row(channel).locator("[type=checkbox]").uncheck();
  await page.click("#add-save");
  await expectText(page, "add-several", "1 camera saved");
  await find(page, "recorder");
  await page.fill("#add-base", "Hall");
  await row(2).locator("input:not([type])").fill("Door");
  await row(3).locator("input:not([type])").fill("");
  assert.equal(await text(page, "add-save"), "Save 3 cameras");
  await page.click("#add-save");
  await expectText(page, "add-several", "1 camera saved, 2 not");
  await audit(page, "Add, channels", "add-channels");
  assert.match(await row(1).innerText(), /stored already, as “Hall channel 1”/);
  assert.match(await row(3).innerText(), /Type a name/);
  assert.match(control("", "camera list"), /Door/);
  await openView(page, "#many");
  await openList(page, [
    ["address", "port", "user", "password"],
    ["127.0.0.1", ports.recorder, "admin", RIGHT],
  ]);
  await runBy(page, "#many-start");
  await expectText(page, "many-rows", "Passed: it has 3 channels, and only one was tested.");
  assert.equal(sent(calls, "CamCapRemote").at(-1).camCapCmd, 2, "no camera is asked without its password");
  await runBy(page, "#many-add");
  await expectText(page, "many-rows", "Perhaps stored already as Hall channel 1");
});

test("what is being saved keeps its login, whatever is pressed, and is not saved without it", async (page) => {
  const meanwhile = [
    () => page.locator("#add-find").press("Enter"),
    () => page.evaluate(() => dispatchEvent(new Event("pagehide"))),
  ];
  const logins = [];
  await find(page, "recorder");
  await page.locator("#add-save").waitFor();
  await page.route("**/recorder/1/cameras", async (route) => {
    const { user, password } = route.request().postDataJSON();
    logins.push([user, password === RIGHT]);
    await meanwhile.shift()?.();
    await route.continue();
  });
  await page.click("#add-save");
  await expectText(page, "status", /saved, \d not/);
  assert.deepEqual(logins, Array(2).fill(["admin", true]));
});

test("a stream that was worked out and is not there is not stored as sub", async (page) => {
  await find(page, "guessed");
  await page.locator(".found-stream", { hasText: "No picture came: stream not found on camera" }).waitFor();
  await page.locator(".steps", { hasText: /1 stream found, 1 more perhaps.*1 of them is not there/ }).waitFor();
  assert.equal(await page.locator("#add-main option, #add-sub option").count(), 3, "the one that is there, and none");
  assert.match(await page.locator(".found-stream .hint").first().innerText(), /^its path is that of \w/);
});

test("no camera is asked once the view was left, even if the list of stored ones comes late", async (page, calls) => {
  let letGo = () => {};
  const held = new Promise((done) => (letGo = done));
  await page.route("**/recorder/1/cameras", async (route) => route.continue(await held));
  const found = new Promise((done) =>
    page.route("**/find", async (route) => done(await route.fulfill({ response: await route.fetch() })), { times: 1 }),
  );
  await find(page, "onvif");
  await found;
  await page.click("#nav-models");
  letGo();
  await page.click("#nav-add");
  await find(page, "onvif");
  await picture(page, ".found-stream:nth-child(2)");
  assert.equal(sent(calls, "GetSnapshot").length, 2);
});

test("the network is searched, and a camera that moved is stored where it is now", async (page) => {
  const model = "--vendor Simcam --model RTSP-H264";
  control(RIGHT, `camera add --name Shed ${model} --host 127.0.0.1 --port ${ports.guessed} --user admin`);
  await page.route("**/recorder/1/discover", async (route) => {
    const { data } = await (await page.request.get(new URL("/recorder/1/cameras", page.url()).href)).json();
    const { id: camId, host, name } = data.find((camera) => camera.name === "Shed");
    const device = (number, more) => ({ device: number, name: "", maker: "", model: "", by: ["onvif"], ...more });
    const lines = [
      device(1, { addresses: ["192.0.2.7"], port: 8899, model: "P-1", state: "new", cameras: [] }),
      device(2, { addresses: [host], port: 80, state: "known", cameras: [{ camId, host, name }] }),
      device(3, { addresses: ["127.0.0.2"], port: 80, state: "moved", cameras: [{ camId, host, name }] }),
      { success: true, data: { networks: [{ network: "192.0.2.0/24", interface: "eth0" }] } },
    ];
    const body = lines.map((line) => `${JSON.stringify(line)}\n`).join("");
    await route.fulfill({ contentType: "application/x-ndjson", body });
  });
  await page.click("#add-search");
  await expectText(page, "add-devices", "3 devices answered. Searched: 192.0.2.0/24 (eth0).");
  await page.click(".device-stored button");
  await audit(page, "Add, network", "add-network");
  await page.keyboard.type(RIGHT);
  await page.keyboard.press("Enter");
  await expectText(page, "status", "Shed is now stored at 127.0.0.2");
  assert.match(control("", "camera list"), /Shed.*127\.0\.0\.2/);
  await page.unroute("**/recorder/1/discover");
  await page.fill("#add-range", "127.0.0.0/8");
  await page.click("#add-search-it");
  await expectText(page, "add-search-mistake", /./);
  for (const leave of ["#add-stop", "#nav-models"]) {
    await page.click("#add-search");
    await page.click(leave);
    await expectText(page, "add-devices", "Stopped.");
  }
});
