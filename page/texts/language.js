/// The language of the texts, and how it counts things and writes times.

/** As HTML and the browser name it (BCP 47). */
export const LANGUAGE = "en";

/**
 * A count and its noun.
 * @param {number} count
 * @param {string} one
 * @param {string} [many]
 */
export function counted(count, one, many = `${one}s`) {
  return `${count.toLocaleString(LANGUAGE)} ${count === 1 ? one : many}`;
}

const TIME = new Intl.DateTimeFormat(LANGUAGE, { dateStyle: "medium", timeStyle: "short", hourCycle: "h23" });

/** A time of the recorder's, as this browser's clock has it. @param {number | null} seconds since 1970 */
export const timeText = (seconds) => (seconds === null ? "" : TIME.format(seconds * 1000));

/** What the recorder says, with a capital and a full stop. @param {string} text */
export const sentence = (text) => `${text.charAt(0).toUpperCase()}${text.slice(1).replace(/\.$/, "")}.`;

const SPANS = /** @type {const} */ ([
  [86_400, "day"],
  [3600, "hour"],
  [60, "minute"],
  [1, "second"],
]);

/** A length of time in its largest unit: "3 hours". @param {number} seconds */
export function spanText(seconds) {
  const [size, unit] = SPANS.find(([length]) => seconds >= length) ?? [1, "second"];
  return counted(Math.floor(Math.max(seconds, 1) / size), unit);
}
