/// What a person reads when a login comes to nothing.

import { counted, sentence } from "../texts/language.js";

const AWAY = "The recorder is not reachable. Try again when it is.";
const WRONG = "The user or the password is wrong.";

export const USED_LINK =
  "This link was used already, or is too old. Log in, or let “recorderctl link” print another one.";
export const NO_USER =
  "This recorder has no user yet. “recorderctl link” prints an address where the first one is made.";
export const EXPIRED =
  "The recorder no longer knows this browser. What you typed, the list and its results stay, and what waits goes on.";
export const FIRST_USER = "This recorder has no user yet. Make the first one: an admin, who can add others.";

/**
 * @param {{kind: string, status: number, waitSeconds: number, message: string}} trouble of a request that tells a password
 */
export function loginTrouble({ kind, status, waitSeconds, message }) {
  if (kind === "signedOut") return WRONG;
  if (kind === "offline" || kind === "timeOut") return AWAY;
  if (status === 429) return `Wrong passwords came before. Try again in ${counted(waitSeconds, "second")}.`;
  if (status === 503) return "The recorder is busy with other logins. Try again in a moment.";
  return sentence(message);
}
