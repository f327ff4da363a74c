/// The view of one camera: fields, a test, and what it found. A camera is contacted by Test alone.

import { hidesLogin, hostMistake, portMistake, splitAddress } from "./address.js";
import * as api from "./api.js";
import { codecsOf, describeCapabilities } from "./capabilities.js";
import { CAPABILITY_CAUSES, SIZE_CAUSES, TEST_CAUSES, causeOf } from "./causes.js";
import { ask, byId, el, say, setOptions, setSelected, showMistake } from "./dom.js";
import { ModelField } from "./model-field.js";
import { defaultPort, isAsked, isUserDefined, labelOf } from "./models.js";
import { PicturePlace } from "./picture.js";
import { Refusals } from "./refusals.js";
import { messageOf } from "./text.js";

/**
 * @typedef {import("./api.js").Camera} Camera
 * @typedef {import("./api.js").Model} Model
 * @typedef {import("./causes.js").Cause} Cause
 */

const LONG_WAIT_S = 8;
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
  /** @type {api.StoredCamera | null} */
  #stored = null;
  #refusals = new Refusals();
  #hasResult = false;
  #timer = 0;
  /** Stream types by codec, as the chosen model offers them. @type {Map<string, string[]>} */
  #streams = new Map();

  /** @param {import("./models.js").ModelList} models */
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
    this.codec = byId("one-codec", HTMLSelectElement);
    this.stream = byId("one-stream", HTMLSelectElement);
    this.more = byId("one-more", HTMLDetailsElement);
    this.useStored = byId("one-use-stored", HTMLInputElement);
    this.testButton = byId("one-test", HTMLButtonElement);
    this.cancelButton = byId("one-cancel", HTMLButtonElement);
    this.clock = byId("one-clock", HTMLElement);
    this.picture = new PicturePlace("one-picture");
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
    for (const select of [this.codec, this.stream]) {
      select.addEventListener("keydown", (event) => {
        if (event.key !== "Enter") return;
        event.preventDefault();
        this.#test();
      });
    }
    this.fields.address.addEventListener("change", () => this.#splitAddress());
    this.fields.address.addEventListener("paste", () => setTimeout(() => this.#splitAddress()));
    this.modelField.addEventListener("change", () => this.#modelChanged());
    this.codec.addEventListener("change", () => this.#offerStreams());
    this.useStored.addEventListener("change", () => this.#showStored());
    this.cancelButton.addEventListener("click", () => this.#cancel());
    byId("view-one", HTMLElement).addEventListener("keydown", (event) => {
      if (event.key === "Escape" && this.#testing) this.#cancel();
    });
    byId("one-result-link", HTMLAnchorElement).addEventListener("click", (event) => {
      event.preventDefault();
      if (event.currentTarget instanceof HTMLAnchorElement) this.#focusField(event.currentTarget.hash.slice(1));
    });
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
    if (CHECKED_FIELDS.some((field) => field === name)) showMistake(target, "");
    this.#markEarlier();
    this.#summarise();
  }

  #markEarlier() {
    byId("one-result-earlier", HTMLElement).hidden = !this.#hasResult;
    byId("one-picture-earlier", HTMLElement).hidden = this.picture.isEmpty;
  }

  /** Spreads a whole stream address over the fields, so that no password stays in the address. */
  #splitAddress() {
    const { address, port, user, password, path } = this.fields;
    const parts = splitAddress(address.value);
    address.value = parts.host;
    if (hidesLogin(parts.host)) showMistake(address, hostMistake(parts.host));
    if (parts.port) {
      port.value = parts.port;
      this.#touched.add("port");
    }
    if (parts.user) user.value = parts.user;
    if (parts.password) password.value = parts.password;
    if (parts.path) {
      path.value = parts.path;
      if (!this.#touched.has("model")) this.#choose(this.models.userDefined());
      this.more.open = true;
    }
    this.#summarise();
  }

  async #modelChanged() {
    showMistake(this.fields.model, "");
    this.#markEarlier();
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
      this.#showCapabilities(outcome, `Capabilities of ${labelOf(model)}, from the model list`);
      if (outcome.value) this.#offer(outcome.value);
    } catch {
      if (model === this.#model) byId("one-capabilities", HTMLElement).hidden = true; // a banner says why
    }
  }

  /** @param {api.Outcome<api.Capabilities>} outcome @param {string} caption */
  #showCapabilities(outcome, caption) {
    const place = byId("one-capabilities", HTMLElement);
    place.replaceChildren(describeCapabilities(outcome, caption));
    place.hidden = false;
  }

  /** @param {api.Capabilities} capabilities */
  #offer(capabilities) {
    const { user, channel } = this.fields;
    if (!this.#touched.has("user") && user.value === "") suggest(user, capabilities.defUser ?? "");
    const channels = Array.isArray(capabilities.ChanlList) ? capabilities.ChanlList : [];
    const options = channels.map((value) => el("option", { value: String(value) }));
    byId("one-channels", HTMLDataListElement).replaceChildren(...options);
    if (!this.#touched.has("channel")) suggest(channel, channels.length > 0 ? (capabilities.defChanl ?? "") : "");
    this.#streams = new Map(codecsOf(capabilities).map(({ codec, streams }) => [codec, streams]));
    setOptions(this.codec, [...this.#streams.keys()]);
    this.#offerStreams();
  }

  #offerStreams() {
    const chosen = this.#streams.get(this.codec.value);
    setOptions(this.stream, chosen ?? [...new Set([...this.#streams.values()].flat())]);
    this.#summarise();
  }

  #summarise() {
    const channel = this.fields.channel.value ? `channel ${this.fields.channel.value}` : "default channel";
    const parts = [channel, this.codec.value || "Any", this.stream.value, this.fields.path.value].filter(Boolean);
    byId("one-summary", HTMLElement).textContent = `Stream: ${parts.join(", ")}`;
  }

  #showPassword() {
    const show = byId("one-show", HTMLButtonElement);
    const isShown = this.fields.password.type === "text";
    this.fields.password.type = isShown ? "password" : "text";
    show.setAttribute("aria-pressed", String(!isShown));
    show.textContent = isShown ? "Show" : "Hide";
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
    this.#stored = { id, name: "", vendor: "", model: "", channel: "", capabilities: null };
    byId("one-stored", HTMLElement).hidden = false;
    this.useStored.checked = true;
    this.#showStored();
    const known = (await api.listStoredCameras().catch(() => [])).find((camera) => camera.id === id);
    if (!known || this.#stored?.id !== id) return;
    this.#stored = known;
    this.#showStored();
    const model = this.models.find(known.vendor, known.model);
    if (!model) return;
    this.#touched.add("model");
    this.#choose(model);
    this.fields.channel.value = known.channel;
    if (known.channel) this.#touched.add("channel");
  }

  #showStored() {
    const { password } = this.fields;
    password.disabled = this.useStored.checked && this.#stored !== null;
    byId("one-show", HTMLButtonElement).disabled = password.disabled;
    if (password.disabled) password.value = "";
    const name = this.#stored?.name ? ` “${this.#stored.name}”` : "";
    byId("one-stored-hint", HTMLElement).textContent =
      `Of camera ${this.#stored?.id}${name}. The recorder lends it only to that camera's own address and model.`;
    this.#markEarlier();
  }

  // ---- what is tested ----

  /** Takes over a camera from elsewhere in the page. @param {Camera} camera */
  async fill(camera) {
    const model = this.models.find(camera.vendor, camera.model);
    const values = { ...camera, address: camera.host, port: String(camera.port), model: model ? labelOf(model) : "" };
    this.#leaveStored();
    for (const name of TEXT_FIELDS) {
      this.fields[name].value = values[name];
      this.#touched.add(name);
    }
    await this.#modelChanged();
    setSelected(this.codec, camera.codec);
    setSelected(this.stream, camera.stream);
    this.#summarise();
    this.more.open = Boolean(camera.path || camera.codec || camera.stream || model?.needsPath);
  }

  /** Begins with this model. @param {Model} model */
  useModel(model) {
    this.#touched.add("model");
    this.#choose(model);
  }

  #leaveStored() {
    this.#stored = null;
    byId("one-stored", HTMLElement).hidden = true;
    this.#showStored();
  }

  forgetPasswords() {
    this.fields.password.value = "";
    if (hidesLogin(this.fields.address.value)) this.fields.address.value = "";
  }

  /** Shows what is wrong with the fields. @returns {Camera | null} */
  #read() {
    this.#splitAddress();
    this.fields.port.value = this.fields.port.value.trim();
    const { address, port, user, password, channel, path } = this.fields;
    const model = this.modelField.value;
    const host = address.value;
    const usesStored = this.#stored !== null && this.useStored.checked;
    const mistakes = {
      address: host === "" ? "Type the camera's address." : hostMistake(host),
      port: port.value === "" ? "Type the camera's port (1 to 65535)." : portMistake(port.value),
      model: model
        ? ""
        : this.models.state === "ready"
          ? "Choose a model from the list."
          : "The list of models is not here yet.",
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
      codec: this.codec.value,
      stream: this.stream.value,
      path: path.value.trim(),
      ...(usesStored ? { storedId: this.#stored?.id } : {}),
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
      const code = await api.testCamera(camera, testing.signal);
      this.#refusals.note(camera, code);
      if (code !== 0) this.#showFailure(code);
      else await this.#lookCloser(camera, testing.signal);
    } catch (error) {
      this.#showTrouble(error);
    } finally {
      this.#end();
    }
  }

  /** @param {AbortController} testing */
  #begin(testing) {
    this.#testing = testing;
    this.testButton.setAttribute("aria-disabled", "true");
    this.cancelButton.hidden = false;
    const start = Date.now();
    const tick = () => {
      const seconds = Math.floor((Date.now() - start) / 1000);
      const isLong = seconds >= LONG_WAIT_S;
      this.clock.textContent = isLong ? `${seconds} s. Still waiting, silent cameras take longest` : `${seconds} s`;
    };
    tick();
    this.#timer = window.setInterval(tick, 1000);
    this.#showResult({ kind: "none", title: "Testing", text: "The recorder contacts the camera." });
    this.#hasResult = false;
    this.#markEarlier();
    say("Testing");
  }

  #end() {
    this.#testing = null;
    clearInterval(this.#timer);
    this.clock.textContent = "";
    this.testButton.removeAttribute("aria-disabled");
    if (document.activeElement === this.cancelButton) this.testButton.focus();
    this.cancelButton.hidden = true;
  }

  #cancel() {
    this.#testing?.abort();
  }

  /**
   * @param {object} result
   * @param {"ok" | "bad" | "warn" | "none"} result.kind
   * @param {string} result.title
   * @param {string} result.text
   * @param {string} [result.first]
   * @param {string} [result.field] to look at
   * @param {number} [result.code]
   */
  #showResult({ kind, title, text, first = "", field = "none", code = 0 }) {
    byId("one-result", HTMLElement).dataset.kind = kind;
    byId("one-result-title", HTMLElement).textContent = title;
    byId("one-result-text", HTMLElement).textContent = text;
    const firstLine = byId("one-result-first", HTMLElement);
    firstLine.replaceChildren(el("strong", { text: "First: " }), first);
    firstLine.hidden = first === "";
    const link = byId("one-result-link", HTMLAnchorElement);
    link.hidden = field === "none";
    link.hash = `one-${field}`;
    link.textContent = link.hidden ? "" : `Go to ${field}`;
    byId("one-result-code", HTMLElement).textContent = code ? `code ${code}` : "";
    byId("one-result-foot", HTMLElement).hidden = link.hidden && !code;
    byId("one-result-earlier", HTMLElement).hidden = true;
    byId("one-result-notes", HTMLElement).replaceChildren();
    this.#hasResult = kind !== "none";
  }

  /** @param {number} code */
  #showFailure(code) {
    const { heading, happened, first, field } = causeOf(TEST_CAUSES, code);
    const isAboutChannel = field === "path" && !this.fields.path.required; // the model knows its paths
    this.#showResult({
      kind: "bad",
      title: heading,
      text: happened,
      first,
      field: isAboutChannel ? "channel" : field,
      code,
    });
    say(`Failed: ${heading.charAt(0).toLowerCase()}${heading.slice(1)}`);
  }

  /** @param {unknown} error */
  #showTrouble(error) {
    const kind = error instanceof api.Trouble ? error.kind : "refused";
    const text = messageOf(error);
    if (kind === "stopped" && this.#hasResult) {
      this.#note(text); // the test had passed; only what comes after it was stopped
      return;
    }
    const titles = {
      stopped: "No result",
      timeOut: "No answer",
      refused: "The recorder could not do this",
      offline: "Not tested",
      signedOut: "Not tested",
    };
    this.#showResult({ kind: kind === "stopped" ? "none" : "bad", title: titles[kind], text });
    this.#hasResult = true;
    say(`${titles[kind]}. ${text}`);
  }

  /** @param {string} text */
  #note(text) {
    byId("one-result-notes", HTMLElement).append(el("li", { text }));
  }

  /** What a passed test allows, one question after the other. Nothing here takes the pass back. */
  async #lookCloser(/** @type {Camera} */ camera, /** @type {AbortSignal} */ signal) {
    this.#showResult({ kind: "ok", title: "Camera works", text: "The recorder logged in and found video." });
    say("Passed: camera works");
    const hasPicture = await this.#takePicture(camera, signal);
    if (isAsked(camera)) await this.#askCapabilities(camera, signal);
    if (isUserDefined(camera)) await this.#measure(camera, signal);
    if (!hasPicture) say("Test passed. No picture came.");
  }

  /**
   * A question whose failure is no more than a note.
   * @param {string} what
   * @param {() => Promise<void>} question
   */
  async #also(what, question) {
    try {
      await question();
    } catch (error) {
      if (error instanceof api.Trouble && error.kind === "stopped") throw error;
      this.#note(`${what}: ${messageOf(error)}`);
    }
  }

  /** @param {Camera} camera @param {AbortSignal} signal */
  async #takePicture(camera, signal) {
    let size = "";
    this.picture.clear("Fetching a picture");
    byId("one-picture-earlier", HTMLElement).hidden = true;
    try {
      await this.#also("No picture came", async () => {
        size = await this.picture.show(await api.takePicture(camera, signal), `Picture of camera ${camera.host}`);
        if (!size) byId("one-result-text", HTMLElement).textContent = "Test passed. No picture came.";
      });
    } finally {
      if (this.picture.isEmpty) this.picture.clear("No picture came");
    }
    return size !== "";
  }

  /** @param {Camera} camera @param {AbortSignal} signal */
  async #askCapabilities(camera, signal) {
    await this.#also("Live capabilities not available", async () => {
      const outcome = await api.askCapabilities(camera, signal);
      if (outcome.value) {
        this.#showCapabilities(outcome, `Capabilities, from the camera at ${camera.host}`);
        return;
      }
      const { heading, happened, first } = causeOf(CAPABILITY_CAUSES, outcome.code);
      this.#note(`${heading}. ${happened} ${first} The table has the values of the model list. (code ${outcome.code})`);
    });
  }

  /** @param {Camera} camera @param {AbortSignal} signal */
  async #measure(camera, signal) {
    await this.#also("Size not measured", async () => {
      const { value, code } = await api.measureSize(camera, signal);
      const { heading, happened } = causeOf(SIZE_CAUSES, code);
      this.#note(value ? `Size of the stream: ${value.replace("x", " × ")}` : `${heading}. ${happened}`);
    });
  }
}

/**
 * Fills a field that nobody typed into. What is typed into it at this moment takes its place.
 * @param {HTMLInputElement} field
 * @param {string} value
 */
function suggest(field, value) {
  field.value = value;
  if (document.activeElement === field) field.select();
}
