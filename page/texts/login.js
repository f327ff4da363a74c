/// Who is logged in: the login, the account, users, sessions and tokens.

import { counted } from "./language.js";

export const login = {
  // ---- the question ----
  logIn: "Log in",
  logInAgain: "Log in again",
  samePassword: "The same password again",
  stay: "Stay signed in on this device",
  later: "Later",
  somebodyElse: "I am somebody else",
  loggedIn: "Logged in",
  firstUser: "The first user",
  makeUser: "Make this user",
  firstUserText:
    "This recorder has no user yet. Make the first one: an admin, who can add others. A password has at least 8 characters.",
  expired:
    "The recorder no longer knows this browser. What you typed, the list and its results stay, and what waits goes on.",

  // ---- what a login came to ----
  away: "The recorder is not reachable. Try again when it is.",
  wrong: "The user or the password is wrong.",
  usedLink: "This link was used already, or is too old. Log in, or let “recorderctl link” print another one.",
  noUser: "This recorder has no user yet. “recorderctl link” prints an address where the first one is made.",
  /** @param {number} seconds */
  tryAgainIn: (seconds) => `Wrong passwords came before. Try again in ${counted(seconds, "second")}.`,
  busy: "The recorder is busy with other logins. Try again in a moment.",
  typeUser: "Type your user name.",
  typePassword: "Type a password.",
  twoPasswords: "These are two different passwords. Type them again.",
  /** @param {number} seconds */
  wait: (seconds) => `Wait ${seconds} s`,
  tryNow: "You can try again now.",

  // ---- the way out ----
  logOut: "Log out",
  /** @param {string} reason */
  stillIn: (reason) => `You are still logged in. ${reason}`,

  // ---- a new password ----
  newPassword: "New password",
  oldPassword: "Old password",
  othersEnd: "At least 8 characters. All other sessions of this user end.",
  changeIt: "Change it",
  passwordChanged: "Password changed",

  // ---- one's own account ----
  account: "My account",
  /** @param {string} name */
  anAdmin: (name) => `${name}, an admin`,
  /** @param {string} name */
  aUser: (name) => `${name}, a user`,
  changePassword: "Change password",
  whereLoggedIn: "Where you are logged in",
  endOthers: "End all others",
  othersEnded: "All other sessions have ended",
  tokensForScripts: "Tokens for scripts",
  tokensExplained: "A script that sends one, as “Authorization: Bearer”, may do what you may.",
  newToken: "New token",
  tokenName: "Name of a new token",
  goodUntil: "Good until (empty: without end)",
  makeToken: "Make a token",
  /** @param {string} name */
  tokenMade: (name) => `Token ${name} is made. Copy it now.`,
  /** @param {string} name */
  theToken: (name) => `The token ${name}`,
  done: "Done",
  copyNow: "Copy it now: it is not shown again.",
  copyByKeys: "The token is selected. Copy it with Ctrl+C.",

  // ---- sessions and tokens ----
  sessions: "Sessions",
  noSessions: "No sessions.",
  tokens: "Tokens",
  noTokens: "No tokens.",
  since: "Since",
  lastUsed: "Last used",
  from: "From",
  until: "Until",
  made: "Made",
  noEnd: "no end",
  thisBrowser: "this browser",
  end: "End",
  remove: "Remove",
  /** @param {string} address @param {string} since */
  session: (address, since) => `session from ${address} since ${since}`,
  /** @param {string} name */
  token: (name) => `token ${name}`,
  /** On a button. @param {string} verb @param {string} what */
  verbAndWhat: (verb, what) => `${verb} ${what}`,
  /** @param {string} what */
  whatIsDone: (what) => `${what}: done`,

  // ---- users ----
  users: "Users",
  whoMayLogIn: "Who may log in",
  role: "Role",
  roles: { admin: "Admin", user: "User" },
  ofOthers: "Sessions and tokens of others",
  roleExplained:
    "A password has at least 8 characters. A user tests, lists and shows cameras; an admin also stores and changes them, and " +
    "manages users.",
  newUser: "New user",
  userName: "Name of a new user",
  add: "Add",
  /** @param {string} name */
  added: (name) => `${name} is added`,
  /** @param {string} name */
  roleOf: (name) => `Role of ${name}`,
  /** @param {string} name @param {string} role */
  hasRole: (name, role) => `${name} has the role ${role}`,
  thisIsYou: "this is you",
  /** @param {string} name */
  newPasswordFor: (name) => `New password for ${name}`,
  /** @param {string} name */
  removeUser: (name) => `Remove ${name}`,
  /** @param {string} name */
  removeQuestion: (name) => `${name} is removed, with all sessions and tokens. Go on?`,
  /** @param {string} name */
  removed: (name) => `${name} is removed`,
};
