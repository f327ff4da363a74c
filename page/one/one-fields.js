/// The fields of one camera: what is typed, chosen and suggested there, and what is wrong with it. Contacts no camera.

import { ModelField } from "../models/model-field.js";
import { forgetPassword, spreadAddress, suggest, watchAddress } from "../parts/camera-fields.js";
import { byId, say, showMistake } from "../parts/dom.js";
import { revealButton } from "../parts/forms.js";
import { STORED_PASSWORD } from "../recorder/api.js";
import { defaultPort, labelOf } from "../recorder/models.js";
import { hidesLogin, hostMistake, portMistake } from "../text/address.js";
import { texts } from "../texts/texts.js";
import { StreamFold } from "./stream-fold.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 * @typedef {import("../recorder/api.js").Model} Model
 * @typedef {import("../recorder/models.js").ModelList} ModelList
 *
 * @typedef {Record<(typeof TEXT_FIELDS)[number], HTMLInputElement>} Inputs
 *
 * @typedef {object} Listener
 * @property {() => void} changed some value is another now
 * @property {() => void} modelChanged another model may be chosen now
 */

const TEXT_FIELDS = /** @type {const} */ (["address", "port", "model", "user", "password", "channel", "path"]);
const CHECKED_FIELDS = /** @type {const} */ (["address", "port", "model", "password", "path"]);
const NO_MODEL = {
  ready: texts.common.chooseModel,
  loading: texts.one.modelsLoading,
  failed: texts.one.modelsFailed,
};

/**
 * What is wrong with each field; "" for nothing.
 * @param {Inputs} inputs
 * @param {Model | null} model
 * @param {ModelList["state"]} models whether the list of models is here
 */
function mistakesOf({ address, port, password, path }, model, models) {
  return {
    address: address.value === "" ? texts.one.noAddress : hostMistake(address.value),
    port: port.value === "" ? texts.common.typePort : portMistake(port.value),
    model: model ? "" : NO_MODEL[models],
    password: password.value === STORED_PASSWORD ? texts.one.standsForStored : "",
    path: model?.needsPath && path.value.trim() === "" ? texts.one.noPath : "",
  };
}

export class OneFields {
  /** Values that the user did not type may be replaced. @type {Set<string>} */
  #touched = new Set();
  /** How often the password was changed: no more than this is kept of it. */
  #passwordChanges = 0;

  /** @param {ModelList} models @param {Listener} listener */
  constructor(models, listener) {
    this.models = models;
    this.listener = listener;
    const input = (/** @type {string} */ name) => byId(`one-${name}`, HTMLInputElement);
    /** @type {Inputs} */
    this.inputs = {
      address: input("address"),
      port: input("port"),
      model: input("model"),
      user: input("user"),
      password: input("password"),
      channel: input("channel"),
      path: input("path"),
    };
    this.streamFold = new StreamFold();
    this.inputs.password.after(revealButton(this.inputs.password));
    this.inputs.password.addEventListener("input", () => ++this.#passwordChanges);
    this.modelField = new ModelField(this.inputs.model, models);
    byId("one-form", HTMLFormElement).addEventListener("input", (event) => this.#edited(event.target));
    watchAddress(this.inputs, () => this.#splitAddress());
    this.modelField.addEventListener("change", () => listener.modelChanged());
  }

  /** All values, of which a password is only told apart from others. @returns {import("./earlier.js").Moment} */
  get moment() {
    const { address, port, password, ...others } = this.inputs;
    const { which, codec, stream } = this.streamFold;
    const place = JSON.stringify([address.value, port.value]);
    const values = [...Object.values(others), which, codec, stream].map((field) => field.value);
    return { place, values: JSON.stringify([place, ...values, this.#passwordChanges]) };
  }

  /** @param {EventTarget | null} target */
  #edited(target) {
    if (!(target instanceof HTMLElement)) return;
    const name = target.id.replace("one-", "");
    this.#touched.add(name);
    if (CHECKED_FIELDS.some((field) => field === name)) showMistake(target, "");
    this.listener.changed();
  }

  /** Spreads what stands in address and path over the fields. */
  #splitAddress() {
    const { address, password } = this.inputs;
    const before = password.value;
    const { ofAddress, ofPath } = spreadAddress(this.inputs);
    if (password.value !== before) ++this.#passwordChanges;
    if (hidesLogin(address.value)) showMistake(address, hostMistake(address.value));
    if (ofAddress.port) this.#touched.add("port");
    if (ofAddress.path) {
      if (!this.#touched.has("model")) this.#choose(this.models.userDefined());
      this.streamFold.fold.open = true;
    }
    if (ofPath.user || ofPath.password) say(texts.one.loginOfPath);
    this.streamFold.summarise();
    this.listener.changed();
  }

  /** @param {string} id */
  focus(id) {
    const field = byId(id, HTMLElement);
    if (this.streamFold.fold.contains(field)) this.streamFold.fold.open = true;
    field.focus();
  }

  // ---- the model ----

  /** @param {Model | null} model */
  #choose(model) {
    this.modelField.value = model;
    this.listener.modelChanged();
  }

  /** Begins with the likeliest model, unless there is another. @returns {boolean} whether it does */
  suggestModel() {
    if (this.inputs.model.value || this.#touched.has("model")) return false;
    this.#choose(this.models.preferred());
    return true;
  }

  /** Takes a model that somebody chose elsewhere. @param {Model} model */
  useModel(model) {
    this.#touched.add("model");
    this.#choose(model);
  }

  /** What a model needs of the other fields. @param {Model} model */
  fitTo(model) {
    if (!this.#touched.has("port")) this.inputs.port.value = String(defaultPort(model));
    this.inputs.path.required = model.needsPath;
    this.streamFold.offerNames([]);
    if (model.needsPath) this.streamFold.fold.open = true;
  }

  /** What a model can do. @param {import("../recorder/api.js").Capabilities} capabilities @param {Model} model */
  offer(capabilities, model) {
    const { user, channel } = this.inputs;
    if (!this.#touched.has("user") && user.value === "") suggest(user, capabilities.defUser ?? "");
    const hasChannels = Array.isArray(capabilities.ChanlList) && capabilities.ChanlList.length > 0;
    if (!this.#touched.has("channel")) suggest(channel, hasChannels ? (capabilities.defChanl ?? "") : "");
    this.streamFold.offer(capabilities, model);
  }

  // ---- a whole camera ----

  /** Takes over all but the stream, which is offered once the model's capabilities are here. @param {Camera} camera */
  fill(camera) {
    const model = this.models.find(camera.vendor, camera.model);
    const values = { ...camera, address: camera.host, port: String(camera.port), model: model ? labelOf(model) : "" };
    for (const name of TEXT_FIELDS) {
      this.inputs[name].value = values[name];
      this.#touched.add(name);
    }
    ++this.#passwordChanges;
  }

  /** The rest of it; even what is not offered. @param {Camera} camera */
  chooseStream({ vendor, model, path, codec, stream }) {
    this.streamFold.choose(codec, stream);
    this.listener.changed();
    const needsPath = this.models.find(vendor, model)?.needsPath;
    this.streamFold.fold.open = Boolean(path || codec || stream || needsPath);
  }

  forgetPassword() {
    forgetPassword(this.inputs);
  }

  /** The camera that stands there, or null: then it is shown what is wrong. @returns {Camera | null} */
  read() {
    this.#splitAddress();
    this.inputs.port.value = this.inputs.port.value.trim();
    const model = this.modelField.value;
    const mistakes = mistakesOf(this.inputs, model, this.models.state);
    for (const name of CHECKED_FIELDS) showMistake(this.inputs[name], mistakes[name]);
    const faulty = CHECKED_FIELDS.find((name) => mistakes[name]);
    if (faulty) this.focus(`one-${faulty}`);
    return faulty || !model ? null : this.#cameraOf(model);
  }

  /** @param {Model} model @returns {Camera} */
  #cameraOf({ vendor, model }) {
    const { address, port, user, password, channel, path } = this.inputs;
    return {
      host: address.value,
      port: Number(port.value),
      vendor,
      model,
      user: user.value,
      password: password.value,
      channel: channel.value.trim(),
      codec: this.streamFold.codec.value,
      stream: this.streamFold.stream.value,
      path: path.value.trim(),
      which: this.streamFold.name,
    };
  }
}
