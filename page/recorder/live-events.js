/// Changes of stored cameras as they come: one connection for all who listen. Where the recorder refuses it, since others
/// have as many as there may be, changes are read again and again.

/**
 * @typedef {import("./events.js").CameraEvent} CameraEvent
 *
 * @typedef {object} Listener
 * @property {(event: CameraEvent) => void} heard a change as it came
 * @property {() => Promise<void>} missed some may have come that it did not hear: it reads pages of them, and does not fail
 */

const ADDRESS = "recorder/1/events";
/** The recorder may not have noticed yet that somebody is gone. */
const SOON_MS = 5000;
const LATER_MS = 30_000;
/** From one view to the other. */
const LINGER_MS = 1000;

class LiveEvents {
  /** @type {Set<Listener>} */
  #listeners = new Set();
  /** @type {EventSource | null} */
  #source = null;
  #refusals = 0;
  #again = 0;
  #ending = 0;

  /** @param {Listener} listener */
  listen(listener) {
    clearTimeout(this.#ending);
    this.#listeners.add(listener);
    if (this.#source) listener.missed();
    else this.#connect();
  }

  /** @param {Listener} listener */
  leave(listener) {
    const wasLast = this.#listeners.delete(listener) && this.#listeners.size === 0;
    if (wasLast) this.#ending = setTimeout(() => this.#end(), LINGER_MS);
  }

  #end() {
    clearTimeout(this.#again);
    this.#source?.close();
    this.#source = null;
    this.#refusals = 0;
  }

  /** When it breaks off, the browser makes it anew by itself, and says what it heard last. */
  #connect() {
    const source = new EventSource(ADDRESS);
    this.#source = source;
    source.addEventListener("open", () => this.#opened(), { once: true });
    source.addEventListener("message", ({ data }) => this.#hear(JSON.parse(data)));
    source.addEventListener("error", () => {
      if (source.readyState === EventSource.CLOSED) this.#readInstead(source);
    });
  }

  #opened() {
    this.#refusals = 0;
    this.#readMissed();
  }

  /** @param {CameraEvent} event */
  #hear(event) {
    for (const listener of this.#listeners) listener.heard(event);
  }

  #readMissed() {
    return Promise.all([...this.#listeners].map((listener) => listener.missed()));
  }

  /** @param {EventSource} refused */
  async #readInstead(refused) {
    await this.#readMissed();
    if (this.#source !== refused) return;
    this.#again = setTimeout(() => this.#connect(), this.#refusals++ === 0 ? SOON_MS : LATER_MS);
  }
}

export const liveEvents = new LiveEvents();
