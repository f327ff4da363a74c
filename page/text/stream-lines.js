/// A stream's address with its login, and the lines by which other programs take it.

/** Stands where nobody gave the password. */
export const MASK = "PASSWORD";

/** @param {string} character */
const percent = (character) => `%${character.charCodeAt(0).toString(16).toUpperCase()}`;

/** Of an address (RFC 3986, 3.2.1), with no sign left that a shell or YAML knows. @param {string} text */
const encodeLogin = (text) => encodeURIComponent(text).replace(/[!'()*]/g, percent);

/**
 * Without what no address may hold, such as braces, which some programs fill in, and without what a shell knows between
 * quotation marks.
 * @param {string} address
 */
const clean = (address) => address.replace(/[^!#%-;=?-[\]_a-z~]/gu, encodeURIComponent).replaceAll("!", "%21");

/**
 * @param {string} address without a login
 * @param {string} user "" for a camera that wants none
 * @param {string} password
 */
export function withLogin(address, user, password) {
  if (!user) return clean(address);
  const login = `${encodeLogin(user)}:${encodeLogin(password)}@`;
  return clean(address).replace(/^[a-z]+:\/\//i, (scheme) => scheme + login);
}

/** One word of any shell, of Windows, too: cmd.exe knows no apostrophes. @param {string} address that is clean */
const shellWord = (address) => `"${address}"`;

/** A name that all programs take: letters, digits and "_". @param {string} name @param {number} id */
export function plainName(name, id) {
  const ascii = name.normalize("NFKD").replace(/\p{M}/gu, "").toLowerCase();
  return ascii.replace(/[^a-z0-9]+/g, "_").replace(/^_+|_+$/g, "") || `camera_${id}`;
}

/** @param {string} address */
const isRtsp = (address) => /^rtsps?:/i.test(address);

/** Keeps a minute of it. @param {string} address @param {string} name of the file */
export const ffmpegLine = (address, name) =>
  `ffmpeg ${isRtsp(address) ? "-rtsp_transport tcp " : ""}-i ${shellWord(address)} -c copy -t 60 ${name}.mkv`;

/** @param {string} address */
export const vlcLine = (address) => `vlc ${isRtsp(address) ? "--rtsp-tcp " : ""}${shellWord(address)}`;

/** @typedef {{name: string, address: string}} NamedAddress */

/** YAML, in which a text is as in JSON. @param {string} name @param {NamedAddress[]} streams */
export function go2rtcLines(name, streams) {
  const keyOf = (/** @type {string} */ stream) => JSON.stringify(stream === "main" ? name : `${name}_${stream}`);
  return ["streams:", ...streams.map((one) => `  ${keyOf(one.name)}: ${JSON.stringify(one.address)}`)].join("\n");
}

/**
 * The main stream is recorded; the sub stream, if there is one, is watched.
 * @param {string} name
 * @param {NamedAddress[]} streams
 */
export function frigateLines(name, streams) {
  const used = streams.filter((stream) => stream.name !== "third").slice(0, 2);
  const rolesOf = (/** @type {number} */ i) => (used.length === 1 ? "record, detect" : i === 0 ? "record" : "detect");
  const inputs = used.flatMap(({ address }, i) => [
    `        - path: ${JSON.stringify(address)}`,
    `          roles: [${rolesOf(i)}]`,
  ]);
  return ["cameras:", `  ${JSON.stringify(name)}:`, "    ffmpeg:", "      inputs:", ...inputs].join("\n");
}
