/// Cameras that are likely to keep others waiting: silent ones, as seen since the page was opened.

import { TIMED_OUT, hasAnswered } from "../recorder/causes.js";

/** @typedef {{host: string, port: number}} Place */

/** @param {Place} place */
const placeOf = ({ host, port }) => `${host.toLowerCase()} ${port}`;

/** The first three numbers of an IPv4 address; "" for anything else. @param {Place} place */
const networkOf = ({ host }) => /^(\d+\.\d+\.\d+)\.\d+$/.exec(host)?.[1] ?? "";

export class Slowness {
  /** @type {Set<string>} */
  #silent = new Set();
  /** @type {Set<string>} networks of silent ones */
  #silentNetworks = new Set();
  /** @type {Set<string>} networks in which something answered */
  #answering = new Set();

  /** Notes what a test gave. @param {Place} place @param {import("../recorder/api.js").Verdict} verdict */
  note(place, verdict) {
    const network = networkOf(place);
    if (verdict.code === TIMED_OUT) {
      this.#silent.add(placeOf(place));
      this.#silentNetworks.add(network);
    } else if (hasAnswered(verdict)) {
      this.#silent.delete(placeOf(place));
      this.#answering.add(network);
    }
  }

  /** It was silent before, or is in a network where some were and none has answered. @param {Place} place */
  isLikely(place) {
    const network = networkOf(place);
    const isInSilent = network !== "" && this.#silentNetworks.has(network) && !this.#answering.has(network);
    return this.#silent.has(placeOf(place)) || isInSilent;
  }
}
