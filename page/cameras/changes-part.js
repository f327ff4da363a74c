/// How the open camera has changed within 30 days, and what changes while it is open.

import { button, el } from "../parts/dom.js";
import { tell } from "../parts/forms.js";
import { table } from "../parts/table.js";
import { readEvents } from "../recorder/events.js";
import { liveEvents } from "../recorder/live-events.js";
import { messageOf } from "../text/text.js";
import { sentence, spanText, timeText } from "../texts/language.js";
import { texts } from "../texts/texts.js";
import { stateMark } from "./camera-card.js";
import { now, outcomeOf } from "./camera-words.js";

/**
 * @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera
 * @typedef {import("../recorder/events.js").CameraEvent} CameraEvent
 * @typedef {import("../recorder/events.js").Page} Page
 */

const words = texts.changes;
const MONTH_S = 30 * 86_400;
const PAGE = 20;

/** @param {CameraEvent} event @param {CameraEvent | undefined} newer the one after it */
function rowOf({ at, before, cause }, newer) {
  const lasted = newer ? spanText(newer.at - at) : words.soFar(now() - at);
  return [timeText(at), before === null ? words.noContact : outcomeOf(before).word, stateMark(outcomeOf(cause)), lasted];
}

export class ChangesPart {
  #id = 0;
  /** The newest first. @type {CameraEvent[]} */
  #events = [];
  /** Behind which older ones are; null for none. @type {number | null} */
  #next = null;
  #isRead = false;
  /** @type {import("../recorder/live-events.js").Listener} */
  #listener = { heard: (event) => this.#hear(event), missed: () => this.#read() };
  #numbers = el("p", { id: "camera-flips", class: "hint" });
  #list = el("div", { id: "camera-changes" });
  #trouble = el("p", { id: "camera-changes-trouble", class: "hint", hidden: true });
  #older = button(words.older, () => this.#readOlder(), { id: "camera-changes-older", hidden: true });
  element = el(
    "section",
    {},
    el("h2", { text: words.title }),
    ...[this.#numbers, this.#trouble, this.#list, this.#older],
  );

  /** @param {(event: CameraEvent) => void} heard */
  constructor(heard) {
    this.heard = heard;
    document.addEventListener("visibilitychange", () => this.#look());
  }

  /** @param {StoredCamera} camera */
  show({ state }) {
    const flips = state && state.flips > 1 ? [words.flips(state.flips)] : [];
    const took = state?.milliseconds ? [words.took(state.milliseconds)] : [];
    this.#numbers.textContent = [...flips, ...took].join(" ");
    this.#numbers.hidden = this.#numbers.textContent === "";
  }

  /** @param {number} id the camera's */
  open(id) {
    this.#id = id;
    tell(this.#trouble, words.reading);
    this.#look();
  }

  close() {
    this.#id = 0;
    this.#isRead = false;
    this.#look();
    this.#show([], null);
    this.#list.replaceChildren();
  }

  #look() {
    if (this.#id && !document.hidden) liveEvents.listen(this.#listener);
    else liveEvents.leave(this.#listener);
  }

  /** @param {CameraEvent} event */
  #hear(event) {
    if (event.camera !== this.#id) return;
    const isKnown = this.#events.some(({ id }) => id === event.id);
    if (!isKnown) this.#show([event, ...this.#events], this.#next);
    this.heard(event);
  }

  #read() {
    return this.#page((page) => {
      const [newest] = page.events;
      const isNews = this.#isRead && newest && newest.id > (this.#events[0]?.id ?? 0);
      this.#take(page);
      this.#isRead = true;
      if (isNews) this.heard(newest);
    });
  }

  /** Keeps what was heard meanwhile, and older ones unless some between are missing. @param {Page} page the newest */
  #take({ events, next }) {
    const [first, last] = [events[0]?.id ?? 0, events.at(-1)?.id ?? 0];
    const newer = this.#events.filter(({ id }) => id > first);
    const older = this.#events.filter(({ id }) => id < last);
    const isLinked = this.#isRead && this.#events.length > newer.length + older.length;
    if (isLinked) this.#show([...newer, ...events, ...older], this.#next);
    else this.#show([...newer, ...events], next);
  }

  #readOlder() {
    const after = this.#next;
    if (after === null) return;
    /** @param {Page} page */
    const take = ({ events, next }) => {
      if (this.#next === after) this.#show([...this.#events, ...events], next);
    };
    this.#page(take, { after });
  }

  /** @param {(page: Page) => void} take @param {{after?: number}} [more] */
  async #page(take, more = {}) {
    const id = this.#id;
    const wanted = { camera: id, since: Math.floor(now()) - MONTH_S, limit: PAGE, ...more };
    const page = await readEvents(wanted).catch((error) => ({ error }));
    if (this.#id !== id) return;
    tell(this.#trouble, "error" in page ? words.notRead(sentence(messageOf(page.error))) : "");
    if (!("error" in page)) take(page);
  }

  /** @param {CameraEvent[]} events @param {number | null} next */
  #show(events, next) {
    this.#events = events;
    this.#next = next;
    const { at, before, cause, lasted } = words.columns;
    const rows = events.map((event, i) => rowOf(event, events[i - 1]));
    const shown = rows.length > 0 ? table(words.month, [at, before, cause, lasted], rows) : el("p", { text: words.none });
    this.#list.replaceChildren(shown);
    this.#older.hidden = next === null;
  }
}
