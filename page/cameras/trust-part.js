/// What an administrator allows again once a camera's settings were changed. Offered where its last failure asks for it.

import { el } from "../parts/dom.js";
import { texts } from "../texts/texts.js";

const words = texts.camera;

const OFFERS = /** @type {const} */ ([
  { member: "trustNewCertificate", text: words.newCertificate, causes: ["certificateChanged", "loginRefused"] },
  { member: "allowBasic", text: words.weakerLogin, causes: ["loginRefused"] },
]);

export class TrustPart {
  #offers = OFFERS.map(({ member, text, causes }) => {
    const tick = el("input", { type: "checkbox", id: `camera-${member}` });
    const label = el("label", { class: "tick" }, tick, text);
    return { member, tick, label, causes: /** @type {readonly string[]} */ (causes) };
  });
  element = el(
    "div",
    { id: "camera-trust" },
    ...this.#offers.map(({ label }) => label),
    el("p", { class: "hint", text: words.trustHint }),
  );

  /** @param {import("../recorder/cameras.js").StoredCamera} camera */
  open({ state }) {
    for (const { tick, label, causes } of this.#offers) {
      tick.checked = false;
      label.hidden = !causes.includes(state?.cause ?? "");
    }
    this.element.hidden = this.#offers.every(({ label }) => label.hidden);
  }

  /** What is ticked. */
  get change() {
    return Object.fromEntries(this.#offers.filter(({ tick }) => tick.checked).map(({ member }) => [member, true]));
  }
}
