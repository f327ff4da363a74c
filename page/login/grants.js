/// Tables of sessions and tokens, each with a button that ends it.

import { button, el, refill, say } from "../parts/dom.js";
import { mistakeLine, tell } from "../parts/forms.js";
import { table } from "../parts/table.js";
import * as access from "../recorder/access.js";
import { messageOf } from "../text/text.js";
import { sentence, timeText } from "../texts/language.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {access.SessionEntry} SessionEntry
 * @typedef {access.TokenEntry} TokenEntry
 *
 * @typedef {{session: (entry: SessionEntry) => HTMLElement | string, token: (entry: TokenEntry) => HTMLElement}} Buttons
 */

/** Of several people's: whose each is. @param {boolean} areOfOthers */
const ofWhom = (areOfOthers) => (areOfOthers ? [texts.common.user] : []);

/** @param {SessionEntry[]} sessions @param {Buttons} buttons @param {boolean} areOfOthers */
function sessionTable(sessions, buttons, areOfOthers) {
  const rows = sessions.map((entry) => [
    timeText(entry.created),
    ...(areOfOthers ? [entry.user] : []),
    timeText(entry.lastUsed),
    entry.address,
    timeText(entry.until),
    buttons.session(entry),
  ]);
  const { sessions: caption, since, lastUsed, from, until } = texts.login;
  return table(caption, [since, ...ofWhom(areOfOthers), lastUsed, from, until, ""], rows);
}

/** @param {TokenEntry[]} tokens @param {Buttons} buttons @param {boolean} areOfOthers */
function tokenTable(tokens, buttons, areOfOthers) {
  const rows = tokens.map((entry) => [
    entry.name,
    ...(areOfOthers ? [entry.user] : []),
    timeText(entry.created),
    timeText(entry.lastUsed),
    timeText(entry.until) || texts.login.noEnd,
    buttons.token(entry),
  ]);
  const { tokens: caption, made, lastUsed, until } = texts.login;
  return table(caption, [texts.common.name, ...ofWhom(areOfOthers), made, lastUsed, until, ""], rows);
}

/** @param {string} text */
const none = (text) => el("p", { class: "muted", text });

export class Grants {
  /** What is listed. @type {SessionEntry[]} */
  sessions = [];
  #mistake;

  /**
   * @param {string} id of the element that holds the tables; one that is filled by nobody else
   * @param {(user: string) => boolean} isShown whose sessions and tokens stand here
   * @param {boolean} areOfOthers each is shown with its user
   */
  constructor(id, isShown, areOfOthers) {
    this.isShown = isShown;
    this.areOfOthers = areOfOthers;
    this.#mistake = mistakeLine(`${id}-mistake`);
    this.sessionPlace = el("div", { id: `${id}-sessions` });
    this.tokenPlace = el("div", { id: `${id}-tokens` });
    /** @type {Buttons} */
    this.buttons = {
      session: (entry) => this.#ofSession(entry),
      token: ({ name }) => this.#button(texts.login.remove, texts.login.token(name), () => access.removeToken(name)),
    };
    this.elements = { sessions: this.sessionPlace, tokens: this.tokenPlace, mistake: this.#mistake };
  }

  /** Reads both lists anew. */
  async load() {
    const [sessions, tokens] = await Promise.all([access.listSessions(), access.listTokens()]);
    const isShown = (/** @type {{user: string}} */ { user }) => this.isShown(user);
    this.sessions = sessions.filter(isShown);
    const tokensShown = tokens.filter(isShown);
    const { noSessions, noTokens } = texts.login;
    refill(this.sessionPlace, [
      this.sessions.length > 0 ? sessionTable(this.sessions, this.buttons, this.areOfOthers) : none(noSessions),
    ]);
    refill(this.tokenPlace, [
      tokensShown.length > 0 ? tokenTable(tokensShown, this.buttons, this.areOfOthers) : none(noTokens),
    ]);
  }

  /** @param {SessionEntry} entry */
  #ofSession({ id, isThis, address, created }) {
    if (isThis) return texts.login.thisBrowser;
    const what = texts.login.session(address, timeText(created));
    return this.#button(texts.login.end, what, () => access.endSession(id));
  }

  /** @param {string} verb @param {string} what @param {() => Promise<unknown>} end */
  #button(verb, what, end) {
    const label = { "aria-label": texts.login.verbAndWhat(verb, what) };
    return button(verb, () => this.change(end, texts.login.whatIsDone(what)), label);
  }

  /** Changes something, and shows what is left. @param {() => Promise<unknown>} change @param {string} said */
  async change(change, said) {
    tell(this.#mistake, "");
    try {
      await change();
      await this.load();
      if (said) say(said);
    } catch (error) {
      tell(this.#mistake, sentence(messageOf(error)));
    }
  }
}
