/// Puts texts on the clipboard, also where the connection is not encrypted.

import { el } from "./dom.js";

/** As browsers did it before; they still let a page do it over HTTP. @param {string} text */
function copyFromField(text) {
  const focused = document.activeElement;
  const field = el("textarea", { class: "out-of-sight", "aria-hidden": "true", tabindex: -1 });
  field.value = text;
  document.body.append(field);
  field.select();
  const isDone = document.execCommand("copy");
  field.remove();
  if (focused instanceof HTMLElement) focused.focus();
  return isDone;
}

/** @param {string} text @returns {Promise<boolean>} whether it was let */
export async function copyText(text) {
  if (!navigator.clipboard) return copyFromField(text);
  return navigator.clipboard.writeText(text).then(
    () => true,
    () => copyFromField(text),
  );
}
