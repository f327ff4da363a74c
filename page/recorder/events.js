/// Of the recorder's own API: how stored cameras have changed. Addresses and members stand here and nowhere else. Times
/// are seconds since 1970. No camera is contacted.

import { ask } from "./request.js";

/**
 * What contact with a camera comes to has changed.
 * @typedef {object} CameraEvent
 * @property {number} id larger than those before
 * @property {number} camera
 * @property {number} at
 * @property {string} cause "ok", or the recorder's name for the failure
 * @property {string | null} before null where there was no contact before
 *
 * Which of them are asked for: all, or those of a camera.
 * @typedef {{camera?: number, since?: number, after?: number, limit?: number}} Wanted
 *
 * @typedef {{events: CameraEvent[], next: number | null}} Page the newest first; null on the last one
 */

const ADDRESS = "recorder/1/events";
const LARGEST_PAGE = 1000;
const MOST_PAGES = 20;

/** @param {Wanted} wanted */
const addressOf = (wanted) =>
  `${ADDRESS}?${new URLSearchParams(Object.entries(wanted).map(([name, value]) => [name, String(value)]))}`;

/** @param {Wanted} wanted @returns {Promise<Page>} */
export const readEvents = async (wanted) => (await ask({ verb: "GET", address: addressOf(wanted) })).body.data;

/**
 * Those of all cameras.
 * @param {number} since
 * @returns {Promise<{events: CameraEvent[], isWhole: boolean}>} the newest first; not whole when there are too many
 */
export async function readEventsSince(since) {
  /** @type {CameraEvent[]} */
  const events = [];
  /** @type {number | null} */
  let next = null;
  for (let page = 0; page < MOST_PAGES; ++page) {
    const wanted = { since, limit: LARGEST_PAGE };
    const read = await readEvents(next === null ? wanted : { ...wanted, after: next });
    events.push(...read.events);
    next = read.next;
    if (next === null) break;
  }
  return { events, isWhole: next === null };
}
