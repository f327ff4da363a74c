/// Fields of a camera: what is typed into one may belong into others, and what nobody typed may be suggested.

import { hidesLogin, splitAddress } from "../text/address.js";
import { splitPath } from "../text/path-login.js";

/** @typedef {Record<"address" | "port" | "user" | "password" | "path", HTMLInputElement>} AddressFields */

/**
 * Calls when somebody has put in an address or a path.
 * @param {AddressFields} fields
 * @param {() => void} changed
 */
export function watchAddress({ address, path }, changed) {
  for (const field of [address, path]) {
    field.addEventListener("change", changed);
    field.addEventListener("paste", () => setTimeout(changed));
  }
}

/**
 * Spreads a whole stream address, and a login in the path, over their fields, so that no password can be read. An
 * address that hides a login stays as it is.
 * @param {AddressFields} fields
 * @returns what was found in each of the two
 */
export function spreadAddress({ address, port, user, password, path }) {
  const ofAddress = splitAddress(address.value);
  address.value = ofAddress.host;
  if (ofAddress.port) port.value = ofAddress.port;
  if (ofAddress.path) path.value = ofAddress.path;
  const ofPath = splitPath(path.value);
  path.value = ofPath.path;
  for (const login of [ofAddress, ofPath]) {
    if (login.user) user.value = login.user;
    if (login.password && !password.disabled) password.value = login.password;
  }
  return { ofAddress, ofPath };
}

/** Empties the password, and takes those out that stand in other fields. @param {AddressFields} fields */
export function forgetPassword(fields) {
  spreadAddress(fields);
  fields.password.value = "";
  for (const field of [fields.address, fields.path]) if (hidesLogin(field.value)) field.value = "";
}

/**
 * Fills a field that nobody typed into. What is typed into it at this moment takes its place.
 * @param {HTMLInputElement} field
 * @param {string} value
 */
export function suggest(field, value) {
  field.value = value;
  if (document.activeElement === field) field.select();
}
