/// How long a run still takes, learnt from what its requests took so far, and those of earlier runs.

/** How long the recorder waits for a silent camera, until one was seen. */
const SILENT_MS = 10_000;
/** How much the latest request counts against all earlier ones. */
const NEWEST = 0.4;

/** A mean in which the latest counts most. @param {number} mean @param {number} latest */
const learn = (mean, latest) => (mean ? mean + NEWEST * (latest - mean) : latest);

export class Estimate {
  #quick = 0; // milliseconds; 0 for not known
  #slow = 0;
  #share = 0; // of requests that were slow though nobody expected it

  /** @param {number} milliseconds that a request took @param {boolean} hadSilent @param {boolean} wasLikely */
  note(milliseconds, hadSilent, wasLikely) {
    if (hadSilent) this.#slow = learn(this.#slow, milliseconds);
    else this.#quick = learn(this.#quick, milliseconds);
    if (!wasLikely) this.#share += NEWEST * (Number(hadSilent) - this.#share);
  }

  /**
   * @param {number} requests still to be sent
   * @param {number} slowRequests as many more, of cameras that are likely to be silent
   * @param {number[]} inFlight milliseconds that each request in flight has taken
   * @param {number} lanes how many requests are in flight at a time
   * @returns {number} milliseconds; 0 while nothing is known
   */
  left(requests, slowRequests, inFlight, lanes) {
    if (!this.#quick && !this.#slow) return 0;
    const slow = this.#slow || SILENT_MS;
    const usual = this.#quick * (1 - this.#share) + slow * this.#share;
    const rests = inFlight.map((ms) => Math.max((ms < this.#quick ? this.#quick : slow) - ms, 0));
    const sum = requests * usual + slowRequests * slow + rests.reduce((one, other) => one + other, 0);
    return Math.max(sum / lanes, slowRequests > 0 ? slow : 0, ...rests);
  }
}
