/// Who is logged in: at the start, by a link, and again when the recorder no longer knows this browser.

import { byId, say } from "../parts/dom.js";
import * as access from "../recorder/access.js";
import { whenSignedOut } from "../recorder/admission.js";
import { Trouble } from "../recorder/request.js";
import { loginTrouble } from "../text/login-words.js";
import { texts } from "../texts/texts.js";
import { LoginView } from "./login-view.js";

/** @typedef {access.Session} Session */

const RETRY_MS = 5000;
const NO_USER_YET = 409; // of a good link

export const LINK = "#link=";

/** The code of a link that signs in, which then stands in the address no longer; "" for none. */
function takeLink() {
  if (!location.hash.startsWith(LINK)) return "";
  const code = location.hash.slice(LINK.length);
  history.replaceState(null, "", location.pathname + location.search);
  return code;
}

/** @param {unknown} error @returns {error is Trouble} */
const isAway = (error) => error instanceof Trouble && ["offline", "timeOut"].includes(error.kind);

/** @param {unknown} error @returns {error is Trouble} */
const isSignedOut = (error) => error instanceof Trouble && error.kind === "signedOut";

/** @param {string} user @param {string} password @param {string} link */
async function makeFirstUser(user, password, link) {
  try {
    await access.addFirstUser(user, password, link);
  } catch (error) {
    throw isSignedOut(error) ? new Trouble("refused", texts.login.usedLink) : error;
  }
}

export class SigningIn {
  #view = new LoginView();
  /** @type {Session | null} */
  #session = null;

  /** @param {(session: Session) => void} known is told who is logged in, and when that was read anew */
  constructor(known) {
    this.known = known;
    whenSignedOut(() => this.#again());
    document.addEventListener("visibilitychange", () => this.#look());
  }

  /** Until somebody is logged in, whom the page is for then. @returns {Promise<boolean>} whether a login was typed */
  async start() {
    document.title = texts.common.title(texts.login.logIn);
    const link = takeLink();
    let isTyped = false;
    const session = await this.#untilAnswered(() => (link ? this.#byLink(link) : access.readSession())).catch((error) => {
      isTyped = true;
      return this.#askAtStart(link, error);
    });
    if (session) this.#isKnown(session);
    return isTyped;
  }

  forgetPassword() {
    this.#view.forgetPassword();
  }

  // ---- at the start ----

  /** @param {() => Promise<Session>} ask @returns {Promise<Session>} */
  async #untilAnswered(ask) {
    const offline = byId("offline", HTMLElement);
    try {
      const session = await ask();
      offline.hidden = true;
      return session;
    } catch (error) {
      offline.hidden = !isAway(error);
      if (!isAway(error)) throw error;
      await new Promise((resolve) => setTimeout(resolve, RETRY_MS));
      return this.#untilAnswered(ask);
    }
  }

  /** A link that was used is no matter where somebody is logged in. @param {string} link */
  async #byLink(link) {
    try {
      return await access.logInByLink(link);
    } catch (error) {
      if (!isSignedOut(error)) throw error;
      return access.readSession();
    }
  }

  /** @param {string} link "" for none @param {unknown} error why nobody is logged in */
  #askAtStart(link, error) {
    if (!(error instanceof Trouble)) throw error;
    if (link && error.status === NO_USER_YET) return this.#askFirstUser(link);
    const mistake = error.isForFirstUser ? texts.login.noUser : link ? texts.login.usedLink : "";
    const trouble = isSignedOut(error) ? mistake : loginTrouble(error);
    return this.#view.ask({ title: texts.login.logIn, mistake: trouble, enter: access.logIn });
  }

  /** @param {string} link */
  #askFirstUser(link) {
    let isMade = false;
    return this.#view.ask({
      title: texts.login.firstUser,
      text: texts.login.firstUserText,
      isFirst: true,
      enter: async (user, password) => {
        if (!isMade) await makeFirstUser(user, password, link);
        isMade = true;
        return access.logIn(user, password, false);
      },
    });
  }

  // ---- later ----

  /** The recorder no longer knows this browser: asks over the view that is open, which keeps all it has. */
  async #again() {
    const user = this.#session?.user ?? "";
    const { title } = document;
    document.title = texts.common.title(texts.login.logInAgain);
    const session = await this.#view.ask({
      title: texts.login.logInAgain,
      text: texts.login.expired,
      user,
      isOver: true,
      enter: access.logIn,
    });
    document.title = title;
    if (!session) return false;
    if (session.user !== user) {
      location.reload(); // what is here belongs to somebody else
      return false;
    }
    this.#isKnown(session);
    say(texts.login.loggedIn);
    return true;
  }

  /** Somebody may have logged in meanwhile, in another tab. */
  async #look() {
    if (document.hidden || !this.#view.isOpen) return;
    const session = await access.readSession().catch(() => null);
    if (session && this.#view.isOpen) this.#view.finish(session);
  }

  /** @param {Session} session */
  #isKnown(session) {
    this.#session = session;
    this.known(session);
  }
}
