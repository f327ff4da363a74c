/// The texts of what stands in index.html.

import { LANGUAGE } from "../texts/language.js";
import { texts } from "../texts/texts.js";

/** Attributes that say a text's key, such as "one.address", and what it becomes. @type {[string, string][]} */
const ATTRIBUTES = [
  ["data-text-label", "aria-label"],
  ["data-text-placeholder", "placeholder"],
];

/** @type {Record<string, Record<string, unknown>>} */
const byFile = texts;

/** @param {Element} element @param {string} attribute holds the key */
function textOf(element, attribute) {
  const key = element.getAttribute(attribute) ?? "";
  const [file = "", name = ""] = key.split(".");
  const text = byFile[file]?.[name];
  if (typeof text !== "string") throw new Error(`no text "${key}" for the page`);
  return text;
}

/** Call once, before anything is shown. */
export function putInTexts() {
  document.documentElement.lang = LANGUAGE;
  for (const element of document.querySelectorAll("[data-text]")) element.textContent = textOf(element, "data-text");
  for (const [attribute, target] of ATTRIBUTES) {
    for (const element of document.querySelectorAll(`[${attribute}]`))
      element.setAttribute(target, textOf(element, attribute));
  }
}
