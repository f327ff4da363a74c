/// The ways into the view of a list: a file, one that is dropped, rows that are pasted. Nothing is sent.

import { readList, readListFile } from "../list/list-reading.js";
import { byId, say } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../list/list-reading.js").ReadList} ReadList
 *
 * @typedef {object} Surroundings
 * @property {() => boolean} isRunning
 * @property {(name: string) => Promise<boolean>} mayReplace asks, if there is a reason to, before the open list is left
 * @property {(name: string, list: ReadList) => void} opened
 */

export class ListOpening {
  /** @param {Surroundings} surroundings */
  constructor(surroundings) {
    this.surroundings = surroundings;
    this.text = byId("many-text", HTMLTextAreaElement);
    this.#listenForFiles();
    this.#listenForDrops();
    byId("many-read", HTMLButtonElement).addEventListener("click", () =>
      this.#open(texts.many.pasted, readList(this.text.value)),
    );
    byId("many-other-rows", HTMLButtonElement).addEventListener("click", () => this.#paste());
  }

  /** What was pasted before is still there, and can be mended. */
  #paste() {
    byId("many-open", HTMLElement).hidden = false;
    byId("many-paste", HTMLDetailsElement).open = true;
    this.text.focus();
  }

  #listenForFiles() {
    const file = byId("many-file", HTMLInputElement);
    file.addEventListener("change", () => {
      const [chosen] = file.files ?? [];
      if (chosen) this.#openFile(chosen);
      file.value = ""; // the same file can be chosen again
    });
    byId("many-other", HTMLButtonElement).addEventListener("click", () => file.click());
  }

  #listenForDrops() {
    const view = byId("view-many", HTMLElement);
    const drop = byId("many-drop", HTMLElement);
    view.addEventListener("dragover", (event) => {
      event.preventDefault();
      drop.classList.add("over");
    });
    view.addEventListener("dragleave", () => drop.classList.remove("over"));
    view.addEventListener("drop", (event) => {
      event.preventDefault();
      drop.classList.remove("over");
      const [dropped] = event.dataTransfer?.files ?? [];
      if (dropped) this.#openFile(dropped);
    });
  }

  /** Rows that were pasted are not of this list. @param {File} file */
  async #openFile(file) {
    const list = readListFile(new Uint8Array(await file.arrayBuffer()));
    if (await this.#open(file.name, list)) this.text.value = "";
  }

  /** False if it replaces nothing: a file that cannot be read. @param {string} name @param {ReadList} list */
  async #open(name, list) {
    const mistake = this.surroundings.isRunning() ? texts.many.stopFirst : list.mistake;
    const text = byId("many-mistake", HTMLElement);
    text.textContent = mistake ? texts.many.notRead(name, mistake) : "";
    text.hidden = mistake === "";
    if (mistake) {
      say(text.textContent ?? "");
      text.focus();
      return false;
    }
    const isWanted = await this.surroundings.mayReplace(name);
    if (isWanted) this.surroundings.opened(name, list);
    return isWanted;
  }

  /** Pasted rows may hold some. */
  forgetPasswords() {
    this.text.value = "";
  }
}
