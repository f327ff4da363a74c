/// Bars that bring a deleted camera back, for as long as the recorder can. They stay while views change.

import { button, byId, el, focusHeading, say } from "../parts/dom.js";
import { mistakeLine, tell } from "../parts/forms.js";
import { nameOf, restoreCamera } from "../recorder/cameras.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";

/** @typedef {import("../recorder/cameras.js").CommonFields} Camera */

const words = texts.camera;
const UNDO_S = 60;

export class UndoBar {
  #place = el("div", { id: "undo", class: "undo" });

  /** Construct after all views: it stands below them. @param {(id: number) => void} restored */
  constructor(restored) {
    this.restored = restored;
    byId("views", HTMLElement).append(this.#place);
  }

  /** @param {Camera} camera that was deleted @param {number} askedAt when, in milliseconds since 1970 */
  add(camera, askedAt) {
    const time = el("span");
    const mistake = mistakeLine(`undo-${camera.id}-mistake`);
    const undo = button(words.undo, () => this.#undo(camera, bar, mistake), { class: "main" });
    const dismiss = button(texts.common.close, () => this.#remove(bar));
    const bar = el("div", { class: "banner", role: "group", "aria-label": words.deleted(nameOf(camera)) });
    bar.append(el("p", {}, el("strong", { text: words.deleted(nameOf(camera)) }), " ", time), undo, dismiss, mistake);
    this.#place.append(bar);
    this.#countDown(bar, time, askedAt + UNDO_S * 1000);
    say(`${words.deleted(nameOf(camera))} ${words.undoTime(UNDO_S)}`);
    if (!(document.activeElement instanceof HTMLInputElement)) undo.focus(); // nobody types elsewhere
  }

  /** @param {HTMLElement} bar @param {HTMLElement} time @param {number} end in milliseconds since 1970 */
  #countDown(bar, time, end) {
    const timer = setInterval(show, 1000);
    const remove = () => this.#remove(bar);
    function show() {
      const left = Math.round((end - Date.now()) / 1000);
      time.textContent = words.undoTime(left);
      if (left <= 0) remove();
      if (!bar.isConnected) clearInterval(timer);
    }
    show();
  }

  /** The focus does not fall out of the page. @param {HTMLElement} bar */
  #remove(bar) {
    const hadFocus = bar.contains(document.activeElement);
    bar.remove();
    if (hadFocus) focusHeading();
  }

  /** @param {Camera} camera @param {HTMLElement} bar @param {HTMLElement} mistake */
  async #undo(camera, bar, mistake) {
    tell(mistake, "");
    try {
      await restoreCamera(camera.id);
    } catch (error) {
      return tell(mistake, sentence(messageOf(error)));
    }
    this.#remove(bar);
    say(words.restored(nameOf(camera)));
    this.restored(camera.id);
  }
}
