/// Addresses as people write them: a name, host:port, or a whole stream address.

import { texts } from "../texts/texts.js";
import { splitPath } from "./path-login.js";
import { decode } from "./text.js";

/**
 * @typedef {object} AddressParts
 * @property {string} host without brackets
 * @property {string} port as written; "" when there is none
 * @property {string} user
 * @property {string} password
 * @property {string} path with its query; "" when there is none; the whole address, without login, of rtsps
 */

/** @type {Readonly<Record<string, string>>} */
const SCHEME_PORTS = { rtsp: "554", rtsps: "322", http: "80", https: "443" };

/**
 * Splits "host", "host:port", "[v6]:port" or a bare v6 address.
 * @param {string} text
 */
function splitHost(text) {
  const bracketed = /^\[([^\]]*)\](?::(.*))?$/.exec(text);
  if (bracketed) return { host: bracketed[1] ?? "", port: bracketed[2] ?? "" };
  const parts = text.split(":");
  return parts.length === 2 ? { host: parts[0] ?? "", port: parts[1] ?? "" } : { host: text, port: "" };
}

const WHOLE = /^([a-z][a-z0-9+.-]*):\/\/([^/?#]*)(.*)$/i;

/**
 * Whether a text holds a login that cannot be told from the rest: "@" stands where RFC 3986 has no user any more, most
 * likely behind a password with "/", "?" or "#" in it. No part of such a text may be shown.
 * @param {string} text
 */
export function hidesLogin(text) {
  const [, , , rest = text] = WHOLE.exec(text.trim()) ?? [];
  return rest.includes("@");
}

/**
 * A text that hides a login is not split: all of it is the host. A login may stand in the path too.
 * @param {string} text
 * @returns {AddressParts}
 */
export function splitAddress(text) {
  if (hidesLogin(text)) return { host: text.trim(), port: "", user: "", password: "", path: "" };
  const whole = WHOLE.exec(text.trim());
  if (!whole) return { ...splitHost(text.trim().replace(/\/$/, "")), user: "", password: "", path: "" };
  const [, scheme = "", authority = "", path = ""] = whole;
  const at = authority.lastIndexOf("@");
  const [user = "", ...password] = authority.slice(0, Math.max(at, 0)).split(":");
  const { host, port } = splitHost(authority.slice(at + 1));
  const ofPath = splitPath(path === "/" ? "" : path);
  const place = { host, port: port || (SCHEME_PORTS[scheme.toLowerCase()] ?? "") };
  return {
    ...place,
    user: decode(user) || ofPath.user,
    password: decode(password.join(":")) || ofPath.password,
    path: scheme.toLowerCase() === "rtsps" ? tlsAddress(place, ofPath.path) : ofPath.path,
  };
}

/** A host as it stands in an address: IPv6 in brackets (RFC 3986 section 3.2.2). @param {string} host */
export const inAddress = (host) => (host.includes(":") ? `[${host}]` : host);

/** The page's own address of a stored camera. @param {{id: number}} stored */
export const cameraHash = ({ id }) => `#cameras/${id}`;

/** A path that is read inside TLS: the scheme alone tells it. @param {{host: string, port: string}} place @param {string} path */
function tlsAddress({ host, port }, path) {
  return `rtsps://${inAddress(host)}:${port}${path || "/"}`;
}

/** Digits and dots that are no IPv4 address of four numbers. @param {string} host */
const isNoIp = (host) => {
  const numbers = host.split(".");
  return /^[\d.]+$/.test(host) && !(numbers.length === 4 && numbers.every((one) => one !== "" && Number(one) < 256));
};

/**
 * What is wrong with a host, in words that follow its name; "" for nothing.
 * @param {string} host
 */
export function hostMistake(host) {
  if (host === "") return texts.list.missing;
  if (host.includes("@")) return texts.common.encode;
  if (isNoIp(host)) return texts.common.noIp(host);
  return /[\s/\\?#[\]"'<>,;]/.test(host) ? texts.common.noHost(host) : "";
}

/** @param {string} port */
export function portMistake(port) {
  const isPort = /^\d{1,5}$/.test(port) && Number(port) >= 1 && Number(port) <= 65535;
  return isPort ? "" : texts.common.noPort(port);
}
