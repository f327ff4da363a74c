/// Shows a picture that came from a camera.

import { texts } from "../texts/texts.js";
import { byId } from "./dom.js";

/** Types by first bytes: JPEG is the camera's, PNG the one that the recorder gives when none came. */
const CAMERA_START = [0xff, 0xd8, 0xff];

/** @param {Uint8Array} bytes */
const isFromCamera = (bytes) => CAMERA_START.every((byte, i) => bytes[i] === byte);

/** A picture's place: NAME, with an image NAME-image and a text NAME-text. */
export class PicturePlace {
  #address = "";

  /** @param {string} name */
  constructor(name) {
    this.image = byId(`${name}-image`, HTMLImageElement);
    this.text = byId(`${name}-text`, HTMLElement);
  }

  get isEmpty() {
    return this.#address === "";
  }

  /**
   * @param {Uint8Array<ArrayBuffer>} bytes
   * @param {string} description what the picture shows
   * @returns {Promise<string>} its size, such as "640 × 480", or "" when it is no camera's picture
   */
  async show(bytes, description) {
    this.clear(texts.common.noPictureCame);
    if (!isFromCamera(bytes)) return "";
    this.#address = URL.createObjectURL(new Blob([bytes], { type: "image/jpeg" }));
    this.image.src = this.#address;
    this.image.alt = description;
    try {
      await this.image.decode();
    } catch {
      this.clear(texts.common.noPictureCame);
      return "";
    }
    this.image.hidden = false;
    const size = `${this.image.naturalWidth} × ${this.image.naturalHeight}`;
    this.text.textContent = size;
    return size;
  }

  /** @param {string} text what stands in its place */
  clear(text) {
    this.image.hidden = true;
    this.image.removeAttribute("src");
    this.image.alt = "";
    if (this.#address) URL.revokeObjectURL(this.#address);
    this.#address = "";
    this.text.textContent = text;
  }
}
