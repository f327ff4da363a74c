/// How stored cameras have changed: what is said of a week, and of each change.

import { LANGUAGE, counted, spanText } from "./language.js";

const SECONDS = new Intl.NumberFormat(LANGUAGE, { maximumSignificantDigits: 2 });

export const changes = {
  /** Heading of a column. */
  week: "History",
  /** @param {number} seconds */
  within: (seconds) => `Last ${spanText(seconds)}`,
  /** @param {string} time */
  noFailure: (time) => `${time}: no failure`,
  /** @param {string} time @param {number} percent @param {number} failures */
  failed: (time, percent, failures) =>
    `${time}: worked ${percent.toLocaleString(LANGUAGE)}\u00a0%, ${counted(failures, "failure")}`,
  /** @param {string} said @param {number} flips */
  andChanges: (said, flips) => `${said}, ${counted(flips, "change")} within a day`,
  /** @param {string} trouble */
  notRead: (trouble) => `What changed before could not be read. ${trouble}`,

  title: "Changes",
  month: "Last 30 days, the newest first",
  columns: { at: "When", before: "From", cause: "To", lasted: "Lasted" },
  noContact: "Not tried",
  /** @param {number} seconds */
  soFar: (seconds) => `${spanText(seconds)} so far`,
  none: "No change.",
  reading: "Reading the changes",
  older: "Show older ones",
  /** @param {number} flips */
  flips: (flips) => `${counted(flips, "change")} within a day.`,
  /** @param {number} milliseconds */
  took: (milliseconds) => `The last check took ${SECONDS.format(milliseconds / 1000)} s.`,
  /** To screen readers. @param {string} name @param {string} state */
  isNow: (name, state) => `${name}: ${state}`,
};
