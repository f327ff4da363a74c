/// The table of a list of cameras. Rows keep the file's order; a change redraws its row alone.

import { kindOf, reasonOf, whosePassword } from "../list/camera-list.js";
import { button, byId, el } from "../parts/dom.js";
import { labelOf } from "../recorder/models.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../list/camera-list.js").Defaults} Defaults
 * @typedef {import("../list/camera-list.js").Kind} Kind
 */

/** @type {Readonly<Record<Kind, string>>} */
const SIGNS = {
  passed: "✓",
  failed: "✕",
  testing: "…",
  held: "‖",
  unknown: "?",
  toFix: "!",
  leftOut: "=",
  waiting: "–",
};

/** @param {Row} row */
function resultText(row) {
  const kind = kindOf(row);
  const reason = reasonOf(row);
  if (kind === "failed") return reason;
  return reason ? texts.many.resultFor(texts.many.kinds[kind], reason) : texts.many.kinds[kind];
}

/** Sign and words of what came of a row. @param {Row} row */
export function resultOf(row) {
  const kind = kindOf(row);
  return el(
    "span",
    { class: "result", "data-result": kind },
    el("span", { class: "sign", "aria-hidden": "true", text: SIGNS[kind] }),
    el("span", { text: resultText(row) }),
  );
}

export class ListTable {
  #body = byId("many-rows", HTMLElement);
  /** @type {Map<Row, HTMLTableRowElement>} */
  #drawn = new Map();

  /** @param {(row: Row) => void} open @param {(row: Row) => Node[]} additionOf what became of it after its test */
  constructor(open, additionOf) {
    this.open = open;
    this.additionOf = additionOf;
  }

  /** Draws all rows. @param {Row[]} rows @param {Defaults} defaults */
  fill(rows, defaults) {
    const old = this.#drawn;
    this.#drawn = new Map(rows.map((row) => [row, old.get(row) ?? el("tr")]));
    this.update(rows, defaults);
    const elements = [...this.#drawn.values()];
    const isSame =
      elements.length === this.#body.children.length && elements.every((one, i) => one === this.#body.children[i]);
    if (!isSame) this.#body.replaceChildren(...elements);
  }

  /** Draws these rows anew. @param {Row[]} rows @param {Defaults} defaults */
  update(rows, defaults) {
    for (const row of rows) {
      const drawn = this.#drawn.get(row);
      if (drawn) this.#draw(row, drawn, defaults);
    }
  }

  /** @param {Row[]} rows */
  showOnly(rows) {
    const shown = new Set(rows);
    for (const [row, drawn] of this.#drawn) drawn.hidden = !shown.has(row);
  }

  /** @param {Row} row @param {HTMLTableRowElement} drawn @param {Defaults} defaults */
  #draw(row, drawn, defaults) {
    const { cells, camera } = row;
    const name = cells.name || cells.address;
    const host = (camera?.host ?? cells.address) || texts.many.noAddress;
    const port = camera ? `:${camera.port}` : "";
    const model = camera ? labelOf(camera) : `${cells.vendor} ${cells.model}`.trim();
    const password = texts.list.passwords[whosePassword(row, defaults)];
    const id = `row-${row.line}-more`;
    const more = drawn.querySelector("button") ?? button(texts.many.more, () => this.open(row), { id });
    more.setAttribute("aria-label", texts.many.moreAbout(row.line, name));
    const contents = [
      el("td", { class: "line", text: String(row.line) }),
      el("th", { scope: "row", text: cells.name }),
      el("td", { class: "code", text: host.includes(":") && port ? `[${host}]${port}` : host + port }),
      el("td", { text: model }),
      el("td", { class: "muted", "data-label": texts.common.password, text: password }),
      el("td", {}, resultOf(row), ...this.additionOf(row)),
    ];
    drawn.dataset.result = kindOf(row);
    if (drawn.lastElementChild?.contains(more)) {
      while (drawn.children.length > 1) drawn.firstElementChild?.remove();
      drawn.prepend(...contents); // the button stays where it is, and so does the focus
    } else {
      drawn.replaceChildren(...contents, el("td", {}, more));
    }
  }
}
