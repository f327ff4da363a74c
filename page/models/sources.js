/// Who says a fact, in words, with a number for each source; and the list of these sources.

import { el } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

/** @typedef {import("../recorder/model-document.js").Source} Source */

/** @param {Source} source */
function documentOf({ document, url }) {
  const text = document ?? url ?? "";
  const isLink = /^https?:\/\//i.test(url ?? "");
  return isLink ? el("a", { href: url, text, target: "_blank", rel: "noopener noreferrer" }) : text;
}

/** @param {string} words */
const capitalised = (words) => words.charAt(0).toUpperCase() + words.slice(1);

/** @param {Source} source */
function itemOf(source) {
  const page = source.page ? texts.sources.page(source.page) : "";
  const checked = source.checked ? texts.sources.checked(source.checked) : "";
  const way = texts.sources.ways[source.by ?? ""] ?? "";
  return el("li", {}, `${capitalised(way)}: `, documentOf(source), page + checked);
}

export class Sources {
  /** By what they say of themselves, in the order in which they were named. @type {Map<string, Source>} */
  #named = new Map();

  /** Who says it. @param {Source} source */
  said({ by, document, url, page, checked }) {
    if (!by) return texts.sources.none;
    const key = JSON.stringify([by, document, url, page, checked]);
    this.#named.set(key, { by, document, url, page, checked });
    return `${texts.sources.ways[by] ?? by} [${[...this.#named.keys()].indexOf(key) + 1}]`;
  }

  /** Those that were named so far. */
  list() {
    if (this.#named.size === 0) return [];
    const list = el("ol", { class: "sources" }, ...[...this.#named.values()].map(itemOf));
    const hint = list.querySelector("a") ? [el("p", { class: "hint", text: texts.sources.newTab })] : [];
    return [el("h3", { text: texts.sources.title }), ...hint, list];
  }
}
