/// Requests in flight, and the waiting until one has ended.

import { workingTime } from "../recorder/admission.js";

/** @typedef {import("../list/camera-list.js").Row} Row */

export class Lanes {
  /** Requests by their rows: when they were sent, and their end. @type {Map<Row[], {sent: number, end: Promise<void>}>} */
  #requests = new Map();
  /** @type {() => void} */
  #wake = () => {};

  get size() {
    return this.#requests.size;
  }

  /** All rows in flight. */
  get rows() {
    return [...this.#requests.keys()].flat();
  }

  /** Milliseconds that each request has taken so far. */
  get ages() {
    return [...this.#requests.values()].map(({ sent }) => workingTime() - sent);
  }

  /** @param {Row[]} rows @param {() => Promise<void>} send ends when they are answered, and never fails */
  carry(rows, send) {
    const request = { sent: workingTime(), end: Promise.resolve() };
    this.#requests.set(rows, request);
    request.end = send().finally(() => this.#requests.delete(rows));
  }

  /** Until a request has ended, or wake() was called. */
  async moved() {
    const woken = new Promise((resolve) => {
      this.#wake = () => resolve(undefined);
    });
    await Promise.race([...[...this.#requests.values()].map(({ end }) => end), woken]);
  }

  wake() {
    this.#wake();
  }
}
