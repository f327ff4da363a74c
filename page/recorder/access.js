/// Of the recorder's own API: who is logged in, sessions, tokens, users. Their addresses and members stand here and nowhere
/// else. Times are seconds since 1970.

import { ask, askOnce } from "./request.js";

/**
 * @typedef {"admin" | "user"} Role
 *
 * @typedef {object} Session
 * @property {string} user
 * @property {Role} role
 *
 * @typedef {object} User
 * @property {string} name
 * @property {Role} role
 *
 * @typedef {object} SessionEntry
 * @property {string} id
 * @property {string} user
 * @property {number} created
 * @property {number} lastUsed
 * @property {number | null} until
 * @property {string} address whence somebody logged in
 * @property {boolean} isThis this browser's
 *
 * @typedef {object} TokenEntry
 * @property {string} name
 * @property {string} user
 * @property {number} created
 * @property {number} lastUsed
 * @property {number | null} until
 *
 * @typedef {import("./request.js").Question} Question
 */

const ADDRESS = "recorder/1/";

/** @param {Question["verb"]} verb @param {string} path @param {Record<string, unknown>} [parameters] */
const question = (verb, path, parameters) =>
  parameters ? { verb, address: ADDRESS + path, parameters } : { verb, address: ADDRESS + path };

// ---- logging in: nobody waits for a login here ----

/** @param {Question} asked @returns {Promise<Session>} */
const sessionOf = async (asked) => (await askOnce(asked)).body.data;

/** Who is logged in. Fails when nobody is. */
export const readSession = () => sessionOf(question("GET", "session"));

/**
 * @param {string} user
 * @param {string} password
 * @param {boolean} stay
 */
export const logIn = (user, password, stay) => sessionOf(question("POST", "session", { user, password, stay }));

/** @param {string} link its code */
export const logInByLink = (link) => sessionOf(question("POST", "session", { link }));

/** @param {string} name @param {string} password @param {string} link its code */
export const addFirstUser = (name, password, link) => askOnce(question("POST", "users", { name, password, link }));

export const logOut = () => askOnce(question("DELETE", "session"));

// ---- users, sessions, tokens ----

/** @param {Question} asked @returns {Promise<any>} */
const dataOf = async (asked) => (await ask(asked)).body.data;

/** @returns {Promise<User[]>} */
export const listUsers = () => dataOf(question("GET", "users"));

/** @param {string} name @param {string} password @param {Role} role */
export const addUser = (name, password, role) => dataOf(question("POST", "users", { name, password, role }));

/**
 * Ends the user's sessions, but for this browser's.
 * @param {string} name
 * @param {{role?: Role, password?: string, oldPassword?: string}} change the own password needs the old one
 */
export const changeUser = (name, change) => dataOf(question("PATCH", `users/${encodeURIComponent(name)}`, change));

/** @param {string} name */
export const removeUser = (name) => dataOf(question("DELETE", `users/${encodeURIComponent(name)}`));

/** The own ones; an admin's: all. @returns {Promise<SessionEntry[]>} */
export const listSessions = () => dataOf(question("GET", "sessions"));

/** @param {string} id */
export const endSession = (id) => dataOf(question("DELETE", `sessions/${encodeURIComponent(id)}`));

/** The own ones; an admin's: all. @returns {Promise<TokenEntry[]>} */
export const listTokens = () => dataOf(question("GET", "tokens"));

/**
 * @param {string} name
 * @param {number | null} until null for no end
 * @returns {Promise<string>} the token, which nobody can be told again
 */
export const addToken = async (name, until) => (await dataOf(question("POST", "tokens", { name, until }))).token;

/** @param {string} name */
export const removeToken = (name) => dataOf(question("DELETE", `tokens/${encodeURIComponent(name)}`));
