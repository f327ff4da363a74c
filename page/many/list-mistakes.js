/// All mistakes of a list at once, each with a way to its row.

import { kindOf, reasonOf } from "../list/camera-list.js";
import { button, byId, el, refill } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

/** @typedef {import("../list/camera-list.js").Row} Row */

/** What is said about a row. @param {Row} row */
function remarksOf(row) {
  const { line } = row;
  const { remark, cellRemark, leftOut } = texts.many;
  return [
    ...row.problems.map((text) => (row.shapeMistake ? remark : cellRemark)(line, text)),
    ...(kindOf(row) === "leftOut" ? [leftOut(line, reasonOf(row))] : []),
    ...row.notices.map((text) => remark(line, text)),
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
      remarksOf(row).map((text) => button(text, () => this.open(row), { class: "link", "data-kind": `${row.line} ${text}` })),
    );
    const toFix = rows.filter((row) => kindOf(row) === "toFix").length;
    const fold = byId("many-fix", HTMLDetailsElement);
    if (fold.hidden && links.length > 0) fold.open = links.length <= 10;
    fold.hidden = links.length === 0;
    byId("many-fix-summary", HTMLElement).textContent = texts.many.mistakes(toFix, links.length);
    refill(
      byId("many-fix-list", HTMLElement),
      links.map((link) => el("li", {}, link)),
    );
  }
}
