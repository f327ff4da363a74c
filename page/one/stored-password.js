/// The tick that lets a stored camera's password be used, which the page never sees.

import { byId } from "../parts/dom.js";
import * as api from "../recorder/api.js";
import { texts } from "../texts/texts.js";

export class StoredPassword {
  /** @type {{id: number, name: string} | null} */
  #camera = null;
  #tick = byId("one-use-stored", HTMLInputElement);

  /** @param {() => void} changed */
  constructor(changed) {
    this.changed = changed;
    this.#tick.addEventListener("change", () => this.#show());
  }

  /** The stored camera that lends its password now. @returns {number | undefined} */
  get id() {
    return this.#camera && this.#tick.checked ? this.#camera.id : undefined;
  }

  /**
   * Offers the password of a stored camera.
   * @param {number} id
   * @returns {Promise<api.StoredCamera | null>} what else is known of it
   */
  async open(id) {
    this.#camera = { id, name: "" };
    this.#tick.checked = true;
    this.#show();
    const known = (await api.listStoredCameras().catch(() => [])).find((camera) => camera.id === id);
    if (!known || this.#camera?.id !== id) return null;
    this.#camera = known;
    this.#show();
    return known;
  }

  close() {
    this.#camera = null;
    this.#show();
  }

  #show() {
    byId("one-stored", HTMLElement).hidden = this.#camera === null;
    const { id, name = "" } = this.#camera ?? {};
    byId("one-stored-hint", HTMLElement).textContent = texts.one.storedHint(id, name);
    this.changed();
  }
}
