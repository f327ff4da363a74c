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
