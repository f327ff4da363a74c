/// The panel that says what came of a test of one camera.

import { byId, el } from "../parts/dom.js";
import { testCause } from "../recorder/causes.js";
import { Trouble } from "../recorder/request.js";
import { messageOf } from "../text/text.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {object} Result
 * @property {"ok" | "bad" | "none"} kind
 * @property {string} title
 * @property {string} text
 * @property {string} [first] what to try first
 * @property {string} [field] to look at
 * @property {number} [code]
 */

const TROUBLES = {
  stopped: texts.one.noResult,
  timeOut: texts.one.noAnswer,
  refused: texts.common.cannotDo,
  offline: texts.one.notTested,
  signedOut: texts.one.notTested,
};

/**
 * What a failed test is to a person.
 * @param {import("../recorder/api.js").Verdict} verdict
 * @param {boolean} needsPath the path is the user's; otherwise the model knows it, and the channel is to blame
 * @returns {Result}
 */
export function failureOf(verdict, needsPath) {
  const { heading, happened, first, field } = testCause(verdict);
  const place = field === "path" && !needsPath ? "channel" : field;
  return { kind: "bad", title: heading, text: happened, first, field: place, code: verdict.code };
}

/**
 * What a request without an answer is to a person; of the kind "none" if it was not waited for.
 * @param {unknown} error
 * @returns {Result}
 */
export function troubleOf(error) {
  const kind = error instanceof Trouble ? error.kind : "refused";
  return { kind: kind === "stopped" ? "none" : "bad", title: TROUBLES[kind], text: messageOf(error) };
}

export class ResultPanel {
  /** @param {(id: string) => void} focus is told when the link to a field was pressed */
  constructor(focus) {
    byId("one-result-link", HTMLAnchorElement).addEventListener("click", (event) => {
      event.preventDefault();
      if (event.currentTarget instanceof HTMLAnchorElement) focus(event.currentTarget.hash.slice(1));
    });
  }

  /** @param {Result} result */
  show({ kind, title, text, first = "", field = "none", code = 0 }) {
    byId("one-result", HTMLElement).dataset.kind = kind;
    byId("one-result-title", HTMLElement).textContent = title;
    this.say(text);
    const firstLine = byId("one-result-first", HTMLElement);
    firstLine.replaceChildren(el("strong", { text: `${texts.common.first} ` }), first);
    firstLine.hidden = first === "";
    const link = byId("one-result-link", HTMLAnchorElement);
    link.hidden = field === "none";
    link.hash = `one-${field}`;
    link.textContent = texts.common.goTo[field] ?? "";
    byId("one-result-code", HTMLElement).textContent = code ? texts.common.code(code) : "";
    byId("one-result-foot", HTMLElement).hidden = link.hidden && !code;
    byId("one-result-notes", HTMLElement).replaceChildren();
  }

  /** Changes what happened, and nothing else. @param {string} text */
  say(text) {
    byId("one-result-text", HTMLElement).textContent = text;
  }

  /** @param {string} text */
  note(text) {
    byId("one-result-notes", HTMLElement).append(el("li", { text }));
  }
}
