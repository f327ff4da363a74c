/// What several views say: names of fields, buttons, the parts around the views.

export const common = {
  product: "Camera check",
  /** The window's title. @param {string} view */
  title: (view) => `${view} – Camera check`,

  /** Before what to try first. */
  first: "First:",
  /** Of the recorder's answer. @param {number} code */
  code: (code) => `code ${code}`,
  /** @param {string} heading of the cause */
  failed: (heading) => `Failed: ${heading.charAt(0).toLowerCase()}${heading.slice(1)}`,
  cannotDo: "The recorder could not do this",
  lockQuestion: "Two logins were refused. Another may lock this user out. Try anyway?",
  tryAnyway: "Try anyway",
  /** On a link to the field that is to be looked at. @type {Readonly<Record<string, string>>} */
  goTo: {
    address: "Go to address",
    port: "Go to port",
    model: "Go to model",
    user: "Go to user",
    password: "Go to password",
    path: "Go to path",
    channel: "Go to channel",
    codec: "Go to codec",
  },

  /** Of something that runs. @param {number} done @param {number} all */
  doneOf: (done, all) => `${done} of ${all}`,
  /** @param {string} summary */
  ended: (summary) => `Ended. ${summary}`,
  noPictureYet: "No picture yet",
  noPictureCame: "No picture came",
  /** @param {string} heading of the cause */
  noPictureFor: (heading) => `No picture came: ${heading.charAt(0).toLowerCase()}${heading.slice(1)}`,
  fetchingPicture: "Fetching a picture",

  /** What is wrong with a host or a port, in words that may follow the column's name. */
  encode: "Percent-encode its password: %2F for /, %3F for ?, %23 for #, %40 for @ (the last in its path too).",
  /** @param {string} host */
  noHost: (host) => `${host} is not a host name or address.`,
  /** @param {string} host digits and dots */
  noIp: (host) => `${host} is not an IP address.`,
  /** @param {string} port */
  noPort: (port) => `${port} is not a port (1 to 65535).`,
  typePort: "Type the camera's port (1 to 65535).",
  noName: "Type a name.",

  /** On the button of a password, and what follows for those who do not see the field. */
  show: "Show",
  hide: "Hide",
  shownPassword: "password",

  any: "Any",
  cancel: "Cancel",
  close: "Close",
  save: "Save",
  saved: "Saved",
  saveAnyway: "Save it anyway",
  /** @param {string} camera */
  openNamed: (camera) => `Open ${camera}`,
  openCameras: "Open Cameras",
  copy: "Copy",
  copied: "Copied",
  stop: "Stop",
  test: "Test",
  testAnyway: "Test anyway",
  chooseModel: "Choose a model from the list.",

  name: "Name",
  address: "Address",
  port: "Port",
  model: "Model",
  user: "User",
  password: "Password",
  channel: "Channel",
  codec: "Codec",
  stream: "Stream",
  /** By the recorder's names for them; "" for one without. @type {Readonly<Record<"main" | "sub" | "third" | "", string>>} */
  streamNames: { main: "Main", sub: "Sub", third: "Third", "": "Stream" },
  streamType: "Stream type",
  path: "Path",
};
