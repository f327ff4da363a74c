/// Logins that cameras refused, since a camera may lock a user out. Holds no password.

/** @typedef {{host: string, user: string}} Login */

export class Refusals {
  /** @type {Map<string, number>} */
  #counts = new Map();

  /** @param {Login} login */
  static #key = ({ host, user }) => JSON.stringify([host.toLowerCase(), user]);

  /** Notes what a test gave. @param {Login} login @param {number} code */
  note(login, code) {
    if (code === 464) this.#counts.set(Refusals.#key(login), this.count(login) + 1);
    if (code === 0) this.forget(login);
  }

  /** Refused logins since the last that passed. @param {Login} login */
  count(login) {
    return this.#counts.get(Refusals.#key(login)) ?? 0;
  }

  /** @param {Login} login */
  forget(login) {
    this.#counts.delete(Refusals.#key(login));
  }

  forgetAll() {
    this.#counts.clear();
  }
}
