/// Finds things by words of their texts, in any order, and forgives one typing error a word.

const SHORTEST_FORGIVEN = 4; // letters
const NOT_FOUND = -1;
/** What a word costs that is not found in the best way; each outweighs nine of the next. */
const COSTS = { error: 100, middle: 10, secondText: 1 };

const BLANKS = /[\s,;/]+/;
const SIGNS = /[^\p{L}\p{N}]+/gu;

/** Without capitals and accents. @param {string} text */
const plain = (text) => text.normalize("NFKD").replace(/\p{M}/gu, "").toLowerCase();

/** What stands between signs. @param {string} text */
export const splitAtSigns = (text) => plain(text).split(SIGNS).filter(Boolean);

/** Without signs and capitals: "DCS-2132L" is "dcs2132l". @param {string} text */
const wordsOf = (text) =>
  plain(text)
    .split(BLANKS)
    .map((word) => word.replace(SIGNS, ""))
    .filter(Boolean);

/** The words, and the parts of those with signs in them: "DCS-2132L" is found by "2132L" too. @param {string} text */
export const partsOf = (text) => [...new Set([...wordsOf(text), ...splitAtSigns(text)])];

/**
 * Whether a text has at a place what a word has from a place on.
 * @param {string} text
 * @param {number} inText
 * @param {string} word
 * @param {number} inWord
 */
function goesOn(text, inText, word, inWord) {
  while (inWord < word.length) if (text.charCodeAt(inText++) !== word.charCodeAt(inWord++)) return false;
  return true;
}

/**
 * Whether a text begins with a word in which one letter is another, too much or missing, or two are swapped.
 * @param {string} text
 * @param {string} word
 */
function beginsNearly(text, word) {
  let i = 0;
  while (i < word.length && text.charCodeAt(i) === word.charCodeAt(i)) ++i;
  if (goesOn(text, i + 1, word, i + 1) || goesOn(text, i, word, i + 1) || goesOn(text, i + 1, word, i)) return true;
  return word[i] === text[i + 1] && word[i + 1] === text[i] && goesOn(text, i + 2, word, i + 2);
}

/** Whether a whole word is what was typed, but for one typing error. @param {string} known @param {string} word */
export const isNearly = (known, word) =>
  word.length >= SHORTEST_FORGIVEN && Math.abs(known.length - word.length) <= 1 && beginsNearly(known, word);

/** A text: its words by number, and one after the other. @typedef {{numbers: number[], lines: string}} Indexed */
/** @typedef {{first: Indexed, second: Indexed}} Texts */

/** @param {Indexed} text @param {string} word */
function exactCost({ lines }, word) {
  if (!lines.includes(word)) return NOT_FOUND;
  return lines.includes(`\n${word}`) ? 0 : COSTS.middle;
}

/** The better one of what a word costs in two texts. @param {number} inFirst @param {number} inSecond */
function better(inFirst, inSecond) {
  if (inSecond === NOT_FOUND) return inFirst;
  return inFirst === NOT_FOUND ? inSecond + COSTS.secondText : Math.min(inFirst, inSecond + COSTS.secondText);
}

/** @template T */
export class WordSearch {
  /** Numbers of all words. @type {Map<string, number>} */
  #words = new Map();
  /** @type {({thing: T} & Texts)[]} */
  #entries;

  /**
   * Prepares the search, which takes longer than a search.
   * @param {T[]} things
   * @param {(thing: T) => [string, string]} textsOf of which the first weighs more
   */
  constructor(things, textsOf) {
    this.#entries = things.map((thing) => {
      const [first, second] = textsOf(thing);
      return { thing, first: this.#indexed(first), second: this.#indexed(second) };
    });
  }

  /** @param {string} text @returns {Indexed} */
  #indexed(text) {
    const parts = partsOf(text);
    for (const part of parts) if (!this.#words.has(part)) this.#words.set(part, this.#words.size);
    return { numbers: parts.map((part) => this.#words.get(part) ?? 0), lines: `\n${parts.join("\n")}` };
  }

  /**
   * Things that have every word: as it is before forgiven, at the beginning of a word before its middle, in the first text
   * before the second. A word is forgiven when nothing has it as it is, or nothing has all words; one with signs in it that
   * nothing has even then is taken apart.
   * @param {string} text
   * @returns {T[]} in their own order where they are alike; all of them for no word
   */
  find(text) {
    const words = plain(text)
      .split(BLANKS)
      .flatMap((word) => this.#asKnown(word));
    const exact = words.map((word) => this.#exact(word));
    const isKnown = exact.map((costs) => costs.some((cost) => cost !== NOT_FOUND));
    const costs = exact.map((ofWord, i) => (isKnown[i] ? ofWord : this.#forgive(words[i] ?? "", ofWord)));
    const found = this.#inOrder(costs);
    if (found.length > 0 || !isKnown.includes(true)) return found;
    return this.#inOrder(costs.map((ofWord, i) => (isKnown[i] ? this.#forgive(words[i] ?? "", ofWord) : ofWord)));
  }

  /** A typed word without its signs; its parts where nothing has it as one: "acme-dome" for "Dome 7 of Acme". @param {string} typed */
  #asKnown(typed) {
    const parts = splitAtSigns(typed);
    const whole = parts.join("");
    return parts.length < 2 || this.#isAnywhere(whole) ? [whole].filter(Boolean) : parts;
  }

  /** @param {string} word */
  #isAnywhere(word) {
    const isFound = (/** @type {number} */ cost) => cost !== NOT_FOUND;
    const exact = this.#exact(word);
    return exact.some(isFound) || this.#forgive(word, exact).some(isFound);
  }

  /** What a word costs in each thing that has it. @param {string} word */
  #exact(word) {
    return this.#entries.map(({ first, second }) => better(exactCost(first, word), exactCost(second, word)));
  }

  /** Adds the things that nearly have the word. @param {string} word @param {number[]} costs where it is as typed */
  #forgive(word, costs) {
    if (word.length < SHORTEST_FORGIVEN) return costs;
    const isNear = [...this.#words.keys()].map((known) => beginsNearly(known, word));
    const near = (/** @type {Indexed} */ { numbers }) => (numbers.some((i) => isNear[i]) ? COSTS.error : NOT_FOUND);
    return this.#entries.map(({ first, second }, i) => {
      const cost = costs[i] ?? NOT_FOUND;
      return cost === NOT_FOUND ? better(near(first), near(second)) : cost;
    });
  }

  /** @param {number[][]} costs of each word, in each thing */
  #inOrder(costs) {
    /** @type {T[][]} */
    const byCost = [];
    for (const [i, { thing }] of this.#entries.entries()) {
      const ofWords = costs.map((ofWord) => ofWord[i] ?? NOT_FOUND);
      if (ofWords.includes(NOT_FOUND)) continue;
      const sum = ofWords.reduce((one, other) => one + other, 0);
      (byCost[sum] ??= []).push(thing);
    }
    return byCost.flat();
  }
}
