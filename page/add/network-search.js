/// The search of the network: devices as they answer, and which networks were searched.

import { el, say } from "../parts/dom.js";
import { PLAIN, field, mistakeLine, onSubmit, tell } from "../parts/forms.js";
import { discover } from "../recorder/finding.js";
import { Trouble } from "../recorder/request.js";
import { messageOf } from "../text/text.js";
import { sentence } from "../texts/language.js";
import { texts } from "../texts/texts.js";
import { deviceRow } from "./device-row.js";
import { Progress } from "./progress.js";

const { add } = texts;

export class NetworkSearch {
  /** @type {AbortController | null} while it runs */
  #running = null;
  /** By its number. @type {Map<number, HTMLElement>} */
  #rows = new Map();
  #progress = new Progress();
  #list = el("ul", { class: "devices", "aria-label": add.network });
  #summary = el("p", { id: "add-devices", class: "hint" });
  #range = el("input", { id: "add-range", class: "code", autocomplete: "off", ...PLAIN });
  #mistake = mistakeLine("add-search-mistake");
  #further = el(
    "form",
    { class: "inline", novalidate: true, autocomplete: "off", "aria-label": add.another },
    field(add.another, this.#range),
    el("button", { id: "add-search-it", text: add.searchIt }),
    el("p", { id: "add-range-hint", class: "hint", text: add.anotherHint }),
  );
  element = el(
    "section",
    { class: "card network", "aria-label": add.network, hidden: true },
    el("h2", { text: add.network }),
    this.#progress.element,
    this.#list,
    this.#summary,
    this.#further,
    this.#mistake,
  );

  /**
   * @param {(host: string, port: string) => void} use is told which device is to be added
   * @param {(isBusy: boolean) => void} busy is told when a search begins and ends
   */
  constructor(use, busy) {
    this.use = use;
    this.busy = busy;
    this.#range.setAttribute("aria-describedby", "add-range-hint");
    onSubmit(this.#further, this.#mistake, async () => void this.search(this.#range.value.trim()));
  }

  /** @param {string} [range] addresses that are tried as well */
  async search(range = "") {
    this.stop();
    const running = new AbortController();
    this.#begin(running);
    try {
      this.#end(await discover(range, (device) => this.#heard(device), running.signal));
    } catch (error) {
      const isStopped = error instanceof Trouble && error.kind === "stopped";
      if (!isStopped) tell(this.#mistake, sentence(messageOf(error)));
    } finally {
      if (this.#running === running) this.#finish();
    }
  }

  /** @param {AbortController} running */
  #begin(running) {
    this.#running = running;
    this.#rows.clear();
    this.#list.replaceChildren();
    this.#summary.textContent = "";
    tell(this.#mistake, "");
    this.element.hidden = false;
    this.#further.hidden = true;
    this.#progress.begin(add.searching);
    this.busy(true);
  }

  /** @param {import("../recorder/finding.js").Device} device */
  #heard(device) {
    const row = deviceRow(device, this.use);
    const earlier = this.#rows.get(device.device);
    if (earlier) earlier.replaceWith(row);
    else this.#list.append(row);
    this.#rows.set(device.device, row);
  }

  /** @param {import("../recorder/finding.js").Network[]} networks */
  #end(networks) {
    const devices = add.devices(this.#rows.size);
    this.#summary.textContent = `${devices} ${add.searched(networks)}`;
    say(devices);
  }

  #finish() {
    this.#running = null;
    this.#progress.clear();
    this.#further.hidden = false;
    this.busy(false);
  }

  /** What was heard stays. */
  stop() {
    if (!this.#running) return;
    this.#running.abort();
    this.#finish();
    this.#summary.textContent = add.stopped;
  }

  hide() {
    this.stop();
    this.element.hidden = true;
  }

  forgetPasswords() {
    for (const field of this.#list.querySelectorAll("input")) field.value = "";
  }
}
