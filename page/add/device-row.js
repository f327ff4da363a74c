/// A device that answered in the network: to be added, stored already, or moved, whose stored address can follow.

import { button, el, say } from "../parts/dom.js";
import { field, mistakeLine, onSubmit, passwordInput } from "../parts/forms.js";
import { changeCamera, readCamera } from "../recorder/cameras.js";
import { isUsualPort } from "../recorder/finding.js";
import { movedTo } from "../recorder/moving.js";
import { cameraHash, inAddress } from "../text/address.js";
import { texts } from "../texts/texts.js";

const { add, common } = texts;

/**
 * @typedef {import("../recorder/finding.js").Device} Device
 * @typedef {Device["cameras"][number]} Stored
 */

/** @param {Device} device */
const nameOf = ({ name, maker, model }) => [maker, model].filter(Boolean).join(" ") || name || add.unknownDevice;

/** @param {Device} device */
const hostOf = ({ addresses }) => addresses[0] ?? "";

/** @param {Device} device */
const portOf = ({ port }) => (port === null || isUsualPort(port) ? "" : String(port));

/** @param {Device} device */
const placeOf = (device) => {
  const port = portOf(device);
  return port ? `${inAddress(hostOf(device))}:${port}` : hostOf(device);
};

/** @param {Device} device */
const heardBy = ({ by }) => by.map((one) => add.heardBy[one] ?? one).join(", ");

/** @param {Stored} camera */
const linkTo = ({ camId, name }) => el("a", { href: cameraHash({ id: camId }), text: name || String(camId) });

/**
 * @param {Device} device
 * @param {(host: string, port: string) => void} use is told when the device is to be added
 */
export function deviceRow(device, use) {
  const row = el("li", { class: "device", "data-state": device.state });
  const facts = el("span", { class: "hint", text: heardBy(device) });
  const place = el("span", { class: "code", text: placeOf(device) });
  if (device.state === "new") {
    const name = button(nameOf(device), () => use(hostOf(device), portOf(device)), {
      class: "link",
      "aria-label": add.use(`${nameOf(device)} ${placeOf(device)}`),
    });
    row.append(name, place, facts);
    return row;
  }
  row.append(el("span", { text: nameOf(device) }), place, facts, storedPart(device));
  return row;
}

/** The stored cameras that it is. @param {Device} device */
function storedPart(device) {
  const cameras = device.cameras.map((camera) =>
    device.state === "moved"
      ? movedCamera(camera, hostOf(device))
      : el("span", { class: "device-camera" }, add.known, linkTo(camera)),
  );
  return el("span", { class: "device-stored" }, ...cameras);
}

/**
 * A camera that is stored at another address, with the button that leads to the form.
 * @param {Stored} camera
 * @param {string} host where it is now
 */
function movedCamera(camera, host) {
  const part = el("span", { class: "device-camera" }, add.moved(camera.host), linkTo(camera));
  const open = button(add.update, () => {
    const form = moveForm(camera, host, part, () => {
      form.replaceWith(open);
      open.focus();
    });
    open.replaceWith(form);
    form.querySelector("input")?.focus();
  });
  part.append(open);
  return part;
}

/**
 * @param {Stored} camera
 * @param {string} host
 * @param {HTMLElement} part where the camera stands
 * @param {() => void} cancel
 */
function moveForm(camera, host, part, cancel) {
  const { camId, name } = camera;
  const password = passwordInput(`add-move-${camId}`, "new-password");
  const hint = el("p", { id: `add-move-${camId}-hint`, class: "hint", text: add.updateHint });
  password.setAttribute("aria-describedby", hint.id);
  const mistake = mistakeLine(`add-move-${camId}-mistake`);
  const form = el(
    "form",
    { class: "inline", novalidate: true, autocomplete: "off", "aria-label": add.updateTo(name, host) },
    field(add.cameraPassword, password),
    el("button", { class: "main", text: add.update }),
    button(common.cancel, cancel),
    hint,
    mistake,
  );
  onSubmit(form, mistake, async () => {
    if (password.value === "") return add.noPassword;
    await move(camera, host, password.value);
    const link = linkTo(camera);
    part.replaceChildren(link, add.nowAt(host));
    link.focus();
    say(add.updated(name, host));
    return "";
  });
  return form;
}

/**
 * Its streams and what is known of it go with it.
 * @param {Stored} camera
 * @param {string} host
 * @param {string} password
 */
async function move({ camId }, host, password) {
  const camera = await readCamera(camId);
  return changeCamera(camId, { host, password, ...movedTo(camera, { ...camera, host }) }, camera.revision);
}
