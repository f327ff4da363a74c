/// Saving a camera that passed its test.

export const saving = {
  save: "Save this camera",
  /** What a camera is called that nobody has named yet. @param {string} place @param {string} channel */
  placeAndChannel: (place, channel) => `${place}, channel ${channel}`,
  noName: "Type a name.",
  testedOnes: "Saves the values that were tested, not those in the fields now",
  saving: "Saving",
  savedAs: "Saved as ",
  storedAlready: "Stored already as ",
  open: "Open",
  /** @param {string} name */
  openNamed: (name) => `Open ${name}`,
  allTheSame: "Store it all the same",
};
