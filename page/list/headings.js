/// Headings of a list's columns, as headings.json has them: what this page writes, and what else it understands.

import table from "../headings.json" with { type: "json" };

/**
 * @typedef {"name" | "address" | "port" | "user" | "password" | "vendor" | "model" | "channel" | "path" | "codec"
 *   | "stream"} Column
 */

/** In the order of a file without headings. */
export const COLUMNS = /** @type {readonly Column[]} */ (table.map(({ member }) => member).filter(Boolean));

/** What an export of results adds, in the order in which it writes them. */
export const RESULT_HEADINGS = table.filter(({ member }) => !member).map(({ heading }) => heading);

/** What makes no difference between headings is taken off. @param {string} heading */
export const plainHeading = (heading) => heading.toLowerCase().replace(/[\s_-]/g, "");

const MEMBERS = new Map(
  table.flatMap(({ member, heading, alsoKnownAs }) =>
    [heading, ...alsoKnownAs].map((known) => [plainHeading(known), /** @type {Column | ""} */ (member)]),
  ),
);

/**
 * The column that a heading names: "" for one that only exports have, null for one that is not understood.
 * @param {string} heading
 * @returns {Column | "" | null}
 */
export const columnOf = (heading) => MEMBERS.get(plainHeading(heading)) ?? null;
