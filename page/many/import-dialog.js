/// The dialog that asks what goes into a file for `recorderctl camera import`.

import { kindOf } from "../list/camera-list.js";
import { exportForImport } from "../list/list-export.js";
import { button, download, el, say } from "../parts/dom.js";
import { counted } from "../texts/language.js";

/** @typedef {import("../list/camera-list.js").Row} Row */

export class ImportDialog {
  /** @type {Row[]} */
  #rows = [];

  withOthers = el("input", { id: "import-others", type: "checkbox" });
  withPasswords = el("input", { id: "import-passwords", type: "checkbox" });
  #count = el("strong", { id: "import-count" });
  #warning = el("p", {
    id: "import-warning",
    class: "banner warn",
    hidden: true,
    text: "Whoever reads this file can log in to the cameras. Delete it as soon as it is imported.",
  });
  #export = el("button", { id: "import-export", class: "main", text: "Export" });
  dialog = el("dialog", { id: "import", "aria-labelledby": "import-title" });

  constructor() {
    for (const tick of [this.withOthers, this.withPasswords]) tick.addEventListener("change", () => this.#show());
    const form = el(
      "form",
      { id: "import-form" },
      el("h2", { id: "import-title", text: "Export for import" }),
      el("p", {}, "The file that ", el("code", { text: "recorderctl camera import" }), " takes. ", this.#count),
      el("label", { class: "tick" }, this.withOthers, " Also rows that did not pass"),
      el("label", { class: "tick" }, this.withPasswords, " With passwords"),
      this.#warning,
      el(
        "div",
        { class: "actions" },
        this.#export,
        button("Cancel", () => this.dialog.close(), { id: "import-cancel" }),
      ),
    );
    form.addEventListener("submit", (event) => {
      event.preventDefault();
      this.#write();
    });
    this.dialog.append(form);
    document.body.append(this.dialog);
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
    this.#warning.hidden = !this.withPasswords.checked;
    const which = this.withOthers.checked ? "" : ": those that passed";
    const lack = havePasswords || rows.length === 0 ? "" : ". There is no password in this page to export.";
    this.#count.textContent = `${rows.length} of ${counted(this.#rows.length, "row")}${which}${lack}`;
    this.#export.disabled = rows.length === 0;
  }

  #write() {
    const rows = this.#chosen;
    download("cameras-for-import.csv", exportForImport(rows, this.withPasswords.checked));
    this.dialog.close();
    say(`${counted(rows.length, "row")} exported${this.withPasswords.checked ? ", with passwords" : ""}`);
  }
}
