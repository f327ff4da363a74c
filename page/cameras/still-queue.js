/// In which order stills are asked for: a few at a time, never two of one place, and last those of cameras that are likely
/// to be silent. Knows no document.

/** @typedef {{place: string, isLate: boolean, work: () => Promise<void>}} Wish */

export class StillQueue {
  /** @type {Map<unknown, Wish>} the first is the next of its kind */
  #waiting = new Map();
  #busyPlaces = new Set();

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

  get #inOrder() {
    const waiting = [...this.#waiting];
    return [...waiting.filter(([, { isLate }]) => !isLate), ...waiting.filter(([, { isLate }]) => isLate)];
  }

  #next() {
    for (const [key, { place, work }] of this.#inOrder) {
      if (this.#busyPlaces.size >= this.atOnce) return;
      if (this.#busyPlaces.has(place)) continue;
      this.#waiting.delete(key);
      this.#busyPlaces.add(place);
      work().finally(() => {
        this.#busyPlaces.delete(place);
        this.#next();
      });
    }
  }
}
