/// The dialog of one row of a list: its fields and buttons. What they do is row-details.js.

import { el } from "../parts/dom.js";
import { PLAIN, field, passwordInput } from "../parts/forms.js";
import { texts } from "../texts/texts.js";

const input = (/** @type {string} */ name, attributes = {}) => el("input", { id: `row-${name}`, ...attributes });
const select = (/** @type {string} */ name) => el("select", { id: `row-${name}` });

/** @param {HTMLInputElement} model gets its list beside it */
const modelBox = (model) =>
  el(
    "div",
    { class: "field" },
    el("label", { for: model.id, text: texts.common.model }),
    el("div", { class: "combobox" }, model),
  );

function fields() {
  const { name, address, port, user, password, channel, path, codec, streamType } = texts.common;
  return el(
    "div",
    { class: "grid two" },
    field(name, input("name")),
    field(address, input("address", { class: "code" })),
    field(port, input("port", { class: "code", inputmode: "numeric" })),
    modelBox(input("model")),
    field(user, input("user")),
    field(password, passwordInput("row-password", "new-password")),
    field(channel, input("channel")),
    field(path, input("path", { class: "code" })),
    field(codec, select("codec")),
    field(streamType, select("stream")),
  );
}

/** @param {string} name @param {string} text */
const press = (name, text) => el("button", { type: "button", id: `row-${name}`, text });

/** Goes into the document. */
export function rowDialog() {
  const title = el("h2", { id: "row-title" });
  const named = { "aria-labelledby": title.id };
  const form = el(
    "form",
    { id: "row-form", autocomplete: "off", ...PLAIN, novalidate: true, ...named },
    el("div", { class: "bar" }, title, press("close", texts.common.close)),
    el("div", { id: "row-result" }),
    fields(),
    el("p", { class: "hint", text: texts.many.emptyFields }),
    el(
      "div",
      { class: "actions" },
      el("button", { id: "row-test", class: "main", text: texts.many.saveAndTest }),
      press("save", texts.common.save),
      press("anyway", texts.common.testAnyway),
      press("picture", texts.many.showPicture),
      press("one", texts.many.openOne),
    ),
    el(
      "figure",
      { class: "picture", id: "row-figure", hidden: true },
      el("div", { class: "frame" }, el("img", { id: "row-picture-image", alt: "", hidden: true })),
      el("figcaption", { id: "row-picture-text" }),
    ),
  );
  return el("dialog", { id: "row", ...named }, form, el("div", { class: "out-of-sight", role: "status" }));
}
