/// One choice for each heading of a list that is not understood: which column it is. What was chosen is remembered, for
/// as long as the page is open, for other lists with that heading.

import { COLUMNS, plainHeading } from "../list/headings.js";
import { byId, el } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../list/headings.js").Column} Column
 * @typedef {import("../list/list-reading.js").Heading} Heading
 */

export class ListColumns {
  /** @type {Heading[]} */
  #headings = [];
  /** @type {Map<string, Column | "">} by what makes a difference in a heading */
  #remembered = new Map();

  /** @param {() => Promise<boolean>} changed reads the rows anew; false if somebody did not want that after all */
  constructor(changed) {
    this.changed = changed;
    this.place = byId("many-columns", HTMLDetailsElement);
  }

  /** Puts what was chosen before into the headings of a list, and offers the choices. @param {Heading[]} headings */
  open(headings) {
    this.#headings = headings;
    for (const heading of headings) {
      const column = heading.isUnknown ? this.#remembered.get(plainHeading(heading.text)) : undefined;
      if (column && !this.#isTaken(column)) heading.column = column;
    }
    this.place.open = !this.#isTaken("address") || !this.#isTaken("name");
    this.#show();
  }

  /** Offers nothing more: the cells are no longer known. */
  close() {
    this.place.hidden = true;
  }

  /** @param {Column} column */
  #isTaken = (column) => this.#headings.some((heading) => heading.column === column);

  #show() {
    const unknown = this.#headings.filter(({ isUnknown }) => isUnknown);
    const unread = unknown.filter(({ column }) => column === "").map(({ text }) => text);
    this.place.hidden = unknown.length === 0;
    byId("many-columns-summary", HTMLElement).textContent =
      unread.length > 0
        ? texts.many.columnsNotRead(unread.length, unread.join(", "))
        : texts.many.allColumnsRead;
    byId("many-columns-choices", HTMLElement).replaceChildren(
      ...unknown.map((heading, i) => this.#choice(heading, `many-column-${i}`)),
    );
  }

  /** @param {Heading} heading @param {string} id */
  #choice(heading, id) {
    const free = COLUMNS.filter((column) => column === heading.column || !this.#isTaken(column));
    const options = ["", ...free].map((value) => el("option", { value, text: value || texts.many.columnNotRead }));
    const select = el("select", { id }, ...options);
    select.value = heading.column;
    select.addEventListener("change", async () => {
      const before = heading.column;
      heading.column = /** @type {Column | ""} */ (select.value);
      if (await this.changed()) this.#remembered.set(plainHeading(heading.text), heading.column);
      else heading.column = before;
      this.#show();
      byId(id, HTMLSelectElement).focus();
    });
    return el("div", { class: "field" }, el("label", { for: id, text: heading.text }), select);
  }
}
