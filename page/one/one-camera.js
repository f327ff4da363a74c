/// The view of one camera: fields, a test, and what it found. A camera is contacted by Test alone.

import { byId, showMistake } from "../parts/dom.js";
import * as api from "../recorder/api.js";
import { readModel, streamNames } from "../recorder/model-document.js";
import { EarlierMarks } from "./earlier.js";
import { Findings } from "./findings.js";
import { OneFields } from "./one-fields.js";
import { OneTest } from "./one-test.js";
import { ResultPanel } from "./result-panel.js";
import { SaveCamera } from "./save-camera.js";

/**
 * @typedef {import("../recorder/api.js").Camera} Camera
 * @typedef {import("../recorder/api.js").Model} Model
 */

export class OneCamera {
  /** @type {Model | null} whose capabilities are shown */
  #model = null;
  #marks = new EarlierMarks(() => this.fields.moment);

  /** @param {import("../recorder/models.js").ModelList} models */
  constructor(models) {
    this.fields = new OneFields(models, {
      changed: () => this.#marks.update(),
      modelChanged: () => this.#modelChanged(),
    });
    const { streamFold, inputs } = this.fields;
    const panel = new ResultPanel((id) => this.fields.focus(id));
    this.findings = new Findings(panel, streamFold, this.#marks, (camera) => this.#isChosen(camera));
    this.save = new SaveCamera(this.findings, this.#marks);
    this.test = new OneTest({
      panel,
      findings: this.findings,
      marks: this.#marks,
      save: this.save,
      needsPath: () => inputs.path.required,
    });
    this.#listen();
    models.addEventListener("change", () => this.#modelsCame());
  }

  #listen() {
    byId("one-form", HTMLFormElement).addEventListener("submit", (event) => {
      event.preventDefault();
      this.#test();
    });
    const { which, codec, stream } = this.fields.streamFold;
    for (const select of [which, codec, stream]) {
      select.addEventListener("keydown", (event) => {
        if (event.key !== "Enter") return;
        event.preventDefault();
        this.#test();
      });
    }
  }

  #test() {
    if (this.test.isRunning) return;
    const camera = this.fields.read();
    if (camera) this.test.run(camera);
  }

  // ---- the model ----

  /** @param {Camera} camera */
  #isChosen({ vendor, model }) {
    const chosen = this.fields.modelField.value;
    return chosen !== null && chosen.vendor === vendor && chosen.model === model;
  }

  #modelsCame() {
    if (!this.fields.suggestModel() && !this.#model && this.fields.modelField.value) this.#modelChanged();
  }

  async #modelChanged() {
    showMistake(this.fields.inputs.model, "");
    this.#marks.update();
    const model = this.fields.modelField.value;
    if (model === this.#model) return;
    this.#model = model;
    if (!model) return;
    this.fields.fitTo(model);
    await Promise.all([this.#readCapabilities(model), this.#readStreams(model)]);
  }

  /** @param {Model} model */
  async #readStreams(model) {
    const document = await readModel(model).catch(() => null); // then there is the main stream
    if (model === this.#model) this.fields.streamFold.offerNames(streamNames(document));
  }

  /** What the model list says; no camera is contacted. @param {Model} model */
  async #readCapabilities(model) {
    try {
      const outcome = await api.readCapabilities(model.vendor, model.model);
      if (model !== this.#model) return; // another one was chosen meanwhile
      this.findings.showOfModel(outcome, model);
      if (outcome.value) this.fields.offer(outcome.value, model);
    } catch {
      if (model === this.#model) this.findings.hideCapabilities(); // a banner says why
    }
  }

  // ---- from elsewhere in the page ----

  /** Takes over a camera. @param {Camera} camera */
  async fill(camera) {
    this.fields.fill(camera);
    await this.#modelChanged();
    this.fields.chooseStream(camera);
  }

  /** Begins with this model. @param {Model} model */
  useModel(model) {
    this.fields.useModel(model);
  }

  /** What this user may do. @param {import("../recorder/access.js").Session} session */
  allow(session) {
    this.save.allow(session);
  }

  forgetPasswords() {
    this.save.drop();
    this.fields.forgetPassword();
    this.test.forgetPasswords();
  }
}
