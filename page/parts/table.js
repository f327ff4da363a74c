/// A table that is filled anew whenever something changes. On a phone its rows are cards.

import { el } from "./dom.js";

/**
 * @param {string} caption
 * @param {string[]} headings "" for that of buttons
 * @param {(string | HTMLElement)[][]} rows cells in the order of the headings; the first names the row
 */
export function table(caption, headings, rows) {
  const head = headings.map((text) => (text ? el("th", { scope: "col", text }) : el("td")));
  const body = rows.map(([name = "", ...cells]) =>
    el("tr", {}, el("th", { scope: "row" }, name), ...cells.map((cell, i) => cellOf(cell, headings[i + 1] ?? ""))),
  );
  return el(
    "table",
    { class: "cards" },
    el("caption", { text: caption }),
    el("thead", {}, el("tr", {}, ...head)),
    el("tbody", {}, ...body),
  );
}

/** @param {string | HTMLElement} cell @param {string} heading */
const cellOf = (cell, heading) => el("td", { "data-label": heading || null }, cell);
