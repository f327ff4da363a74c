/// Who says what the recorder knows of a model.

export const sources = {
  title: "Sources",
  newTab: "Links open in a new tab.",
  assumed: "assumed",
  none: "no source is named",
  /** By the way in which it is known. @type {Readonly<Record<string, string>>} */
  ways: {
    document: "read in",
    agreeing: "two independent sources",
    reported: "as reported, not tried by us",
    camera: "the camera said so",
    user: "your own file",
  },
  /** @param {string} page */
  page: (page) => `, page ${page}`,
  /** @param {string} day */
  checked: (day) => `, looked at on ${day}`,
};
