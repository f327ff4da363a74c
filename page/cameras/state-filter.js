/// Buttons by which the list shows only cameras of one state.

import { button, el, refill } from "../parts/dom.js";
import { LANGUAGE } from "../texts/language.js";
import { texts } from "../texts/texts.js";

/** @typedef {import("./camera-words.js").Words} Words */

const ALL = { key: "", word: texts.cameras.all };

const FIRST = ["", "ok"];
const LAST = ["untried", "disabled"];

/** What works comes before failures, and these before what nobody can tell. @param {{key: string}} state */
function rankOf({ key }) {
  if (FIRST.includes(key)) return FIRST.indexOf(key);
  return FIRST.length + 1 + LAST.indexOf(key);
}

export class StateFilter {
  /** @type {{key: string, word: string}} */
  #chosen = ALL;
  element = el("div", { id: "cameras-states", class: "chips", role: "group", "aria-label": texts.cameras.show });

  /** @param {() => void} changed */
  constructor(changed) {
    this.changed = changed;
  }

  /** @param {Words} state */
  takes({ key }) {
    return this.#chosen === ALL || this.#chosen.key === key;
  }

  reset() {
    this.#chosen = ALL;
  }

  /** Offers the states that there are, and the chosen one in any case. @param {Words[]} states */
  offer(states) {
    const offered = new Map([ALL, this.#chosen, ...states].map((state) => [state.key, state]));
    const inOrder = [...offered.values()].sort((one, other) => rankOf(one) - rankOf(other));
    const chips = inOrder.map((offer) => {
      const isOf = (/** @type {Words} */ { key }) => offer.key === ALL.key || offer.key === key;
      return this.#chip(offer, states.filter(isOf).length);
    });
    refill(this.element, chips);
  }

  /** @param {{key: string, word: string}} state @param {number} count */
  #chip({ key, word }, count) {
    const press = () => {
      this.#chosen = key === ALL.key ? ALL : { key, word };
      this.changed();
    };
    const attributes = { "aria-pressed": String(key === this.#chosen.key), "data-kind": key || "all" };
    return button(`${word} ${count.toLocaleString(LANGUAGE)}`, press, attributes);
  }
}
