/// The dialog that asks what goes into a file for `recorderctl camera import`.

import { kindOf } from "../list/camera-list.js";
import { exportForImport } from "../list/list-export.js";
import { byId, download, say } from "../parts/dom.js";
import { counted } from "../text/text.js";

/** @typedef {import("../list/camera-list.js").Row} Row */

export class ImportDialog {
  /** @type {Row[]} */
  #rows = [];

  constructor() {
    this.dialog = byId("import", HTMLDialogElement);
    this.withOthers = byId("import-others", HTMLInputElement);
    this.withPasswords = byId("import-passwords", HTMLInputElement);
    for (const tick of [this.withOthers, this.withPasswords]) tick.addEventListener("change", () => this.#show());
    byId("import-cancel", HTMLButtonElement).addEventListener("click", () => this.dialog.close());
    byId("import-form", HTMLFormElement).addEventListener("submit", (event) => {
      event.preventDefault();
      this.#export();
    });
  }

  /** @param {Row[]} rows of the list */
  open(rows) {
    this.#rows = rows;
    this.withOthers.checked = false;
    this.withPasswords.checked = false;
    this.#show();
    this.dialog.showModal();
  }

  get #chosen() {
    const { checked } = this.withOthers;
    return this.#rows.filter((row) => row.camera && (checked || kindOf(row) === "passed"));
  }

  #show() {
    const rows = this.#chosen;
    const havePasswords = rows.some(({ camera }) => camera?.password);
    this.withPasswords.disabled = !havePasswords;
    if (!havePasswords) this.withPasswords.checked = false;
    byId("import-warning", HTMLElement).hidden = !this.withPasswords.checked;
    const which = this.withOthers.checked ? "" : ": those that passed";
    const lack = havePasswords || rows.length === 0 ? "" : ". There is no password in this page to export.";
    byId("import-count", HTMLElement).textContent =
      `${rows.length} of ${counted(this.#rows.length, "row")}${which}${lack}`;
    byId("import-export", HTMLButtonElement).disabled = rows.length === 0;
  }

  #export() {
    const rows = this.#chosen;
    download("cameras-for-import.csv", exportForImport(rows, this.withPasswords.checked));
    this.dialog.close();
    say(`${counted(rows.length, "row")} exported${this.withPasswords.checked ? ", with passwords" : ""}`);
  }
}
