/// The header's part about who is logged in: the name, the views that the role allows, and the way out.

import { button, byId, el } from "../parts/dom.js";
import { mistakeLine, tell } from "../parts/forms.js";
import { logOut } from "../recorder/access.js";
import { Trouble } from "../recorder/request.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";

export class Who {
  #name = el("span", { id: "who-name" });
  #mistake = mistakeLine("who-mistake");

  /** @param {() => Promise<boolean>} mayLeave asks before something is lost */
  constructor(mayLeave) {
    this.mayLeave = mayLeave;
    const leave = button(texts.login.logOut, () => this.#leave(), { id: "log-out", class: "link" });
    byId("top", HTMLElement).append(el("p", { class: "who" }, this.#name, leave), this.#mistake);
  }

  /** @param {import("../recorder/access.js").Session} session */
  show({ user, role }) {
    this.#name.textContent = user;
    for (const link of ["nav-notices", "nav-users"]) byId(link, HTMLElement).hidden = role !== "admin";
    if (role !== "admin") this.#offerTests();
  }

  /** Whoever may not add cameras can test them. */
  #offerTests() {
    const link = byId("nav-add", HTMLAnchorElement);
    link.href = "#one";
    link.textContent = texts.navigation.test;
  }

  /** Nothing of what was here is left. */
  async #leave() {
    if (!(await this.mayLeave())) return;
    try {
      await logOut();
    } catch (error) {
      const isOut = error instanceof Trouble && error.kind === "signedOut";
      if (!isOut) return tell(this.#mistake, texts.login.stillIn(sentence(messageOf(error))));
    }
    window.addEventListener("pageshow", () => location.reload()); // Back may bring this page again
    location.replace(location.pathname); // anew, and without the view's name
  }
}
