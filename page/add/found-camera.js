/// A camera that was found, with its streams: what they show and send, which of them is to be main and sub, its name.

import { el, say, showMistake } from "../parts/dom.js";
import { PLAIN, field, mistakeLine, onSubmit, tell } from "../parts/forms.js";
import { isLoginRefused } from "../recorder/causes.js";
import { Trouble } from "../recorder/request.js";
import { toStore, usualChoice } from "../recorder/to-store.js";
import { texts } from "../texts/texts.js";
import { save, storedAlready } from "./saving.js";
import { StreamRow, claimText, labelOf } from "./stream-row.js";

const { add, common } = texts;

/**
 * @typedef {import("../recorder/finding.js").Found} Found
 * @typedef {import("../recorder/finding.js").FoundStream} FoundStream
 * @typedef {import("../recorder/finding.js").Login} Login
 * @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera
 *
 * @typedef {object} Handlers
 * @property {(isSaving: boolean) => void} saving is told when saving begins and ends
 * @property {(camera: StoredCamera, address: string) => void} saved is told what is stored now, and the address of its
 *   main stream
 */

/** @param {FoundStream} stream */
const optionText = (stream) => `${labelOf(stream)}: ${claimText(stream) || stream.path}`;

export class FoundCamera {
  #working = new AbortController();
  #name = el("input", { id: "add-name", autocomplete: "off", ...PLAIN });
  #main = el("select", { id: "add-main" });
  #sub = el("select", { id: "add-sub" }, el("option", { value: "", text: add.none }));
  /** Nobody chose another one. */
  #isUsualSub = true;
  #mistake = mistakeLine("add-save-mistake");
  #already = el("div");
  element;

  /**
   * @param {Found} found has streams of one channel
   * @param {Login} login with which it was found
   * @param {string} name
   * @param {Handlers} handlers
   */
  constructor(found, login, name, handlers) {
    this.found = found;
    this.login = login;
    this.handlers = handlers;
    this.rows = found.streams.map((stream) => new StreamRow(found.host, stream));
    this.#name.value = name;
    this.#offer();
    this.element = el(
      "div",
      { class: "found" },
      el("ul", { class: "found-streams", "aria-label": add.streams }, ...this.rows.map(({ element }) => element)),
      this.#form(),
    );
  }

  #offer() {
    const { streams } = this.found;
    const choice = this.#usualChoice();
    for (const select of [this.#main, this.#sub]) {
      select.append(...streams.map((stream, i) => el("option", { value: i, text: optionText(stream) })));
    }
    this.#main.value = String(streams.findIndex((stream) => stream === choice.main));
    this.#showSub(choice.sub);
    this.#sub.addEventListener("change", () => (this.#isUsualSub = false));
  }

  /** Of those that are there. */
  #usualChoice() {
    const isThere = (/** @type {FoundStream} */ stream) => this.rows.some((row) => row.stream === stream && row.isThere);
    return usualChoice(this.found.streams, isThere);
  }

  /** @param {FoundStream | undefined} stream */
  #showSub(stream) {
    this.#sub.value = stream ? String(this.found.streams.indexOf(stream)) : "";
  }

  #form() {
    const name = field(common.name, this.#name);
    name.append(el("p", { id: "add-name-mistake", class: "mistake", hidden: true }));
    const form = el(
      "form",
      { class: "inline", novalidate: true, autocomplete: "off", "aria-label": common.save },
      name,
      field(common.streamNames.main, this.#main),
      field(common.streamNames.sub, this.#sub),
      el("button", { id: "add-save", class: "main", text: common.save }),
      this.#mistake,
      this.#already,
    );
    onSubmit(form, this.#mistake, () => this.#save(false));
    return form;
  }

  /** Pictures first, then what the streams send that are main and sub by then. A refused login ends it. */
  async look() {
    const { signal } = this.#working;
    await this.#askEach(this.rows, (row) => this.#takePicture(row));
    const { main, sub } = this.#choice();
    const chosen = this.rows.filter(({ stream }) => stream === main || stream === sub);
    const played = chosen.filter(({ stream }) => stream.protocol === "RTSP");
    await this.#askEach(played, (row) => row.measure(this.login, signal));
  }

  /** By what comes of it, another sub stream may be the usual one. @param {StreamRow} row */
  async #takePicture(row) {
    const cause = await row.takePicture(this.login, this.#working.signal);
    if (row.isMissing) this.#offerNoMore(row);
    if (this.#isUsualSub) this.#showSub(this.#usualChoice().sub);
    return cause;
  }

  /** Rows of streams that the camera does not have. */
  get missing() {
    return this.rows.filter((row) => row.isMissing);
  }

  /** One is left as main, whatever its picture came to. @param {StreamRow} row */
  #offerNoMore(row) {
    const value = String(this.rows.indexOf(row));
    for (const select of [this.#main, this.#sub]) {
      const option = select.querySelector(`option[value="${value}"]`);
      if (select.options.length > 1) option?.remove();
    }
  }

  /**
   * One after the other.
   * @param {StreamRow[]} rows
   * @param {(row: StreamRow) => Promise<string | void>} question gives the cause if it failed
   */
  async #askEach(rows, question) {
    const { signal } = this.#working;
    for (const row of rows) {
      if (signal.aborted) return;
      const cause = String(await question(row).catch((error) => (error instanceof Trouble ? error.cause : "")));
      if (isLoginRefused({ cause }) && !signal.aborted) this.#refused();
    }
  }

  #refused() {
    this.stop();
    tell(this.#mistake, add.refused);
  }

  #choice() {
    const { streams } = this.found;
    const { third } = this.#usualChoice();
    const main = streams[Number(this.#main.value)];
    const sub = this.#sub.value === "" ? undefined : streams[Number(this.#sub.value)];
    return {
      ...(main && { main }),
      ...(sub && sub !== main && { sub }),
      ...(third && third !== main && third !== sub && { third }),
    };
  }

  /** @param {boolean} force stores it although it is stored already */
  async #save(force) {
    this.#already.replaceChildren();
    const name = this.#name.value.trim();
    showMistake(this.#name, name ? "" : common.noName);
    if (!name) return void this.#name.focus();
    const measured = new Map(this.rows.flatMap((row) => (row.measured ? [[row.stream, row.measured]] : [])));
    const camera = toStore(this.found, this.login, name, this.#choice(), measured);
    this.handlers.saving(true);
    const outcome = await save({ ...camera, force });
    this.handlers.saving(false);
    if (outcome.camera) {
      this.stop();
      this.handlers.saved(outcome.camera, camera.streams?.[0]?.address ?? "");
      return "";
    }
    if (!outcome.other) return outcome.mistake;
    say(outcome.mistake);
    this.#already.replaceChildren(storedAlready(outcome.other, () => this.#forced()));
    return "";
  }

  async #forced() {
    tell(this.#mistake, (await this.#save(true)) ?? "");
  }

  /** What still runs ends. */
  stop() {
    this.#working.abort();
    for (const row of this.rows) row.stop();
  }

  /** Ends all, and forgets the login. */
  forget() {
    this.stop();
    this.login = { user: "", password: "" };
    for (const row of this.rows) row.forget();
  }
}
