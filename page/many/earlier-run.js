/// A long list that the recorder tested by itself, and whose page was left: what came of it, told where a list is opened.

import { button, byId, el, refill, say } from "../parts/dom.js";
import * as runs from "../recorder/runs.js";
import { settleTold } from "../testing/background-run.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../list/list-reading.js").ReadList} ReadList
 * @typedef {import("../recorder/runs.js").BackgroundState} BackgroundState
 * @typedef {import("../recorder/runs.js").BackgroundRow} BackgroundRow
 */

/** What a list of this page has at most; a run of more rows was started elsewhere. */
const MOST_ROWS = 1000;
const LOOK_AGAIN_MS = 2000;
const words = texts.many;

/** As a file with these rows is read. @param {BackgroundRow[]} rows @returns {ReadList} */
function listOf(rows) {
  const headings = runs.COLUMNS.map(([, column]) => ({ text: column, column, isUnknown: false }));
  const cellsOf = (/** @type {BackgroundRow} */ row) => runs.COLUMNS.map(([member]) => String(row[member]));
  const lines = rows.map((row) => ({ number: row.number, cells: cellsOf(row) }));
  return { lines, headings, mistake: "", notes: [words.earlierNote, words.earlierLacks] };
}

/**
 * Notes in the rows of such a list what the recorder found.
 * @param {Row[]} rows
 * @param {BackgroundRow[]} found in the same order
 * @param {Parameters<typeof settleTold>[3]} means
 */
export function settleEarlier(rows, found, means) {
  for (const [i, { state, cause, at }] of found.entries()) {
    const row = rows[i];
    if (!row) continue;
    row.isForgotten = true;
    if (state === "done" && cause) settleTold(row, cause, at ?? 0, means);
  }
}

export class EarlierRun {
  /** Whose runs are told of; "" for nobody's. */
  #user = "";
  #place = byId("many-earlier", HTMLElement);
  #timer = 0;

  /** @param {(list: ReadList, found: BackgroundRow[]) => void} open */
  constructor(open) {
    this.open = open;
  }

  /** Runs are for admins. @param {import("../recorder/access.js").Session} session */
  allow({ role, user }) {
    this.#user = role === "admin" ? user : "";
  }

  /** Tells of the latest run that there is, again and again while it runs and is seen. */
  async look() {
    clearTimeout(this.#timer);
    const all = this.#user ? await runs.listRuns().catch(() => []) : [];
    const own = all.filter(({ owner, state, rows }) => owner === this.#user && state !== "open" && rows <= MOST_ROWS);
    this.#show(own.at(-1));
  }

  /** @param {BackgroundState} [run] */
  #show(run) {
    this.#place.hidden = !run;
    if (!run) return;
    const { id, state, openedAt, rows, done, results } = run;
    const text = words.earlier(openedAt, rows, words.earlierStates[state] ?? state, done, results.ok ?? 0);
    const isRunning = state === "started";
    refill(this.#place, [
      el("p", { id: "many-earlier-text", text }),
      this.#button("see", words.seeEarlier, () => this.#see(id), isRunning),
      this.#button("end", isRunning ? texts.common.stop : words.forgetEarlier, () => this.#end(id)),
    ]);
    if (isRunning) this.#timer = window.setTimeout(() => this.#place.checkVisibility() && this.look(), LOOK_AGAIN_MS);
  }

  /** @param {string} kind @param {string} text @param {() => Promise<void>} work @param {boolean} [hidden] */
  #button(kind, text, work, hidden = false) {
    return button(text, () => this.#do(work), { id: `many-earlier-${kind}`, "data-kind": kind, hidden });
  }

  /** @param {number} id */
  async #see(id) {
    const found = await runs.readRows(id);
    this.open(listOf(found), found);
  }

  /** @param {number} id */
  async #end(id) {
    await runs.endRun(id);
    await this.look();
    byId("many-title", HTMLElement).focus();
  }

  /** Says what goes wrong. @param {() => Promise<void>} work */
  async #do(work) {
    await work().catch((error) => {
      const mistake = sentence(messageOf(error));
      byId("many-earlier-text", HTMLElement).textContent = mistake;
      say(mistake);
    });
  }
}
