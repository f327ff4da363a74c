/// The stills of the list: of the cards that can be seen, a few at a time; the oldest are let go of.

import { takeStill } from "../recorder/cameras.js";
import { Trouble } from "../recorder/request.js";
import { placeOf } from "./camera-words.js";
import { StillQueue } from "./still-queue.js";

/** @typedef {import("./camera-card.js").CameraCard} CameraCard */

const AT_ONCE = 4;
const MOST_KEPT = 100;
const FRESH_MS = 60_000;
/** A card that is only scrolled past is not asked for. */
const LINGER_MS = 150;
const AGES_MS = 10_000;
/** Failures of one stream, where another may work. */
const OF_A_STREAM = ["noSuchStream", "noVideo", "encryptedStream", "transportRefused", "notUnderstood", "decoderFailed"];

/** Of the sub stream, which is less to send; where that one fails, of the main one. @param {CameraCard} card */
async function stillOf(card) {
  const { id, streams } = card.camera;
  if (card.lacksSub || !streams.includes("sub")) return takeStill(id, "main");
  try {
    return await takeStill(id, "sub");
  } catch (error) {
    card.lacksSub = error instanceof Trouble && OF_A_STREAM.includes(error.cause);
    if (!card.lacksSub) throw error;
    return takeStill(id, "main");
  }
}

export class Stills {
  #queue = new StillQueue(AT_ONCE);
  /** @type {Map<Element, CameraCard>} */
  #cards = new Map();
  /** @type {Map<CameraCard, number>} those in sight, with their timers */
  #inSight = new Map();
  /** Those with a still, the oldest first. @type {Set<CameraCard>} */
  #kept = new Set();
  #observer = new IntersectionObserver((entries) => this.#look(entries));

  /** @param {() => void} changed cameras are in other states than are shown */
  constructor(changed) {
    this.changed = changed;
    setInterval(() => this.#inSight.forEach((_, card) => card.showAge()), AGES_MS);
  }

  /** @param {CameraCard} card */
  add(card) {
    this.#cards.set(card.element, card);
    this.#observer.observe(card.element);
  }

  /** @param {CameraCard} card */
  remove(card) {
    this.#observer.unobserve(card.element);
    this.#cards.delete(card.element);
    this.#leave(card);
    this.#kept.delete(card);
    card.clear();
  }

  /** Asks for those in sight that were changed, or whose last still did not come. */
  look() {
    for (const card of this.#inSight.keys()) if (card.askedAt === 0 || !card.hasStill) this.#want(card);
  }

  /** @param {IntersectionObserverEntry[]} entries */
  #look(entries) {
    for (const { target, isIntersecting } of entries) {
      const card = this.#cards.get(target);
      if (card) this.#leave(card);
      if (card && isIntersecting) this.#inSight.set(card, setTimeout(() => this.#want(card), LINGER_MS));
    }
  }

  /** @param {CameraCard} card */
  #leave(card) {
    clearTimeout(this.#inSight.get(card));
    this.#inSight.delete(card);
    this.#queue.remove(card);
  }

  /** @param {CameraCard} card */
  #want(card) {
    card.showAge();
    if (!card.mayBeAsked || Date.now() - card.askedAt < FRESH_MS) return;
    this.#queue.add(card, { place: placeOf(card.camera), isLate: card.hasFailed, work: () => this.#renew(card) });
  }

  /** @param {CameraCard} card */
  async #renew(card) {
    await card.renew(() => stillOf(card));
    if (card.isNews) this.changed();
    this.#kept.delete(card);
    if (!card.hasStill) return;
    this.#kept.add(card);
    this.#dropOldest();
  }

  #dropOldest() {
    for (const card of this.#kept) {
      if (this.#kept.size <= MOST_KEPT) return;
      if (this.#inSight.has(card)) continue;
      this.#kept.delete(card);
      card.clear();
      card.askedAt = 0;
    }
  }
}
