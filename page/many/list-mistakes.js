/// All mistakes of a list at once, each with a way to its row.

import { kindOf, reasonOf } from "../list/camera-list.js";
import { button, byId, el, refill } from "../parts/dom.js";
import { counted } from "../texts/language.js";

/** @typedef {import("../list/camera-list.js").Row} Row */

/** What is said about a row. @param {Row} row */
function remarksOf(row) {
  const line = `Line ${row.line}`;
  return [
    ...row.problems.map((text) => `${line}${row.shapeMistake ? ":" : ","} ${text}`),
    ...(kindOf(row) === "leftOut" ? [`${line}: ${reasonOf(row)}, left out`] : []),
    ...row.notices.map((text) => `${line}: ${text}`),
  ];
}

export class ListMistakes {
  /** @param {(row: Row) => void} open */
  constructor(open) {
    this.open = open;
  }

  /** @param {Row[]} rows */
  show(rows) {
    const links = rows.flatMap((row) =>
      remarksOf(row).map((text) => button(text, () => this.open(row), { class: "link" })),
    );
    const toFix = rows.filter((row) => kindOf(row) === "toFix").length;
    const fold = byId("many-fix", HTMLDetailsElement);
    if (fold.hidden && links.length > 0) fold.open = links.length <= 10;
    fold.hidden = links.length === 0;
    byId("many-fix-summary", HTMLElement).textContent =
      `${counted(toFix, "row")} to fix, ${counted(links.length, "remark")}`;
    refill(
      byId("many-fix-list", HTMLElement),
      links.map((link) => el("li", {}, link)),
    );
  }
}
