/// Stores a camera, and says what came of it.

import { button, el } from "../parts/dom.js";
import { addCamera } from "../recorder/cameras.js";
import { Trouble } from "../recorder/request.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";

const { add } = texts;

/**
 * @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera
 * @typedef {Partial<import("../recorder/cameras.js").CameraFields>} CameraFields
 *
 * What came of it: the camera, or why it is not stored; `other` is the one that is stored already.
 * @typedef {{camera: StoredCamera | null, mistake: string, other?: {id: number, name: string}}} Saved
 */

const STORED_ALREADY = 409;

/** @param {CameraFields} camera @returns {Promise<Saved>} */
export async function save(camera) {
  try {
    return { camera: await addCamera(camera), mistake: "" };
  } catch (error) {
    if (!(error instanceof Trouble) || error.status !== STORED_ALREADY) {
      return { camera: null, mistake: sentence(messageOf(error)) };
    }
    const { id, name } = error.details["camera"];
    return { camera: null, mistake: add.storedAlready(name), other: { id, name } };
  }
}

/**
 * That a camera is stored already, with the two ways on.
 * @param {Saved} saved
 * @param {() => void} force stores it all the same
 */
export function storedAlready({ mistake, other }, force) {
  return el(
    "div",
    { class: "stored-already" },
    el("p", { text: mistake }),
    el("a", { href: `#cameras/${other?.id}`, text: add.openStored(other?.name ?? "") }),
    button(add.storeAllTheSame, force),
  );
}
