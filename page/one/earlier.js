/// Marks what was found out about other values than the ones that stand in the fields now.

import { byId } from "../parts/dom.js";

/**
 * The fields at one moment: host and port, and all of them.
 * @typedef {{place: string, values: string}} Moment
 *
 * What a mark says when another host or port stands there, and when some other value does; without a text it says
 * nothing then.
 * @typedef {{place?: string, values?: string}} Texts
 */

export class EarlierMarks {
  /** By id. @type {Map<string, {of: Moment, texts: Texts}>} */
  #marks = new Map();

  /** @param {() => Moment} now */
  constructor(now) {
    this.now = now;
  }

  /**
   * Something new is shown, whose mark this is.
   * @param {string} id
   * @param {Moment} of when it was asked for
   * @param {Texts} texts
   */
  set(id, of, texts) {
    this.#marks.set(id, { of, texts });
    this.update();
  }

  /** What this mark belonged to is gone. @param {string} id */
  drop(id) {
    this.set(id, this.now(), {});
  }

  /** Call when values have changed. */
  update() {
    const now = this.now();
    for (const [id, { of, texts }] of this.#marks) {
      const ofValues = of.values === now.values ? "" : (texts.values ?? "");
      const text = of.place === now.place ? ofValues : (texts.place ?? ofValues);
      byId(id, HTMLElement).textContent = text;
      byId(id, HTMLElement).hidden = text === "";
    }
  }
}
