/// What a person reads when a login comes to nothing.

import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";

/**
 * @param {{kind: string, status: number, waitSeconds: number, message: string}} trouble of a request that tells a password
 */
export function loginTrouble({ kind, status, waitSeconds, message }) {
  if (kind === "signedOut") return texts.login.wrong;
  if (kind === "offline" || kind === "timeOut") return texts.login.away;
  if (status === 429) return texts.login.tryAgainIn(waitSeconds);
  if (status === 503) return texts.login.busy;
  return sentence(message);
}
