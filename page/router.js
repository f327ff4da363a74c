/// Which view the address shows: "#NAME", and more behind slashes.

import { byId } from "./parts/dom.js";
import { decode } from "./text/text.js";
import { texts } from "./texts/texts.js";

/**
 * @typedef {object} View
 * @property {string} nav of the link "nav-NAV" to it, or to the view that it belongs to
 * @property {string} title
 * @property {(rest: string[]) => unknown} [open] is told what stands behind its name, each time that the address
 *   changes; it may set the focus
 * @property {() => void} [close]
 * @property {HTMLElement} [focus] what gets the focus when only what stands behind the name changes
 */

/** Shows views whose section has the id "view-NAME", and whose heading has "NAME-title". */
export class Router {
  #current = "";

  /**
   * @param {Readonly<Record<string, View>>} views by name
   * @param {(view: string, rest: string[]) => [string, string[]]} resolve says of an address which view it is
   */
  constructor(views, resolve) {
    this.views = views;
    this.resolve = resolve;
  }

  /** Shows what the address says, now and from now on. The focus stays where the view has put it. */
  start() {
    this.#open();
    window.addEventListener("hashchange", () => this.#changed());
  }

  #changed() {
    const before = this.#current;
    const view = this.#open();
    if (this.#current === before) return view?.focus?.focus();
    const isPlaced = byId(`view-${this.#current}`, HTMLElement).contains(document.activeElement);
    if (!isPlaced) byId(`${this.#current}-title`, HTMLElement).focus();
  }

  #open() {
    const [first = "", ...others] = location.hash.slice(1).split("/").map(decode);
    const [name, rest] = this.resolve(first, others);
    const view = this.views[name];
    if (name !== this.#current) this.#show(name);
    view?.open?.(rest);
    return view;
  }

  /** @param {string} name */
  #show(name) {
    this.views[this.#current]?.close?.();
    this.#current = name;
    const shown = this.views[name];
    for (const [other, { nav }] of Object.entries(this.views)) {
      byId(`view-${other}`, HTMLElement).hidden = other !== name;
      byId(`nav-${nav}`, HTMLElement).removeAttribute("aria-current");
    }
    if (!shown) return;
    byId(`nav-${shown.nav}`, HTMLElement).setAttribute("aria-current", "page");
    document.title = texts.common.title(shown.title);
  }
}
