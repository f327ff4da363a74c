/// Storing the cameras of a list that passed: the buttons, the progress, and what came of it.

import { button, byId, el, refill, say, sayQuarter } from "../parts/dom.js";
import { listCameras, nameOf } from "../recorder/cameras.js";
import { keep, perhapsStored, presetName } from "../recorder/saving.js";
import { cameraHash } from "../text/address.js";
import { Additions } from "../testing/additions.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../list/camera-list.js").Row} Row
 * @typedef {import("../testing/additions.js").Addition} Addition
 * @typedef {ReturnType<Additions["sort"]>} Sorted
 */

const words = texts.saving;

/** What became of a row, in words. @param {Addition} addition @returns {(Node | string)[]} */
function wordsOf(addition) {
  if (addition.kind === "adding") return [words.adding];
  if (addition.kind === "failed") return [words.notAdded, addition.text];
  const href = cameraHash(addition);
  const link = el("a", { href, text: addition.name });
  if (addition.kind === "there") return [words.storedAlready, link];
  if (addition.kind === "perhaps") return [words.perhapsStored, link];
  return [`${words.added} `, el("a", { href, text: words.open, "aria-label": texts.common.openNamed(addition.name) })];
}

export class Adding {
  #isAllowed = false;
  #spokenQuarters = 0;
  /** What was stored before the latest run. @type {Promise<import("../recorder/cameras.js").CameraSummary[]> | null} */
  #stored = null;
  /** Somebody wants rows of it although they are perhaps stored. */
  #isWanted = false;
  /** @type {Sorted} */
  #sorted;

  #start = button("", () => this.#add(this.#sorted.open), { id: "many-add" });
  #again = button(words.addAgain, () => this.#add(this.#sorted.failed), { id: "many-add-again" });
  #perhaps = button("", () => this.#add(this.#sorted.perhaps, true), { id: "many-add-perhaps" });
  #stop = button(words.stop, () => this.stop(), { id: "many-add-stop" });
  #bar = el("progress", { id: "many-add-progress" });
  #label = el("span", { class: "out-of-sight", text: words.progress });
  #progress = el("label", { class: "progress" }, this.#label, this.#bar);
  #link = el("a", { id: "many-add-open", href: "#cameras", text: texts.common.openCameras });
  #text = el("span", { id: "many-add-text", class: "muted" });
  /** In the order in which the focus passes on from one that vanishes. */
  #buttons = [this.#stop, this.#again, this.#start, this.#link, this.#perhaps];
  #summary = el("summary");
  #left = el("ul", { class: "notes" });
  #fold = el("details", { id: "many-not-added" }, this.#summary, this.#left);

  /**
   * @param {(rows: Row[]) => void} changed what became of these rows, and whether something is being added
   * @param {(row: Row) => void} open
   */
  constructor(changed, open) {
    this.changed = changed;
    this.open = open;
    this.additions = new Additions((row) => this.#keep(row), (rows) => this.#wentOn(rows));
    const shown = [this.#start, this.#again, this.#stop, this.#progress, this.#link, this.#text, this.#perhaps];
    this.#sorted = this.additions.sort([]);
    byId("many-adding", HTMLElement).append(el("div", { class: "bar" }, ...shown), this.#fold);
  }

  get isRunning() {
    return this.additions.run.isRunning;
  }

  /** Only an admin may add cameras. @param {import("../recorder/access.js").Session} session */
  allow({ role }) {
    this.#isAllowed = role === "admin";
  }

  stop() {
    this.additions.stop();
  }

  /** What became of a row, for its result; nothing if it was not tried. @param {Row} row @returns {HTMLElement[]} */
  resultOf(row) {
    const addition = this.additions.of(row);
    return addition ? [el("span", { class: "addition", "data-addition": addition.kind }, ...wordsOf(addition))] : [];
  }

  /** @param {Row} row */
  async #keep({ cells, camera }) {
    if (!camera) throw new Error("a row with mistakes is never added");
    const other = this.#isWanted ? undefined : perhapsStored(camera, await (this.#stored ??= listCameras()));
    if (other) return { kind: /** @type {const} */ ("perhaps"), id: other.id, name: nameOf(other) };
    return keep(camera, { name: cells.name || presetName(camera) });
  }

  /** @param {Row[]} rows @param {boolean} [isWanted] */
  async #add(rows, isWanted = false) {
    if (this.isRunning) return;
    this.#stored = null;
    this.#isWanted = isWanted;
    this.#spokenQuarters = 0;
    say(words.begins(rows.length));
    await this.additions.add(rows);
    this.changed([]);
    say(texts.common.ended(this.#text.textContent ?? ""));
  }

  /** @param {Row[]} rows */
  #wentOn(rows) {
    this.changed(rows);
    const { all, done } = this.additions.run;
    this.#spokenQuarters = sayQuarter(this.#spokenQuarters, done, all, texts.common.doneOf);
  }

  /** Shows what can be added, what is, and what was. @param {Row[]} rows of the list @param {boolean} isTesting */
  show(rows, isTesting) {
    const place = byId("many-adding", HTMLElement);
    const focused = this.#buttons.find((one) => one === document.activeElement);
    const sorted = this.additions.sort(rows);
    const has = (/** @type {Row[][]} */ ...sorts) => sorts.some(({ length }) => length > 0);
    const wasTried = has(sorted.adding, sorted.added, sorted.there, sorted.perhaps, sorted.failed);
    this.#sorted = sorted;
    place.hidden = !this.#isAllowed || isTesting || !has(...Object.values(sorted));
    this.#showButtons(sorted, wasTried);
    this.#text.textContent = this.isRunning ? this.#progressText() : this.#outcome(sorted, wasTried);
    const left = [...sorted.there, ...sorted.perhaps, ...sorted.failed];
    this.#showLeft(this.isRunning ? [] : left.sort((a, b) => a.line - b.line));
    if (focused && !focused.checkVisibility()) this.#buttons.find((one) => one.checkVisibility())?.focus();
  }

  /** @param {Sorted} sorted @param {boolean} wasTried */
  #showButtons({ open, failed, perhaps }, wasTried) {
    this.#start.hidden = this.isRunning || open.length === 0;
    this.#start.textContent = words.addAll(open.length, wasTried);
    this.#again.hidden = this.isRunning || failed.length === 0;
    this.#perhaps.hidden = this.isRunning || perhaps.length === 0;
    this.#perhaps.textContent = words.addPerhaps(perhaps.length);
    this.#stop.hidden = !this.isRunning;
    this.#progress.hidden = !this.isRunning;
    this.#link.hidden = this.isRunning || !wasTried;
  }

  #progressText() {
    const { all, done } = this.additions.run;
    this.#bar.max = all;
    this.#bar.value = done;
    return texts.common.doneOf(done, all);
  }

  /** @param {Sorted} sorted @param {boolean} wasTried */
  #outcome({ added, there, perhaps, failed, twice, forgotten }, wasTried) {
    const { trouble } = this.additions;
    const said = [
      wasTried && words.summary(added.length, there.length, perhaps.length, failed.length),
      wasTried && trouble && words.brokenOff(trouble),
      twice.length > 0 && words.twice(twice.length),
      forgotten.length > 0 && words.forgotten(forgotten.length),
    ];
    return said.filter(Boolean).join(" ");
  }

  /** A way to each row that was not added. @param {Row[]} left */
  #showLeft(left) {
    if (this.#fold.hidden && left.length > 0) this.#fold.open = left.length <= 10;
    this.#fold.hidden = left.length === 0;
    this.#summary.textContent = words.leftOver(left.length);
    refill(
      this.#left,
      left.map((row) => el("li", {}, button(this.#whyNot(row), () => this.open(row), { class: "link", "data-kind": row.line }))),
    );
  }

  /** @param {Row} row */
  #whyNot(row) {
    return words.ofLine(row.line, this.resultOf(row)[0]?.textContent ?? "");
  }
}
