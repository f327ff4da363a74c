/// Small helpers for the document. All text goes in through textContent, so that what cameras and files say stays text.

import { texts } from "../texts/texts.js";

/**
 * The element with this id. Throws when the page and its scripts do not fit together.
 * @template {HTMLElement} T
 * @param {string} id
 * @param {{new (): T, prototype: T}} type
 * @returns {T}
 */
export function byId(id, type) {
  const found = document.getElementById(id);
  if (!(found instanceof type)) throw new Error(`no ${type.name} "${id}" in the page`);
  return found;
}

/**
 * A new element. Attributes that are false or null are left out, true is an empty one, "text" is its text.
 * @template {keyof HTMLElementTagNameMap} K
 * @param {K} tag
 * @param {Record<string, string | number | boolean | null>} [attributes]
 * @param {...(Node | string)} children
 * @returns {HTMLElementTagNameMap[K]}
 */
export function el(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === false) continue;
    if (name === "text") made.textContent = String(value);
    else made.setAttribute(name, value === true ? "" : String(value));
  }
  made.append(...children);
  return made;
}

/**
 * A button that does not submit.
 * @param {string} text
 * @param {() => void} press
 * @param {Record<string, string | number | boolean | null>} [attributes]
 */
export function button(text, press, attributes = {}) {
  const made = el("button", { type: "button", text, ...attributes });
  made.addEventListener("click", press);
  return made;
}

/** Puts the focus on the heading of the view that is shown: for when what had it is gone. */
export function focusHeading() {
  const heading = document.querySelector("main > section:not([hidden]) > h1");
  if (heading instanceof HTMLElement) heading.focus();
}

/**
 * Puts new elements in, and the focus on the one that stands for what had it, or on the view's heading if there is none.
 * @param {HTMLElement} place
 * @param {HTMLElement[]} elements
 */
export function refill(place, elements) {
  const focused = document.activeElement;
  const hadFocus = focused instanceof HTMLElement && place.contains(focused);
  place.replaceChildren(...elements);
  if (!hadFocus) return;
  const others = [.../** @type {NodeListOf<HTMLElement>} */ (place.querySelectorAll("[data-kind]"))];
  const next = others.find(({ dataset }) => dataset.kind === focused.dataset.kind);
  if (next) next.focus();
  else focusHeading();
}

/**
 * "Any", which is the empty text, and these; keeps what is chosen if it can.
 * @param {HTMLSelectElement} select
 * @param {string[]} values
 */
export function setOptions(select, values) {
  const chosen = select.value;
  select.replaceChildren(
    el("option", { value: "", text: texts.common.any }),
    ...values.map((text) => el("option", { value: text, text })),
  );
  setSelected(select, values.includes(chosen) ? chosen : "");
}

/**
 * Chooses a value, and adds it if it is not offered.
 * @param {HTMLSelectElement} select
 * @param {string} value
 */
export function setSelected(select, value) {
  if (![...select.options].some((option) => option.value === value))
    select.append(el("option", { value, text: value }));
  select.value = value;
}

const SAY_AFTER_MS = 500;
let sayTimer = 0;
/** Whoever reads the page to its end later is not to hear it as news. */
const FORGET_AFTER_MS = 10_000;
let forgetTimer = 0;
/** @type {Element | null} */
let saidIn = null;

/** Says it when nothing else was to be said for a moment: while somebody types. @param {string} text "" for nothing */
export function sayLater(text) {
  clearTimeout(sayTimer);
  if (text) sayTimer = window.setTimeout(() => say(text), SAY_AFTER_MS);
}

/**
 * Says a sentence to screen readers, through the page's status line, or that of an open dialog: around it they hear nothing.
 * @param {string} text
 */
export function say(text) {
  clearTimeout(sayTimer);
  const place = document.querySelector("dialog:modal [role=status]") ?? byId("status", HTMLElement);
  if (saidIn) saidIn.textContent = "";
  saidIn = place;
  place.textContent = text;
  clearTimeout(forgetTimer);
  forgetTimer = window.setTimeout(() => (place.textContent = ""), FORGET_AFTER_MS);
}

/**
 * Says how far something is when another quarter of it is done, but for the last.
 * @param {number} before what this gave the last time, 0 at first
 * @param {number} done
 * @param {number} all
 * @param {(done: number, all: number) => string} words
 */
export function sayQuarter(before, done, all, words) {
  const quarters = Math.floor((done / all) * 4);
  if (quarters > before && quarters < 4) say(words(done, all));
  return quarters;
}

/**
 * Asks a question in a dialog; Esc means no.
 * @param {string} question
 * @param {string} yes text of the button that agrees
 * @returns {Promise<boolean>}
 */
export function ask(question, yes) {
  const dialog = byId("question", HTMLDialogElement);
  byId("question-text", HTMLElement).textContent = question;
  byId("question-yes", HTMLButtonElement).textContent = yes;
  dialog.returnValue = "no";
  dialog.showModal();
  return new Promise((resolve) => {
    dialog.addEventListener("close", () => resolve(dialog.returnValue === "yes"), { once: true });
  });
}

/** Call once: lets the dialog's buttons answer. */
export function prepareQuestions() {
  const dialog = byId("question", HTMLDialogElement);
  for (const answer of ["yes", "no"]) {
    byId(`question-${answer}`, HTMLButtonElement).addEventListener("click", () => dialog.close(answer));
  }
}

/**
 * Hands the user a file.
 * @param {string} name
 * @param {string} text
 * @param {string} [type]
 */
export function download(name, text, type = "text/csv") {
  const address = URL.createObjectURL(new Blob([text], { type: `${type};charset=utf-8` }));
  el("a", { href: address, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(address), 10_000);
}

/**
 * Shows a mistake below a field, or takes it away.
 * @param {HTMLElement} field has the id NAME; the text's element is NAME-mistake, what else describes it is NAME-hint
 * @param {string} mistake "" for none
 */
export function showMistake(field, mistake) {
  const text = byId(`${field.id}-mistake`, HTMLElement);
  text.textContent = mistake;
  text.hidden = mistake === "";
  const describing = [mistake && text.id, document.getElementById(`${field.id}-hint`) && `${field.id}-hint`];
  const ids = describing.filter(Boolean).join(" ");
  if (ids) field.setAttribute("aria-describedby", ids);
  else field.removeAttribute("aria-describedby");
  if (mistake) field.setAttribute("aria-invalid", "true");
  else field.removeAttribute("aria-invalid");
}
