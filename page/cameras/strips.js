/// The strips of all cards, which follow the changes that the recorder tells of.

import { el } from "../parts/dom.js";
import { tell } from "../parts/forms.js";
import { readEventsSince } from "../recorder/events.js";
import { liveEvents } from "../recorder/live-events.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";
import { now } from "./camera-words.js";
import { History } from "./history.js";

/** @typedef {import("./camera-card.js").CameraCard} CameraCard */

export class Strips {
  #history = new History();
  #isRead = false;
  #isOpen = false;
  /** @type {import("../recorder/live-events.js").Listener} */
  #listener = { heard: (event) => this.#hear(event), missed: () => this.#catchUp() };
  /** Why there are none; a hint, so that nothing interrupts. */
  trouble = el("p", { id: "cameras-changes-trouble", class: "hint", hidden: true });

  /**
   * @param {() => Iterable<CameraCard>} cards those that there are
   * @param {() => void} changed cameras are in other states now
   */
  constructor(cards, changed) {
    this.cards = cards;
    this.changed = changed;
    document.addEventListener("visibilitychange", () => this.#look());
  }

  open() {
    this.#isOpen = true;
    this.#look();
  }

  close() {
    this.#isOpen = false;
    this.#look();
  }

  /** Time has passed, or there are other cards. */
  draw() {
    if (!this.#isRead) return;
    for (const card of this.cards()) this.#drawOne(card);
  }

  /** @param {CameraCard} card */
  #drawOne({ strip, camera: { id, enabled, state } }) {
    if (enabled && state) strip.show(this.#history.weekOf(id, state, now()), state.flips);
    else strip.show(null, 0);
  }

  #look() {
    if (this.#isOpen && !document.hidden) liveEvents.listen(this.#listener);
    else liveEvents.leave(this.#listener);
  }

  /** @param {import("../recorder/events.js").CameraEvent} event */
  #hear(event) {
    this.#history.add(event);
    this.changed();
  }

  async #catchUp() {
    try {
      const { events, isWhole } = await readEventsSince(this.#history.since(now()));
      this.#history.take(events, isWhole);
      this.#isRead = true;
      tell(this.trouble, "");
      this.draw();
    } catch (error) {
      tell(this.trouble, texts.changes.notRead(sentence(messageOf(error))));
    }
  }
}
