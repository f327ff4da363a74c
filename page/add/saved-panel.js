/// What is said after a camera was saved: that it is, its picture, and three ways on.

import { copyText } from "../parts/copying.js";
import { button, el, say } from "../parts/dom.js";
import { StillFrame } from "../parts/still-frame.js";
import { takeStill } from "../recorder/cameras.js";
import { cameraHash } from "../text/address.js";
import { withLogin } from "../text/stream-lines.js";
import { texts } from "../texts/texts.js";

const { add, common } = texts;

/**
 * @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera
 * @typedef {import("../recorder/finding.js").Login} Login
 */

export class SavedPanel {
  #stopping = new AbortController();
  #title;
  #still = new StillFrame();
  #copied = el("span", { class: "hint" });
  #isWithPassword = el("input", { type: "checkbox", id: "add-copy-password" });
  element;

  /**
   * @param {StoredCamera} camera
   * @param {string} address of its main stream, without a login
   * @param {Login} login
   * @param {() => void} another
   */
  constructor(camera, address, login, another) {
    this.camera = camera;
    this.address = address;
    this.login = login;
    this.#title = el("h2", { id: "add-saved", tabindex: "-1", text: add.isSaved(camera.name) });
    this.element = el(
      "section",
      { class: "card saved", "aria-labelledby": "add-saved" },
      this.#title,
      el("figure", { class: "picture still" }, this.#still.element),
      el(
        "div",
        { class: "actions" },
        button(add.addAnother, another, { id: "add-another", class: "main" }),
        el("a", { id: "add-open", class: "button", href: cameraHash(camera), text: common.openNamed(camera.name) }),
      ),
      this.#addressLine(),
    );
  }

  #addressLine() {
    return el(
      "div",
      { class: "saved-address" },
      el("p", { class: "code", text: this.address }),
      el(
        "div",
        { class: "actions" },
        button(add.copy, () => this.#copy(), { id: "add-copy" }),
        el("label", { class: "tick" }, this.#isWithPassword, add.withPassword),
        this.#copied,
      ),
    );
  }

  async #copy() {
    const isWhole = this.#isWithPassword.checked;
    const { user, password } = this.login;
    const isCopied = await copyText(isWhole ? withLogin(this.address, user, password) : this.address);
    this.#copied.textContent = !isCopied ? add.notCopied : isWhole ? add.copiedWithPassword : common.copied;
    say(this.#copied.textContent);
  }

  /** Takes the focus, since what had it is gone, and the picture, as the stored camera gives it. */
  async show() {
    const { id, name } = this.camera;
    this.#still.clear(add.pictureWaits);
    this.#title.focus();
    say(add.isSaved(name));
    const picture = await takeStill(id, "main", false, this.#stopping.signal).catch(() => null);
    const isShown = picture !== null && (await this.#still.show(picture, texts.cameras.picture(name)));
    if (!isShown) this.#still.clear(common.noPictureCame);
  }

  forget() {
    this.#stopping.abort();
    this.#still.clear("");
    this.login = { user: "", password: "" };
  }
}
