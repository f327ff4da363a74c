/// Views and forms that the page makes by itself: their fields, and what happens while the recorder is asked.

import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";
import { button, byId, el } from "./dom.js";

/**
 * A field with its label.
 * @param {string} label
 * @param {HTMLInputElement | HTMLSelectElement} input has an id
 * @param {string} [hint]
 */
export function field(label, input, hint = "") {
  const box = el("div", { class: "field" }, el("label", { for: input.id, text: label }), input);
  if (!hint) return box;
  input.setAttribute("aria-describedby", `${input.id}-hint`);
  box.append(el("p", { id: `${input.id}-hint`, class: "hint", text: hint }));
  return box;
}

/**
 * A view of the page, with its heading.
 * @param {string} name
 * @param {string} title
 * @param {...HTMLElement} contents
 */
export function addView(name, title, ...contents) {
  const heading = el("h1", { id: `${name}-title`, tabindex: "-1", text: title });
  const view = { id: `view-${name}`, class: "people", "aria-labelledby": heading.id, hidden: true };
  byId("views", HTMLElement).append(el("section", view, heading, ...contents));
}

/** Of a name or a user: nothing of it is corrected. */
export const PLAIN = { spellcheck: "false", autocapitalize: "none" };

/** @param {string} id @param {"current-password" | "new-password"} kind */
export const passwordInput = (id, kind) => el("input", { id, type: "password", autocomplete: kind, ...PLAIN });

/** A button that shows what stands in the field of a password, and hides it again. @param {HTMLInputElement} input */
export function revealButton(input) {
  const { show, hide, shownPassword } = texts.common;
  const word = el("span", { text: show });
  const toggle = () => {
    const isShown = input.type === "text";
    input.type = isShown ? "password" : "text";
    word.textContent = isShown ? show : hide;
  };
  const made = button("", toggle);
  made.append(word, el("span", { class: "out-of-sight", text: ` ${shownPassword}` }));
  return made;
}

/**
 * Where a form says what went wrong. Empty at first.
 * @param {string} id
 */
export const mistakeLine = (id) => el("p", { id, class: "mistake", role: "alert", hidden: true });

/** @param {HTMLElement} line @param {string} text "" for nothing */
export function tell(line, text) {
  line.textContent = text;
  line.hidden = text === "";
}

/**
 * Lets a form do its work, once at a time, and says what went wrong. A form whose main button is marked as disabled waits.
 * @param {HTMLFormElement} form
 * @param {HTMLElement} line for mistakes
 * @param {() => Promise<string | void>} work gives what is wrong with the fields, if anything is
 * @param {(error: unknown) => string} [words]
 */
export function onSubmit(form, line, work, words = (error) => sentence(messageOf(error))) {
  form.addEventListener("submit", async (event) => {
    event.preventDefault();
    const main = form.querySelector(".main");
    if (main?.ariaDisabled === "true") return;
    main?.setAttribute("aria-disabled", "true");
    tell(line, "");
    const outcome = await work().catch((error) => ({ error }));
    main?.removeAttribute("aria-disabled");
    tell(line, typeof outcome === "object" ? words(outcome.error) : (outcome ?? ""));
  });
}

/**
 * What is wrong with a new password, which is typed twice.
 * @param {HTMLInputElement} password
 * @param {HTMLInputElement} again
 */
export function newPasswordMistake(password, again) {
  const wrong = password.value === "" ? password : password.value === again.value ? null : again;
  wrong?.focus();
  if (!wrong) return "";
  return wrong === password ? texts.login.typePassword : texts.login.twoPasswords;
}
