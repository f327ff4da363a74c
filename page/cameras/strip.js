/// A camera's last 7 days: a strip with a column an hour, and the same in words.

import { el } from "../parts/dom.js";
import { texts } from "../texts/texts.js";
import { HOURS } from "./history.js";

/**
 * @typedef {import("./history.js").Week} Week
 * @typedef {import("./history.js").HourKind} HourKind
 */

const words = texts.changes;
const HEIGHT = 12;
const DAY = 86_400;
/** Changes within a day that one failure brings; more of them are told of. */
const FEW = 2;
/** How high a column is: colour alone says nothing. @type {Readonly<Record<string, number>>} */
const HEIGHTS = { works: 3, partly: 8, fails: HEIGHT };

/** @param {string} tag @param {Record<string, string>} attributes @param {...SVGElement} children */
function drawn(tag, attributes, ...children) {
  const made = document.createElementNS("http://www.w3.org/2000/svg", tag);
  for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, value);
  made.append(...children);
  return made;
}

/** A block from this hour on, as far as hours are alike. @param {HourKind[]} hours @param {number} from */
function blockAt(hours, from) {
  const end = hours.findIndex((hour, x) => x > from && hour !== hours[from]);
  const height = HEIGHTS[hours[from] ?? ""];
  return `M${from} ${HEIGHT}v-${height}h${(end < 0 ? HOURS : end) - from}v${height}z`;
}

/** All blocks of one kind, as a path. @param {HourKind[]} hours @param {string} kind */
const pathOf = (hours, kind) =>
  hours.map((hour, x) => (hour === kind && hours[x - 1] !== kind ? blockAt(hours, x) : "")).join("");

/** Of a time that worked nearly always, not 100 %. @param {Week} week */
const percentOf = ({ worked, known }) => Math.floor((worked / known) * 1000) / 10;

/** @param {Week} week */
function wordsOf(week) {
  if (week.known === 0) return "";
  const time = words.within(week.known >= 7 * DAY - 3600 ? 7 * DAY : week.known);
  return week.failures === 0 ? words.noFailure(time) : words.failed(time, percentOf(week), week.failures);
}

export class Strip {
  #paths = Object.fromEntries(Object.keys(HEIGHTS).map((kind) => [kind, drawn("path", { class: kind })]));
  #drawing = drawn(
    "svg",
    { viewBox: `0 0 ${HOURS} ${HEIGHT}`, preserveAspectRatio: "none", "aria-hidden": "true" },
    ...Object.values(this.#paths),
  );
  #words = el("p");
  element = el("div", { class: "strip", hidden: true }, this.#drawing, this.#words);
  /** What it says, for a table. */
  cell = el("span");

  /** @param {Week | null} week null for nothing @param {number} flips changes within a day */
  show(week, flips) {
    const said = week ? wordsOf(week) : "";
    this.element.hidden = said === "";
    const whole = said && flips > FEW ? words.andChanges(said, flips) : said;
    for (const place of [this.#words, this.cell]) place.textContent = whole;
    for (const [kind, path] of Object.entries(this.#paths)) {
      const shape = week ? pathOf(week.hours, kind) : "";
      if (path.getAttribute("d") !== shape) path.setAttribute("d", shape);
    }
  }
}
