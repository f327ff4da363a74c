/// The view of one camera: fields, a test, and what it found. A camera is contacted by Test alone.

import { ModelField } from "../models/model-field.js";
import { forgetPassword, spreadAddress, suggest, watchAddress } from "../parts/camera-fields.js";
import { ask, byId, say, showMistake } from "../parts/dom.js";
import * as api from "../recorder/api.js";
import { defaultPort, labelOf } from "../recorder/models.js";
import { Refusals } from "../testing/refusals.js";
import { hidesLogin, hostMistake, portMistake } from "../text/address.js";
import { EarlierMarks } from "./earlier.js";
import { Findings } from "./findings.js";
import { ResultPanel, failureOf, troubleOf } from "./result-panel.js";
import { StoredPassword } from "./stored-password.js";
import { StreamFold } from "./stream-fold.js";
import { TestButtons } from "./test-buttons.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 * @typedef {import("../recorder/api.js").Model} Model
 * @typedef {import("./earlier.js").Moment} Moment
 */

const REFUSALS_BEFORE_ASKING = 2;
const TEXT_FIELDS = /** @type {const} */ (["address", "port", "model", "user", "password", "channel", "path"]);
const CHECKED_FIELDS = /** @type {const} */ (["address", "port", "model", "password", "path"]);

export class OneCamera {
  /** Values that the user did not type may be replaced. @type {Set<string>} */
  #touched = new Set();
  /** @type {Model | null} whose capabilities are shown */
  #model = null;
  /** @type {AbortController | null} of the test that runs */
  #testing = null;
  #refusals = new Refusals();
  #hasPassed = false; // the test that runs
  #passwords = 0; // how often the password was changed: no more than that is kept of one
  #marks = new EarlierMarks(() => this.#now);
  /** When the latest test began. @type {Moment} */
  #tested = { place: "", values: "" };

  /** @param {import("../recorder/models.js").ModelList} models */
  constructor(models) {
    this.models = models;
    const input = (/** @type {string} */ name) => byId(`one-${name}`, HTMLInputElement);
    this.fields = {
      address: input("address"),
      port: input("port"),
      model: input("model"),
      user: input("user"),
      password: input("password"),
      channel: input("channel"),
      path: input("path"),
    };
    this.streamFold = new StreamFold();
    this.more = this.streamFold.fold;
    this.buttons = new TestButtons(() => this.#testing?.abort());
    this.panel = new ResultPanel((id) => this.#focusField(id));
    this.findings = new Findings(this.panel, this.streamFold, this.#marks, (camera) => this.#isChosen(camera));
    this.stored = new StoredPassword(() => this.#storedChanged());
    this.modelField = new ModelField(this.fields.model, models);
    this.#listen();
    models.addEventListener("change", () => this.#modelsCame());
  }

  #listen() {
    const form = byId("one-form", HTMLFormElement);
    form.addEventListener("submit", (event) => {
      event.preventDefault();
      this.#test();
    });
    form.addEventListener("input", (event) => this.#edited(event.target));
    for (const select of [this.streamFold.codec, this.streamFold.stream]) {
      select.addEventListener("keydown", (event) => {
        if (event.key !== "Enter") return;
        event.preventDefault();
        this.#test();
      });
    }
    watchAddress(this.fields, () => this.#splitAddress());
    this.modelField.addEventListener("change", () => this.#modelChanged());
    byId("one-show", HTMLButtonElement).addEventListener("click", () => this.#showPassword());
  }

  /** The list came: begins with the likeliest model. */
  #modelsCame() {
    if (!this.fields.model.value && !this.#touched.has("model")) this.#choose(this.models.preferred());
    else if (!this.#model && this.modelField.value) this.#modelChanged();
  }

  /** @param {Model | null} model */
  #choose(model) {
    this.modelField.value = model;
    this.#modelChanged();
  }

  /** @param {EventTarget | null} target */
  #edited(target) {
    if (!(target instanceof HTMLElement)) return;
    const name = target.id.replace("one-", "");
    this.#touched.add(name);
    if (name === "password") ++this.#passwords;
    if (CHECKED_FIELDS.some((field) => field === name)) showMistake(target, "");
    this.#marks.update();
  }

  /** @returns {Moment} */
  get #now() {
    const { address, port, password, ...others } = this.fields;
    const { codec, stream } = this.streamFold;
    const place = JSON.stringify([address.value, port.value]);
    const values = [...Object.values(others), codec, stream].map((field) => field.value);
    return { place, values: JSON.stringify([place, ...values, this.#passwords, this.stored.id]) };
  }

  /** Spreads what stands in address and path over the fields. */
  #splitAddress() {
    const { address, password } = this.fields;
    const before = password.value;
    const { ofAddress, ofPath } = spreadAddress(this.fields);
    if (password.value !== before) ++this.#passwords;
    if (hidesLogin(address.value)) showMistake(address, hostMistake(address.value));
    if (ofAddress.port) this.#touched.add("port");
    if (ofAddress.path) {
      if (!this.#touched.has("model")) this.#choose(this.models.userDefined());
      this.more.open = true;
    }
    if (ofPath.user || ofPath.password) say("The login in the path went into user and password");
    this.streamFold.summarise();
    this.#marks.update();
  }

  /** @param {Camera} camera */
  #isChosen({ vendor, model }) {
    const chosen = this.modelField.value;
    return chosen !== null && chosen.vendor === vendor && chosen.model === model;
  }

  async #modelChanged() {
    showMistake(this.fields.model, "");
    this.#marks.update();
    const model = this.modelField.value;
    if (model === this.#model) return;
    this.#model = model;
    if (!model) return;
    if (!this.#touched.has("port")) this.fields.port.value = String(defaultPort(model));
    this.fields.path.required = model.needsPath;
    if (model.needsPath) this.more.open = true;
    await this.#readCapabilities(model);
  }

  /** What the model list says; no camera is contacted. @param {Model} model */
  async #readCapabilities(model) {
    try {
      const outcome = await api.readCapabilities(model.vendor, model.model);
      if (model !== this.#model) return; // another one was chosen meanwhile
      this.findings.showOfModel(outcome, model);
      if (outcome.value) this.#offer(outcome.value, model);
    } catch {
      if (model === this.#model) this.findings.hideCapabilities(); // a banner says why
    }
  }

  /** @param {api.Capabilities} capabilities @param {Model} model */
  #offer(capabilities, model) {
    const { user, channel } = this.fields;
    if (!this.#touched.has("user") && user.value === "") suggest(user, capabilities.defUser ?? "");
    const hasChannels = Array.isArray(capabilities.ChanlList) && capabilities.ChanlList.length > 0;
    if (!this.#touched.has("channel")) suggest(channel, hasChannels ? (capabilities.defChanl ?? "") : "");
    this.streamFold.offer(capabilities, model);
  }

  #showPassword() {
    const show = byId("one-show", HTMLButtonElement);
    const isShown = this.fields.password.type === "text";
    this.fields.password.type = isShown ? "password" : "text";
    const [word] = show.childNodes; // "password" follows it, out of sight
    if (word) word.textContent = isShown ? "Show" : "Hide";
  }

  /** @param {string} id */
  #focusField(id) {
    const field = byId(id, HTMLElement);
    if (this.more.contains(field)) this.more.open = true;
    field.focus();
  }

  // ---- a stored camera ----

  /** Offers the password of a stored camera. @param {number} id */
  async openStored(id) {
    const known = await this.stored.open(id);
    const model = known && this.models.find(known.vendor, known.model);
    if (!known || !model) return;
    this.#touched.add("model");
    this.#choose(model);
    this.fields.channel.value = known.channel;
    if (known.channel) this.#touched.add("channel");
  }

  #storedChanged() {
    const { password } = this.fields;
    password.disabled = this.stored.id !== undefined;
    byId("one-show", HTMLButtonElement).disabled = password.disabled;
    if (password.disabled) password.value = "";
    this.#marks.update();
  }

  // ---- what is tested ----

  /** Takes over a camera from elsewhere in the page. @param {Camera} camera */
  async fill(camera) {
    const model = this.models.find(camera.vendor, camera.model);
    const values = { ...camera, address: camera.host, port: String(camera.port), model: model ? labelOf(model) : "" };
    this.stored.close();
    for (const name of TEXT_FIELDS) {
      this.fields[name].value = values[name];
      this.#touched.add(name);
    }
    ++this.#passwords;
    await this.#modelChanged();
    this.streamFold.choose(camera.codec, camera.stream);
    this.#marks.update();
    this.more.open = Boolean(camera.path || camera.codec || camera.stream || model?.needsPath);
  }

  /** Begins with this model. @param {Model} model */
  useModel(model) {
    this.#touched.add("model");
    this.#choose(model);
  }

  forgetPasswords() {
    forgetPassword(this.fields);
    this.#refusals.forgetPasswords();
  }

  /** Shows what is wrong with the fields. @returns {Camera | null} */
  #read() {
    this.#splitAddress();
    this.fields.port.value = this.fields.port.value.trim();
    const { address, port, user, password, channel, path } = this.fields;
    const model = this.modelField.value;
    const host = address.value;
    const mistakes = {
      address: host === "" ? "Type the camera's address." : hostMistake(host),
      port: port.value === "" ? "Type the camera's port (1 to 65535)." : portMistake(port.value),
      model: model
        ? ""
        : {
            ready: "Choose a model from the list.",
            loading: "The list of models is not here yet.",
            failed: "The list of models could not be read: see above.",
          }[this.models.state],
      password:
        password.value === api.STORED_PASSWORD ? "This text stands for a stored password; type the camera's own." : "",
      path: model?.needsPath && path.value.trim() === "" ? "This model needs the path of the stream." : "",
    };
    for (const name of CHECKED_FIELDS) showMistake(this.fields[name], mistakes[name]);
    const faulty = CHECKED_FIELDS.find((name) => mistakes[name]);
    if (faulty) this.#focusField(`one-${faulty}`);
    if (faulty || !model) return null;
    return {
      host,
      port: Number(port.value),
      vendor: model.vendor,
      model: model.model,
      user: user.value,
      password: password.value,
      channel: channel.value.trim(),
      codec: this.streamFold.codec.value,
      stream: this.streamFold.stream.value,
      path: path.value.trim(),
      ...(this.stored.id === undefined ? {} : { storedId: this.stored.id }),
    };
  }

  // ---- the test ----

  async #test() {
    if (this.#testing) return;
    const camera = this.#read();
    if (!camera) return;
    if (this.#refusals.count(camera) >= REFUSALS_BEFORE_ASKING) {
      const question = "Two logins were refused. Another may lock this user out. Test anyway?";
      if (!(await ask(question, "Test anyway"))) return;
    }
    const testing = new AbortController();
    this.#begin(testing);
    try {
      const verdict = await api.testCamera(camera, testing.signal);
      this.#refusals.note(camera, verdict.code);
      if (verdict.code !== 0) this.#showFailure(verdict);
      else await this.#lookCloser(camera, testing.signal);
    } catch (error) {
      this.#showTrouble(error);
    } finally {
      this.#testing = null;
      this.buttons.end();
    }
  }

  /** @param {AbortController} testing */
  #begin(testing) {
    this.#testing = testing;
    this.#tested = this.#now;
    this.#hasPassed = false;
    this.buttons.begin();
    this.panel.show({ kind: "none", title: "Testing", text: "The recorder contacts the camera." });
    this.#marks.drop("one-result-earlier");
    say("Testing");
  }

  /** @param {Camera} camera @param {AbortSignal} signal */
  async #lookCloser(camera, signal) {
    this.#showResult({ kind: "ok", title: "Camera works", text: "The recorder logged in and found video." });
    this.#hasPassed = true;
    say("Passed: camera works");
    await this.findings.lookCloser(camera, this.#tested, signal);
  }

  /** @param {import("./result-panel.js").Result} result */
  #showResult(result) {
    this.panel.show(result);
    this.#marks.set("one-result-earlier", this.#tested, { values: "Result of the earlier values" });
  }

  /** @param {api.Verdict} verdict */
  #showFailure(verdict) {
    const result = failureOf(verdict, this.fields.path.required);
    this.#showResult(result);
    say(`Failed: ${result.title.charAt(0).toLowerCase()}${result.title.slice(1)}`);
  }

  /** @param {unknown} error */
  #showTrouble(error) {
    const result = troubleOf(error);
    if (result.kind === "none" && this.#hasPassed) {
      this.panel.note(result.text); // only what comes after the test was stopped
      return;
    }
    this.#showResult(result);
    say(`${result.title}. ${result.text}`);
  }
}
