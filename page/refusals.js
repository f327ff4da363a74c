/// Logins that cameras refused, since a camera may lock a user out: what is refused here is sent again only after
/// somebody was asked. Holds no password.

import { UNTESTED } from "./camera-list.js";
import { LOGIN_REFUSED } from "./causes.js";

/**
 * @typedef {{host: string, user: string}} Login
 * @typedef {import("./camera-list.js").Row} Row
 */

/** What a row becomes that is not sent because its login was refused. */
export const HELD = /** @type {const} */ ({
  ...UNTESTED,
  result: "held",
  note: "This login was refused at this address a moment ago.",
});

export class Refusals {
  /** @type {Map<string, number>} */
  #counts = new Map();

  /** @param {Login} login */
  static #key = ({ host, user }) => JSON.stringify([host.toLowerCase(), user]);

  /** Notes what a test gave. @param {Login} login @param {number} code */
  note(login, code) {
    if (code === LOGIN_REFUSED) this.#counts.set(Refusals.#key(login), this.count(login) + 1);
    if (code === 0) this.forget(login);
  }

  /** Refused logins since the last that passed. @param {Login} login */
  count(login) {
    return this.#counts.get(Refusals.#key(login)) ?? 0;
  }

  /** Whether somebody is to be asked before this row's login is sent. @param {Row} row */
  isRefused({ result, code, camera }) {
    return result === "held" || code === LOGIN_REFUSED || (camera !== null && this.count(camera) > 0);
  }

  /**
   * Holds back those of these rows that wait with a refused login, unless somebody asked for them.
   * @param {Row[]} rows
   * @returns {Row[]} the ones held back
   */
  holdBack(rows) {
    const held = rows.filter((row) => row.result === "waiting" && !row.asHeld && this.isRefused(row));
    for (const row of held) Object.assign(row, HELD);
    return held;
  }

  /** @param {Login} login */
  forget(login) {
    this.#counts.delete(Refusals.#key(login));
  }

  forgetAll() {
    this.#counts.clear();
  }
}
