/// Which rows of a list go out together in one request, which is answered when its slowest camera is.

import { ridesInGroup } from "../list/camera-list.js";

/** @typedef {import("../list/camera-list.js").Row} Row */

/** Requests in flight at a time; the recorder has room for one more, for others. */
export const LANES = 3;
/** Most cameras in a request: few, so that it holds few others. */
const GROUP = 4;
/** Requests for each lane that the rest of a run is cut into, so that groups grow smaller towards the end. */
const CUTS = 3;
/** Silent cameras hold nobody who is not silent too. The recorder tests this many side by side. */
const SLOW_GROUP = 10;

/** @param {Row} row */
const hostOf = (row) => row.camera?.host.toLowerCase() ?? "";

/** Whether a row may share a request with others. @param {Row} row */
export const rides = (row) => row.camera !== null && ridesInGroup(row.camera);

/**
 * Rows to send together: in the file's order, never two of one host; or one that rides in no group.
 * @param {Row[]} waiting
 * @param {number} size
 */
function firstOf(waiting, size) {
  /** @type {Map<string, Row>} */
  const group = new Map();
  for (const row of waiting.filter(rides)) {
    if (group.size === size) break;
    if (!group.has(hostOf(row))) group.set(hostOf(row), row);
  }
  return group.size > 0 ? [...group.values()] : waiting.slice(0, 1);
}

/**
 * The next rows to send together; those that are likely to be slow go last. None while all hosts are busy.
 * @param {Row[]} waiting
 * @param {Row[]} sent whose hosts are busy
 * @param {boolean} isProven a login has passed; before that, rows go one by one
 * @param {(row: Row) => boolean} isSlow
 */
export function nextRequest(waiting, sent, isProven, isSlow) {
  const busy = new Set(sent.map(hostOf));
  const free = waiting.filter((row) => !busy.has(hostOf(row)));
  const usual = free.filter((row) => !isSlow(row));
  const size = Math.min(GROUP, Math.ceil(usual.filter(rides).length / (LANES * CUTS)));
  return usual.length > 0 ? firstOf(usual, isProven ? size : 1) : firstOf(free, isProven ? SLOW_GROUP : 1);
}

/** @param {Row[]} rows @param {number} size of a group */
function countOf(rows, size) {
  const riding = rows.filter(rides).length;
  return Math.ceil(riding / size) + rows.length - riding;
}

/** How many requests these rows take. @param {Row[]} rows @param {(row: Row) => boolean} isSlow */
export function countRequests(rows, isSlow) {
  const slow = rows.filter(isSlow);
  const usual = rows.filter((row) => !isSlow(row));
  return { usual: countOf(usual, GROUP), slow: countOf(slow, SLOW_GROUP) };
}
