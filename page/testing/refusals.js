/// Logins that cameras refused, since a camera may lock a user out: what is refused here is sent again only after
/// somebody was asked, for as long as the page is open. Another port may be another camera, and another password another login.

import { UNTESTED } from "../list/camera-list.js";
import { isLoginRefused } from "../recorder/causes.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {{host: string, port: number, user: string, password: string}} Login
 * @typedef {import("../list/camera-list.js").Row} Row
 *
 * @typedef {object} Refused
 * @property {number} count of logins since the last that passed, whatever their password
 * @property {Set<string>} passwords
 */

/** What a row becomes that is not sent because its login was refused. */
export const HELD = /** @type {const} */ ({
  ...UNTESTED,
  result: "held",
  note: texts.many.loginRefused,
});

/** @param {Login} login */
const userOf = ({ host, port, user }) => JSON.stringify([host.toLowerCase(), port, user]);

/** @param {Login} one @param {Login} other */
export const isSameLogin = (one, other) => userOf(one) === userOf(other) && one.password === other.password;

export class Refusals {
  /** By user. @type {Map<string, Refused>} */
  #refused = new Map();

  /** Notes what a test gave. @param {Login} login @param {{code: number, cause?: string}} verdict */
  note(login, verdict) {
    const refused = this.#refused.get(userOf(login)) ?? { count: 0, passwords: new Set() };
    if (isLoginRefused(verdict)) {
      this.#refused.set(userOf(login), refused);
      refused.passwords.add(login.password);
      ++refused.count;
    }
    if (verdict.code === 0) {
      refused.passwords.delete(login.password);
      refused.count = 0;
    }
  }

  /** How many logins of this user were refused since the last that passed. @param {Login} login */
  count(login) {
    return this.#refused.get(userOf(login))?.count ?? 0;
  }

  /** Whether somebody is to be asked before this row's login is sent. @param {Row} row */
  isRefused(row) {
    const { result, camera } = row;
    const isKnown = camera !== null && this.#refused.get(userOf(camera))?.passwords.has(camera.password);
    return result === "held" || isLoginRefused(row) || isKnown === true;
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

  /** Keeps no more than the counts. */
  forgetPasswords() {
    for (const refused of this.#refused.values()) refused.passwords.clear();
  }
}
