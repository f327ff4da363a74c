/// The dialog that asks what goes into a file for `recorderctl camera import`.

import { kindOf } from "../list/camera-list.js";
import { exportForImport } from "../list/list-export.js";
import { button, download, el, say } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

/** @typedef {import("../list/camera-list.js").Row} Row */

const COMMAND = "recorderctl camera import";

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
    text: texts.many.whoeverReads,
  });
  #export = el("button", { id: "import-export", class: "main", text: texts.many.export });
  dialog = el("dialog", { id: "import", "aria-labelledby": "import-title" });

  constructor() {
    for (const tick of [this.withOthers, this.withPasswords]) tick.addEventListener("change", () => this.#show());
    const { importBefore, importAfter } = texts.many;
    const form = el(
      "form",
      { id: "import-form" },
      el("h2", { id: "import-title", text: texts.many.exportForImport }),
      el("p", {}, `${importBefore} `, el("code", { text: COMMAND }), ` ${importAfter} `, this.#count),
      el("label", { class: "tick" }, this.withOthers, ` ${texts.many.alsoOthers}`),
      el("label", { class: "tick" }, this.withPasswords, ` ${texts.many.withPasswords}`),
      this.#warning,
      el(
        "div",
        { class: "actions" },
        this.#export,
        button(texts.common.cancel, () => this.dialog.close(), { id: "import-cancel" }),
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
    const chosen = this.withOthers.checked ? texts.many.chosen : texts.many.chosenPassed;
    const lack = havePasswords || rows.length === 0 ? "" : `. ${texts.many.noPassword}`;
    this.#count.textContent = chosen(rows.length, this.#rows.length) + lack;
    this.#export.disabled = rows.length === 0;
  }

  #write() {
    const rows = this.#chosen;
    download("cameras-for-import.csv", exportForImport(rows, this.withPasswords.checked));
    this.dialog.close();
    const said = this.withPasswords.checked ? texts.many.exportedWithPasswords : texts.many.exported;
    say(said(rows.length));
  }
}
