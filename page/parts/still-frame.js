/// A picture's frame, which keeps its size: in it a picture that came, or words. The figure around it is of class "picture".

import { el } from "./dom.js";

export class StillFrame {
  #address = "";
  #words = el("p");
  element = el("div", { class: "frame" }, this.#words);

  get isEmpty() {
    return this.#address === "";
  }

  /**
   * Shows it in place of the one before, once it is decoded.
   * @param {Blob} picture
   * @param {string} description
   * @returns {Promise<boolean>} false when it is no picture: then nothing has changed
   */
  async show(picture, description) {
    const address = URL.createObjectURL(picture);
    const image = el("img", { src: address, alt: description });
    try {
      await image.decode();
    } catch {
      URL.revokeObjectURL(address);
      return false;
    }
    this.#revoke();
    this.#address = address;
    this.element.replaceChildren(image);
    return true;
  }

  /** Takes the picture away. @param {string} words what stands in its place */
  clear(words) {
    this.#revoke();
    this.#words.textContent = words;
    this.element.replaceChildren(this.#words);
  }

  #revoke() {
    if (this.#address) URL.revokeObjectURL(this.#address);
    this.#address = "";
  }
}
