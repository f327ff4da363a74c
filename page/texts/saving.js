/// Saving cameras that passed a test: the one of I know its data, and those of a list.

import { counted } from "./language.js";

export const saving = {
  // ---- one camera ----
  save: "Save this camera",
  /** What a camera is called that nobody has named yet. @param {string} place @param {string} channel */
  placeAndChannel: (place, channel) => `${place}, channel ${channel}`,
  testedOnes: "Saves the values that were tested, not those in the fields now",
  saving: "Saving",
  savedAs: "Saved as ",
  storedAlready: "Stored already as ",
  /** At the same place, by another model. */
  perhapsStored: "Perhaps stored already as ",
  open: "Open",

  // ---- many cameras ----
  /** @param {number} count @param {boolean} isRest others were added before */
  addAll: (count, isRest) => {
    const which = isRest ? "the other" : count === 1 ? "the" : "all";
    return `Add ${which} ${count === 1 ? "one" : count} that passed`;
  },
  addAgain: "Add the failed ones again",
  /** @param {number} count */
  addPerhaps: (count) => (count === 1 ? "Add that one all the same" : `Add those ${count} all the same`),
  stop: "Stop adding",
  progress: "Cameras added",
  /** @param {number} count */
  twice: (count) =>
    count === 1
      ? "1 row is the same camera as a row above it: it is added once."
      : `${count} rows are the same cameras as rows above them: each is added once.`,
  /** @param {number} count */
  forgotten: (count) =>
    `${counted(count, "row")} that passed cannot be added: the password was forgotten. Type it again.`,

  adding: "Adding",
  added: "Added",
  notAdded: "Not added: ",
  /** @param {number} count */
  begins: (count) => `Adding ${counted(count, "camera")}`,
  /** @param {number} added @param {number} there stored before @param {number} perhaps the same @param {number} failed */
  summary: (added, there, perhaps, failed) => {
    const stored = [there && `${there} stored already`, perhaps && `${perhaps} perhaps stored already`];
    const counts = [`${added} added`, ...stored, failed && `${failed} failed`];
    return `${counts.filter(Boolean).join(", ")}.`;
  },
  /** The recorder did not answer as it should. @param {string} why a sentence */
  brokenOff: (why) => `Stopped. ${why}`,
  /** @param {number} count */
  leftOver: (count) => `${counted(count, "row")} ${count === 1 ? "was" : "were"} not added`,
  /** Of a row that was not added. @param {number} line @param {string} why */
  ofLine: (line, why) => `Line ${line}: ${why}`,
};
