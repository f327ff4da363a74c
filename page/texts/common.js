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
  fetchingPicture: "Fetching a picture",

  any: "Any",
  cancel: "Cancel",
  close: "Close",
  save: "Save",
  test: "Test",

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
