/// Stores a camera, and says what came of it.

import { button, el } from "../parts/dom.js";
import { store } from "../recorder/saving.js";
import { cameraHash } from "../text/address.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";

const { add, common } = texts;

/**
 * @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera
 * @typedef {Partial<import("../recorder/cameras.js").CameraFields>} CameraFields
 *
 * What came of it: the camera, or why it is not stored; `other` is the one that is stored already.
 * @typedef {{camera: StoredCamera | null, mistake: string, other?: {id: number, name: string}}} Saved
 */

/** @param {CameraFields} camera @returns {Promise<Saved>} */
export async function save(camera) {
  try {
    const { camera: stored, other } = await store(camera);
    return stored ? { camera: stored, mistake: "" } : { camera: null, mistake: add.storedAlready(other.name), other };
  } catch (error) {
    return { camera: null, mistake: sentence(messageOf(error)) };
  }
}

/**
 * That a camera is stored already, with the two ways on.
 * @param {{id: number, name: string}} other
 * @param {() => void} force stores it all the same
 */
export function storedAlready(other, force) {
  return el(
    "div",
    { class: "stored-already" },
    el("p", { text: add.storedAlready(other.name) }),
    el("a", { href: cameraHash(other), text: common.openNamed(other.name) }),
    button(common.saveAnyway, force),
  );
}
