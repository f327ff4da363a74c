/// Puts the page together, once somebody is logged in: views by address, and passwords that do not outlive it.

import { watchConnection } from "./banners.js";
import { AccountView } from "./login/account-view.js";
import { PasswordDialog } from "./login/password-dialog.js";
import { LINK, SigningIn } from "./login/signing-in.js";
import { UsersView } from "./login/users-view.js";
import { Who } from "./login/who.js";
import { ManyCameras } from "./many/many-cameras.js";
import { KnownModels } from "./models/known-models.js";
import { OneCamera } from "./one/one-camera.js";
import { byId, prepareQuestions } from "./parts/dom.js";
import { putInTexts } from "./parts/static-texts.js";
import { ModelList } from "./recorder/models.js";
import { decode } from "./text/text.js";
import { texts } from "./texts/texts.js";

/** @typedef {"one" | "many" | "models" | "users" | "account"} View */

/** @type {Readonly<Record<View, string>>} */
const TITLES = {
  one: texts.one.title,
  many: texts.many.title,
  models: texts.models.title,
  users: texts.login.users,
  account: texts.login.account,
};

putInTexts();
prepareQuestions();
const models = new ModelList();
watchConnection(models);
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
const who = new Who(() => many.mayLeave());
const signingIn = new SigningIn((session) => {
  for (const part of [who, account, users]) part.show(session);
});

/** @param {View} view */
function showView(view) {
  for (const [name, title] of Object.entries(TITLES)) {
    const isCurrent = name === view;
    byId(`view-${name}`, HTMLElement).hidden = !isCurrent;
    const link = byId(`nav-${name}`, HTMLAnchorElement);
    if (isCurrent) link.setAttribute("aria-current", "page");
    else link.removeAttribute("aria-current");
    if (isCurrent) document.title = texts.common.title(title);
  }
}

/** @returns {View} */
function openAddress() {
  const [view = "", ...rest] = location.hash.slice(1).split("/").map(decode);
  if (view === "camera" && /^\d+$/.test(rest[0] ?? "")) {
    one.openStored(Number(rest[0]));
    return "one";
  }
  if (view === "models") {
    known.open(rest[0] ?? "", rest.slice(1).join("/"));
    return "models";
  }
  if (view === "account") {
    account.open();
    return "account";
  }
  if (view === "users" && !byId("nav-users", HTMLElement).hidden) {
    users.open();
    return "users";
  }
  return view === "many" ? "many" : "one";
}

const forgetPasswords = () => {
  for (const part of [one, many]) part.forgetPasswords();
  for (const part of [users, signingIn]) part.forgetPassword();
  for (const part of [account, passwords]) part.forget();
};
window.addEventListener("pagehide", forgetPasswords);
window.addEventListener("pageshow", (event) => {
  if (event.persisted) forgetPasswords();
});

window.addEventListener("hashchange", () => {
  if (location.hash.startsWith(LINK)) location.reload(); // it is taken at the start
});
await signingIn.start();
for (const id of ["top", "views"]) byId(id, HTMLElement).hidden = false;

/** @type {View} */
let current = openAddress();
showView(current);
if (current === "one") byId("one-address", HTMLInputElement).focus();

window.addEventListener("hashchange", () => {
  account.forget();
  const next = openAddress();
  if (next === current) {
    if (next === "models") byId("models-detail-title", HTMLElement).focus(); // a link of the list was pressed
    return;
  }
  current = next;
  showView(current);
  byId(`${current}-title`, HTMLElement).focus();
});

models.load();
