/// A recorder that was found, with its channels: which of them are stored, and under which names.

import { button, el, say } from "../parts/dom.js";
import { PLAIN, field, mistakeLine, onSubmit, tell } from "../parts/forms.js";
import { isLoginRefused } from "../recorder/causes.js";
import { byChannel, freeName } from "../recorder/to-store.js";
import { texts } from "../texts/texts.js";
import { ChannelRow } from "./channel-row.js";

const { add, common } = texts;

/**
 * @typedef {import("../recorder/finding.js").Found} Found
 * @typedef {import("../recorder/finding.js").Login} Login
 *
 * @typedef {object} Handlers
 * @property {(isSaving: boolean) => void} saving is told when saving begins and ends
 * @property {() => void} another
 */

export class FoundChannels {
  #working = new AbortController();
  #end = () => {};
  /** @type {Promise<void>} */
  #hasEnded = new Promise((resolve) => (this.#end = resolve));
  #base = el("input", { id: "add-base", autocomplete: "off", ...PLAIN });
  #all = el("input", { type: "checkbox", id: "add-all", "aria-label": add.allChannels });
  #save = el("button", { id: "add-save", class: "main" });
  #progress = el("progress", { max: 1, value: 0 });
  #progressText = el("span", { class: "muted" });
  #progressLine = el(
    "label",
    { class: "progress", hidden: true },
    el("span", { class: "out-of-sight", text: add.progressLabel }),
    this.#progress,
  );
  #mistake = mistakeLine("add-save-mistake");
  #said = el("strong", { id: "add-several", tabindex: "-1" });
  #outcome;
  /** Rows whose picture was not asked for, by their elements. @type {Map<Element, ChannelRow>} */
  #unseen;
  /** Rows in sight whose picture comes next. @type {ChannelRow[]} */
  #waiting = [];
  #isAsking = false;
  #watch = new IntersectionObserver((entries) => this.#seen(entries));
  element;

  /**
   * @param {Found} found
   * @param {Login} login with which it was found
   * @param {string} name
   * @param {string[]} taken names of stored cameras
   * @param {Handlers} handlers
   */
  constructor(found, login, name, taken, handlers) {
    this.login = login;
    this.handlers = handlers;
    this.taken = taken;
    const channels = [...byChannel(found.streams)];
    this.rows = channels.map(([channel, streams]) => new ChannelRow(found, channel, streams, () => this.#count()));
    this.#unseen = new Map(this.rows.map((row) => [row.element, row]));
    this.#base.value = name;
    this.#base.addEventListener("input", () => this.#rename());
    this.#all.checked = true;
    this.#all.addEventListener("change", () => this.#tickAll());
    this.#outcome = el(
      "div",
      { class: "card bar", hidden: true },
      this.#said,
      button(add.addAnother, handlers.another, { id: "add-another" }),
      el("a", { class: "button", href: "#cameras", text: common.openCameras }),
    );
    this.element = this.#build();
    this.#rename();
    this.#count();
  }

  #build() {
    const base = field(add.baseName, this.#base, add.baseHint);
    const form = el(
      "form",
      { class: "found", novalidate: true, autocomplete: "off", "aria-label": add.channels },
      base,
      this.#table(),
      el("div", { class: "bar" }, this.#save, this.#progressLine, this.#progressText),
      this.#mistake,
      this.#outcome,
    );
    onSubmit(form, this.#mistake, () => this.#saveChosen());
    return form;
  }

  #table() {
    const names = [add.picture, common.name, add.streamsOf, add.result];
    const headings = names.map((text) => el("th", { scope: "col", text }));
    const all = el("th", { scope: "col" }, el("label", { class: "tick" }, this.#all, common.channel));
    return el(
      "table",
      { class: "channels" },
      el("caption", { text: add.channels }),
      el("thead", {}, el("tr", {}, all, ...headings)),
      el("tbody", {}, ...this.rows.map(({ element }) => element)),
    );
  }

  #rename() {
    for (const row of this.rows) {
      const name = add.channelName(this.#base.value.trim(), row.channel);
      if (row.hasUsualName) row.name.value = freeName(name, this.taken);
    }
  }

  #tickAll() {
    for (const row of this.rows) if (!row.isSaved) row.tick.checked = this.#all.checked;
    this.#count();
  }

  #count() {
    const chosen = this.rows.filter((row) => row.isChosen).length;
    const isDone = this.rows.every((row) => row.isSaved);
    if (isDone && this.element.contains(document.activeElement)) this.#said.focus();
    this.#save.hidden = isDone;
    this.#save.textContent = add.saveSeveral(chosen);
    if (chosen === 0) this.#save.setAttribute("aria-disabled", "true");
    else this.#save.removeAttribute("aria-disabled");
  }

  /** Asks for pictures of the rows that come into sight. Ends when it was stopped or no picture is left to ask for. */
  look() {
    for (const row of this.rows) this.#watch.observe(row.element);
    return this.#hasEnded;
  }

  /** @param {IntersectionObserverEntry[]} entries */
  #seen(entries) {
    for (const { target, isIntersecting } of entries) {
      const row = this.#unseen.get(target);
      if (!isIntersecting || !row) continue;
      this.#unseen.delete(target);
      this.#waiting.push(row);
    }
    if (!this.#isAsking) this.#takePictures();
  }

  /** One after the other; a refused login ends it. */
  async #takePictures() {
    const { signal } = this.#working;
    this.#isAsking = true;
    for (let row = this.#waiting.shift(); row && !signal.aborted; row = this.#waiting.shift()) {
      const cause = await row.takePicture(this.login, signal);
      if (isLoginRefused({ cause }) && !signal.aborted) this.#refused();
    }
    this.#isAsking = false;
    if (this.#unseen.size === 0) this.#end();
  }

  #refused() {
    this.stop();
    tell(this.#mistake, add.refused);
  }

  async #saveChosen() {
    const chosen = this.rows.filter((row) => row.isChosen);
    this.handlers.saving(true);
    this.#progressLine.hidden = false;
    this.#outcome.hidden = true;
    await this.#saveEach(chosen);
    this.#progressLine.hidden = true;
    this.#progressText.textContent = "";
    this.handlers.saving(false);
    this.#tellOutcome(chosen);
  }

  /** Ends when the login is forgotten: no camera is stored without it. @param {ChannelRow[]} chosen */
  async #saveEach(chosen) {
    const { login } = this;
    for (const [done, row] of chosen.entries()) {
      if (this.login !== login) return;
      this.#progress.value = done / chosen.length;
      this.#progressText.textContent = common.doneOf(done, chosen.length);
      await row.save(login, false);
    }
  }

  /** @param {ChannelRow[]} chosen */
  #tellOutcome(chosen) {
    const saved = chosen.filter((row) => row.isSaved).length;
    const text = add.severalSaved(saved, chosen.length - saved);
    this.#said.textContent = text;
    this.#outcome.hidden = false;
    say(text);
    setTimeout(() => this.#count()); // once the form has freed its button
  }

  /** What still runs ends. */
  stop() {
    this.#working.abort();
    this.#watch.disconnect();
    this.#end();
  }

  /** Ends all, and forgets the login. */
  forget() {
    this.stop();
    this.login = { user: "", password: "" };
    for (const row of this.rows) row.forget();
  }
}
