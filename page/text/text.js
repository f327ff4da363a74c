/// Words that several views need.

/** What a failure says of itself. @param {unknown} error */
export const messageOf = (error) => (error instanceof Error ? error.message : String(error));

/** Takes off percent-encoding, where it makes sense. @param {string} text */
export function decode(text) {
  try {
    return decodeURIComponent(text);
  } catch {
    return text; // a bare percent sign, in a password for one
  }
}
