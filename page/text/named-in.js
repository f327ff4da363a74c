/// Which of some names a text names.

import { isNearly, partsOf, splitAtSigns } from "./word-search.js";

/** @typedef {(known: string, word: string) => boolean} IsAlike */

/** @type {IsAlike} */
const isSame = (known, word) => known === word;

/**
 * Those that most of the words are words of; of several, those that the earliest word names.
 * @param {string[]} words
 * @param {string[]} names
 * @param {IsAlike} isAlike
 */
function likest(words, names, isAlike) {
  const all = names.map((name) => {
    const parts = partsOf(name);
    const isIn = words.map((word) => parts.some((part) => isAlike(part, word)));
    return { name, count: isIn.filter(Boolean).length, first: isIn.indexOf(true) };
  });
  const most = Math.max(1, ...all.map(({ count }) => count));
  const best = all.filter(({ count }) => count === most);
  const earliest = Math.min(...best.map(({ first }) => first));
  return best.filter(({ first }) => first === earliest).map(({ name }) => name);
}

/**
 * Those that the text has words of; where it has none, one typing error a word is forgiven.
 * @param {string} text
 * @param {string[]} names
 */
export function namedIn(text, names) {
  const words = splitAtSigns(text);
  const same = likest(words, names, isSame);
  return same.length > 0 ? same : likest(words, names, isNearly);
}
