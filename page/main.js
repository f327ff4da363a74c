/// Puts the page together, once somebody is logged in: views by address, and passwords that do not outlive it.

import { AddView } from "./add/add-view.js";
import { watchConnection } from "./banners.js";
import { CameraView } from "./cameras/camera-view.js";
import { CamerasView } from "./cameras/cameras-view.js";
import { UndoBar } from "./cameras/undo-bar.js";
import { AccountView } from "./login/account-view.js";
import { PasswordDialog } from "./login/password-dialog.js";
import { LINK, SigningIn } from "./login/signing-in.js";
import { UsersView } from "./login/users-view.js";
import { Who } from "./login/who.js";
import { ManyCameras } from "./many/many-cameras.js";
import { KnownModels } from "./models/known-models.js";
import { NoticesView } from "./notices/notices-view.js";
import { OneCamera } from "./one/one-camera.js";
import { byId, focusHeading, prepareQuestions, say } from "./parts/dom.js";
import { putInTexts } from "./parts/static-texts.js";
import { listCameras } from "./recorder/cameras.js";
import { ModelList } from "./recorder/models.js";
import { Router } from "./router.js";
import { texts } from "./texts/texts.js";

putInTexts();
prepareQuestions();
const models = new ModelList();
watchConnection(models);
const add = new AddView();
const one = new OneCamera(models);
const many = new ManyCameras(models, (camera) => {
  one.fill(camera);
  location.hash = "one";
});
const known = new KnownModels(models, (model) => {
  one.useModel(model);
  location.hash = "one";
});

const passwords = new PasswordDialog();
const account = new AccountView(passwords);
const users = new UsersView(passwords);
const notices = new NoticesView();
const who = new Who(() => many.mayLeave());
const signingIn = new SigningIn((session) => {
  for (const part of [who, account, users, cameras, camera]) part.show(session);
  for (const part of [one, many]) part.allow(session);
});

const cameras = new CamerasView();
const camera = new CameraView((removed, askedAt, isOpen) => {
  const show = () => undo.add(removed, askedAt);
  if (!isOpen) return show();
  window.addEventListener("hashchange", show, { once: true }); // once the list is shown
  location.hash = "cameras";
});
const undo = new UndoBar((id) => (location.hash = `cameras/${id}`));

const isNumber = (text = "") => /^\d+$/.test(text);

/** @type {Readonly<Record<string, import("./router.js").View>>} */
const VIEWS = {
  cameras: { nav: "cameras", title: texts.cameras.title, open: () => cameras.open(), close: () => cameras.close() },
  camera: {
    nav: "cameras",
    title: texts.cameras.title,
    open: ([id]) => camera.open(Number(id)),
    close: () => camera.close(),
  },
  add: { nav: "add", title: texts.add.title, open: () => add.open(), close: () => add.close() },
  one: { nav: "add", title: texts.one.title },
  many: { nav: "many", title: texts.many.title, open: () => many.open() },
  models: {
    nav: "models",
    title: texts.models.title,
    open: ([vendor = "", ...model]) => known.open(vendor, model.join("/")),
    focus: byId("models-detail-title", HTMLElement), // a link of the list was pressed
  },
  notices: { nav: "notices", title: texts.notices.title, open: () => notices.open(), close: () => notices.forgetPassword() },
  users: { nav: "users", title: texts.login.users, open: () => users.open() },
  account: { nav: "account", title: texts.login.account, open: () => account.open(), close: () => account.forget() },
};
/** An admin, who manages users too. */
const mayAdd = () => !byId("nav-users", HTMLElement).hidden;
const isRefused = (/** @type {string} */ name) => ["notices", "users"].includes(name) && !mayAdd();

/** Says why another view stands in the place of this one, if it is refused. @param {string} name */
function tellRefused(name) {
  const text = isRefused(name) ? texts.banners.adminsOnly(VIEWS[name]?.title ?? "") : "";
  byId("admins-only", HTMLElement).hidden = text === "";
  byId("admins-only-text", HTMLElement).textContent = text;
  if (text) say(text);
}

/** What an address without a view shows. */
let start = "cameras";
const router = new Router(VIEWS, (name, rest) => {
  tellRefused(name);
  if ((name === "cameras" || name === "camera") && isNumber(rest[0])) return ["camera", rest];
  if (name === "add" && !mayAdd()) return ["one", []];
  if (isRefused(name)) return [start, []];
  return Object.hasOwn(VIEWS, name) && name !== "camera" ? [name, rest] : [start, []];
});

const forgetPasswords = () => {
  for (const part of [camera, add, one, many]) part.forgetPasswords();
  for (const part of [notices, users, signingIn]) part.forgetPassword();
  for (const part of [account, passwords]) part.forget();
};
window.addEventListener("pagehide", forgetPasswords);
window.addEventListener("pageshow", (event) => {
  if (event.persisted) forgetPasswords();
});

window.addEventListener("hashchange", () => {
  if (location.hash.startsWith(LINK)) location.reload(); // it is taken at the start
});
const isTyped = await signingIn.start();
for (const id of ["top", "views"]) byId(id, HTMLElement).hidden = false;

if (location.hash.length < 2 && mayAdd() && (await listCameras().catch(() => null))?.length === 0) start = "add";
router.start();
if (!byId("view-one", HTMLElement).hidden) byId("one-address", HTMLInputElement).focus();
if (isTyped && document.activeElement === document.body) focusHeading(); // what had the focus is gone
models.load();
