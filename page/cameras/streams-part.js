/// The streams of the open camera: their addresses, and lines for other programs. What is shown has no password; what
/// is copied has the one that somebody types here.

import { copyText } from "../parts/copying.js";
import { button, el, say } from "../parts/dom.js";
import { PLAIN, field } from "../parts/forms.js";
import { MASK, ffmpegLine, frigateLines, go2rtcLines, plainName, vlcLine, withLogin } from "../text/stream-lines.js";
import { texts } from "../texts/texts.js";

/**
 * @typedef {import("../recorder/cameras.js").StoredCamera} StoredCamera
 * @typedef {import("../recorder/cameras.js").CameraStream} CameraStream
 */

const words = texts.camera;
const COPIED_MS = 2000;

export class StreamsPart {
  /** @type {StoredCamera | null} */
  #camera = null;
  #tick = el("input", { type: "checkbox", id: "camera-with-password" });
  #password = el("input", { id: "camera-copy-password", type: "password", autocomplete: "new-password", ...PLAIN });
  #passwordField = field(texts.common.password, this.#password, words.passwordHint(MASK));
  #list = el("div", { id: "camera-streams", class: "streams" });
  #withPassword = el(
    "div",
    { class: "with-password" },
    el("label", { class: "tick" }, this.#tick, words.withPassword),
    this.#passwordField,
  );
  element = el("section", {}, el("h2", { text: words.streams }), this.#list, this.#withPassword);

  constructor() {
    this.#tick.addEventListener("change", () => this.#ticked());
    this.#ticked();
  }

  /** @param {StoredCamera} camera */
  show(camera) {
    this.#camera = camera;
    const known = camera.streams.filter(({ address }) => address);
    this.#withPassword.hidden = known.length === 0 || !camera.user;
    const lines = known.length > 0 ? [this.#linesOf(camera, known)] : [];
    this.#list.replaceChildren(...camera.streams.map((stream) => this.#boxOf(stream)), ...lines);
  }

  forgetPassword() {
    this.#tick.checked = false;
    this.#ticked();
  }

  #ticked() {
    this.#passwordField.hidden = !this.#tick.checked;
    this.#password.value = "";
    if (this.#tick.checked) this.#password.focus();
  }

  /** Where nothing is typed, what is copied has none. */
  get #typed() {
    return (this.#tick.checked && this.#password.value) || MASK;
  }

  /** @param {string} password @param {CameraStream} stream */
  #addressOf(password, { address }) {
    return withLogin(address, this.#camera?.user ?? "", password);
  }

  /** @param {CameraStream} stream */
  #boxOf(stream) {
    const name = texts.common.streamNames[stream.name] ?? stream.name;
    const address = stream.address
      ? this.#copyable(texts.common.address, name, (password) => this.#addressOf(password, stream))
      : el("p", { class: "hint", text: words.noAddress });
    return el("div", { class: "stream" }, el("h3", { text: name }), address);
  }

  /** @param {StoredCamera} camera @param {CameraStream[]} streams */
  #linesOf({ id, name }, streams) {
    const key = plainName(name, id);
    const named = (/** @type {string} */ password) =>
      streams.map((stream) => ({ name: stream.name, address: this.#addressOf(password, stream) }));
    const single = streams.flatMap((stream) => {
      const label = texts.common.streamNames[stream.name] ?? stream.name;
      const file = stream.name === "main" ? key : `${key}_${stream.name}`;
      return [
        this.#line("ffmpeg", label, (password) => ffmpegLine(this.#addressOf(password, stream), file)),
        this.#line("VLC", label, (password) => vlcLine(this.#addressOf(password, stream))),
      ];
    });
    const whole = [
      this.#line("go2rtc", "", (password) => go2rtcLines(key, named(password))),
      this.#line("Frigate", "", (password) => frigateLines(key, named(password))),
    ];
    const isOpen = this.#list.querySelector("details")?.open ?? false;
    return el("details", { id: "camera-lines", open: isOpen }, el("summary", { text: words.lines }), ...single, ...whole);
  }

  /** @param {string} program @param {string} stream "" for all @param {(password: string) => string} write */
  #line(program, stream, write) {
    const heading = el("h3", { text: stream ? `${program}, ${stream}` : program });
    return el("div", { class: "stream" }, heading, this.#copyable(program, stream, write));
  }

  /** @param {string} what @param {string} stream @param {(password: string) => string} write */
  #copyable(what, stream, write) {
    const name = words.copyOf(what, stream);
    const copy = button(texts.common.copy, () => this.#copy(copy, name, write(this.#typed)), { "aria-label": name });
    return el("div", { class: "copyable" }, el("pre", { class: "code", text: write(MASK) }), copy);
  }

  /** @param {HTMLElement} copy @param {string} name @param {string} text */
  async #copy(copy, name, text) {
    const isDone = await copyText(text);
    say(isDone ? texts.common.copied : words.notCopied);
    if (!isDone) return;
    copy.textContent = texts.common.copied;
    copy.ariaLabel = null;
    await new Promise((done) => setTimeout(done, COPIED_MS));
    copy.textContent = texts.common.copy;
    copy.ariaLabel = name;
  }
}
