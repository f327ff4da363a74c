/// In which order stills are asked for: a few at a time, never two of one host. Knows no document.

/** @typedef {{host: string, work: () => Promise<void>}} Wish */

export class StillQueue {
  /** @type {Map<unknown, Wish>} the first is the next */
  #waiting = new Map();
  #busyHosts = new Set();

  /** @param {number} atOnce */
  constructor(atOnce) {
    this.atOnce = atOnce;
  }

  /** @param {unknown} key @param {Wish} wish whose work does not fail */
  add(key, wish) {
    this.#waiting.set(key, wish);
    this.#next();
  }

  /** It is no longer wanted. What is under way goes on. @param {unknown} key */
  remove(key) {
    this.#waiting.delete(key);
  }

  #next() {
    for (const [key, { host, work }] of this.#waiting) {
      if (this.#busyHosts.size >= this.atOnce) return;
      if (this.#busyHosts.has(host)) continue;
      this.#waiting.delete(key);
      this.#busyHosts.add(host);
      work().finally(() => {
        this.#busyHosts.delete(host);
        this.#next();
      });
    }
  }
}
