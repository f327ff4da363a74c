/// Words that several views need.

/** What a failure says of itself. @param {unknown} error */
export const messageOf = (error) => (error instanceof Error ? error.message : String(error));

/**
 * A count and its noun.
 * @param {number} count
 * @param {string} one
 * @param {string} [many]
 */
export function counted(count, one, many = `${one}s`) {
  return `${count.toLocaleString("en")} ${count === 1 ? one : many}`;
}

/** Takes off percent-encoding, where it makes sense. @param {string} text */
export function decode(text) {
  try {
    return decodeURIComponent(text);
  } catch {
    return text; // a bare percent sign, in a password for one
  }
}

/** What the recorder says, with a capital and a full stop. @param {string} text */
export const sentence = (text) => `${text.charAt(0).toUpperCase()}${text.slice(1).replace(/\.$/, "")}.`;

const TIME = new Intl.DateTimeFormat("en", { dateStyle: "medium", timeStyle: "short", hourCycle: "h23" });

/** A time of the recorder's, as this browser's clock has it. @param {number | null} seconds since 1970 */
export const timeText = (seconds) => (seconds === null ? "" : TIME.format(seconds * 1000));
