/// The fields of a list for what all its cameras share.

import { ModelField } from "../models/model-field.js";
import { byId, showMistake } from "../parts/dom.js";
import { portMistake } from "../text/address.js";
import { texts } from "../texts/texts.js";

export class ListDefaults {
  /**
   * @param {import("../recorder/models.js").ModelList} models
   * @param {() => void} changed
   */
  constructor(models, changed) {
    this.models = models;
    this.changed = changed;
    const input = (/** @type {string} */ name) => byId(`many-${name}`, HTMLInputElement);
    this.fields = { user: input("user"), password: input("password"), port: input("port"), model: input("model") };
    this.modelField = new ModelField(this.fields.model, models);
    for (const source of [...Object.values(this.fields), this.modelField])
      source.addEventListener("change", () => this.#read());
    byId("many-defaults", HTMLFormElement).addEventListener("submit", (event) => {
      event.preventDefault();
      this.#read();
    });
  }

  /** @returns {import("../list/camera-list.js").Defaults} */
  get values() {
    const { user, password, port } = this.fields;
    return { user: user.value, password: password.value, port: port.value.trim(), model: this.modelField.value };
  }

  /** Shows what is wrong with the fields. */
  #read() {
    const { port, model } = this.fields;
    showMistake(port, port.value.trim() && portMistake(port.value.trim()));
    const isUnknown = model.value.trim() !== "" && !this.modelField.value;
    showMistake(model, isUnknown ? texts.common.chooseModel : "");
    this.changed();
  }

  /** The list of models is here: begins with the likeliest. */
  modelsCame() {
    if (this.fields.model.value === "") this.modelField.value = this.models.preferred();
  }

  /** @param {boolean} isDisabled */
  set disabled(isDisabled) {
    for (const field of Object.values(this.fields)) field.disabled = isDisabled;
  }

  forgetPassword() {
    this.fields.password.value = "";
  }
}
