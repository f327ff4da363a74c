/// Logins that people write into the path of a stream, as some manuals tell them to. recorderctl reads lists by the same
/// rule; the tests of both read its cases from tests/data/path_logins.json.
///
/// - "NAME:PASSWORD@" at the beginning, where at most a "/" or a scheme stands before it, up to the last "@" before the
///   next "/" or "?". Behind a scheme other than rtsps, which tells of TLS, scheme and host go too.
/// - "user=NAME" and "password=TEXT", under one of the names below, in any case. They begin behind "/", "?", "&" or "_".
///   In the query (behind the first "?") they end at "&"; before it at "/", "&", or a "_" that letters and "=" follow. The
///   first of each counts, and all are taken out. Without a password among them the path stays as it is.
/// - What is taken out is percent-decoded; what cannot be decoded is taken as it stands. A path of which nothing is left is
///   "/".

import { decode } from "./text.js";

/** @typedef {{user: string, password: string, path: string}} PathParts with "" for what is not there */

const USER_NAMES = ["user", "username", "usr", "login", "loginuse"];
const PASSWORD_NAMES = ["password", "passwd", "pass", "pwd", "psw", "loginpas"];

const BEFORE_AT = /^([a-z][a-z0-9+.-]*:\/\/|\/{0,2})([^/?:@]+):([^/?]*)@([^/?]*)(.*)$/is;
/** A separator, a name and a value. */
const PARAMETER = /^([/?&_]?)([a-z]+)=(.*)$/is;

/** @param {string} piece @param {string[]} names */
const isNamed = (piece, names) => names.includes(PARAMETER.exec(piece)?.[2]?.toLowerCase() ?? "");

/** @param {string[]} pieces @param {string[]} names */
function valueOf(pieces, names) {
  const found = pieces.find((piece) => isNamed(piece, names));
  return found ? decode(PARAMETER.exec(found)?.[3] ?? "") : "";
}

/** @param {string} path @returns {PathParts} */
export function splitPath(path) {
  const [, start = "", user = "", password = "", host = "", rest = ""] = BEFORE_AT.exec(path) ?? [];
  if (!user) return splitParameters(path);
  const left = splitParameters(start.endsWith("://") ? rest : `/${host}${rest}`);
  const kept = /^rtsps:/i.test(start) ? `rtsps://${host}` : "";
  return { user: decode(user), password: decode(password), path: kept + (left.path || "/") };
}

/** @param {string} path @returns {PathParts} */
function splitParameters(path) {
  const [, beforeQuery = "", query = ""] = /^([^?]*)(.*)$/s.exec(path) ?? [];
  const pieces = [...beforeQuery.split(/(?=[/&]|_[a-z]+=)/i), ...query.split(/(?=&)/)]; // each with its separator
  if (!pieces.some((piece) => isNamed(piece, PASSWORD_NAMES))) return { user: "", password: "", path };
  return {
    user: valueOf(pieces, USER_NAMES),
    password: valueOf(pieces, PASSWORD_NAMES),
    path: withoutLogin(pieces) || "/",
  };
}

/** What follows a login takes over the separator that the login began with. @param {string[]} pieces */
function withoutLogin(pieces) {
  let path = "";
  let beginning = /** @type {string | null} */ (null);
  for (const piece of pieces) {
    const isFurther = /^[&_]/.test(piece);
    if (!isFurther) beginning = /^[/?]?/.exec(piece)?.[0] ?? "";
    if (isNamed(piece, [...USER_NAMES, ...PASSWORD_NAMES])) continue;
    path += isFurther && beginning !== null ? beginning + piece.slice(1) : piece;
    beginning = null;
  }
  return path;
}
