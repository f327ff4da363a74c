/// Requests that the recorder refuses because nobody is logged in: they wait until somebody is, and are sent then. Such a
/// request has reached no camera.

/** @type {() => Promise<boolean>} */
let askPerson = async () => false;
/** The question that is asked right now. @type {Promise<boolean> | null} */
let asking = null;
let askedSince = 0;
let waitedMs = 0;
let logins = 0;

/**
 * Names the one who asks for a login.
 * @param {() => Promise<boolean>} ask false when nobody wants to log in now; asked once for all that wait
 */
export function whenSignedOut(ask) {
  askPerson = ask;
}

/** How often somebody has logged in while requests waited. */
export const loginsSoFar = () => logins;

/** A clock in milliseconds that stands still while requests wait for a login. */
export const workingTime = () => (asking ? askedSince : Date.now()) - waitedMs;

async function ask() {
  askedSince = Date.now();
  try {
    const isIn = await askPerson();
    if (isIn) ++logins;
    return isIn;
  } finally {
    waitedMs += Date.now() - askedSince;
    asking = null;
  }
}

/**
 * Waits until somebody has logged in. False when nobody will, or when the request is no longer wanted.
 * @param {AbortSignal} [signal]
 */
export function untilSignedIn(signal) {
  asking ??= ask();
  /** @type {Promise<boolean>} */
  const stopped = new Promise((resolve) => signal?.addEventListener("abort", () => resolve(false), { once: true }));
  return Promise.race([asking, stopped]);
}
