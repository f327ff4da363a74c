/// Says, in every view, when the recorder cannot be asked, and finds out when it can again. A test is never sent again
/// from here.

import { byId } from "./parts/dom.js";
import { watchRecorder } from "./recorder/request.js";

const RETRY_AFTER_S = [5, 10, 20, 30]; // the last one again and again

/**
 * @param {import("./recorder/models.js").ModelList} models what is asked for, since it contacts no camera
 */
export function watchConnection(models) {
  const offline = byId("offline", HTMLElement);
  const signedOut = byId("signed-out", HTMLElement);
  let timer = 0;
  let tries = 0;

  const retryLater = () => {
    const seconds = RETRY_AFTER_S[Math.min(tries++, RETRY_AFTER_S.length - 1)] ?? 30;
    timer = window.setTimeout(async () => {
      timer = 0;
      await models.load();
      if (!offline.hidden && !timer) retryLater(); // it came to nothing, and nobody was told
    }, seconds * 1000);
  };
  watchRecorder((state) => {
    offline.hidden = state !== "offline";
    signedOut.hidden = state !== "signedOut";
    if (state === "offline") {
      if (!timer) retryLater();
      return;
    }
    clearTimeout(timer);
    timer = 0;
    tries = 0;
  });
  models.addEventListener("change", () => {
    const isTold = !offline.hidden || !signedOut.hidden;
    byId("models-failed", HTMLElement).hidden = models.state !== "failed" || isTold;
    byId("models-failed-text", HTMLElement).textContent = models.trouble;
  });
  byId("models-again", HTMLButtonElement).addEventListener("click", () => models.load());
  byId("sign-in", HTMLButtonElement).addEventListener("click", () => models.load());
  byId("not-encrypted", HTMLElement).hidden = window.isSecureContext;
}
