/// What several views say: names of fields, buttons, the parts around the views.

export const common = {
  product: "Camera check",
  /** The window's title. @param {string} view */
  title: (view) => `${view} – Camera check`,

  /** Before what to try first. */
  first: "First:",
  /** Of the recorder's answer. @param {number} code */
  code: (code) => `code ${code}`,
  noPictureCame: "No picture came",
  /** @param {string} heading of the cause */
  noPictureFor: (heading) => `No picture came: ${heading.charAt(0).toLowerCase()}${heading.slice(1)}`,
  fetchingPicture: "Fetching a picture",

  /** What is wrong with a host or a port, in words that may follow the column's name. */
  encode: "Percent-encode its password: %2F for /, %3F for ?, %23 for #, %40 for @ (the last in its path too).",
  /** @param {string} host */
  noHost: (host) => `${host} is not a host name or address.`,
  /** @param {string} port */
  noPort: (port) => `${port} is not a port (1 to 65535).`,

  /** On the button of a password, and what follows for those who do not see the field. */
  show: "Show",
  hide: "Hide",
  shownPassword: "password",

  any: "Any",
  cancel: "Cancel",
  close: "Close",
  save: "Save",
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
  streamType: "Stream type",
  path: "Path",
};
