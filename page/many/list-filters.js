/// Which rows of a list are shown: filters with counts, causes of failures, and the advice for one of them.

import { kindOf } from "../list/camera-list.js";
import { button, byId, el, refill } from "../parts/dom.js";
import { keyOf, testCause } from "../recorder/causes.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../list/camera-list.js").Kind} Kind
 */

export class ListFilters {
  /** @type {Kind | "all"} */
  #kind = "all";
  #cause = ""; // that failed rows are narrowed to; "" for all

  /** @param {() => void} changed */
  constructor(changed) {
    this.changed = changed;
    byId("many-filter", HTMLSelectElement).addEventListener("change", (event) => {
      if (event.target instanceof HTMLSelectElement) this.#choose(/** @type {Kind} */ (event.target.value));
    });
  }

  /** Shows all rows again, without telling. */
  clear() {
    this.#kind = "all";
    this.#cause = "";
  }

  /** @param {Kind | "all"} kind */
  #choose(kind) {
    this.#kind = kind;
    this.#cause = "";
    this.changed();
  }

  /** The rows that are shown. @param {Row[]} rows */
  visible(rows) {
    if (this.#kind === "all") return rows;
    const ofKind = rows.filter((row) => kindOf(row) === this.#kind);
    return this.#kind === "failed" && this.#cause ? ofKind.filter((row) => keyOf(row) === this.#cause) : ofKind;
  }

  /** Draws the filters anew. @param {Row[]} rows */
  show(rows) {
    this.#showCounts(rows);
    this.#showCauses(this.#kind === "failed" ? rows.filter((row) => kindOf(row) === "failed") : []);
  }

  /** @param {Row[]} rows */
  #showCounts(rows) {
    const counts = Object.entries(texts.many.kinds)
      .map(([kind, label]) => ({
        kind: /** @type {Kind} */ (kind),
        label,
        count: rows.filter((row) => kindOf(row) === kind).length,
      }))
      .filter(({ kind, count }) => count > 0 || kind === this.#kind);
    const all = [{ kind: /** @type {const} */ ("all"), label: texts.many.all, count: rows.length }, ...counts];
    refill(
      byId("many-filters", HTMLElement),
      all.map(({ kind, label, count }) =>
        button(texts.many.filter(label, count), () => this.#choose(kind), {
          "aria-pressed": String(kind === this.#kind),
          "data-kind": kind,
        }),
      ),
    );
    const select = byId("many-filter", HTMLSelectElement);
    select.replaceChildren(
      ...all.map(({ kind, label, count }) => el("option", { value: kind, text: texts.many.filter(label, count) })),
    );
    select.value = this.#kind;
  }

  /** Counts a cause; the advice stands once, not in each row. @param {Row[]} failed */
  #showCauses(failed) {
    const causes = new Map(failed.map((row) => [keyOf(row), testCause(row)]));
    const keys = [...causes.keys()].sort();
    const place = byId("many-causes", HTMLElement);
    place.hidden = keys.length === 0;
    refill(
      place,
      keys.map((key) => {
        const count = failed.filter((row) => keyOf(row) === key).length;
        const choose = () => {
          this.#cause = key === this.#cause ? "" : key;
          this.changed();
        };
        return button(texts.many.filter(causes.get(key)?.heading ?? "", count), choose, {
          "aria-pressed": String(key === this.#cause),
          "data-kind": key,
        });
      }),
    );
    this.#showAdvice(causes.get(this.#cause) ?? (keys.length === 1 ? [...causes.values()][0] : undefined));
  }

  /** @param {import("../recorder/causes.js").Cause | undefined} cause */
  #showAdvice(cause) {
    const advice = byId("many-advice", HTMLElement);
    advice.hidden = cause === undefined;
    if (!cause) return;
    advice.replaceChildren(
      el("strong", { text: `${cause.heading}. ` }),
      `${cause.happened} `,
      el("strong", { text: `${texts.common.first} ` }),
      cause.first,
    );
  }
}
